#include "panels/AddContextButton.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Symbols.h"

#include <QtGui/QPainter>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr double kSymbolSize = 16;     // the outline has air around it: as large as a plus of 11 points
constexpr double kGroundOpacity = 0.1; // of the accent

} // namespace

AddContextButton::AddContextButton(const Theme &theme, QWidget *parent) : PlainButton(theme, parent)
{
    setFixedSize(kSide, kSide);
    setHelp(u"Add Session Context"_s);
}

void AddContextButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    for (const QColor &tone : {withOpacity(theme().color(ColorRole::Accent), kGroundOpacity), stateTone()}) {
        painter.setBrush(tone);
        painter.drawRoundedRect(QRectF(rect()), cornerRadius(), cornerRadius());
    }
    Symbols::draw(painter, u"plus", QRectF(rect()), kSymbolSize, theme().color(ColorRole::AccentText));
}

} // namespace Tessaline
