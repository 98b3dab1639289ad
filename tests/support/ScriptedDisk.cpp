#include "tests/support/ScriptedDisk.h"

namespace Tessaline {

namespace {

/// A copy that shares nothing with the list, which other threads go on changing.
template <class Entry>
QList<Entry> separate(QList<Entry> list)
{
    list.detach();
    return list;
}

} // namespace

namespace {

using namespace Qt::StringLiterals;

} // namespace

/// Counts an operation for as long as it runs.
class ScriptedDisk::Busy
{
public:
    explicit Busy(ScriptedDisk &disk) : m_disk(disk)
    {
        const std::scoped_lock lock(m_disk.m_mutex);
        ++m_disk.m_running;
    }
    ~Busy()
    {
        const std::scoped_lock lock(m_disk.m_mutex);
        --m_disk.m_running;
    }
    Busy(const Busy &) = delete;
    Busy &operator=(const Busy &) = delete;

private:
    ScriptedDisk &m_disk;
};

bool ScriptedDisk::Hold::isReached() const
{
    const std::scoped_lock lock(m_mutex);
    return m_isReached;
}

void ScriptedDisk::Hold::release()
{
    const std::scoped_lock lock(m_mutex);
    m_isReleased = true;
    m_changed.notify_all();
}

ScriptedDisk::~ScriptedDisk()
{
    for (const std::shared_ptr<Hold> &hold : m_allHolds)
        hold->release();
}

void ScriptedDisk::setText(const FileURL &url, const QString &text)
{
    const std::scoped_lock lock(m_mutex);
    m_files.insert(url, text);
}

std::optional<QString> ScriptedDisk::text(const FileURL &url) const
{
    const std::scoped_lock lock(m_mutex);
    return m_files.contains(url) ? std::optional(m_files.value(url)) : std::nullopt;
}

QList<ScriptedDisk::Write> ScriptedDisk::writes() const
{
    const std::scoped_lock lock(m_mutex);
    return separate(m_writes);
}

QList<QString> ScriptedDisk::textsWritten(const FileURL &url) const
{
    const std::scoped_lock lock(m_mutex);
    QList<QString> texts;
    for (const Write &write : m_writes)
        if (write.url == url)
            texts.append(write.text);
    return texts;
}

QList<FileURL> ScriptedDisk::reads() const
{
    const std::scoped_lock lock(m_mutex);
    return separate(m_reads);
}

bool ScriptedDisk::isIdle() const
{
    const std::scoped_lock lock(m_mutex);
    return m_running == 0;
}

void ScriptedDisk::link(const FileURL &url, const FileURL &target)
{
    const std::scoped_lock lock(m_mutex);
    m_links.insert(url, target);
}

bool ScriptedDisk::isSameFile(const FileURL &left, const FileURL &right)
{
    const std::scoped_lock lock(m_mutex);
    return m_links.value(left, left) == m_links.value(right, right);
}

void ScriptedDisk::failReads(const FileURL &url, const Failure &failure)
{
    const std::scoped_lock lock(m_mutex);
    m_readFailures.insert(url, failure);
}

void ScriptedDisk::failWrites(const FileURL &url, const Failure &failure)
{
    const std::scoped_lock lock(m_mutex);
    m_writeFailures.insert(url, failure);
}

void ScriptedDisk::allowWrites(const FileURL &url)
{
    const std::scoped_lock lock(m_mutex);
    m_writeFailures.remove(url);
}

std::shared_ptr<ScriptedDisk::Hold> ScriptedDisk::holdNextRead(const FileURL &url)
{
    return hold(m_readHolds, url);
}

std::shared_ptr<ScriptedDisk::Hold> ScriptedDisk::holdNextWrite(const FileURL &url)
{
    return hold(m_writeHolds, url);
}

std::shared_ptr<ScriptedDisk::Hold> ScriptedDisk::hold(Holds &holds, const FileURL &url)
{
    const auto fresh = std::make_shared<Hold>();
    const std::scoped_lock lock(m_mutex);
    holds[url].append(fresh);
    m_allHolds.append(fresh);
    return fresh;
}

void ScriptedDisk::pass(const std::shared_ptr<Hold> &hold)
{
    if (!hold)
        return;
    std::unique_lock lock(hold->m_mutex);
    hold->m_isReached = true;
    hold->m_changed.wait(lock, [&hold] { return hold->m_isReleased; });
}

Result<ChunkedText> ScriptedDisk::readText(const FileURL &url)
{
    const Busy busy(*this);
    Result<ChunkedText> result;
    std::shared_ptr<Hold> hold;
    {
        const std::scoped_lock lock(m_mutex);
        m_reads.append(url);
        if (m_readFailures.contains(url))
            result = m_readFailures.value(url);
        else if (const FileURL file = m_links.value(url, url); !m_files.contains(file))
            result = Failure{FailureKind::NotFound, u"The file does not exist."_s};
        else
            result = ChunkedText(m_files.value(file));
        if (QList<std::shared_ptr<Hold>> &holds = m_readHolds[url]; !holds.isEmpty())
            hold = holds.takeFirst();
    }
    pass(hold);
    return result;
}

Result<void> ScriptedDisk::writeText(const FileURL &url, const ChunkedText &text)
{
    const Busy busy(*this);
    std::shared_ptr<Hold> hold;
    {
        const std::scoped_lock lock(m_mutex);
        m_writes.append({url, text.toString(), std::chrono::steady_clock::now()});
        if (QList<std::shared_ptr<Hold>> &holds = m_writeHolds[url]; !holds.isEmpty())
            hold = holds.takeFirst();
    }
    pass(hold);
    const std::scoped_lock lock(m_mutex);
    if (m_writeFailures.contains(url))
        return m_writeFailures.value(url);
    m_files.insert(m_links.value(url, url), text.toString());
    return {};
}

} // namespace Tessaline
