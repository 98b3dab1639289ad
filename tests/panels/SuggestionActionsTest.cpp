#include "panels/SuggestionActions.h"

#include "tests/panels/PanelsFixture.h"

#include <QtCore/QCoreApplication>

#include <functional>
#include <utility>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class SuggestionActionsTest : public PanelsFixture
{
protected:
    SuggestionActionsTest()
    {
        m_events.observe(AppEvents::kFileDidUpdateExternally, &m_observer, [this](const QVariantMap &info) {
            m_updated.append(info.value(AppEvents::kUrl).value<FileURL>());
        });
    }

    EditSuggestion suggestion(const QString &original, const QString &replacement, int number = 0)
    {
        return {u"M_%1"_s.arg(number), original, replacement};
    }

    void apply(const EditSuggestion &suggestion)
    {
        const QCoro::Task<> task = actions().applySuggestion(suggestion, m_document);
        ASSERT_TRUE(eventually([&] { return task.isReady(); }));
    }

    SuggestionActions &actions()
    {
        if (!m_actions)
            m_actions = std::make_unique<SuggestionActions>(
                SuggestionActionsParts{*m_ai, m_documents, m_area, m_events, m_disk});
        return *m_actions;
    }

    QObject m_observer;
    QList<FileURL> m_updated;
    std::unique_ptr<SuggestionActions> m_actions;
};

/// Somebody types whenever a text is about to be written.
class TypingDisk final : public FileAccess
{
public:
    Result<ChunkedText> readText(const FileURL &url) override { return Tessaline::readText(url); }
    Result<void> writeText(const FileURL &url, const ChunkedText &text) override
    {
        QMetaObject::invokeMethod(qApp, type, Qt::BlockingQueuedConnection);
        return writeTextAtomically(url, text);
    }
    bool isSameFile(const FileURL &left, const FileURL &right) override { return left == right; }

    std::function<void()> type;
};

} // namespace

TEST_F(SuggestionActionsTest, AnEditIsWrittenMarkedAndAnnounced)
{
    const EditSuggestion edit = suggestion(u"two."_s, u"2.\r\n\u201CDeux\u201D"_s);
    EXPECT_EQ(actions().state(edit), SuggestionState::Pending);
    apply(edit);
    EXPECT_EQ(onDisk(), "One. 2.\r\n\xE2\x80\x9C"
                        "Deux\xE2\x80\x9D Three.");
    EXPECT_EQ(actions().state(edit), SuggestionState::Accepted);
    EXPECT_EQ(m_updated, QList<FileURL>{m_document});
    EXPECT_EQ(console(), QString());
}

TEST_F(SuggestionActionsTest, WhatWasTypedBeforeThePressIsPartOfTheDocument)
{
    open();
    type(u" Four."_s);
    apply(suggestion(u"Four."_s, u"4."_s));
    EXPECT_EQ(onDisk(), "One. Two. Three. 4.");
    ASSERT_TRUE(eventually([this] { return m_area.text(m_document).toString() == u"One. Two. Three. 4."; }));
}

TEST_F(SuggestionActionsTest, WhatIsTypedWhileTheDocumentIsSearchedIsNotLost)
{
    open();
    const QCoro::Task<> task = actions().applySuggestion(suggestion(u"Two."_s, u"2."_s), m_document);
    type(u" Four."_s);
    ASSERT_TRUE(eventually([&] { return task.isReady(); }));
    EXPECT_EQ(onDisk(), "One. 2. Three. Four.");
}

TEST_F(SuggestionActionsTest, WhatIsTypedDuringTheWriteStandsBesideTheEdit)
{
    TypingDisk disk;
    open();
    bool hasTyped = false;
    disk.type = [&] {
        if (!std::exchange(hasTyped, true))
            type(u" Four."_s);
    };
    SuggestionActions actions({*m_ai, m_documents, m_area, m_events, disk});
    const QCoro::Task<> task = actions.applySuggestion(suggestion(u"Two."_s, u"2."_s), m_document);
    ASSERT_TRUE(eventually([&] { return task.isReady(); }));
    EXPECT_EQ(m_area.text(m_document).toString(), u"One. 2. Three. Four."_s);
    EXPECT_EQ(onDisk(), "One. 2. Three. Four.");
}

TEST_F(SuggestionActionsTest, AnEditThatTypingNeverLeavesRoomForStaysPendingAndTheTypingIsKept)
{
    open();
    TypingDisk disk;
    disk.type = [this] { type(u"x"_s); };
    SuggestionActions actions({*m_ai, m_documents, m_area, m_events, disk});
    const EditSuggestion edit = suggestion(u"Two."_s, u"2."_s);
    const QCoro::Task<> task = actions.applySuggestion(edit, m_document);
    ASSERT_TRUE(eventually([&] { return task.isReady(); }));
    EXPECT_EQ(actions.state(edit), SuggestionState::Pending);
    EXPECT_TRUE(m_updated.isEmpty());
    ASSERT_TRUE(finishes(m_documents.saveNow(m_document)));
    EXPECT_EQ(onDisk(), m_area.text(m_document).toString().toUtf8());
    EXPECT_TRUE(m_area.text(m_document).toString().startsWith(u"One. Two. Three.x"_s));
}

TEST_F(SuggestionActionsTest, WhatIsTypedBeforeTheReloadStandsBesideTheEdit)
{
    open();
    m_events.observe(AppEvents::kFileDidUpdateExternally, &m_observer, [this](const QVariantMap &) {
        if (m_updated.size() == 1)
            type(u" Four."_s);
    });
    apply(suggestion(u"Two."_s, u"2."_s));
    EXPECT_EQ(m_area.text(m_document).toString(), u"One. 2. Three. Four."_s);
    ASSERT_TRUE(finishes(m_documents.saveNow(m_document)));
    EXPECT_EQ(onDisk(), "One. 2. Three. Four.");
}

TEST_F(SuggestionActionsTest, AFileThatAnotherProgramChangedIsEditedAsItIsOnTheDisk)
{
    open();
    m_files.write(u"a.md"_s, "Elsewhere. Two.");
    apply(suggestion(u"Two."_s, u"2."_s));
    EXPECT_EQ(onDisk(), "Elsewhere. 2.");
    ASSERT_TRUE(eventually([this] { return m_area.text(m_document).toString() == u"Elsewhere. 2."; }));
}

TEST_F(SuggestionActionsTest, AnAmbiguousTextIsLeftAloneAndStaysPending)
{
    m_files.write(u"a.md"_s, "It rains. It rains.");
    const EditSuggestion edit = suggestion(u"It rains."_s, u"It snows."_s);
    apply(edit);
    EXPECT_EQ(onDisk(), "It rains. It rains.");
    EXPECT_EQ(actions().state(edit), SuggestionState::Pending);
    EXPECT_TRUE(m_updated.isEmpty());
    EXPECT_EQ(console(), u"Could not find robust match for original text block in document.\n"_s);
}

TEST_F(SuggestionActionsTest, AFileThatIsGoneOrNoTextStaysPending)
{
    const EditSuggestion edit = suggestion(u"Two."_s, u"2."_s);
    m_files.write(u"a.md"_s, "Two. \xFF");
    apply(edit);
    EXPECT_EQ(onDisk(), "Two. \xFF");
    const QCoro::Task<> task = actions().applySuggestion(edit, m_files.url(u"missing.md"_s));
    ASSERT_TRUE(eventually([&] { return task.isReady(); }));
    EXPECT_FALSE(m_files.exists(u"missing.md"_s));
    EXPECT_EQ(actions().state(edit), SuggestionState::Pending);
    const QStringList lines = console().split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2);
    for (const QString &line : lines)
        EXPECT_TRUE(line.startsWith(u"Failed to read/write file for suggestion: "_s)) << line.toStdString();
}

TEST_F(SuggestionActionsTest, AFileThatCannotBeWrittenStaysAsItWas)
{
    class ReadOnlyDisk final : public FileAccess
    {
    public:
        Result<ChunkedText> readText(const FileURL &url) override { return Tessaline::readText(url); }
        Result<void> writeText(const FileURL &, const ChunkedText &) override
        {
            return Failure{FailureKind::NotWritable, QStringLiteral("It is read-only.")};
        }
        bool isSameFile(const FileURL &left, const FileURL &right) override { return left == right; }
    } disk;
    SuggestionActions actions({*m_ai, m_documents, m_area, m_events, disk});
    const EditSuggestion edit = suggestion(u"Two."_s, u"2."_s);
    const QCoro::Task<> task = actions.applySuggestion(edit, m_document);
    ASSERT_TRUE(eventually([&] { return task.isReady(); }));
    EXPECT_EQ(onDisk(), "One. Two. Three.");
    EXPECT_EQ(actions.state(edit), SuggestionState::Pending);
    EXPECT_EQ(console(), u"Failed to read/write file for suggestion: It is read-only.\n"_s);
}

TEST_F(SuggestionActionsTest, WithoutAFileNothingHappens)
{
    const EditSuggestion edit = suggestion(u"Two."_s, u"2."_s);
    EXPECT_TRUE(actions().applySuggestion(edit, std::nullopt).isReady());
    EXPECT_EQ(actions().state(edit), SuggestionState::Pending);
    EXPECT_EQ(console(), QString());
}

TEST_F(SuggestionActionsTest, TwoEditsOneAfterTheOtherAreBothMade)
{
    apply(suggestion(u"One."_s, u"1."_s, 0));
    apply(suggestion(u"Three."_s, u""_s, 1));
    EXPECT_EQ(onDisk(), "1. Two. ");
}

TEST_F(SuggestionActionsTest, TwoCardsPressedInQuickSuccessionAreBothApplied)
{
    open();
    const QCoro::Task<> first = actions().applySuggestion(suggestion(u"One."_s, u"1."_s, 0), m_document);
    const QCoro::Task<> second = actions().applySuggestion(suggestion(u"Three."_s, u"3."_s, 1), m_document);
    const QCoro::Task<> again = actions().applySuggestion(suggestion(u"One."_s, u"1."_s, 0), m_document);
    ASSERT_TRUE(eventually([&] { return first.isReady() && second.isReady() && again.isReady(); }));
    EXPECT_EQ(onDisk(), "1. Two. 3.");
    EXPECT_EQ(m_area.text(m_document).toString(), u"1. Two. 3."_s);
    EXPECT_EQ(m_updated.size(), 2);
    EXPECT_EQ(console(), u"Could not find robust match for original text block in document.\n"_s);
}

TEST_F(SuggestionActionsTest, ATextThatDiffersOnlyInCaseIsReplacedInTheCaseOfTheReplacement)
{
    m_files.write(u"a.md"_s, "See THE TABLE below.");
    apply(suggestion(u"the table"_s, u"the Chart"_s));
    EXPECT_EQ(onDisk(), "See the Chart below.");
}

TEST_F(SuggestionActionsTest, ADecomposedDocumentTakesAnEditThatIsComposed)
{
    m_files.write(u"a.md"_s, "Cafe\xCC\x81 au lait.");
    apply(suggestion(u"Caf\u00E9"_s, u"Tea"_s));
    EXPECT_EQ(onDisk(), "Tea au lait.");
}

TEST_F(SuggestionActionsTest, ASecondPressOfOneCardFindsNothingMore)
{
    apply(suggestion(u"One."_s, u"1."_s));
    apply(suggestion(u"One."_s, u"1."_s));
    EXPECT_EQ(onDisk(), "1. Two. Three.");
    EXPECT_EQ(console(), u"Could not find robust match for original text block in document.\n"_s);
}

TEST_F(SuggestionActionsTest, ARejectionTouchesNothing)
{
    const EditSuggestion edit = suggestion(u"Two."_s, u"2."_s);
    actions().rejectSuggestion(edit);
    EXPECT_EQ(actions().state(edit), SuggestionState::Rejected);
    EXPECT_EQ(onDisk(), "One. Two. Three.");
    EXPECT_TRUE(m_updated.isEmpty());
}

TEST_F(SuggestionActionsTest, ARejectedCardStaysSoWhenAnotherComes)
{
    actions().rejectSuggestion(suggestion(u"a"_s, u"b"_s, 0));
    EXPECT_EQ(actions().state(suggestion(u"a"_s, u"b"_s, 0)), SuggestionState::Rejected);
    EXPECT_EQ(actions().state(suggestion(u"c"_s, u"d"_s, 1)), SuggestionState::Pending);
}

TEST_F(SuggestionActionsTest, DecisionsAreForgottenWithTheProcessAndAnAcceptedEditFindsNothing)
{
    apply(suggestion(u"Two."_s, u"2."_s));
    m_actions.reset();
    serve("{}"); // a new service
    EXPECT_EQ(actions().state(suggestion(u"Two."_s, u"2."_s)), SuggestionState::Pending);
    apply(suggestion(u"Two."_s, u"2."_s));
    EXPECT_EQ(onDisk(), "One. 2. Three.");
}

TEST_F(SuggestionActionsTest, LineEndsOfTheDocumentAreFoundAndThoseOfTheEditTakenAsTheyAre)
{
    m_files.write(u"a.md"_s, "one\r\ntwo\r\nthree\r\n");
    apply(suggestion(u"one\ntwo"_s, u"1\n2"_s));
    EXPECT_EQ(onDisk(), "1\n2\r\nthree\r\n");
}

} // namespace Tessaline
