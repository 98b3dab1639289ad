#include "Services/Session.h"

#include "tests/support/TemporaryFiles.h"

#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const ChatMessage kQuestion{QUuid(u"{0F8FAD5B-D9CB-469F-A165-70867728950E}"_s), u"user"_s, u"Why?"_s};
const ChatMessage kAnswer{QUuid(u"{7C9E6679-7425-40DE-944B-E07FC1F90AE7}"_s), u"assistant"_s, u"Because."_s};
const ContextItem kItem{u"Hamlet"_s, u"Play"_s, u"To be"_s, std::nullopt};

class SessionTest : public ::testing::Test
{
protected:
    SessionContents onDisk(const FileURL &document) const { return m_files.load(document); }

    const TemporaryFiles m_disk{{u"a.md"_s, "a"}, {u"b.md"_s, "b"}};
    const FileURL m_a = m_disk.url(u"a.md"_s);
    const FileURL m_b = m_disk.url(u"b.md"_s);
    const SessionFiles m_files{m_disk.url(u"data"_s)};
    Session m_session{m_files};
    QSignalSpy m_messagesChanged{&m_session, &Session::chatMessagesChanged};
    QSignalSpy m_contextsChanged{&m_session, &Session::attachedContextsChanged};
};

} // namespace

TEST_F(SessionTest, IsEmptyAndKeptNowhereWithoutADocument)
{
    m_session.appendMessage(kQuestion);
    m_session.setAttachedContexts({kItem});

    m_session.saveActive();
    m_session.switchTo(std::nullopt);

    EXPECT_EQ(m_session.chatMessages(), QList<ChatMessage>());
    EXPECT_EQ(m_session.attachedContexts(), QList<ContextItem>());
    EXPECT_FALSE(m_disk.exists(u"data"_s));
}

TEST_F(SessionTest, SwitchingSavesTheOldDocumentAndLoadsTheNew)
{
    m_files.save(m_b, {{kAnswer}, {}}, {});
    m_session.switchTo(m_a);
    m_session.appendMessage(kQuestion);
    m_session.setAttachedContexts({kItem});
    EXPECT_EQ(onDisk(m_a), SessionContents()); // nothing saves by itself

    m_session.switchTo(m_b);

    EXPECT_EQ(m_session.activeFileURL(), m_b);
    EXPECT_EQ(m_session.chatMessages(), QList<ChatMessage>{kAnswer});
    EXPECT_EQ(m_session.attachedContexts(), QList<ContextItem>());
    EXPECT_EQ(onDisk(m_a), (SessionContents{{kQuestion}, {kItem}}));

    m_session.switchTo(m_a);
    EXPECT_EQ(m_session.chatMessages(), QList<ChatMessage>{kQuestion});
    EXPECT_EQ(m_session.attachedContexts(), QList<ContextItem>{kItem});
}

TEST_F(SessionTest, LeavingADocumentWithoutMessagesWritesItsFiles)
{
    m_session.switchTo(m_a);
    m_session.switchTo(m_b);

    const FileURL folder = *m_files.directory(m_a);
    for (const QStringView name : {u"chat_history.json", u"metadata.json"})
        EXPECT_TRUE(QFile::exists(folder.appending(name).path()));
    EXPECT_FALSE(QFile::exists(m_files.directory(m_b)->appending(u"chat_history.json").path()));
}

TEST_F(SessionTest, SwitchingToTheSameDocumentSavesItAndLoadsWhatWasSaved)
{
    m_session.switchTo(m_a);
    m_session.appendMessage(kQuestion);

    m_session.switchTo(m_a);

    EXPECT_EQ(m_session.chatMessages(), QList<ChatMessage>{kQuestion});
    EXPECT_EQ(onDisk(m_a), (SessionContents{{kQuestion}, {}}));
}

TEST_F(SessionTest, SwitchingToNoDocumentSavesTheOldOneAndEmptiesBothLists)
{
    m_session.switchTo(m_a);
    m_session.appendMessage(kQuestion);
    m_session.setAttachedContexts({kItem});

    m_session.switchTo(std::nullopt);

    EXPECT_EQ(m_session.activeFileURL(), std::nullopt);
    EXPECT_TRUE(m_session.chatMessages().isEmpty());
    EXPECT_TRUE(m_session.attachedContexts().isEmpty());
    EXPECT_EQ(onDisk(m_a), (SessionContents{{kQuestion}, {kItem}}));
}

TEST_F(SessionTest, SavingAndLoadingTakeAnyDocument)
{
    m_session.switchTo(m_a);
    m_session.appendMessage(kQuestion);

    m_session.save(m_b);
    m_session.setChatMessages({});
    m_session.load(m_b);

    EXPECT_EQ(m_session.chatMessages(), QList<ChatMessage>{kQuestion});
    EXPECT_EQ(m_session.activeFileURL(), m_a);
}

TEST_F(SessionTest, ReplacingTouchesTheFirstMessageOfTheIdOnly)
{
    ChatMessage twin = kAnswer;
    twin.content = u"Twin"_s;
    m_session.setChatMessages({kQuestion, kAnswer, twin});

    m_session.replaceMessageContent(kAnswer.id, u"Therefore."_s);

    ChatMessage expected = kAnswer;
    expected.content = u"Therefore."_s;
    EXPECT_EQ(m_session.chatMessages(), (QList<ChatMessage>{kQuestion, expected, twin}));

    m_messagesChanged.clear();
    m_session.replaceMessageContent(QUuid::createUuid(), u"Nobody's"_s);
    EXPECT_EQ(m_session.chatMessages(), (QList<ChatMessage>{kQuestion, expected, twin}));
    EXPECT_EQ(m_messagesChanged.count(), 0);
}

TEST_F(SessionTest, EachChangeIsToldOnceAndOnlyIfThereWasOne)
{
    m_session.switchTo(m_a);
    EXPECT_EQ(m_messagesChanged.count(), 0);

    m_session.appendMessage(kQuestion);
    m_session.setChatMessages({kQuestion});
    EXPECT_EQ(m_messagesChanged.count(), 1);
    EXPECT_EQ(m_contextsChanged.count(), 0);

    m_session.setAttachedContexts({kItem});
    m_session.setAttachedContexts({kItem});
    EXPECT_EQ(m_contextsChanged.count(), 1);

    m_session.switchTo(m_b);
    EXPECT_EQ(m_messagesChanged.count(), 2);
    EXPECT_EQ(m_contextsChanged.count(), 2);
}

TEST_F(SessionTest, BothListsAreTheNewDocumentsBeforeAnybodyHearsOfEither)
{
    m_session.switchTo(m_a);
    m_session.appendMessage(kQuestion);
    m_session.setAttachedContexts({kItem});
    qsizetype contextsSeen = -1;
    QObject::connect(&m_session, &Session::chatMessagesChanged, &m_session,
                     [&] { contextsSeen = m_session.attachedContexts().size(); });

    m_session.switchTo(m_b);

    EXPECT_EQ(contextsSeen, 0);
}

} // namespace Tessaline
