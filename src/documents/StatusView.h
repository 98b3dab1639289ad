#pragma once

#include "foundation_ui/Ground.h"
#include "foundation_ui/TextButton.h"

class QVBoxLayout;

namespace Tessaline {

/// What stands in the middle of a column when there is no document to show: a symbol or a turning ring, a title, a
/// text, a button. What is empty is left out.
struct Status {
    QString symbol;
    bool isBusy = false;
    QString title;
    QString text;
    QString button;
    TextButton::Kind buttonKind = TextButton::Kind::Bordered;
    int spacing = 12; // between the items

    friend bool operator==(const Status &, const Status &) = default;
};

class StatusView final : public Ground
{
    Q_OBJECT
public:
    static constexpr int kTextWidth = 420; // at most
    static constexpr double kSymbolSize = 28;

    explicit StatusView(const Theme &theme, QWidget *parent = nullptr);

    void setStatus(const Status &status);

Q_SIGNALS:
    void buttonClicked();

private:
    Status m_status;
    QWidget *m_content = nullptr; // rebuilt for each status
};

} // namespace Tessaline
