#include "foundation_ui/Header.h"

#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"

#include <QtWidgets/QHBoxLayout>

namespace Tessaline {

Header::Header(const Theme &theme, const QString &title, QWidget *trailing, QWidget *parent) : QWidget(parent)
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addWidget(new Label(theme, ColorRole::Text, Fonts::interface(kTitleSize, QFont::Bold), title, this));
    if (trailing)
        row->addWidget(trailing);
    row->addStretch();
}

} // namespace Tessaline
