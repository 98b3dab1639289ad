#include "panels/SuggestionActions.h"

#include "documents/DocumentStore.h"
#include "foundation/AppEvents.h"
#include "foundation/ConsoleLine.h"
#include "foundation/EventCenter.h"
#include "panels/RobustMatch.h"
#include "Services/LocalAIService.h"

#include <QCoro/QCoroFuture>
#include <QtConcurrent/QtConcurrentRun>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const QString kAccepted = u"accepted"_s;
const QString kRejected = u"rejected"_s;

// After so many rounds somebody types faster than the document can be searched; what is typed then is pending in the
// store and written after the edit.
constexpr int kMostRounds = 20;

/// The document with the edit made in it; absent if its text was not found.
std::optional<ChunkedText> edited(const EditSuggestion &suggestion, ChunkedText document)
{
    const std::optional<TextRange> range = robustMatchRange(suggestion.originalText, document.toString());
    if (!range)
        return std::nullopt;
    document.replace(range->location, range->length, suggestion.replacementText);
    return document;
}

Result<void> write(FileAccess *disk, const FileURL &url, const ChunkedText &text)
{
    return disk->writeText(url, text);
}

void printFileFailure(const Failure &failure)
{
    printConsoleLine(u"Failed to read/write file for suggestion: "_s + failure.text);
}

} // namespace

SuggestionActions::SuggestionActions(SuggestionActionsParts parts, QObject *parent) : QObject(parent), m_parts(parts)
{
    connect(&m_parts.ai, &LocalAIService::suggestionStatesChanged, this, &SuggestionActions::statesChanged);
}

SuggestionActions::~SuggestionActions()
{
    m_life.request_stop();
}

SuggestionState SuggestionActions::state(const EditSuggestion &suggestion) const
{
    const auto found = m_parts.ai.suggestionStates().constFind(suggestion.id);
    if (found == m_parts.ai.suggestionStates().cend())
        return SuggestionState::Pending;
    return *found == kAccepted ? SuggestionState::Accepted : SuggestionState::Rejected;
}

QCoro::Task<> SuggestionActions::applySuggestion(EditSuggestion suggestion, std::optional<FileURL> fileURL)
{
    if (!fileURL)
        co_return;
    const std::stop_token stop = m_life.get_token();
    const FileURL url = *fileURL;

    std::optional<ChunkedText> document;
    quint64 changeCount = 0;
    for (int round = 0; round < kMostRounds && (!document || changeCount != m_parts.documents.changeCount()); ++round) {
        changeCount = m_parts.documents.changeCount();
        co_await m_parts.documents.saveNow(url);
        if (stop.stop_requested())
            co_return;
        const Result<ChunkedText> text = co_await m_parts.documents.readDocument(url);
        if (stop.stop_requested())
            co_return;
        if (!text) {
            printFileFailure(text.failure());
            co_return;
        }
        document = co_await QtConcurrent::run(edited, suggestion, text.value());
        if (stop.stop_requested())
            co_return;
        if (!document) {
            printConsoleLine(u"Could not find robust match for original text block in document."_s);
            co_return;
        }
    }

    const Result<void> written = co_await QtConcurrent::run(write, &m_parts.disk, url, *document);
    if (stop.stop_requested())
        co_return;
    if (!written) {
        printFileFailure(written.failure());
        co_return;
    }
    m_parts.ai.setSuggestionState(suggestion.id, kAccepted);
    m_parts.events.post(AppEvents::kFileDidUpdateExternally, {{AppEvents::kUrl, QVariant::fromValue(url)}});
}

void SuggestionActions::rejectSuggestion(const EditSuggestion &suggestion)
{
    m_parts.ai.setSuggestionState(suggestion.id, kRejected);
}

} // namespace Tessaline
