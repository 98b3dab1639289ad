#include "panels/SuggestionActions.h"

#include "documents/DocumentStore.h"
#include "documents/EditorArea.h"
#include "foundation/AppEvents.h"
#include "foundation/BackgroundPool.h"
#include "foundation/ConsoleLine.h"
#include "foundation/EventCenter.h"
#include "panels/RobustMatch.h"
#include "Services/LocalAIService.h"

#include <QCoro/QCoroFuture>
#include <QtConcurrent/QtConcurrentRun>
#include <QtCore/QPromise>

#include <utility>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const QString kAccepted = u"accepted"_s;
const QString kRejected = u"rejected"_s;

// After so many rounds somebody types faster than the document can be searched and written: the typing is kept, and the
// edit can be accepted again.
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

Result<void> writeTo(FileAccess *disk, const FileURL &url, const ChunkedText &text)
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
    const QFuture<void> before = std::exchange(m_last, {});
    QPromise<void> end; // comes with the end of this, whichever way
    end.start();
    m_last = end.future();
    co_await before;
    if (stop.stop_requested())
        co_return;

    const bool isWritten = co_await write(suggestion, url);
    if (stop.stop_requested() || !isWritten)
        co_return;
    m_parts.ai.setSuggestionState(suggestion.id, kAccepted);
    m_parts.events.post(AppEvents::kFileDidUpdateExternally, {{AppEvents::kUrl, QVariant::fromValue(url)}});
}

/// Whether the edit is in the file, and in the text of the editors if it is open.
QCoro::Task<bool> SuggestionActions::write(EditSuggestion suggestion, FileURL url)
{
    const std::stop_token stop = m_life.get_token();
    for (int round = 1; round <= kMostRounds; ++round) {
        const ChunkedText shown = m_parts.area.text(url); // by the editors
        co_await m_parts.documents.saveNow(url);
        if (stop.stop_requested())
            co_return false;
        const Result<ChunkedText> text = co_await m_parts.documents.readDocument(url);
        if (stop.stop_requested())
            co_return false;
        if (!text) {
            printFileFailure(text.failure());
            co_return false;
        }
        const std::optional<ChunkedText> document =
            co_await QtConcurrent::run(&backgroundPool(), edited, suggestion, text.value());
        if (stop.stop_requested())
            co_return false;
        if (!document) {
            printConsoleLine(u"Could not find robust match for original text block in document."_s);
            co_return false;
        }
        if (m_parts.area.text(url) != shown)
            continue; // somebody typed: that goes into the file first

        const Result<void> written =
            co_await QtConcurrent::run(&backgroundPool(), writeTo, &m_parts.disk, url, *document);
        if (stop.stop_requested())
            co_return false;
        if (!written) {
            printFileFailure(written.failure());
            co_return false;
        }
        if (m_parts.area.text(url) == shown) {
            m_parts.area.takeWrittenText(url, *document);
            co_return true;
        }
        // What was typed during the write is about to be saved over the edit, so both are put together.
    }
    co_return false;
}

void SuggestionActions::rejectSuggestion(const EditSuggestion &suggestion)
{
    m_parts.ai.setSuggestionState(suggestion.id, kRejected);
}

} // namespace Tessaline
