#pragma once

#include <QtWidgets/QWidget>

class QHBoxLayout;

namespace Tessaline {

class IconButton;
class Theme;

/// The title of a section of the sidebar, with small buttons on its right.
class SidebarHeader final : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kHeight = 28;
    static constexpr int kTitleLeft = 14;

    SidebarHeader(const Theme &theme, const QString &title, QWidget *parent = nullptr);

    IconButton *addButton(const QString &symbol, const QString &help);

private:
    const Theme &m_theme;
    QHBoxLayout *m_layout;
};

} // namespace Tessaline
