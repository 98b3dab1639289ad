#pragma once

#include "foundation_ui/PlainButton.h"
#include "Services/ContextItem.h"

namespace Tessaline {

/// An item that is attached to the session: its name, and the kind of source below it. A click opens it.
class ContextRow final : public PlainButton
{
    Q_OBJECT
public:
    ContextRow(const Theme &theme, const ContextItem &item, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_name;
    QString m_subtitle; // empty for none
};

/// A topic that the model suggests.
class SuggestionChip final : public PlainButton
{
    Q_OBJECT
public:
    SuggestionChip(const Theme &theme, const QString &topic, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_topic;
};

} // namespace Tessaline
