#include "Services/ContextSuggestions.h"

#include "documents/DocumentStore.h"
#include "foundation/ConsoleLine.h"
#include "Services/Session.h"
#include "Services/WireClient.h"

#include <QCoro/QCoroFuture>

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

bool isBlank(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar character) { return character.isSpace(); });
}

/// The text in one piece, which is all that is kept of it; absent if it cannot be read.
QCoro::Task<std::optional<QString>> textOnDisk(QFuture<Result<ChunkedText>> reading)
{
    const Result<ChunkedText> text = co_await reading;
    co_return text ? std::optional(text.value().toString()) : std::nullopt;
}

} // namespace

ContextSuggestions::ContextSuggestions(const Session &session, DocumentStore &documents, WireClient &wire,
                                       QObject *parent)
    : QObject(parent), m_session(session), m_documents(documents), m_wire(wire)
{}

ContextSuggestions::~ContextSuggestions()
{
    m_life.request_stop(); // first, so that the requests know why they end
    cancel();
}

void ContextSuggestions::setSuggestedContexts(const QStringList &suggestions)
{
    if (suggestions == m_suggestedContexts)
        return;
    m_suggestedContexts = suggestions;
    Q_EMIT suggestedContextsChanged();
}

void ContextSuggestions::begin(const FileURL &document)
{
    cancel();
    m_suggestionsTask = std::stop_source();
    readAndFetch(document, m_suggestionsTask.get_token());
}

void ContextSuggestions::cancel()
{
    const std::stop_source task = std::exchange(m_suggestionsTask, std::stop_source(std::nostopstate));
    task.request_stop();
}

QCoro::Task<> ContextSuggestions::readAndFetch(FileURL document)
{
    return readAndFetch(std::move(document), m_life.get_token());
}

QCoro::Task<> ContextSuggestions::readAndFetch(FileURL document, std::stop_token stop)
{
    const std::stop_token life = m_life.get_token();
    std::optional<QString> text = co_await textOnDisk(m_documents.readDocument(document));
    if (life.stop_requested() || stop.stop_requested() || !text)
        co_return;
    co_await fetch(*std::move(text), std::move(document), stop);
}

QCoro::Task<> ContextSuggestions::fetchSuggestions(QString text, std::optional<FileURL> document)
{
    return fetch(std::move(text), std::move(document), m_life.get_token());
}

QCoro::Task<> ContextSuggestions::fetch(QString text, std::optional<FileURL> document, std::stop_token stop)
{
    if (isBlank(text)) {
        setSuggestedContexts({});
        co_return;
    }
    const std::stop_token life = m_life.get_token();
    const auto suggestions = co_await m_wire.suggestContext(std::move(text), stop);
    if (life.stop_requested())
        co_return;
    if (suggestions) {
        applySuggestions(document, suggestions.value());
        co_return;
    }
    const WireFailure &failure = suggestions.failure();
    if (failure.kind == WireFailure::Kind::Stopped)
        printConsoleLine(u"Failed to fetch suggestions: The request was cancelled."_s);
    else if (failure.kind != WireFailure::Kind::Status)
        printConsoleLine(u"Failed to fetch suggestions: "_s + failure.description);
}

/// An answer may come after the person has moved on; it counts only if it still belongs.
void ContextSuggestions::applySuggestions(const std::optional<FileURL> &document, const QStringList &suggestions)
{
    if (!document || document == m_session.activeFileURL())
        setSuggestedContexts(suggestions);
}

} // namespace Tessaline
