#include "panels/SendButton.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/ProgressIndicator.h"
#include "foundation_ui/Symbols.h"

#include <QtGui/QPainter>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using Kind = ChatInputState::SendButton;

constexpr double kReturnSize = 10;
constexpr double kStopSize = 9;
constexpr double kBorderOpacity = 0.2; // of the accent
constexpr int kProgressSide = ProgressIndicator::kSide * 6 / 10;

} // namespace

SendButton::SendButton(const Theme &theme, QWidget *parent)
    : PlainButton(theme, parent), m_progress(new ProgressIndicator(theme, this))
{
    setFixedSize(kSide, kSide);
    setCornerRadius(kSide / 2.0);
    m_progress->setFixedSize(kProgressSide, kProgressSide);
    m_progress->move((kSide - kProgressSide) / 2, (kSide - kProgressSide) / 2);
    setState({});
}

void SendButton::setState(const ChatInputState &state)
{
    m_state = state;
    setEnabled(state.isSendButtonEnabled);
    m_progress->setVisible(state.sendButton == Kind::Preparing);
    switch (state.sendButton) {
    case Kind::Send:
        setHelp(u"Send"_s);
        break;
    case Kind::Preparing:
        setHelp(u"Preparing"_s);
        break;
    case Kind::Stop:
        setHelp(u"Stop"_s);
        break;
    }
    update();
}

void SendButton::paintEvent(QPaintEvent *)
{
    if (m_state.sendButton == Kind::Preparing)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool isStop = m_state.sendButton == Kind::Stop;
    QColor color = theme().color(ColorRole::TertiaryText);
    if (isStop || m_state.canSend) {
        const QColor accent = theme().color(ColorRole::Accent);
        painter.setPen(isStop ? QPen(Qt::NoPen) : QPen(withOpacity(accent, kBorderOpacity)));
        painter.setBrush(accent);
        painter.drawEllipse(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
        painter.setPen(Qt::NoPen);
        painter.setBrush(stateTone());
        painter.drawEllipse(QRectF(rect()));
        color = theme().color(ColorRole::OnAccent);
    }
    Symbols::draw(painter, isStop ? u"stop.fill" : u"return", QRectF(rect()), isStop ? kStopSize : kReturnSize, color);
}

} // namespace Tessaline
