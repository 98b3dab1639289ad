#pragma once

#include "documents/AppPreferences.h"
#include "documents/OpenFileReference.h"
#include "foundation/ChunkedText.h"

#include <QCoro/QCoroTask>
#include <QtCore/QHash>
#include <QtCore/QObject>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace Tessaline {

class DocumentStore;
class EventCenter;
class FileAccess;
class Workspace;

/// What the middle column shows.
enum class EditorAreaState {
    None,    // no active file
    Loading, // no text yet
    Failed,  // no text, and the reading failed
    Ready,   // there is text, also during a reload and after a failed one
};

struct EditorAreaServices {
    Workspace &workspace;
    AppPreferences &preferences;
    DocumentStore &store;
    EventCenter &events;
    FileAccess &disk; // for the empty file of a new document
    /// Asks for the place of a new document (title "New Document", the proposed name "Untitled.md", `folder` to begin
    /// in, empty for the platform's own). Absent if the person gave up. Runs modally on the main thread.
    std::function<std::optional<FileURL>(const FileURL &folder)> askForNewDocument;
};

/// Owns the text of every document loaded in this run, loads the active file, takes the edits of the editors and hands
/// them to the document store, and knows what the middle column shows. Main thread only.
class EditorArea final : public QObject
{
    Q_OBJECT
public:
    explicit EditorArea(EditorAreaServices services, QObject *parent = nullptr);
    ~EditorArea() override; // stops the load

    // What is shown
    EditorAreaState state() const;
    QString loadErrorMessage() const;                       // of the active file, in state Failed
    QList<ViewMode> availableViewModes() const;             // of the active file
    ViewMode viewMode() const;                              // the effective one of the active file
    void setViewMode(ViewMode mode);                        // stored as it is
    std::optional<DocumentType> activeDocumentType() const; // classified once per activation
    std::optional<ProjectReference> activeProject() const;  // of its entry among the open files, else by its path
    std::optional<QString> saveErrorMessage() const;        // present while the alert about a failed save is up
    void dismissSaveError();

    // The text binding
    bool hasText(const FileURL &url) const { return m_fileContents.contains(url); }
    ChunkedText text(const FileURL &url) const { return m_fileContents.value(url).text; } // empty if there is none
    /// The write side of the binding: `text` is the document after `change`, made by the editor `origin`. It is taken
    /// at once and scheduled to be saved. There is no comparison, so an editor writes only what the user changed.
    void setText(const FileURL &url, const ChunkedText &text, const TextChange &change, const QObject *origin);

    /// `text` was just written to the file from outside of the editors, and takes the place of what they show at once:
    /// what is typed next is typed into it. A file without a text here is left alone, as is one with unsaved text.
    void takeWrittenText(const FileURL &url, const ChunkedText &text);

    // Operations
    /// Called at the first appearance of the column, after which changes of the active file are followed.
    void appear();
    /// Called when the column goes away: stops the load and flushes. Events go unheard from here.
    void disappear();
    void applicationActivated();   // the application came to the front: flush, then reload the active file
    void applicationDeactivated(); // it left it: flush
    /// Reads the file. Supersedes any load that is still running. With KeepLoaded a file whose text is known is left
    /// alone.
    ///
    /// What is read is dropped if the file has unsaved text by then: the disk is older than what the person typed, be
    /// it that the typing went on during the reading or that an earlier write failed.
    enum class LoadPolicy { KeepLoaded, Force };
    void loadFile(const FileURL &url, LoadPolicy policy);
    /// Asks for a place, makes an empty file there, adds the folder as a project if none contains it, and opens the
    /// file. If the file cannot be made, the save error says so and nothing else changes.
    void createNewDocument();

Q_SIGNALS:
    /// Something that the column shows, other than text, has changed: state, modes, project, load error.
    void presentationChanged();
    /// The text of `url` changed by an edit of `origin` (see setText); other editors of the same text apply `change`.
    void textEdited(const Tessaline::FileURL &url, const Tessaline::TextChange &change, const QObject *origin);
    /// The text of `url` was replaced as a whole from outside the editors.
    void textReplaced(const Tessaline::FileURL &url);
    void saveErrorMessageChanged();

private:
    struct FileContent {
        ChunkedText text;
        quint64 editCount = 0; // how often an editor has changed it
    };

    void observeEvents();
    void activeFileChanged(const std::optional<FileURL> &oldURL, const std::optional<FileURL> &newURL);
    void stopLoad();
    void classifyActiveFile();
    bool isNewerThanDisk(const FileURL &url, quint64 editCountBeforeReading) const;
    void replaceText(const FileURL &url, const ChunkedText &text);
    void setSaveErrorMessage(std::optional<QString> message);

    QCoro::Task<> load(FileURL url);
    QCoro::Task<> flushAndReload(FileURL url);
    QCoro::Task<> writeNewDocument(FileURL url);

    EditorAreaServices m_services;
    QHash<FileURL, FileContent> m_fileContents; // entries are never removed, also not when a file is closed
    QHash<FileURL, QString> m_fileLoadErrors;
    std::optional<QString> m_saveErrorMessage;
    std::optional<DocumentType> m_activeDocumentType;
    std::stop_source m_load;     // of the one load whose result is still wanted
    std::stop_source m_lifetime; // stopped by the destructor
    bool m_isShown = false;
};

} // namespace Tessaline
