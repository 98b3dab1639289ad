#pragma once

#include "foundation/ChunkedText.h"
#include "foundation/FileAccess.h"

#include <QtCore/QFuture>
#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QThread>
#include <QtCore/QThreadPool>

#include <chrono>

namespace Tessaline {

class EventCenter;

/// The only way by which an edited document reaches the disk. It keeps the newest text of each file that has yet to be
/// written and writes it `autosaveDelay` after the last change, or at once on request.
///
/// All calls are made on the main thread, never block, and take effect in the order in which they were made, one at a
/// time, on a thread of the store's own. A write that fails keeps its text pending and posts DocumentSaveFailed on the
/// main thread; nothing retries by itself, the next change, `saveNow` or `flushAll` does.
///
/// What the writes come to reaches the main thread in their order: whoever waits for one of the futures below finds
/// `hasUnsavedText` up to date and the failures posted.
class DocumentStore final : public QObject
{
    Q_OBJECT
public:
    static constexpr std::chrono::milliseconds kAutosaveDelay{300};

    /// `events` and `disk` must outlive the store; `disk` is used on the store's thread and on the worker pool.
    DocumentStore(EventCenter &events, FileAccess &disk, std::chrono::milliseconds autosaveDelay = kAutosaveDelay,
                  QObject *parent = nullptr);
    /// Ends the store's thread after the operations already asked for, and finishes their futures. It does not flush:
    /// `flushAll` does.
    ~DocumentStore() override;

    /// Records `text` as the newest of the file and (re)starts its delay. An empty text is a text.
    void scheduleSave(const ChunkedText &text, const FileURL &url);

    /// Writes the file's pending text now, if there is one. Finishes when that is done or has failed.
    QFuture<void> saveNow(const FileURL &url);

    /// Writes every pending text now; one failure does not stop the others. Finishes when all have been tried. A change
    /// that is scheduled after this call is not part of it.
    QFuture<void> flushAll();

    /// The same for the moment in which something else ends the process: returns when all have been tried, without the
    /// event loop. What the writes come to is told to nobody.
    void flushAllAndWait();

    /// Reads the file from the disk on a worker of the store's own, so that a slow disk never holds up saves, nor a
    /// scan of a large project the opening of a file. Pending text is not looked at. Stopping the waiter does not stop
    /// the read.
    QFuture<Result<ChunkedText>> readDocument(const FileURL &url);

    /// Whether a text of this file that was scheduled here is not known to be on the disk: it waits, is being written,
    /// or its write failed.
    bool hasUnsavedText(const FileURL &url) const { return m_unsaved.contains(url); }

    /// How often `scheduleSave` has been called; tells whether anything was edited while a flush ran.
    quint64 changeCount() const { return m_changeCount; }

private:
    class Executor; // lives on m_thread and knows the pending texts
    template <class Operation>
    QFuture<void> perform(Operation operation);
    void noteWritten(const FileURL &url, quint64 change);
    void noteFailure(const FileURL &url, const QString &message);

    EventCenter &m_events;
    FileAccess &m_disk;
    QHash<FileURL, quint64> m_unsaved; // the change that the newest unsaved text came with
    quint64 m_changeCount = 0;
    QThreadPool m_readers;
    QThread m_thread;
    Executor *m_executor; // deleted on its own thread when that ends
};

} // namespace Tessaline
