#include "panels/AddContextPopover.h"

#include "foundation_ui/Fonts.h"
#include "foundation_ui/Hairline.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/ProgressIndicator.h"
#include "foundation_ui/TextButton.h"
#include "panels/OptionButton.h"
#include "panels/ScrolledContent.h"
#include "panels/SessionContext.h"

#include <QtWidgets/QLineEdit>
#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kSpacing = 10;
constexpr int kOptionSpacing = 6;
constexpr int kMostOptions = 320; // their height, behind which they scroll
constexpr int kRingRoom = 4;      // for the ring around what has the focus, where the area would cut it
constexpr int kTextInset = 4;

} // namespace

AddContextPopover::AddContextPopover(SessionContext &context, const Theme &theme, QWidget *parent)
    : QWidget(parent), m_context(context), m_theme(theme), m_field(new QLineEdit(this)), m_state(new QVBoxLayout)
{
    m_field->setPlaceholderText(u"Enter topic or concept (e.g. Hamlet)"_s);
    m_field->setAccessibleName(u"Topic or Concept"_s);
    m_field->setFont(Fonts::interface(Fonts::kInterfaceSize));
    m_field->setTextMargins(kTextInset, 0, kTextInset, 0);
    connect(m_field, &QLineEdit::textEdited, &context, &SessionContext::setConceptInput);
    connect(m_field, &QLineEdit::returnPressed, &context, &SessionContext::submitConcept);

    auto *attach = new OptionButton(theme, u"doc.badge.plus"_s, u"Attach Reference File..."_s);
    connect(attach, &QAbstractButton::clicked, this, &AddContextPopover::filesWanted);
    auto *custom = new OptionButton(theme, u"plus.rectangle.on.rectangle"_s, u"Add Custom Context..."_s);
    connect(custom, &QAbstractButton::clicked, &context, &SessionContext::addCustomContext);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(kSpacing);
    column->addWidget(m_field);
    column->addLayout(m_state);
    column->addWidget(new Hairline(theme, Qt::Horizontal));
    auto *ways = new QVBoxLayout;
    ways->setSpacing(2);
    ways->addWidget(attach);
    ways->addWidget(custom);
    column->addLayout(ways);

    connect(&context, &SessionContext::changed, this, &AddContextPopover::update);
    update();
}

void AddContextPopover::focusField()
{
    m_field->setFocus(Qt::PopupFocusReason);
}

void AddContextPopover::update()
{
    if (m_field->text() != m_context.conceptInput())
        m_field->setText(m_context.conceptInput());
    if (m_isShowingProgress == m_context.isExpandingConcept() && m_shownOptions == m_context.ambiguousOptions())
        return;
    m_isShowingProgress = m_context.isExpandingConcept();
    m_shownOptions = m_context.ambiguousOptions();
    if (m_state->count() > 0 && m_state->itemAt(0)->widget()->isAncestorOf(focusWidget()))
        focusField(); // what has the focus goes
    while (QLayoutItem *old = m_state->takeAt(0)) {
        old->widget()->hide();
        old->widget()->deleteLater(); // this may be in answer to its click
        delete old;
    }
    if (m_context.isExpandingConcept())
        m_state->addWidget(makeProgressRow());
    else if (!m_context.ambiguousOptions().isEmpty())
        m_state->addWidget(makeOptions());
    else
        m_state->addWidget(makeAddButton());
    m_state->itemAt(0)->widget()->show(); // at once: the layout would wait
}

QWidget *AddContextPopover::makeProgressRow()
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    const QString words = u"Analyzing concept..."_s;
    auto *progress = new ProgressIndicator(m_theme);
    progress->setAccessibleName(words);
    layout->addWidget(progress);
    layout->addWidget(new Label(m_theme, ColorRole::SecondaryText, Fonts::interface(Fonts::kCaptionSize), words), 1);
    return row;
}

QWidget *AddContextPopover::makeOptions()
{
    auto *options = new QWidget;
    auto *column = new QVBoxLayout(options);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(kOptionSpacing);
    auto *caption = new Label(m_theme, ColorRole::SecondaryText, Fonts::interface(Fonts::kCaptionSize),
                              u"Multiple interpretations found. Which one did you mean?"_s);
    caption->setWordWrap(true);
    column->addWidget(caption);
    auto *cards = new QWidget;
    auto *rows = new QVBoxLayout(cards);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(kOptionSpacing);
    for (const ConceptCard &card : m_context.ambiguousOptions()) {
        auto *option = new ConceptOption(m_theme, card.title, card.subtitle);
        connect(option, &QAbstractButton::clicked, &m_context, [this, card] { m_context.chooseConcept(card); });
        rows->addWidget(option);
    }
    if (cards->sizeHint().height() <= kMostOptions) {
        column->addWidget(cards);
        return options;
    }
    rows->setContentsMargins(kRingRoom, kRingRoom, kRingRoom, kRingRoom);
    auto *area = new ScrolledContent(cards, ScrolledContent::Direction::Down);
    area->setFixedHeight(kMostOptions);
    column->addWidget(area);
    return options;
}

QWidget *AddContextPopover::makeAddButton()
{
    auto *place = new QWidget;
    auto *row = new QHBoxLayout(place);
    row->setContentsMargins(0, 0, 0, 0);
    auto *add = new TextButton(m_theme, u"Add to Context"_s, TextButton::Kind::Bordered);
    connect(add, &QAbstractButton::clicked, &m_context, &SessionContext::submitConcept);
    row->addWidget(add);
    row->addStretch();
    return place;
}

} // namespace Tessaline
