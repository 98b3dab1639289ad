#include "documents/OpenFileRow.h"

#include "documents/DocumentSymbol.h"
#include "foundation_ui/FocusRing.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/IconButton.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/PlainToolTip.h"
#include "foundation_ui/Symbols.h"

#include <QtGui/QPainter>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr double kSymbolSize = 15;
constexpr int kSymbolLeft = 10;
constexpr int kTextLeft = 32;
constexpr int kCloseRight = 4; // from the right edge to the button

} // namespace

OpenFileRow::OpenFileRow(const Theme &theme, QWidget *parent)
    : PlainButton(theme, parent), m_close(new IconButton(theme, u"xmark"_s, QString(), this))
{
    setFont(Fonts::interface(Fonts::kInterfaceSize));
    setDrawsOwnRing(true);
    m_close->setSymbolSize(14);
    m_close->setFocusPolicy(Qt::NoFocus); // by keyboard a row is closed with Delete
    m_close->setIsQuiet(true);
    connect(m_close, &QAbstractButton::clicked, this, &OpenFileRow::closeRequested);
}

void OpenFileRow::setFile(const OpenFileReference &file)
{
    const bool isOther = m_file.url != file.url || m_symbol.isEmpty();
    m_file = file;
    if (isOther) // a file with an unknown extension is read for this
        m_symbol = documentSymbol(documentType(file.url));
    // NOTE: not the button's text, in which an ampersand would make a shortcut.
    m_name = file.url.lastPathComponent();
    setToolTip(plainToolTip(file.url.path()));
    setAccessibleName(m_name);
    setAccessibleDescription(file.project ? file.project->rootURL.lastPathComponent() : QString());
    const QString close = u"Close “%1”"_s.arg(m_name);
    m_close->setToolTip(plainToolTip(close));
    m_close->setAccessibleName(close);
    update();
}

void OpenFileRow::setIsActive(bool isActive)
{
    if (m_isActive == isActive)
        return;
    m_isActive = isActive;
    takeCloseState();
    update();
    QAccessible::State changed;
    changed.selected = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
}

void OpenFileRow::takeCloseState()
{
    m_close->setIsQuiet(!m_isActive && !isHovered() && !hasFocus());
}

bool OpenFileRow::event(QEvent *event)
{
    const bool result = PlainButton::event(event);
    switch (event->type()) {
    case QEvent::HoverEnter:
    case QEvent::HoverLeave:
    case QEvent::FocusIn:
    case QEvent::FocusOut:
        takeCloseState();
        break;
    default:
        break;
    }
    return result;
}

void OpenFileRow::resizeEvent(QResizeEvent *)
{
    constexpr int kSide = IconButton::kSide;
    m_close->setGeometry(width() - kCloseRight - kSide, (height() - kSide) / 2, kSide, kSide);
}

void OpenFileRow::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor ground = m_isActive ? theme().color(ColorRole::SelectedRow) : stateTone();
    if (ground.alpha() > 0) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(ground);
        painter.drawRoundedRect(QRectF(rect()), cornerRadius(), cornerRadius());
    }
    if (needsOwnRing())
        FocusRing::drawInside(painter, QRectF(rect()), cornerRadius(), theme());
    const QRectF symbolBox(kSymbolLeft, (height() - kSymbolSize) / 2, kSymbolSize, kSymbolSize);
    Symbols::draw(painter, m_symbol, symbolBox, kSymbolSize,
                  theme().color(m_isActive ? ColorRole::AccentText : ColorRole::SecondaryText));

    const int textWidth = m_close->x() - kTextLeft;
    const auto drawLine = [&](const QString &text, const QFont &face, ColorRole role, int top, int lineHeight) {
        painter.setFont(face);
        painter.setPen(theme().color(role));
        const QString shown = QFontMetrics(face).elidedText(Label::singleLine(text), Qt::ElideMiddle, textWidth);
        painter.drawText(QRect(kTextLeft, top, textWidth, lineHeight),
                         Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, shown);
    };
    if (!m_file.project) {
        drawLine(m_name, font(), ColorRole::Text, 0, height());
        return;
    }
    drawLine(m_name, font(), ColorRole::Text, 4, 18);
    drawLine(m_file.project->rootURL.lastPathComponent(), Fonts::interface(Fonts::kSmallSize), ColorRole::SecondaryText,
             21, 14);
}

} // namespace Tessaline
