#include "foundation_ui/SegmentedControl.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/PlainButton.h"
#include "foundation_ui/Symbols.h"
#include "foundation_ui/TabOrder.h"

#include <QtGui/QFontMetricsF>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr double kFrameOpacity = 0.08; // of the secondary text's colour
constexpr double kSymbolSize = 13;
constexpr int kLabelGap = 6; // between symbol and label
constexpr int kSidePadding = 10;
constexpr int kNarrowPadding = 4; // without labels
constexpr int kNarrowWidth = 28;  // without labels, at least

int segmentWidth(const SegmentedControl::Item &item, bool withLabel, const QFont &font)
{
    const int symbol = static_cast<int>(kSymbolSize);
    if (!withLabel)
        return std::max(kNarrowWidth, symbol + 2 * kNarrowPadding);
    const int label = static_cast<int>(std::ceil(QFontMetricsF(font).horizontalAdvance(item.label)));
    return symbol + kLabelGap + label + 2 * kSidePadding;
}

} // namespace

/// One segment. The control paints the ground of the selected one, since its shadow reaches beyond it.
class Segment final : public PlainButton
{
public:
    Segment(const Theme &theme, SegmentedControl *control, int index)
        : PlainButton(theme, control), m_control(control), m_index(index)
    {
        setCheckable(true);
        setCornerRadius(SegmentedControl::kSegmentRadius);
        setFont(Fonts::interface(Fonts::kInterfaceSize));
        setToolTip(item().help);
        connect(this, &QAbstractButton::clicked, control,
                [control, index] { control->choose(index, Qt::NoFocusReason); });
        takeState();
    }

    void takeState()
    {
        const bool isSelected = m_control->selectedIndex() == m_index;
        setChecked(isSelected);
        setFocusPolicy(isSelected ? Qt::TabFocus : Qt::NoFocus); // Tab enters at the selected one, the arrows go on
        setAccessibleName(m_control->showsLabels() ? item().label : item().help);
        setAccessibleDescription(isSelected ? u"Selected"_s : QString());
        update();
    }

    QAccessible::Role accessibleRole() const override { return QAccessible::RadioButton; }
    QString accessibleValue() const override { return isChecked() ? u"Selected"_s : QString(); }

protected:
    void nextCheckState() override {} // the control decides

    void keyPressEvent(QKeyEvent *event) override
    {
        const int last = static_cast<int>(m_control->items().size()) - 1;
        switch (event->key()) {
        case Qt::Key_Left:
        case Qt::Key_Up:
            m_control->choose(std::max(m_index - 1, 0), Qt::TabFocusReason);
            return;
        case Qt::Key_Right:
        case Qt::Key_Down:
            m_control->choose(std::min(m_index + 1, last), Qt::TabFocusReason);
            return;
        case Qt::Key_Home:
            m_control->choose(0, Qt::TabFocusReason);
            return;
        case Qt::Key_End:
            m_control->choose(last, Qt::TabFocusReason);
            return;
        default:
            PlainButton::keyPressEvent(event);
        }
    }

    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        if (const QColor tone = stateTone(); !isChecked() && tone.alpha() > 0) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(tone);
            painter.drawRoundedRect(QRectF(rect()), cornerRadius(), cornerRadius());
        }
        const QColor color = theme().color(isChecked() ? ColorRole::SelectedSegmentText : ColorRole::SecondaryText);
        QRectF symbolBox(rect());
        if (m_control->showsLabels()) {
            symbolBox.setRect(kSidePadding, 0, kSymbolSize, height());
            const int labelStart = kSidePadding + static_cast<int>(kSymbolSize) + kLabelGap;
            painter.setFont(font());
            painter.setPen(color);
            painter.drawText(QRect(labelStart, 0, width() - labelStart, height()), Qt::AlignVCenter | Qt::AlignLeft,
                             item().label);
        }
        Symbols::draw(painter, item().symbol, symbolBox, kSymbolSize, color);
    }

private:
    const SegmentedControl::Item &item() const { return m_control->m_items.at(m_index); }

    SegmentedControl *m_control;
    int m_index;
};

SegmentedControl::SegmentedControl(const Theme &theme, QWidget *parent) : QWidget(parent), m_theme(theme)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setFont(Fonts::interface(Fonts::kInterfaceSize));
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

void SegmentedControl::setItems(const QList<Item> &items)
{
    if (m_items == items)
        return;
    qDeleteAll(m_segments);
    m_segments.clear();
    m_items = items;
    m_selected = items.isEmpty() ? -1 : 0;
    QWidget *before = this; // Tab comes to the segments where it comes to the control
    for (int index = 0; index < static_cast<int>(items.size()); ++index) {
        auto *segment = new Segment(m_theme, this, index);
        m_segments.append(segment);
        placeInTabOrder(before, segment);
        segment->show();
        before = segment;
    }
    updateGeometry();
    layOut();
}

void SegmentedControl::setShowsLabels(bool shows)
{
    if (m_showsLabels == shows)
        return;
    m_showsLabels = shows;
    for (Segment *segment : std::as_const(m_segments))
        segment->takeState();
    updateGeometry();
    layOut();
}

void SegmentedControl::setSelectedIndex(int index)
{
    if (m_selected == index || index < 0 || index >= m_items.size())
        return;
    m_selected = index;
    for (Segment *segment : std::as_const(m_segments))
        segment->takeState();
    update();
}

void SegmentedControl::choose(int index, Qt::FocusReason focus)
{
    const bool changes = index != m_selected;
    setSelectedIndex(index);
    if (focus != Qt::NoFocusReason)
        m_segments.at(index)->setFocus(focus);
    if (changes)
        Q_EMIT selected(index);
}

int SegmentedControl::widthFor(bool withLabels) const
{
    int width = 2 * kPadding + kSpacing * std::max<int>(static_cast<int>(m_items.size()) - 1, 0);
    for (const Item &item : m_items)
        width += segmentWidth(item, withLabels, font());
    return width;
}

QSize SegmentedControl::sizeHint() const
{
    return QSize(widthFor(m_showsLabels), kHeight);
}

void SegmentedControl::layOut()
{
    int left = kPadding;
    for (qsizetype index = 0; index < m_segments.size(); ++index) {
        const int width = segmentWidth(m_items.at(index), m_showsLabels, font());
        m_segments.at(index)->setGeometry(left, kPadding, width, height() - 2 * kPadding);
        left += width + kSpacing;
    }
    update();
}

void SegmentedControl::resizeEvent(QResizeEvent *)
{
    layOut();
}

void SegmentedControl::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(withOpacity(m_theme.color(ColorRole::SecondaryText), kFrameOpacity));
    painter.drawRoundedRect(QRectF(rect()), kFrameRadius, kFrameRadius);
    if (m_selected < 0)
        return;

    // Three rounded rectangles, each a little wider and lower, make the soft edge of the shadow.
    const QRectF ground(m_segments.at(m_selected)->geometry());
    constexpr int kLayers = 3;
    const QColor shadow = m_theme.color(ColorRole::SegmentShadow);
    painter.setBrush(withOpacity(shadow, static_cast<double>(shadow.alphaF()) / kLayers));
    for (int layer = 1; layer <= kLayers; ++layer) {
        const double reach = layer * 0.75;
        painter.drawRoundedRect(ground.translated(0, 0.5).adjusted(-reach, -reach + 0.5, reach, reach),
                                kSegmentRadius + reach, kSegmentRadius + reach);
    }
    painter.setBrush(m_theme.color(ColorRole::SelectedSegment));
    painter.drawRoundedRect(ground, kSegmentRadius, kSegmentRadius);
}

} // namespace Tessaline
