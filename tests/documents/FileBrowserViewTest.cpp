#include "documents/FileBrowserView.h"

#include "tests/documents/SidebarFixture.h"
#include "tests/support/HeldWorkers.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class FileBrowserViewTest : public SidebarFixture
{
protected:
    QMenu *openMenu() const { return qobject_cast<QMenu *>(QApplication::activePopupWidget()); }
};

} // namespace

TEST_F(FileBrowserViewTest, WithoutProjectsItSaysSoAndOffersToAddOne)
{
    EXPECT_TRUE(showsText(m_view, u"No projects added."_s));
    EXPECT_FALSE(tree().isVisible());
    m_answer = m_one;

    QTest::mouseClick(buttonNamed(m_view, u"Add Project..."_s), Qt::LeftButton);

    ASSERT_TRUE(eventually([&] { return tree().isVisible(); }));
    EXPECT_EQ(m_asked, 1);
    EXPECT_FALSE(showsText(m_view, u"No projects added."_s));
}

TEST_F(FileBrowserViewTest, UntilTheFirstScanHasEndedThereAreNoProjectsToBeSeen)
{
    {
        const HeldWorkers held;
        m_workspace.addProject(m_one);
        EXPECT_TRUE(showsText(m_view, u"No projects added."_s));
    }
    ASSERT_TRUE(eventually([&] { return tree().isVisible(); }));
}

TEST_F(FileBrowserViewTest, HasANameForAssistiveTechnology)
{
    EXPECT_EQ(accessibleText(&m_view, QAccessible::Name), u"Sidebar"_s);
    EXPECT_EQ(accessibleText(&tree(), QAccessible::Name), u"Projects"_s);
}

TEST_F(FileBrowserViewTest, TheHeaderHasItsTwoButtons)
{
    m_answer = m_two;

    PlainButton *add = buttonNamed(m_view, u"Add Project Folder"_s);
    ASSERT_NE(add, nullptr);
    EXPECT_EQ(add->toolTip(), u"Add Project Folder"_s);
    EXPECT_NE(buttonNamed(m_view, u"Refresh Projects"_s), nullptr);
    QTest::mouseClick(add, Qt::LeftButton);

    EXPECT_EQ(m_workspace.projects(), QList{ProjectReference{m_two}});
}

TEST_F(FileBrowserViewTest, ACancelledPanelChangesNothing)
{
    QTest::mouseClick(buttonNamed(m_view, u"Add Project Folder"_s), Qt::LeftButton);

    EXPECT_EQ(m_asked, 1);
    EXPECT_TRUE(m_workspace.projects().isEmpty());
}

TEST_F(FileBrowserViewTest, AFolderIsAddedInItsStandardizedForm)
{
    m_answer = FileURL(m_files.folder().path() + u"/./one"_s);
    QTest::mouseClick(buttonNamed(m_view, u"Add Project Folder"_s), Qt::LeftButton);
    m_answer = m_one;
    QTest::mouseClick(buttonNamed(m_view, u"Add Project Folder"_s), Qt::LeftButton);

    EXPECT_EQ(m_workspace.projects(), QList{ProjectReference{m_one}});
}

TEST_F(FileBrowserViewTest, AFolderNestedInAProjectGivesASecondRoot)
{
    addProject(m_one);
    addProject(m_sub);
    ASSERT_TRUE(eventually([&] { return model().rowCount() == 2; }));

    EXPECT_EQ(model().index(0, 0).data().toString(), u"one"_s);
    EXPECT_EQ(model().index(1, 0).data().toString(), u"sub"_s);
}

TEST_F(FileBrowserViewTest, TheMenuOfAProjectsFolderRemovesIt)
{
    addProject(m_one);
    addProject(m_two);

    rightClick(m_one);
    ASSERT_NE(openMenu(), nullptr);
    ASSERT_EQ(openMenu()->actions().size(), 1);
    EXPECT_EQ(openMenu()->actions().first()->text(), u"Remove Project"_s);
    QTest::keyClick(openMenu(), Qt::Key_Down);
    QTest::keyClick(openMenu(), Qt::Key_Return);

    ASSERT_TRUE(eventually([&] { return model().rowCount() == 1; }));
    EXPECT_EQ(m_workspace.projects(), QList{ProjectReference{m_two}});
}

TEST_F(FileBrowserViewTest, RemovingAProjectLeavesItsActiveFileOpenAndActive)
{
    addProject(m_one);
    clickRow(m_one);
    clickRow(m_a);
    ASSERT_EQ(m_workspace.activeFileURL(), m_a);

    rightClick(m_one);
    ASSERT_NE(openMenu(), nullptr);
    openMenu()->actions().first()->trigger();
    openMenu()->close();
    ASSERT_TRUE(eventually([&] { return showsText(m_view, u"No projects added."_s); }));

    EXPECT_EQ(openNames(), QStringList{u"a.md"_s});
    EXPECT_EQ(m_workspace.activeFileURL(), m_a);
    EXPECT_EQ(m_workspace.openFiles().first().project, std::nullopt);
}

TEST_F(FileBrowserViewTest, ASubfolderOffersNoRemoval)
{
    addProject(m_one);
    clickRow(m_one);

    rightClick(m_sub);
    EXPECT_EQ(openMenu(), nullptr);
    rightClick(m_a);
    EXPECT_EQ(openMenu(), nullptr);
}

TEST_F(FileBrowserViewTest, AFileThatWasMadeAppearsWhenTheProjectFilesHaveChanged)
{
    addProject(m_one);
    m_files.write(u"one/new.md"_s, "");

    m_events.post(AppEvents::kProjectFilesChanged);

    EXPECT_TRUE(eventually([&] { return row(m_files.url(u"one/new.md"_s)).isValid(); }));
}

TEST_F(FileBrowserViewTest, RefreshingFindsWhatAnotherProgramMade)
{
    addProject(m_one);
    m_files.write(u"one/new.md"_s, "");

    rescan();

    EXPECT_TRUE(row(m_files.url(u"one/new.md"_s)).isValid());
}

TEST_F(FileBrowserViewTest, WhileItIsHiddenNothingIsScanned)
{
    addProject(m_one);
    m_view.hide();
    QSignalSpy changed(&m_projects, &ProjectsList::fileItemsChanged);

    m_events.post(AppEvents::kProjectFilesChanged);
    EXPECT_EQ(changed.count(), 0);
    m_view.show();

    EXPECT_TRUE(eventually([&] { return changed.count() == 1; }));
}

TEST_F(FileBrowserViewTest, TabWalksFromTheTopToTheBottom)
{
    addProject(m_one);
    m_workspace.openFile(m_a);
    openRows().at(0)->setFocus(Qt::TabFocusReason);

    QStringList names;
    for (int step = 0; step < 3; ++step) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        names.append(accessibleText(QApplication::focusWidget(), QAccessible::Name));
    }

    EXPECT_EQ(names, (QStringList{u"Refresh Projects"_s, u"Add Project Folder"_s, u"Projects"_s}));
}

} // namespace Tessaline
