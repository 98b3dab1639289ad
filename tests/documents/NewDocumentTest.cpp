#include "tests/documents/EditorAreaFixture.h"

/// The flow that makes a new document.
namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class NewDocumentTest : public EditorAreaFixture
{
protected:
    NewDocumentTest()
    {
        m_events.observe(AppEvents::kProjectFilesChanged, &m_context, [this](const QVariantMap &userInfo) {
            ++m_projectFilesChanged;
            m_activeThen = m_workspace.activeFileURL();
            EXPECT_TRUE(userInfo.isEmpty());
        });
        m_area->appear();
    }

    void create(const FileURL &url)
    {
        m_answer = url;
        const int before = m_projectFilesChanged;
        m_events.post(AppEvents::kCreateNewDocument);
        ASSERT_TRUE(eventually([&] { return m_projectFilesChanged > before; }));
    }

    const FileURL m_new{u"/docs/new/Untitled.md"_s};
    QObject m_context;
    int m_projectFilesChanged = 0;
    std::optional<FileURL> m_activeThen;
};

} // namespace

TEST_F(NewDocumentTest, IsAnEmptyFileThatIsOpenAndActive)
{
    create(m_new);

    EXPECT_EQ(m_disk.text(m_new), QString(u""_s));
    EXPECT_TRUE(m_area->hasText(m_new));
    EXPECT_EQ(m_area->state(), EditorAreaState::Ready);
    EXPECT_EQ(m_workspace.activeFileURL(), m_new);
    EXPECT_EQ(m_workspace.openFiles().constLast().url, m_new);
}

TEST_F(NewDocumentTest, TellsTheSidebarOnceAndLast)
{
    create(m_new);

    EXPECT_EQ(m_projectFilesChanged, 1);
    EXPECT_EQ(m_activeThen, m_new);
}

TEST_F(NewDocumentTest, LandsInTheProjectThatContainsIt)
{
    const ProjectReference docs{FileURL(u"/docs"_s)};
    const ProjectReference inner{FileURL(u"/docs/new"_s)};
    m_workspace.setProjects({docs, inner});

    create(m_new);

    EXPECT_EQ(m_workspace.projects(), (QList<ProjectReference>{docs, inner}));
    EXPECT_EQ(m_workspace.openFiles().constLast(), (OpenFileReference{m_new, inner}));
}

TEST_F(NewDocumentTest, OutsideAllProjectsItsFolderBecomesOne)
{
    const ProjectReference elsewhere{FileURL(u"/elsewhere"_s)};
    m_workspace.setProjects({elsewhere});

    create(FileURL(u"/docs/./new/Untitled.md"_s));

    const ProjectReference added{FileURL(u"/docs/new"_s)};
    EXPECT_EQ(m_workspace.projects(), (QList<ProjectReference>{elsewhere, added}));
    EXPECT_EQ(m_workspace.openFiles().constLast().project, added);
}

TEST_F(NewDocumentTest, ThePanelBeginsInTheFirstProject)
{
    m_area->createNewDocument();
    m_workspace.setProjects({{FileURL(u"/first"_s)}, {FileURL(u"/second"_s)}});
    m_area->createNewDocument();

    EXPECT_EQ(m_askedIn, (QList<FileURL>{FileURL(), FileURL(u"/first"_s)}));
}

TEST_F(NewDocumentTest, CancellingThePanelChangesNothing)
{
    open(m_a);

    m_area->createNewDocument();
    settle();

    EXPECT_EQ(m_askedIn.size(), 1);
    EXPECT_TRUE(m_disk.writes().isEmpty());
    EXPECT_EQ(m_workspace.activeFileURL(), m_a);
    EXPECT_EQ(m_workspace.openFiles().size(), 1);
    EXPECT_TRUE(m_workspace.projects().isEmpty());
    EXPECT_EQ(m_projectFilesChanged, 0);
}

TEST_F(NewDocumentTest, AFileThatCannotBeMadeRaisesTheAlertAndChangesNothing)
{
    open(m_a);
    m_disk.failWrites(m_new, {FailureKind::NotWritable, u"You do not have permission to write there."_s});
    m_answer = m_new;

    m_area->createNewDocument();
    ASSERT_TRUE(eventually([&] { return m_area->saveErrorMessage().has_value(); }));

    EXPECT_EQ(m_area->saveErrorMessage(), u"Untitled.md: You do not have permission to write there."_s);
    EXPECT_EQ(m_workspace.activeFileURL(), m_a);
    EXPECT_EQ(m_workspace.openFiles().size(), 1);
    EXPECT_TRUE(m_workspace.projects().isEmpty());
    EXPECT_FALSE(m_area->hasText(m_new));
    EXPECT_EQ(m_projectFilesChanged, 0);
}

TEST_F(NewDocumentTest, OverAnOpenFileEmptiesItAndKeepsItsPlace)
{
    open(m_a);
    open(m_b);

    create(m_a);

    EXPECT_EQ(m_disk.text(m_a), QString(u""_s));
    EXPECT_TRUE(m_area->text(m_a).isEmpty());
    ASSERT_EQ(m_workspace.openFiles().size(), 2);
    EXPECT_EQ(m_workspace.openFiles().constFirst().url, m_a);
    EXPECT_EQ(m_workspace.activeFileURL(), m_a);
}

TEST_F(NewDocumentTest, OverTheActiveFileTellsItsEditors)
{
    open(m_a);
    QSignalSpy replaced(m_area.get(), &EditorArea::textReplaced);

    create(m_a);

    EXPECT_EQ(replaced.count(), 1);
    EXPECT_TRUE(m_area->text(m_a).isEmpty());
}

TEST_F(NewDocumentTest, OverAFileWithAnUnsavedTextStaysEmpty)
{
    open(m_a);
    m_disk.failWrites(m_a, {FailureKind::NoSpace, u"There is no space left on the disk."_s});
    type(m_a, u", never saved"_s);
    ASSERT_TRUE(finishes(m_store.flushAll()));
    m_disk.allowWrites(m_a);

    create(m_a);
    ASSERT_TRUE(finishes(m_store.flushAll()));

    EXPECT_EQ(m_disk.text(m_a), QString(u""_s));
    EXPECT_TRUE(m_area->text(m_a).isEmpty());
}

TEST_F(NewDocumentTest, OverAFileThatCouldNotBeOpenedMakesItReady)
{
    const FileURL missing(u"/docs/missing.md"_s);
    ::testing::internal::CaptureStdout();
    m_workspace.openFile(missing);
    const bool failed = eventually([&] { return m_area->state() == EditorAreaState::Failed; });
    ::testing::internal::GetCapturedStdout();
    ASSERT_TRUE(failed);
    QSignalSpy presented(m_area.get(), &EditorArea::presentationChanged);

    create(missing);

    EXPECT_EQ(m_area->state(), EditorAreaState::Ready);
    EXPECT_GT(presented.count(), 0);
}

TEST_F(NewDocumentTest, SavesTheFileThatWasActive)
{
    open(m_a);
    type(m_a, u"!"_s);

    create(m_new);

    EXPECT_TRUE(eventually([&] { return m_disk.text(m_a) == u"text of a!"_s; }));
}

TEST_F(NewDocumentTest, IsReadFromTheDiskOnceItIsActive)
{
    create(m_new);

    EXPECT_TRUE(eventually([&] { return m_disk.reads().contains(m_new); }));
}

TEST_F(NewDocumentTest, DoesNothingMoreWhenTheAreaHasGoneMeanwhile)
{
    const auto write = m_disk.holdNextWrite(m_new);
    m_answer = m_new;
    m_area->createNewDocument();
    ASSERT_TRUE(eventually([&] { return write->isReached(); }));

    m_area.reset();
    write->release();
    settle();

    EXPECT_EQ(m_workspace.activeFileURL(), std::nullopt);
}

} // namespace Tessaline
