#include "documents/DocumentStore.h"

#include "foundation/AppEvents.h"
#include "foundation/EventCenter.h"

#include <QtConcurrent/QtConcurrentRun>
#include <QtCore/QPromise>
#include <QtCore/QTimer>

namespace Tessaline {

namespace {

constexpr int kMostReaders = 8; // reads that hang on a dead disk must be many before they keep out a good one

} // namespace

/// What the store does, on its own thread: one operation after the other, none of which waits. The delay of the
/// autosave is a timer between operations. What the writes come to goes to the main thread as messages.
class DocumentStore::Executor final : public QObject
{
public:
    Executor(DocumentStore &store, FileAccess &disk, std::chrono::milliseconds autosaveDelay)
        : m_store(store), m_disk(disk), m_autosaveDelay(autosaveDelay)
    {}

    void scheduleSave(const ChunkedText &text, const FileURL &url, quint64 change)
    {
        m_pendingContents.insert(url, {text, change});
        QTimer *&timer = m_saveTimers[url];
        if (!timer) {
            timer = new QTimer(this);
            timer->setSingleShot(true);
            timer->setTimerType(Qt::PreciseTimer);
            connect(timer, &QTimer::timeout, this, [this, url] { writePending(url); });
        }
        timer->start(m_autosaveDelay);
    }

    void saveNow(const FileURL &url)
    {
        dropTimer(url);
        writePending(url);
    }

    void flushAll()
    {
        const QList<FileURL> urls = m_pendingContents.keys();
        for (const FileURL &url : urls)
            saveNow(url);
    }

private:
    struct Pending {
        ChunkedText text;
        quint64 change = 0; // the number of the change that brought it
    };

    /// Writes the newest text of the file, if one is owed. A text that cannot be written stays owed.
    void writePending(const FileURL &url)
    {
        const auto pending = m_pendingContents.constFind(url);
        if (pending == m_pendingContents.constEnd())
            return;
        const Result<void> result = m_disk.writeText(url, pending->text);
        if (!result) {
            report([store = &m_store, url, message = result.failure().text] { store->noteFailure(url, message); });
            return;
        }
        report([store = &m_store, url, change = pending->change] { store->noteWritten(url, change); });
        m_pendingContents.erase(pending);
        dropTimer(url);
    }

    void dropTimer(const FileURL &url)
    {
        QTimer *const timer = m_saveTimers.take(url);
        if (!timer)
            return;
        timer->stop();
        timer->deleteLater(); // not at once: it may be this timer's signal that is being delivered
    }

    template <class Message>
    void report(Message message)
    {
        QMetaObject::invokeMethod(&m_store, std::move(message), Qt::QueuedConnection);
    }

    DocumentStore &m_store;
    FileAccess &m_disk;
    std::chrono::milliseconds m_autosaveDelay;
    QHash<FileURL, Pending> m_pendingContents; // an entry exists exactly while a write is owed
    QHash<FileURL, QTimer *> m_saveTimers;
};

DocumentStore::DocumentStore(EventCenter &events, FileAccess &disk, std::chrono::milliseconds autosaveDelay,
                             QObject *parent)
    : QObject(parent), m_events(events), m_disk(disk), m_executor(new Executor(*this, disk, autosaveDelay))
{
    m_readers.setMaxThreadCount(kMostReaders);
    m_thread.setObjectName(QStringLiteral("DocumentStore"));
    m_executor->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_executor, &QObject::deleteLater);
    m_thread.start();
}

DocumentStore::~DocumentStore()
{
    // Queued behind all that was asked for, so that all of it is done first.
    QMetaObject::invokeMethod(
        m_executor, [this] { m_thread.quit(); }, Qt::QueuedConnection);
    m_thread.wait();
    // The last messages find their receiver gone. With them go the promises that they hold, which finishes the futures.
}

void DocumentStore::scheduleSave(const ChunkedText &text, const FileURL &url)
{
    const quint64 change = ++m_changeCount;
    m_unsaved.insert(url, change);
    QMetaObject::invokeMethod(
        m_executor, [executor = m_executor, text, url, change] { executor->scheduleSave(text, url, change); },
        Qt::QueuedConnection);
}

QFuture<void> DocumentStore::saveNow(const FileURL &url)
{
    return perform([url](Executor &executor) { executor.saveNow(url); });
}

QFuture<void> DocumentStore::flushAll()
{
    return perform([](Executor &executor) { executor.flushAll(); });
}

void DocumentStore::flushAllAndWait()
{
    QMetaObject::invokeMethod(
        m_executor, [executor = m_executor] { executor->flushAll(); }, Qt::BlockingQueuedConnection);
}

QFuture<Result<ChunkedText>> DocumentStore::readDocument(const FileURL &url)
{
    return QtConcurrent::run(&m_readers, [disk = &m_disk, url] { return disk->readText(url); });
}

/// Runs `operation` on the store's thread. The future finishes on the main thread, behind the messages of the
/// operation.
template <class Operation>
QFuture<void> DocumentStore::perform(Operation operation)
{
    const auto promise = std::make_shared<QPromise<void>>();
    promise->start();
    const QFuture<void> future = promise->future();
    QMetaObject::invokeMethod(
        m_executor,
        [this, promise, operation = std::move(operation)] {
            operation(*m_executor);
            QMetaObject::invokeMethod(
                this, [promise] { promise->finish(); }, Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
    return future;
}

void DocumentStore::noteWritten(const FileURL &url, quint64 change)
{
    if (m_unsaved.value(url) == change) // otherwise a newer text has been scheduled since
        m_unsaved.remove(url);
}

void DocumentStore::noteFailure(const FileURL &url, const QString &message)
{
    m_events.post(AppEvents::kDocumentSaveFailed,
                  {{AppEvents::kUrl, QVariant::fromValue(url)}, {AppEvents::kMessage, message}});
}

} // namespace Tessaline
