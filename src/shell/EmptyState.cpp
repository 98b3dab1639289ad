#include "shell/EmptyState.h"

#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"

#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

EmptyState::EmptyState(const Theme &theme, const QString &title, const QString &text, QWidget *parent) : QWidget(parent)
{
    const auto line = [&](ColorRole role, const QFont &font, const QString &words) {
        auto *label = new Label(theme, role, font, words);
        label->setAlignment(Qt::AlignHCenter);
        label->setWordWrap(true);
        label->setFixedWidth(kTextWidth);
        return label;
    };
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(16, 16, 16, 16);
    rows->setSpacing(8);
    rows->addStretch(2);
    rows->addWidget(line(ColorRole::SecondaryText, Fonts::interface(Fonts::kInterfaceSize, QFont::DemiBold), title), 0,
                    Qt::AlignHCenter);
    rows->addWidget(line(ColorRole::TertiaryText, Fonts::interface(12), text), 0, Qt::AlignHCenter);
    rows->addStretch(3); // a little above the middle looks like the middle
}

} // namespace Tessaline
