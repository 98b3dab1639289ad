#include "documents/ProjectTreeView.h"

#include "tests/documents/SidebarFixture.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class ProjectTreeViewTest : public SidebarFixture
{
protected:
    bool isOpen(const FileURL &folder) { return tree().isExpanded(row(folder)); }
    bool isVisibleRow(const FileURL &url) { return tree().visualRect(row(url)).isValid(); }
};

} // namespace

TEST_F(ProjectTreeViewTest, AtTheStartEveryFolderIsClosed)
{
    addProject(m_one);

    EXPECT_FALSE(isOpen(m_one));
    EXPECT_EQ(tree().visualRect(row(m_one)).height(), 28);
}

TEST_F(ProjectTreeViewTest, AClickOnAFolderOpensAndClosesIt)
{
    addProject(m_one);

    clickRow(m_one);
    EXPECT_TRUE(isOpen(m_one));
    EXPECT_TRUE(m_projects.isExpanded(m_one));
    clickRow(m_one);
    EXPECT_FALSE(isOpen(m_one));
    EXPECT_FALSE(m_projects.isExpanded(m_one));
    EXPECT_EQ(m_workspace.activeFileURL(), std::nullopt);
}

TEST_F(ProjectTreeViewTest, ADoubleClickIsOneToggle)
{
    addProject(m_one);
    const QPoint place = tree().visualRect(row(m_one)).center();

    QTest::mouseClick(tree().viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(tree().viewport(), Qt::LeftButton, {}, place);

    EXPECT_TRUE(isOpen(m_one));
}

TEST_F(ProjectTreeViewTest, AClickOnAFileOpensItWithTheProjectOfTheTree)
{
    addProject(m_one);
    addProject(m_sub); // nested: by its path the file would belong to the inner project
    ASSERT_TRUE(eventually([&] { return model().rowCount() == 2; }));
    clickRow(m_one);
    clickRow(m_sub);
    QSignalSpy chosen(&m_view, &FileBrowserView::documentChosen);

    clickRow(m_b);

    EXPECT_EQ(m_workspace.activeFileURL(), m_b);
    ASSERT_EQ(m_workspace.openFiles().size(), 1);
    EXPECT_EQ(m_workspace.openFiles().first().project, ProjectReference{m_one});
    EXPECT_EQ(chosen.count(), 1);
}

TEST_F(ProjectTreeViewTest, AClickOnAnOpenFileLeavesItsEntryAsItIs)
{
    addProject(m_one);
    m_workspace.openFile(m_a);
    m_workspace.openFile(m_b);
    const QList<OpenFileReference> before = m_workspace.openFiles();
    clickRow(m_one);

    clickRow(m_a);

    EXPECT_EQ(m_workspace.openFiles(), before);
    EXPECT_EQ(m_workspace.activeFileURL(), m_a);
}

TEST_F(ProjectTreeViewTest, AClickLeavesTheFocusWhereItWas)
{
    addProject(m_one);
    PlainButton *elsewhere = buttonNamed(m_view, u"Refresh Projects"_s);
    elsewhere->setFocus(Qt::TabFocusReason);

    clickRow(m_one);

    EXPECT_TRUE(elsewhere->hasFocus());
}

TEST_F(ProjectTreeViewTest, ARightClickNeitherOpensAFileNorAFolder)
{
    addProject(m_one);
    QTest::mouseClick(tree().viewport(), Qt::RightButton, {}, tree().visualRect(row(m_one)).center());
    EXPECT_FALSE(isOpen(m_one));

    clickRow(m_one);
    QTest::mouseClick(tree().viewport(), Qt::RightButton, {}, tree().visualRect(row(m_a)).center());
    EXPECT_EQ(m_workspace.activeFileURL(), std::nullopt);
}

TEST_F(ProjectTreeViewTest, TheRowOfTheActiveFileIsSelected)
{
    addProject(m_one);
    clickRow(m_one);
    clickRow(m_a);

    EXPECT_TRUE(tree().selectionModel()->isSelected(row(m_a)));
    EXPECT_EQ(tree().selectionModel()->selectedIndexes().size(), 1);
    m_workspace.setActiveFileURL(std::nullopt);
    EXPECT_TRUE(tree().selectionModel()->selectedIndexes().isEmpty());
}

TEST_F(ProjectTreeViewTest, AnActiveFileInTwoProjectsIsSelectedInBoth)
{
    addProject(m_one);
    addProject(m_sub);
    ASSERT_TRUE(eventually([&] { return model().rowCount() == 2; }));

    m_workspace.openFile(m_b);

    EXPECT_EQ(tree().selectionModel()->selectedIndexes().size(), 2);
}

TEST_F(ProjectTreeViewTest, MakingAFileActiveOpensNoFolder)
{
    addProject(m_one);

    m_workspace.openFile(m_c);

    EXPECT_FALSE(isOpen(m_one));
    EXPECT_FALSE(isVisibleRow(m_c));
}

TEST_F(ProjectTreeViewTest, AFolderInTwoProjectsOpensAndClosesInBoth)
{
    addProject(m_one);
    addProject(m_sub);
    ASSERT_TRUE(eventually([&] { return model().rowCount() == 2; }));
    clickRow(m_one);

    clickRow(m_sub);

    for (const QModelIndex &index : model().indexesOf(m_sub))
        EXPECT_TRUE(tree().isExpanded(index));
}

TEST_F(ProjectTreeViewTest, ARescanKeepsTheOpenFolders)
{
    addProject(m_one);
    clickRow(m_one);
    clickRow(m_sub);
    clickRow(m_deep);
    m_files.write(u"one/added.md"_s, "x");

    rescan();

    EXPECT_TRUE(isOpen(m_one));
    EXPECT_TRUE(isOpen(m_sub));
    EXPECT_TRUE(isOpen(m_deep));
    EXPECT_TRUE(isVisibleRow(m_c));
    EXPECT_TRUE(isVisibleRow(m_files.url(u"one/added.md"_s)));
}

TEST_F(ProjectTreeViewTest, AFolderInsideAClosedOneIsStillOpenWhenThatIsOpenedAgain)
{
    addProject(m_one);
    clickRow(m_one);
    clickRow(m_sub);
    clickRow(m_one); // closed

    rescan();
    EXPECT_FALSE(isVisibleRow(m_b));
    clickRow(m_one);

    EXPECT_TRUE(isOpen(m_sub));
    EXPECT_TRUE(isVisibleRow(m_b));
}

TEST_F(ProjectTreeViewTest, AFolderThatWasAwayForAWhileComesBackOpen)
{
    addProject(m_one);
    clickRow(m_one);
    clickRow(m_sub);
    ASSERT_TRUE(QDir().rename(m_sub.path(), m_files.url(u"away"_s).path()));
    rescan();
    EXPECT_FALSE(row(m_sub).isValid());

    ASSERT_TRUE(QDir().rename(m_files.url(u"away"_s).path(), m_sub.path()));
    rescan();

    EXPECT_TRUE(isOpen(m_sub));
    EXPECT_TRUE(isVisibleRow(m_b));
}

TEST_F(ProjectTreeViewTest, ARescanKeepsTheScrollPositionAndTheRowOfTheKeyboard)
{
    for (int number = 100; number < 200; ++number)
        m_files.write(u"one/%1.md"_s.arg(number), "x");
    addProject(m_one);
    clickRow(m_one);
    const FileURL shown = m_files.url(u"one/150.md"_s);
    tree().scrollTo(row(shown), QAbstractItemView::PositionAtTop);
    tree().verticalScrollBar()->setValue(tree().verticalScrollBar()->value() + 5);
    tree().selectionModel()->setCurrentIndex(row(m_files.url(u"one/160.md"_s)), QItemSelectionModel::NoUpdate);
    const int before = tree().visualRect(row(shown)).top();
    ASSERT_GT(tree().verticalScrollBar()->value(), 0);

    m_files.write(u"one/100a.md"_s, "above what is shown");
    rescan();

    EXPECT_EQ(tree().visualRect(row(shown)).top(), before);
    EXPECT_EQ(tree().currentIndex(), row(m_files.url(u"one/160.md"_s)));
}

TEST_F(ProjectTreeViewTest, TheKeyboardOpensFoldersAndFiles)
{
    addProject(m_one);
    tree().setFocus(Qt::TabFocusReason);
    EXPECT_EQ(tree().currentIndex(), row(m_one));

    QTest::keyClick(&tree(), Qt::Key_Right);
    EXPECT_TRUE(isOpen(m_one));
    QTest::keyClick(&tree(), Qt::Key_Down);
    EXPECT_EQ(tree().currentIndex(), row(m_sub));
    QTest::keyClick(&tree(), Qt::Key_Space);
    EXPECT_TRUE(isOpen(m_sub));
    QTest::keyClick(&tree(), Qt::Key_Return);
    EXPECT_FALSE(isOpen(m_sub));
    QTest::keyClick(&tree(), Qt::Key_Down);
    QTest::keyClick(&tree(), Qt::Key_Return);
    EXPECT_EQ(m_workspace.activeFileURL(), m_a);
    QTest::keyClick(&tree(), Qt::Key_Left);
    EXPECT_EQ(tree().currentIndex(), row(m_one));
    QTest::keyClick(&tree(), Qt::Key_Left);
    EXPECT_FALSE(isOpen(m_one));
}

TEST_F(ProjectTreeViewTest, TheKeyboardBeginsAtTheActiveFile)
{
    addProject(m_one);
    clickRow(m_one);
    tree().selectionModel()->clearCurrentIndex();
    m_workspace.openFile(m_a);

    tree().setFocus(Qt::TabFocusReason);

    EXPECT_EQ(tree().currentIndex(), row(m_a));
}

TEST_F(ProjectTreeViewTest, RowsAreNamedToAssistiveTechnology)
{
    addProject(m_one);
    clickRow(m_one);

    QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&tree());
    EXPECT_EQ(accessible->text(QAccessible::Name), u"Projects"_s);
    QStringList names;
    for (int child = 1; child < accessible->childCount(); ++child) // the first is the header
        names.append(accessible->child(child)->text(QAccessible::Name));
    EXPECT_EQ(names, (QStringList{u"one"_s, u"sub"_s, u"a.md"_s}));
}

TEST_F(ProjectTreeViewTest, TheActiveRowIsSelectedToAssistiveTechnology)
{
    addProject(m_one);
    clickRow(m_one);
    clickRow(m_a);

    QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&tree());
    ASSERT_EQ(accessible->childCount(), 4); // the header and three rows
    EXPECT_TRUE(accessible->child(3)->state().selected);
    EXPECT_FALSE(accessible->child(2)->state().selected);
}

TEST_F(ProjectTreeViewTest, OpeningAFileThatTakesTheTreeAwayIsHarmless)
{
    addProject(m_one);
    clickRow(m_one);
    // Someone answers to the new file by removing its project at once.
    QObject::connect(&m_workspace, &Workspace::activeFileURLChanged, &m_view,
                     [this] { m_workspace.removeProject(ProjectReference{m_one}); });

    clickRow(m_a);

    EXPECT_EQ(m_workspace.activeFileURL(), m_a);
    EXPECT_TRUE(eventually([&] { return model().rowCount() == 0; }));
}

} // namespace Tessaline
