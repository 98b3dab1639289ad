#pragma once

#include "foundation/FileAccess.h"

#include <QtCore/QHash>
#include <QtCore/QList>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

namespace Tessaline {

/// A disk in memory that a test directs: it counts, fails on demand, and holds a read or a write back until it is let
/// go. Safe from any thread.
class ScriptedDisk final : public FileAccess
{
public:
    /// One operation that is held back.
    class Hold
    {
    public:
        bool isReached() const; // the operation has begun; a read has seen the file by then
        void release();

    private:
        friend class ScriptedDisk;
        mutable std::mutex m_mutex;
        std::condition_variable m_changed;
        bool m_isReached = false;
        bool m_isReleased = false;
    };

    struct Write {
        FileURL url;
        QString text;
        std::chrono::steady_clock::time_point at;
    };

    ~ScriptedDisk() override;

    void setText(const FileURL &url, const QString &text);
    std::optional<QString> text(const FileURL &url) const; // absent if there is no such file
    QList<Write> writes() const;                           // the attempts, in order, also the failed ones
    QList<QString> textsWritten(const FileURL &url) const; // the same for one file, its texts only
    QList<FileURL> reads() const;                          // the attempts, in order
    bool isIdle() const;                                   // no read or write is being answered

    void link(const FileURL &url, const FileURL &target); // `url` becomes another name of the file at `target`
    void failReads(const FileURL &url, const Failure &failure);
    void failWrites(const FileURL &url, const Failure &failure);
    void allowWrites(const FileURL &url);
    /// Holds the next read or write of the file. Several holds of one file are taken in the order in which they were
    /// asked for.
    std::shared_ptr<Hold> holdNextRead(const FileURL &url);
    std::shared_ptr<Hold> holdNextWrite(const FileURL &url);

    Result<ChunkedText> readText(const FileURL &url) override;
    Result<void> writeText(const FileURL &url, const ChunkedText &text) override;
    bool isSameFile(const FileURL &left, const FileURL &right) override;

private:
    using Holds = QHash<FileURL, QList<std::shared_ptr<Hold>>>;
    std::shared_ptr<Hold> hold(Holds &holds, const FileURL &url);
    static void pass(const std::shared_ptr<Hold> &hold);
    class Busy;

    mutable std::mutex m_mutex; // guards all that follows
    QHash<FileURL, QString> m_files;
    QHash<FileURL, FileURL> m_links;
    QHash<FileURL, Failure> m_readFailures;
    QHash<FileURL, Failure> m_writeFailures;
    QList<Write> m_writes;
    QList<FileURL> m_reads;
    Holds m_readHolds;
    Holds m_writeHolds;
    QList<std::shared_ptr<Hold>> m_allHolds;
    int m_running = 0;
};

} // namespace Tessaline
