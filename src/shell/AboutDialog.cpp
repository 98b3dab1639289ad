#include "shell/AboutDialog.h"

#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/TextButton.h"
#include "shell/ApplicationIcon.h"

#include <QtCore/QCoreApplication>
#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

namespace {

constexpr int kIconSide = 72; // device-independent pixels
constexpr int kWidth = 360;

} // namespace

AboutDialog::AboutDialog(const Theme &theme, QWidget *parent) : QDialog(parent)
{
    setWindowTitle(tr("About Tessaline"));
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(32, 28, 32, 24);
    rows->setSpacing(8);
    rows->setSizeConstraint(QLayout::SetFixedSize);

    auto *icon = new QLabel;
    icon->setFixedSize(kIconSide, kIconSide);
    icon->setPixmap(applicationIcon(kIconSide, devicePixelRatioF()));
    rows->addWidget(icon, 0, Qt::AlignHCenter);
    rows->addSpacing(4);

    const auto line = [&](ColorRole role, const QFont &font, const QString &words) {
        auto *label = new Label(theme, role, font, words);
        label->setAlignment(Qt::AlignHCenter);
        label->setWordWrap(true);
        label->setFixedWidth(kWidth - 64);
        rows->addWidget(label);
    };
    line(ColorRole::Heading, Fonts::interface(18, QFont::DemiBold), QCoreApplication::applicationName());
    line(ColorRole::SecondaryText, Fonts::interface(Fonts::kInterfaceSize),
         tr("Version %1").arg(QCoreApplication::applicationVersion()));
    line(ColorRole::Text, Fonts::interface(Fonts::kInterfaceSize),
         tr("A calm place to write Markdown and plain text, in your own folders."));
    line(ColorRole::TertiaryText, Fonts::interface(Fonts::kSmallSize), tr("Free software under the MIT licence."));

    rows->addSpacing(8);
    auto *close = new TextButton(theme, tr("Close"), TextButton::Kind::Bordered);
    connect(close, &QAbstractButton::clicked, this, &QDialog::accept);
    rows->addWidget(close, 0, Qt::AlignHCenter);
}

} // namespace Tessaline
