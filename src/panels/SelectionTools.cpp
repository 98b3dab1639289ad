#include "panels/SelectionTools.h"

#include "documents/DocumentStore.h"
#include "documents/EditorArea.h"
#include "documents/Workspace.h"
#include "foundation/AppEvents.h"
#include "foundation/BackgroundPool.h"
#include "foundation/EventCenter.h"
#include "panels/RobustMatch.h"
#include "Services/LocalAIService.h"

#include <QCoro/QCoroFuture>
#include <QtConcurrent/QtConcurrentRun>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const QString kRephrasePrompt =
    u"Rephrase this exact text selection from the active document. Return ONLY the new rephrased version of the text, "
    "with absolutely no preamble, no explanations, no chat commentary, and no SEARCH/REPLACE headers. Just output the "
    "clean rephrased text directly:\n\n"_s;
const QString kSummarizePrompt =
    u"Provide a very concise summary and key insights of the following selected text block "
    "from the document, in 2-3 sentences max:\n\n"_s;
const QString kExplainPrompt =
    u"Explain the concepts and clarify the context within this selected text block from the document:\n\n"_s;

std::optional<TextRange> rangeIn(const QString &sought, const ChunkedText &document)
{
    return robustMatchRange(sought, document.toString());
}

} // namespace

SelectionTools::SelectionTools(SelectionToolsParts parts, QObject *parent) : QObject(parent), m_parts(std::move(parts))
{
    m_parts.events.observe(AppEvents::kEditorTextSelectionChanged, this,
                           [this](const QVariantMap &info) { takeSelection(info); });
}

SelectionTools::~SelectionTools()
{
    m_life.request_stop();
}

void SelectionTools::takeSelection(const QVariantMap &info)
{
    const auto textOf = [&info](const QString &key) {
        const QVariant value = info.value(key);
        return value.typeId() == QMetaType::QString ? std::optional(value.toString()) : std::nullopt;
    };
    const std::optional<QString> text = textOf(AppEvents::kText);
    const bool hadSelection = !m_selectedText.isEmpty();
    m_selectedText = text.value_or(QString());
    m_selectedSourceText = text ? textOf(AppEvents::kSourceText).value_or(*text) : QString();
    if (hadSelection != !m_selectedText.isEmpty())
        Q_EMIT changed();
}

SelectionTools::ButtonState SelectionTools::button(Tool tool) const
{
    ButtonState state;
    QString help;
    switch (tool) {
    case Tool::Rephrase:
        state.label = u"Rephrase"_s;
        help = u"Rephrase selected text"_s;
        state.isLoading = m_isRephrasing;
        break;
    case Tool::Summarize:
        state.label = u"Summarize"_s;
        help = u"Summarize selected text"_s;
        state.isLoading = m_isSummarizing;
        break;
    case Tool::Explain:
        state.label = u"Explain"_s;
        help = u"Explain concepts in selected text"_s;
        break;
    }
    const bool isSelected = !m_selectedText.isEmpty();
    state.isEnabled = isSelected && !state.isLoading;
    if (state.isLoading)
        state.help = u"Generating response..."_s;
    else
        state.help = isSelected ? help : u"Select text in the editor to use this tool"_s;
    return state;
}

void SelectionTools::use(Tool tool)
{
    const std::optional<FileURL> url = m_parts.workspace.activeFileURL();
    if (m_selectedText.isEmpty() || !url)
        return;
    // Dropping the highlight empties the selection here too.
    const QString selected = m_selectedText;
    const QString source = m_selectedSourceText.isEmpty() ? m_selectedText : m_selectedSourceText;
    const QString content = m_parts.area.text(*url).toString();
    if (tool == Tool::Rephrase) {
        m_rephraseSourceText = source;
        m_isRephrasing = true;
    } else if (tool == Tool::Summarize) {
        m_isSummarizing = true;
    }
    if (tool != Tool::Explain)
        m_activePopover = ActivePopover::None();
    Q_EMIT changed();
    m_parts.events.post(AppEvents::kClearEditorTextSelection);
    switch (tool) {
    case Tool::Rephrase:
        rephrase(selected, content);
        break;
    case Tool::Summarize:
        summarize(selected, content);
        break;
    case Tool::Explain:
        explain(selected, content);
        break;
    }
}

QCoro::Task<> SelectionTools::rephrase(QString selected, QString content)
{
    const std::stop_token stop = m_life.get_token();
    const QString answer = co_await answerBeside(kRephrasePrompt + selected, content, u"Error rephrasing: "_s);
    if (stop.stop_requested())
        co_return;
    // In a turn of its own: an answer may be there before the tool's own turn has ended.
    const auto show = [this, selected, answer] {
        m_isRephrasing = false;
        setPopover(ActivePopover::Rephrase{selected, answer});
    };
    QMetaObject::invokeMethod(this, show, Qt::QueuedConnection);
}

QCoro::Task<> SelectionTools::summarize(QString selected, QString content)
{
    const std::stop_token stop = m_life.get_token();
    const QString answer = co_await answerBeside(kSummarizePrompt + selected, content, u"Error summarizing: "_s);
    if (stop.stop_requested())
        co_return;
    const auto show = [this, answer] {
        m_isSummarizing = false;
        setPopover(ActivePopover::Summary{answer});
    };
    QMetaObject::invokeMethod(this, show, Qt::QueuedConnection);
}

QCoro::Task<> SelectionTools::explain(QString selected, QString content)
{
    co_await m_parts.ai.sendMessage(kExplainPrompt + selected, content, m_parts.ai.attachedContexts(), {});
}

QCoro::Task<QString> SelectionTools::answerBeside(QString prompt, QString content, QString failed)
{
    const auto accumulator = std::make_shared<TokenAccumulator>();
    const OneShotGeneration::Outcome outcome = co_await m_parts.ai.generateOneShot(prompt, content, accumulator);
    co_return outcome ? accumulator->text() : failed + outcome.failure().description;
}

void SelectionTools::closePopover()
{
    if (!std::holds_alternative<ActivePopover::None>(m_activePopover))
        setPopover(ActivePopover::None());
}

void SelectionTools::copyResult()
{
    if (const auto *card = std::get_if<ActivePopover::Rephrase>(&m_activePopover))
        m_parts.copyToClipboard(card->replacement);
    else if (const auto *summary = std::get_if<ActivePopover::Summary>(&m_activePopover))
        m_parts.copyToClipboard(summary->content);
}

void SelectionTools::acceptRephrase()
{
    const auto *card = std::get_if<ActivePopover::Rephrase>(&m_activePopover);
    if (!card)
        return;
    const QString sought = m_rephraseSourceText.isEmpty() ? card->original : m_rephraseSourceText;
    const QString replacement = card->replacement;
    const std::optional<FileURL> url = m_parts.workspace.activeFileURL();
    if (url && m_parts.area.hasText(*url))
        replace(*url, sought, replacement);
    closePopover();
}

QCoro::Task<> SelectionTools::replace(FileURL url, QString sought, QString replacement)
{
    const std::stop_token stop = m_life.get_token();
    ChunkedText document;
    std::optional<TextRange> range;
    do { // again if somebody typed while the document was searched
        document = m_parts.area.text(url);
        range = co_await QtConcurrent::run(&backgroundPool(), rangeIn, sought, document);
        if (stop.stop_requested() || !range)
            co_return;
    } while (m_parts.area.text(url) != document);

    const TextChange change = document.replace(range->location, range->length, replacement);
    m_parts.area.setText(url, document, change, this);
    co_await m_parts.documents.saveNow(url);
    if (!stop.stop_requested())
        m_parts.events.post(AppEvents::kFileDidUpdateExternally, {{AppEvents::kUrl, QVariant::fromValue(url)}});
}

void SelectionTools::setPopover(ActivePopover::Value popover)
{
    m_activePopover = std::move(popover);
    Q_EMIT changed();
}

} // namespace Tessaline
