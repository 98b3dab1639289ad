#pragma once

#include <QtWidgets/QWidget>

namespace Tessaline {

class Theme;

/// What stands in the place of the conversation before there is one.
class ChatEmptyState final : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kLogoSide = 80;

    /// `theme` must outlive it.
    explicit ChatEmptyState(const Theme &theme, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
};

} // namespace Tessaline
