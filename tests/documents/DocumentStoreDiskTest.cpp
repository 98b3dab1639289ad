#include "documents/DocumentStore.h"

#include "foundation/AppEvents.h"
#include "foundation/EventCenter.h"
#include "tests/support/Printers.h"
#include "tests/support/SmallDisk.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <gtest/gtest.h>

/// The document store on a real disk.
namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class DocumentStoreDiskTest : public ::testing::Test
{
protected:
    DocumentStoreDiskTest()
    {
        m_events.observe(AppEvents::kDocumentSaveFailed, &m_context, [this](const QVariantMap &userInfo) {
            m_messages.append(userInfo.value(AppEvents::kMessage).toString());
        });
    }

    const TemporaryFiles m_files;
    const FileURL m_url = m_files.url(u"a.md"_s);
    DiskAccess m_disk;
    EventCenter m_events;
    QObject m_context;
    QStringList m_messages;
    DocumentStore m_store{m_events, m_disk, 20ms};
};

} // namespace

TEST_F(DocumentStoreDiskTest, ATextIsOnTheDiskAfterTheDelay)
{
    m_store.scheduleSave(ChunkedText(u"Grüße\r\n"), m_url);

    EXPECT_TRUE(eventually([&] { return m_files.read(u"a.md"_s) == "Grüße\r\n"; }));
}

TEST_F(DocumentStoreDiskTest, AFileThatWasDeletedWhileItsTextIsPendingIsMadeAgain)
{
    m_files.write(u"a.md"_s, "old");
    m_store.scheduleSave(ChunkedText(u"new"), m_url);
    ASSERT_TRUE(QFile::remove(m_url.path()));

    ASSERT_TRUE(finishes(m_store.saveNow(m_url)));

    EXPECT_EQ(m_files.read(u"a.md"_s), "new");
    EXPECT_EQ(m_messages, QStringList());
}

TEST_F(DocumentStoreDiskTest, AnEmptyTextIsAnEmptyFile)
{
    m_files.write(u"a.md"_s, "old");
    m_store.scheduleSave(ChunkedText(), m_url);

    ASSERT_TRUE(finishes(m_store.saveNow(m_url)));

    EXPECT_TRUE(m_files.exists(u"a.md"_s));
    EXPECT_EQ(m_files.read(u"a.md"_s).size(), 0);
}

TEST_F(DocumentStoreDiskTest, AFolderThatHasGoneKeepsTheTextUntilItIsBack)
{
    const FileURL url = m_files.url(u"folder/a.md"_s);
    m_store.scheduleSave(ChunkedText(u"text"), url);
    ASSERT_TRUE(eventually([&] { return m_messages.size() == 1; }));
    EXPECT_EQ(m_messages.at(0), u"The folder does not exist."_s);
    EXPECT_TRUE(m_store.hasUnsavedText(url));

    m_files.makeFolder(u"folder"_s);
    ASSERT_TRUE(finishes(m_store.saveNow(url)));

    EXPECT_EQ(m_files.read(u"folder/a.md"_s), "text");
}

TEST_F(DocumentStoreDiskTest, AFullDiskKeepsTheTextUntilThereIsSpace)
{
    const SmallDisk small;
    if (!small.isMounted())
        GTEST_SKIP() << "Mounting is refused here; the store's tests with a scripted disk stand in.";
    small.write(u"a.md"_s, "old");
    small.write(u"large"_s, QByteArray(SmallDisk::kSize / 2, 'x'));
    const QString longText(SmallDisk::kSize / 2 + 1, u'n');
    m_store.scheduleSave(ChunkedText(longText), small.url(u"a.md"_s));

    ASSERT_TRUE(finishes(m_store.flushAll()));
    EXPECT_EQ(m_messages, QStringList{u"There is no space left on the disk."_s});
    EXPECT_EQ(small.read(u"a.md"_s), "old");
    EXPECT_EQ(small.names(), (QStringList{u"a.md"_s, u"large"_s}));

    ASSERT_TRUE(QFile::remove(small.url(u"large"_s).path()));
    ASSERT_TRUE(finishes(m_store.flushAll()));
    EXPECT_EQ(small.read(u"a.md"_s), longText.toUtf8());
}

TEST_F(DocumentStoreDiskTest, ADiskThatCanOnlyBeReadKeepsTheText)
{
    SmallDisk small;
    if (!small.isMounted())
        GTEST_SKIP() << "Mounting is refused here; the store's tests with a scripted disk stand in.";
    small.write(u"a.md"_s, "old");
    small.makeReadOnly();
    m_store.scheduleSave(ChunkedText(u"new"), small.url(u"a.md"_s));

    ASSERT_TRUE(finishes(m_store.saveNow(small.url(u"a.md"_s))));

    EXPECT_EQ(m_messages, QStringList{u"The disk can only be read."_s});
    EXPECT_TRUE(m_store.hasUnsavedText(small.url(u"a.md"_s)));
    EXPECT_EQ(small.read(u"a.md"_s), "old");
}

TEST_F(DocumentStoreDiskTest, AFileInAnotherEncodingIsNotRead)
{
    m_files.write(u"a.md"_s, "caf\xE9");

    const QFuture<Result<ChunkedText>> read = m_store.readDocument(m_url);
    ASSERT_TRUE(finishes(read));

    ASSERT_FALSE(read.result());
    EXPECT_EQ(read.result().failure(), (Failure{FailureKind::Malformed, u"The file is not text in UTF-8."_s}));
}

TEST_F(DocumentStoreDiskTest, AManyTimesSavedTextLeavesNothingBesideIt)
{
    for (int i = 0; i < 50; ++i) {
        m_store.scheduleSave(ChunkedText(QString::number(i)), m_url);
        m_store.saveNow(m_url);
    }
    ASSERT_TRUE(finishes(m_store.flushAll()));

    EXPECT_EQ(m_files.read(u"a.md"_s), "49");
    EXPECT_EQ(QDir(m_files.folder().path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{u"a.md"_s});
}

} // namespace Tessaline
