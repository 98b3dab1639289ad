#pragma once

#include "foundation/FileURL.h"
#include "Services/EditSuggestion.h"

#include <QCoro/QCoroTask>
#include <QtCore/QFuture>
#include <QtCore/QObject>

#include <optional>
#include <stop_token>

namespace Tessaline {

class DocumentStore;
class EditorArea;
class EventCenter;
class FileAccess;
class LocalAIService;

/// What the person has decided about a proposed edit.
enum class SuggestionState { Pending, Accepted, Rejected };

struct SuggestionActionsParts {
    LocalAIService &ai; // keeps the decisions
    DocumentStore &documents;
    EditorArea &area;
    EventCenter &events;
    FileAccess &disk;
};

/// What the two buttons of a card do. A decision is final; an edit that could not be applied stays pending and can be
/// tried again. Nothing is told to the person but by the card. Main thread only; all parts outlive this object.
class SuggestionActions final : public QObject
{
    Q_OBJECT
public:
    explicit SuggestionActions(SuggestionActionsParts parts, QObject *parent = nullptr);
    ~SuggestionActions() override; // what runs does not go on to write

    SuggestionState state(const EditSuggestion &suggestion) const;

    /// Saves what is pending of the file, reads it, finds the text by `robustMatchRange` and writes the file anew, then
    /// posts FileDidUpdateExternally. Without a file nothing happens; where the text is not found, or the file cannot
    /// be read or written, a line on the console says so and the file stays as it is. What is typed while this runs is
    /// saved first, and the text looked for again. Each press waits for the ones before it, so that no edit is made in
    /// a file that lacks another.
    QCoro::Task<> applySuggestion(EditSuggestion suggestion, std::optional<FileURL> fileURL);

    void rejectSuggestion(const EditSuggestion &suggestion);

Q_SIGNALS:
    void statesChanged();

private:
    QCoro::Task<bool> write(EditSuggestion suggestion, FileURL url);

    SuggestionActionsParts m_parts;
    QFuture<void> m_last; // finishes with the press that came last
    std::stop_source m_life;
};

} // namespace Tessaline
