#include "panels/SuggestionCard.h"

#include "foundation_ui/AccessibleRole.h"
#include "foundation_ui/Contrast.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"
#include "panels/QuotedText.h"
#include "panels/SmallButton.h"

#include <QtGui/QPainter>
#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr double kRadius = 8;
constexpr int kPadding = 8;
constexpr int kSpacing = 6;
constexpr int kRowSpacing = 4;
constexpr int kBoxPadding = 6;
constexpr int kRowSidePadding = 6;
constexpr int kRowVerticalPadding = 4;
constexpr double kRowTintOpacity = 0.1; // of the row's own colour
constexpr int kButtonSpacing = 8;
constexpr double kTextSize = 11;
constexpr double kGroundOpacity = 0.05; // of the secondary colour
constexpr double kBorderOpacity = 0.1;

/// The darker ground of the two texts.
class ChangeBox final : public QWidget
{
public:
    explicit ChangeBox(const Theme &theme) : m_theme(theme) {}

protected:
    void paintEvent(QPaintEvent *) override
    {
        constexpr double kOpacity = 0.03;
        constexpr double kCorner = 6;
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(withOpacity(m_theme.color(ColorRole::SegmentShadow), kOpacity));
        painter.drawRoundedRect(QRectF(rect()), kCorner, kCorner);
    }

private:
    const Theme &m_theme;
};

} // namespace

SuggestionCard::SuggestionCard(const EditSuggestion &suggestion, const Theme &theme, QWidget *parent)
    : QWidget(parent), m_suggestion(suggestion), m_theme(theme), m_buttons(new QWidget),
      m_accepted(new Label(theme, ColorRole::AddedText, Fonts::interface(kTextSize, QFont::Bold), u"✓ Accepted"_s)),
      m_rejected(new Label(theme, ColorRole::SecondaryText, Fonts::interface(kTextSize, QFont::Bold), u"✕ Rejected"_s))
{
    setAccessibleRole(*this, QAccessible::Grouping);
    setAccessibleName(u"Proposed Change"_s);
    auto *accept = new SmallButton(theme, u"Accept"_s, SmallButton::Kind::Accept, kTextSize);
    connect(accept, &QAbstractButton::clicked, this, &SuggestionCard::accepted);
    auto *reject = new SmallButton(theme, u"Reject"_s, SmallButton::Kind::Reject, kTextSize);
    connect(reject, &QAbstractButton::clicked, this, &SuggestionCard::rejected);
    auto *buttons = new QHBoxLayout(m_buttons);
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->setSpacing(kButtonSpacing);
    buttons->addWidget(accept);
    buttons->addWidget(reject);
    buttons->addStretch();

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(kPadding, kPadding, kPadding, kPadding);
    column->setSpacing(kSpacing);
    column->addWidget(
        new Label(theme, ColorRole::SecondaryText, Fonts::interface(kTextSize, QFont::Bold), u"Proposed Change"_s));
    if (!suggestion.originalText.isEmpty() || !suggestion.replacementText.isEmpty())
        column->addWidget(makeChangeBox());
    column->addWidget(m_buttons);
    column->addWidget(m_accepted);
    column->addWidget(m_rejected);
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
    setState(SuggestionState::Pending);
}

QWidget *SuggestionCard::makeChangeBox()
{
    auto *box = new ChangeBox(m_theme);
    auto *rows = new QVBoxLayout(box);
    rows->setContentsMargins(kBoxPadding, kBoxPadding, kBoxPadding, kBoxPadding);
    rows->setSpacing(kRowSpacing);
    const auto addRow = [&](const QString &sign, const QString &text, ColorRole role, const QString &name) {
        if (text.isEmpty())
            return;
        auto *row = new QuotedText(m_theme, role, QuotedText::Tint::OwnColor, name, QString());
        row->setTextFont(Fonts::code(Fonts::kCaptionSize));
        row->setPadding(kRowSidePadding, kRowVerticalPadding);
        row->setTintOpacity(kRowTintOpacity);
        row->setHeight(QuotedText::Height::OfText); // all that an acceptance would do is seen
        row->setQuotedText(sign + text);
        rows->addWidget(row);
    };
    addRow(u"- "_s, m_suggestion.originalText, ColorRole::RemovedText, u"Removed Text"_s);
    addRow(u"+ "_s, m_suggestion.replacementText, ColorRole::AddedText, u"Added Text"_s);
    return box;
}

void SuggestionCard::setState(SuggestionState state)
{
    m_state = state;
    if (state != SuggestionState::Pending)
        leaveButtons();
    m_accepted->setVisible(state == SuggestionState::Accepted);
    m_rejected->setVisible(state == SuggestionState::Rejected);
    m_buttons->setVisible(state == SuggestionState::Pending);
    const QString words[] = {u"pending"_s, u"accepted"_s, u"rejected"_s};
    setAccessibleDescription(words[static_cast<int>(state)]);
    updateGeometry();
}

/// A focus on the buttons goes on to what stands behind them, while they still have a place in the order: without one
/// it would go anywhere.
void SuggestionCard::leaveButtons()
{
    const auto haveFocus = [this] {
        const QWidget *focus = window()->focusWidget();
        return focus && m_buttons->isVisible() && m_buttons->isAncestorOf(focus);
    };
    constexpr int kButtons = 2;
    for (int i = 0; i < kButtons && haveFocus(); ++i)
        focusNextChild();
}

int SuggestionCard::heightForWidth(int width) const
{
    return layout()->hasHeightForWidth() ? layout()->totalHeightForWidth(width) : layout()->totalSizeHint().height();
}

void SuggestionCard::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor color = m_theme.color(ColorRole::SecondaryText);
    painter.setPen(withOpacity(color, kBorderOpacity));
    painter.setBrush(withOpacity(color, kGroundOpacity));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
}

} // namespace Tessaline
