#include "foundation_ui/Alert.h"

#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"

#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

Alert::Alert(const Theme &theme, const QString &title, const QString &description, QWidget *content, QWidget *parent)
    : QWidget(parent)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(kSidePadding, kVerticalPadding, kSidePadding, kVerticalPadding);
    column->setSpacing(kSpacing);
    const auto addText = [&](const QString &text, ColorRole role, const QFont &font) {
        auto *label = new Label(theme, role, font, text, this);
        label->setWordWrap(true);
        column->addWidget(label);
    };
    addText(title, ColorRole::SecondaryText, Fonts::interface(Fonts::kSmallSize, QFont::Medium));
    if (!description.isEmpty()) // the weaker tone: a translucent one would fall short of the contrast of text
        addText(description, ColorRole::TertiaryText, Fonts::interface(Fonts::kCaptionSize));
    column->addWidget(content, 0, Qt::AlignLeft);
}

} // namespace Tessaline
