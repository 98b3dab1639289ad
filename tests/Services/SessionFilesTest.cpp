#include "Services/SessionFiles.h"

#include "Services/SessionKey.h"
#include "tests/support/TemporaryFiles.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

const std::chrono::system_clock::time_point kNow{1763225401239170us};
const QUuid kQuestion{u"{0F8FAD5B-D9CB-469F-A165-70867728950E}"_s};
const QUuid kAnswer{u"{7C9E6679-7425-40DE-944B-E07FC1F90AE7}"_s};

const SessionContents kContents{
    {{kQuestion, u"user"_s, u"Is a/b shorter?\nSay \"yes\"."_s}, {kAnswer, u"assistant"_s, u"Yes, by an Übung 🌊."_s}},
    {{u"Hamlet"_s, u"Play"_s, u"To be"_s, u"A prince"_s}, {u"notes.md"_s, std::nullopt, QString(), std::nullopt}}};

mode_t modeOf(const FileURL &url)
{
    struct stat status = {};
    return stat(QFile::encodeName(url.path()).constData(), &status) == 0 ? status.st_mode & ALLPERMS : 0;
}

QStringList namesIn(const FileURL &folder)
{
    return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

} // namespace

// The key

TEST(SessionKey, IsTheHashOfThePathAs16Digits)
{
    EXPECT_EQ(sessionKey(u"/a"_s), u"00000000005970b5"_s);
    EXPECT_EQ(sessionKey(u"/Users/writer/Notes/draft.md"_s), u"a9fa85fa6c81e349"_s);
    EXPECT_EQ(sessionKey(u"/Users/writer/Notes/Übung.md"_s), u"e94bc06d69626b03"_s);
    EXPECT_EQ(sessionKey(QString()), u"0000000000001505"_s);
}

TEST(SessionKey, TwoUnicodeFormsOfOneNameAreTwoKeys)
{
    EXPECT_NE(sessionKey(u"/\u00DCbung.md"_s), sessionKey(u"/U\u0308bung.md"_s));
}

// The folder

class SessionFilesTest : public ::testing::Test
{
protected:
    FileURL folder(const FileURL &document) const
    {
        return m_data.appending(u"sessions").appending(sessionKey(document.path()));
    }
    QByteArray read(const FileURL &file) const
    {
        QFile opened(file.path());
        return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray();
    }
    void write(const FileURL &file, const QByteArray &bytes) const
    {
        QFile opened(file.path());
        ASSERT_TRUE(opened.open(QIODevice::WriteOnly) && opened.write(bytes) == bytes.size());
    }

    const TemporaryFiles m_disk{{u"docs/draft.md"_s, "text"}};
    const FileURL m_data = m_disk.url(u"data/com.orlenth.tessaline"_s);
    const FileURL m_document{QFileInfo(m_disk.url(u"docs/draft.md"_s).path()).canonicalFilePath()};
    const SessionFiles m_files{m_data};
};

TEST_F(SessionFilesTest, AFirstVisitMakesTheFolderAndNoFiles)
{
    EXPECT_EQ(m_files.load(m_document), SessionContents());

    EXPECT_TRUE(QDir(folder(m_document).path()).exists());
    EXPECT_EQ(namesIn(folder(m_document)), QStringList());
    EXPECT_EQ(m_files.directory(m_document), folder(m_document));
}

TEST_F(SessionFilesTest, FoldersAndFilesAreForTheirUserAlone)
{
    m_files.save(m_document, kContents, kNow);

    EXPECT_EQ(modeOf(m_data), 0700u);
    EXPECT_EQ(modeOf(m_data.appending(u"sessions")), 0700u);
    EXPECT_EQ(modeOf(folder(m_document)), 0700u);
    for (const QString &name : namesIn(folder(m_document)))
        EXPECT_EQ(modeOf(folder(m_document).appending(name)), 0600u) << name.toStdString();
}

TEST_F(SessionFilesTest, WithoutADataFolderNothingIsSavedAndNothingLoaded)
{
    const SessionFiles files(std::nullopt);

    files.save(m_document, kContents, kNow);

    EXPECT_EQ(files.directory(m_document), std::nullopt);
    EXPECT_EQ(files.load(m_document), SessionContents());
}

TEST_F(SessionFilesTest, AFolderThatCannotBeMadeIsNamedAllTheSameAndSavingFailsInSilence)
{
    m_disk.write(u"data"_s, "a file where the folder should be");

    m_files.save(m_document, kContents, kNow);

    EXPECT_EQ(m_files.directory(m_document), folder(m_document));
    EXPECT_EQ(m_files.load(m_document), SessionContents());
    EXPECT_EQ(m_disk.read(u"data"_s), "a file where the folder should be");
}

TEST_F(SessionFilesTest, TwoLinksToOneFileShareASessionAndThePathIsTheOneLastSaved)
{
    const FileURL first = m_disk.url(u"docs/first.md"_s);
    const FileURL second = m_disk.url(u"link/draft.md"_s);
    ASSERT_TRUE(QFile::link(m_document.path(), first.path()));
    ASSERT_TRUE(QFile::link(m_disk.url(u"docs"_s).path(), m_disk.url(u"link"_s).path()));

    m_files.save(first, kContents, kNow);
    EXPECT_EQ(m_files.load(second), kContents);
    EXPECT_EQ(m_files.directory(second), folder(m_document));

    m_files.save(second, {}, kNow);
    EXPECT_EQ(m_files.load(m_document), SessionContents());
    const QByteArray metadata = read(folder(m_document).appending(u"metadata.json"));
    EXPECT_EQ(QJsonDocument::fromJson(metadata).object().value(u"filePath"_s).toString(), second.path());
}

TEST_F(SessionFilesTest, ADocumentThatIsGoneKeepsItsSession)
{
    m_files.save(m_document, kContents, kNow);
    ASSERT_TRUE(QFile::remove(m_document.path()));
    EXPECT_EQ(m_files.load(m_document), kContents);

    ASSERT_TRUE(QDir(m_disk.url(u"docs"_s).path()).removeRecursively());
    EXPECT_EQ(m_files.load(m_document), kContents);
}

TEST_F(SessionFilesTest, ADocumentThatMovedBeginsEmptyAndItsOldFolderStays)
{
    m_files.save(m_document, kContents, kNow);
    ASSERT_TRUE(QFile::rename(m_document.path(), m_disk.url(u"docs/renamed.md"_s).path()));

    EXPECT_EQ(m_files.load(m_disk.url(u"docs/renamed.md"_s)), SessionContents());
    EXPECT_EQ(namesIn(folder(m_document)).size(), 3);
}

TEST_F(SessionFilesTest, LinksInACircleAreTakenAsTheyAre)
{
    const FileURL circle = m_disk.url(u"docs/circle.md"_s);
    ASSERT_TRUE(QFile::link(circle.path(), circle.path()));

    EXPECT_EQ(m_files.directory(circle), m_data.appending(u"sessions").appending(sessionKey(circle.path())));
}

// The files

TEST_F(SessionFilesTest, TheThreeFilesAreIndentedJson)
{
    m_files.save(m_document, kContents, kNow);

    const FileURL session = folder(m_document);
    EXPECT_EQ(namesIn(session), (QStringList{u"chat_history.json"_s, u"contexts.json"_s, u"metadata.json"_s}));
    EXPECT_EQ(read(session.appending(u"chat_history.json")).toStdString(), R"([
  {
    "id" : "0F8FAD5B-D9CB-469F-A165-70867728950E",
    "role" : "user",
    "content" : "Is a\/b shorter?\nSay \"yes\"."
  },
  {
    "id" : "7C9E6679-7425-40DE-944B-E07FC1F90AE7",
    "role" : "assistant",
    "content" : "Yes, by an Übung 🌊."
  }
])");
    EXPECT_EQ(read(session.appending(u"contexts.json")).toStdString(), R"([
  {
    "name" : "Hamlet",
    "subtitle" : "Play",
    "content" : "To be",
    "digest" : "A prince"
  },
  {
    "name" : "notes.md",
    "content" : ""
  }
])");
    const QJsonObject metadata = QJsonDocument::fromJson(read(session.appending(u"metadata.json"))).object();
    EXPECT_EQ(metadata.keys(), (QStringList{u"filePath"_s, u"lastModified"_s}));
    EXPECT_EQ(metadata.value(u"filePath"_s).toString(), m_document.path());
    EXPECT_EQ(metadata.value(u"lastModified"_s).toString(), u"1763225401.23917"_s);
}

TEST_F(SessionFilesTest, WhatIsSavedIsLoadedAgain)
{
    m_files.save(m_document, kContents, kNow);
    EXPECT_EQ(m_files.load(m_document), kContents);

    m_files.save(m_document, {}, kNow); // shorter than what was there
    EXPECT_EQ(m_files.load(m_document), SessionContents());
}

TEST_F(SessionFilesTest, AnEmptySessionHasEmptyListsInItsFiles)
{
    m_files.save(m_document, {}, kNow);

    for (const QStringView name : {u"chat_history.json", u"contexts.json"})
        EXPECT_EQ(read(folder(m_document).appending(name)).simplified().replace(' ', ""), "[]");
    EXPECT_FALSE(read(folder(m_document).appending(u"metadata.json")).isEmpty());
}

TEST_F(SessionFilesTest, GarbageInTheMetadataHasNoEffect)
{
    m_files.save(m_document, kContents, kNow);
    write(folder(m_document).appending(u"metadata.json"), "\xFF{");

    EXPECT_EQ(m_files.load(m_document), kContents);
}

TEST_F(SessionFilesTest, OneBadIdEmptiesTheConversationAndTheNextSaveDestroysTheRest)
{
    m_files.save(m_document, kContents, kNow);
    const FileURL history = folder(m_document).appending(u"chat_history.json");
    write(history, read(history).replace("7C9E6679-7425-40DE-944B-E07FC1F90AE7", "7C9E6679"));

    const SessionContents loaded = m_files.load(m_document);
    EXPECT_EQ(loaded, (SessionContents{{}, kContents.attachedContexts}));

    m_files.save(m_document, loaded, kNow);
    EXPECT_FALSE(read(history).contains("user"));
}

TEST_F(SessionFilesTest, AFileThatIsCutOffCountsAsEmptyAndTheOtherLoads)
{
    m_files.save(m_document, kContents, kNow);
    const FileURL contexts = folder(m_document).appending(u"contexts.json");
    const QByteArray whole = read(contexts);

    write(contexts, whole.first(whole.size() / 2));
    EXPECT_EQ(m_files.load(m_document), (SessionContents{kContents.chatMessages, {}}));

    ASSERT_TRUE(QFile::remove(contexts.path()));
    EXPECT_EQ(m_files.load(m_document), (SessionContents{kContents.chatMessages, {}}));
}

TEST_F(SessionFilesTest, AFileThatCannotBeWrittenStaysAndTheOthersAreWritten)
{
    const FileURL history = folder(m_document).appending(u"chat_history.json");
    m_files.load(m_document);
    ASSERT_TRUE(QDir().mkpath(history.appending(u"in the way").path()));

    m_files.save(m_document, kContents, kNow);

    EXPECT_TRUE(QDir(history.appending(u"in the way").path()).exists());
    EXPECT_EQ(m_files.load(m_document), (SessionContents{{}, kContents.attachedContexts}));
    EXPECT_EQ(namesIn(folder(m_document)).size(), 3);
}

TEST(SecondsSince1970, AreTheShortestDecimalOfADouble)
{
    using TimePoint = std::chrono::system_clock::time_point;
    EXPECT_EQ(secondsSince1970(TimePoint(1763225401239170us)), u"1763225401.23917"_s);
    EXPECT_EQ(secondsSince1970(TimePoint(1763225401s)), u"1763225401.0"_s);
    EXPECT_EQ(secondsSince1970(TimePoint()), u"0.0"_s);
    EXPECT_EQ(secondsSince1970(TimePoint(1ms)), u"0.001"_s);
}

} // namespace Tessaline
