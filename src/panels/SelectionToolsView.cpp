#include "panels/SelectionToolsView.h"

#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"
#include "panels/AIToolbarButton.h"
#include "panels/Popover.h"
#include "panels/QuotedText.h"

#include <QtWidgets/QVBoxLayout>

#include <utility>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using Tool = SelectionTools::Tool;

constexpr double kHeadingSize = 11;
constexpr double kCaptionSize = 9;
constexpr double kButtonSize = 10;
constexpr int kOuterSpacing = 10;
constexpr int kSpacing = 8;
constexpr int kCaptionSpacing = 4;
constexpr double kLineSpacing = 2;

QVBoxLayout *makeColumn(QWidget *widget)
{
    auto *column = new QVBoxLayout(widget);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(kSpacing);
    return column;
}

QHBoxLayout *makeButtonRow(const QList<QWidget *> &buttons)
{
    auto *row = new QHBoxLayout;
    row->setSpacing(kSpacing);
    for (QWidget *button : buttons)
        row->addWidget(button);
    row->addStretch();
    return row;
}

} // namespace

SelectionToolsView::SelectionToolsView(SelectionTools &tools, const Theme &theme, QWidget *buttonParent)
    : m_tools(tools), m_theme(theme)
{
    const std::array<std::pair<Tool, QString>, 3> icons{{{Tool::Rephrase, u"wand.and.stars"_s},
                                                         {Tool::Summarize, u"text.alignleft"_s},
                                                         {Tool::Explain, u"questionmark.circle"_s}}};
    for (size_t i = 0; i < icons.size(); ++i) {
        const auto &[tool, icon] = icons[i];
        auto *button = new AIToolbarButton(theme, icon, tools.button(tool).label, buttonParent);
        connect(button, &QAbstractButton::clicked, &tools, [&tools, tool = tool] { tools.use(tool); });
        m_buttons[i] = {tool, button};
    }
    connect(&tools, &SelectionTools::changed, this, &SelectionToolsView::update);
    update();
}

SelectionToolsView::~SelectionToolsView()
{
    delete m_popover;
}

std::array<QWidget *, 3> SelectionToolsView::buttons() const
{
    return {m_buttons[0].button, m_buttons[1].button, m_buttons[2].button};
}

void SelectionToolsView::update()
{
    for (const Button &each : m_buttons) {
        const SelectionTools::ButtonState state = m_tools.button(each.tool);
        each.button->setEnabled(state.isEnabled);
        each.button->setHelp(state.help);
        each.button->setLoading(state.isLoading);
    }
    if (m_shown == m_tools.activePopover())
        return;
    m_shown = m_tools.activePopover();
    if (m_popover) {
        m_popover->disconnect(&m_tools); // what it shows has been decided already
        m_popover->close();
        m_popover->deleteLater(); // this may be in answer to one of its buttons
        m_popover = nullptr;
    }
    if (const auto *rephrase = std::get_if<ActivePopover::Rephrase>(&m_shown))
        showCard(makeRephraseCard(*rephrase), u"Proposed Rephrasing"_s, *m_buttons[0].button);
    else if (const auto *summary = std::get_if<ActivePopover::Summary>(&m_shown))
        showCard(makeSummaryCard(*summary), u"Document Selection Summary"_s, *m_buttons[1].button);
}

void SelectionToolsView::showCard(QWidget *content, const QString &name, const QWidget &anchor)
{
    m_popover = new Popover(m_theme, name, anchor.window());
    m_popover->setContent(content);
    connect(m_popover, &Popover::closed, &m_tools, &SelectionTools::closePopover);
    m_popover->showAt(anchor);
}

QWidget *SelectionToolsView::makeRephraseCard(const ActivePopover::Rephrase &rephrase)
{
    auto *card = new QWidget;
    QVBoxLayout *column = makeColumn(card);
    column->setSpacing(kOuterSpacing);
    column->addWidget(new Label(m_theme, ColorRole::SecondaryText, Fonts::interface(kHeadingSize, QFont::Bold),
                                u"Proposed Rephrasing"_s));
    const auto addText = [&](const QString &caption, ColorRole role, const QString &text) {
        auto *group = new QVBoxLayout;
        group->setSpacing(kCaptionSpacing);
        group->addWidget(
            new Label(m_theme, ColorRole::SecondaryText, Fonts::interface(kCaptionSize, QFont::DemiBold), caption));
        group->addWidget(new QuotedText(m_theme, role, QuotedText::Tint::OwnColor, caption, text));
        column->addLayout(group);
    };
    addText(u"Original:"_s, ColorRole::RemovedText, rephrase.original);
    addText(u"Rephrased:"_s, ColorRole::AddedText, rephrase.replacement);

    auto *accept = new SmallButton(m_theme, u"Accept"_s, SmallButton::Kind::Accept, kButtonSize);
    accept->setEnabled(!rephrase.replacement.isEmpty()); // no answer is no reason to lose what is selected
    connect(accept, &QAbstractButton::clicked, &m_tools, &SelectionTools::acceptRephrase);
    auto *reject = new SmallButton(m_theme, u"Reject"_s, SmallButton::Kind::Plain, kButtonSize);
    connect(reject, &QAbstractButton::clicked, &m_tools, &SelectionTools::closePopover);
    column->addLayout(makeButtonRow({accept, reject, makeCopyButton(SmallButton::Kind::Plain, QString())}));
    return card;
}

QWidget *SelectionToolsView::makeSummaryCard(const ActivePopover::Summary &summary)
{
    auto *card = new QWidget;
    QVBoxLayout *column = makeColumn(card);
    column->addWidget(new Label(m_theme, ColorRole::SecondaryText, Fonts::interface(kHeadingSize, QFont::Bold),
                                u"Document Selection Summary"_s));
    auto *content = new QuotedText(m_theme, ColorRole::Text, QuotedText::Tint::None, u"Summary"_s, summary.content);
    content->setLineSpacing(kLineSpacing);
    content->setPadding(0, 0);
    column->addWidget(content);
    auto *dismiss = new SmallButton(m_theme, u"Dismiss"_s, SmallButton::Kind::Plain, kButtonSize);
    connect(dismiss, &QAbstractButton::clicked, &m_tools, &SelectionTools::closePopover);
    column->addLayout(makeButtonRow({makeCopyButton(SmallButton::Kind::Strong, u"doc.on.doc"_s), dismiss}));
    return card;
}

QWidget *SelectionToolsView::makeCopyButton(SmallButton::Kind kind, const QString &symbol)
{
    auto *copy = new SmallButton(m_theme, u"Copy"_s, kind, kButtonSize, symbol);
    connect(copy, &QAbstractButton::clicked, &m_tools, &SelectionTools::copyResult);
    return copy;
}

} // namespace Tessaline
