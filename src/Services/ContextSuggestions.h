#pragma once

#include "foundation/FileURL.h"

#include <QCoro/QCoroTask>
#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <optional>
#include <stop_token>

namespace Tessaline {

class DocumentStore;
class Session;
class WireClient;

/// Topics that the server proposes as context for the active document. They are asked for once when a document becomes
/// active and once when the server becomes healthy, never while the person types, and are not kept on the disk. Best
/// effort: a failure leaves the topics as they were, and at most a line on the console. Main thread only.
class ContextSuggestions final : public QObject
{
    Q_OBJECT
public:
    /// All three outlive this object. `session` tells which document is active.
    ContextSuggestions(const Session &session, DocumentStore &documents, WireClient &wire, QObject *parent = nullptr);
    ~ContextSuggestions() override; // ends the requests, whose answers are dropped

    const QStringList &suggestedContexts() const { return m_suggestedContexts; } // in the server's order
    void setSuggestedContexts(const QStringList &suggestions);

    /// Reads the document from the disk and asks about its text, in place of what the last call asked. A document that
    /// cannot be read has no suggestions: the old ones stay.
    void begin(const FileURL &document);
    /// Ends what `begin` began.
    void cancel();

    /// The same without `begin`'s place: neither of the two ends the other, and the last answer wins.
    QCoro::Task<> readAndFetch(FileURL document);

    /// Asks about this text of `document`, and takes the answer if the document is still the active one by then;
    /// without a document it is always taken. A text of nothing but white space has no suggestions, which needs no
    /// request.
    QCoro::Task<> fetchSuggestions(QString text, std::optional<FileURL> document);

Q_SIGNALS:
    void suggestedContextsChanged();

private:
    QCoro::Task<> readAndFetch(FileURL document, std::stop_token stop);
    QCoro::Task<> fetch(QString text, std::optional<FileURL> document, std::stop_token stop);
    void applySuggestions(const std::optional<FileURL> &document, const QStringList &suggestions);

    const Session &m_session;
    DocumentStore &m_documents;
    WireClient &m_wire;
    QStringList m_suggestedContexts;
    std::stop_source m_suggestionsTask{std::nostopstate}; // of `begin`
    std::stop_source m_life;                              // stopped by the destructor
};

} // namespace Tessaline
