#pragma once

#include "documents/DocumentStore.h"
#include "documents/EditorArea.h"
#include "documents/Workspace.h"
#include "foundation/AppEvents.h"
#include "foundation/EventCenter.h"
#include "foundation/Preferences.h"
#include "tests/support/Printers.h"
#include "tests/support/ScriptedDisk.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"

#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

#include <memory>

namespace Tessaline {

inline void PrintTo(EditorAreaState state, std::ostream *out)
{
    constexpr const char *kNames[] = {"None", "Loading", "Failed", "Ready"};
    *out << kNames[static_cast<int>(state)];
}

/// An editor area on a disk that the test directs. Nothing is saved by the delay: what reaches the disk was asked for.
class EditorAreaFixture : public ::testing::Test
{
protected:
    static constexpr auto kNever = std::chrono::milliseconds(std::chrono::hours(1));

    EditorAreaFixture()
    {
        m_disk.setText(m_a, QStringLiteral("text of a"));
        m_disk.setText(m_b, QStringLiteral("text of b"));
        m_disk.setText(m_plain, QStringLiteral("plain"));
        m_area = std::make_unique<EditorArea>(
            EditorAreaServices{m_workspace, m_preferences, m_store, m_events, m_disk, [this](const FileURL &folder) {
                                   m_askedIn.append(folder);
                                   return m_answer;
                               }});
    }

    QString shown(const FileURL &url) const { return m_area->text(url).toString(); }

    /// What an editor does when the person types: `inserted` at the end of the text.
    void type(const FileURL &url, const QString &inserted)
    {
        ChunkedText text = m_area->text(url);
        const TextChange change = text.replace(text.size(), 0, inserted);
        m_area->setText(url, text, change, nullptr);
    }

    void open(const FileURL &url)
    {
        m_workspace.openFile(url);
        ASSERT_TRUE(eventually([&] { return m_area->state() == EditorAreaState::Ready; }));
    }

    /// Waits until all reads that were begun have been answered and their answers were taken or dropped.
    void settle()
    {
        ASSERT_TRUE(eventually([&] { return m_disk.isIdle(); }));
        const QFuture<Result<ChunkedText>> last = m_store.readDocument(m_sentinel);
        ASSERT_TRUE(finishes(last));
        ASSERT_TRUE(finishes(m_store.flushAll()));
        QCoreApplication::processEvents();
    }

    const TemporaryFiles m_files;
    const FileURL m_a{QStringLiteral("/docs/a.md")};
    const FileURL m_b{QStringLiteral("/docs/b.md")};
    const FileURL m_plain{QStringLiteral("/docs/plain.txt")};
    const FileURL m_sentinel{QStringLiteral("/docs/sentinel.md")};
    ScriptedDisk m_disk;
    EventCenter m_events;
    Preferences m_stored{m_files.url(QStringLiteral("preferences.json"))};
    AppPreferences m_preferences{m_stored};
    Workspace m_workspace{m_stored};
    DocumentStore m_store{m_events, m_disk, kNever};
    std::optional<FileURL> m_answer; // of the panel for a new document
    QList<FileURL> m_askedIn;        // the folders that the panel was to begin in
    std::unique_ptr<EditorArea> m_area;
};

} // namespace Tessaline
