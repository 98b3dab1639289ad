#include "panels/ChatEmptyState.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/Symbols.h"
#include "foundation_ui/Theme.h"

#include <QtGui/QPainter>
#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kTop = 40;
constexpr int kSpacing = 12;
constexpr double kLogoRadius = 16;
constexpr double kMarkSize = 36;
constexpr double kShadowOpacity = 0.15;
constexpr double kShadowOffset = 3;

} // namespace

ChatEmptyState::ChatEmptyState(const Theme &theme, QWidget *parent) : QWidget(parent), m_theme(theme)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(16, kTop + kLogoSide + kSpacing, 16, 0);
    column->setSpacing(kSpacing);
    column->setAlignment(Qt::AlignTop);
    const auto addLine = [&](ColorRole role, const QFont &font, const QString &words) {
        auto *label = new Label(theme, role, font, words);
        label->setAlignment(Qt::AlignHCenter);
        column->addWidget(label);
    };
    addLine(ColorRole::Text, Fonts::interface(15, QFont::DemiBold), u"Consult Tessaline"_s);
    addLine(ColorRole::SecondaryText, Fonts::interface(Fonts::kInterfaceSize), u"Talk to your document."_s);
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

void ChatEmptyState::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF logo((width() - kLogoSide) / 2.0, kTop, kLogoSide, kLogoSide);
    painter.setBrush(withOpacity(m_theme.color(ColorRole::SelectedSegment), kShadowOpacity));
    painter.drawRoundedRect(logo.translated(0, kShadowOffset), kLogoRadius, kLogoRadius);
    painter.setBrush(m_theme.color(ColorRole::SelectedSegment));
    painter.drawRoundedRect(logo, kLogoRadius, kLogoRadius);
    Symbols::draw(painter, u"sparkles", logo, kMarkSize, m_theme.color(ColorRole::Accent));
}

} // namespace Tessaline
