#include "documents/SidebarHeader.h"

#include "foundation_ui/Fonts.h"
#include "foundation_ui/IconButton.h"
#include "foundation_ui/Label.h"

#include <QtWidgets/QHBoxLayout>

namespace Tessaline {

namespace {

constexpr int kRightMargin = 8;
constexpr double kSymbolSize = 14;

} // namespace

SidebarHeader::SidebarHeader(const Theme &theme, const QString &title, QWidget *parent)
    : QWidget(parent), m_theme(theme), m_layout(new QHBoxLayout(this))
{
    setFixedHeight(kHeight);
    m_layout->setContentsMargins(kTitleLeft, 2, kRightMargin, 0); // a little nearer to its rows
    m_layout->setSpacing(0);
    m_layout->addWidget(
        new Label(theme, ColorRole::SecondaryText, Fonts::interface(Fonts::kSmallSize, QFont::DemiBold), title, this),
        1);
}

IconButton *SidebarHeader::addButton(const QString &symbol, const QString &help)
{
    auto *button = new IconButton(m_theme, symbol, help, this);
    button->setSymbolSize(kSymbolSize);
    m_layout->addWidget(button);
    return button;
}

} // namespace Tessaline
