#include "documents/OpenFilesList.h"

#include "tests/documents/SidebarFixture.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class OpenFilesListTest : public SidebarFixture
{};

} // namespace

TEST_F(OpenFilesListTest, SaysSoWhenThereAreNone)
{
    EXPECT_TRUE(showsText(m_view, u"No Open Files"_s));
    EXPECT_TRUE(openRows().isEmpty());

    m_workspace.openFile(m_a);
    EXPECT_FALSE(showsText(m_view, u"No Open Files"_s));
}

TEST_F(OpenFilesListTest, HasOneRowPerFileInOrder)
{
    m_workspace.openFile(m_b);
    m_workspace.openFile(m_a);

    EXPECT_EQ(openNames(), (QStringList{u"b.md"_s, u"a.md"_s}));
    EXPECT_EQ(openRows().at(0)->height(), 40);
}

TEST_F(OpenFilesListTest, TellsTwoFilesOfOneNameApartByTheirProjects)
{
    m_workspace.addProject(m_one);
    m_workspace.addProject(m_two);
    m_workspace.openFile(m_a);
    m_workspace.openFile(m_otherA);

    EXPECT_EQ(openNames(), (QStringList{u"a.md"_s, u"a.md"_s}));
    EXPECT_EQ(accessibleText(openRows().at(0), QAccessible::Description), u"one"_s);
    EXPECT_EQ(accessibleText(openRows().at(1), QAccessible::Description), u"two"_s);
}

TEST_F(OpenFilesListTest, AClickMakesAFileActive)
{
    m_workspace.openFile(m_a);
    m_workspace.openFile(m_b);
    QSignalSpy chosen(&m_view, &FileBrowserView::documentChosen);

    QTest::mouseClick(openRows().at(0), Qt::LeftButton);

    EXPECT_EQ(m_workspace.activeFileURL(), m_a);
    EXPECT_EQ(chosen.count(), 1);
}

TEST_F(OpenFilesListTest, TheRowOfTheActiveFileIsSelected)
{
    m_workspace.openFile(m_a);
    m_workspace.openFile(m_b);
    const auto isSelected = [this](qsizetype index) {
        return QAccessible::queryAccessibleInterface(openRows().at(index))->state().selected != 0;
    };
    EXPECT_FALSE(isSelected(0));
    EXPECT_TRUE(isSelected(1));

    m_workspace.setActiveFileURL(m_a);
    EXPECT_TRUE(isSelected(0));
    EXPECT_FALSE(isSelected(1));
    m_workspace.setActiveFileURL(std::nullopt);
    EXPECT_FALSE(isSelected(0));
}

TEST_F(OpenFilesListTest, ClosingTheActiveFileMakesTheLastEntryActive)
{
    m_workspace.openFile(m_a);
    m_workspace.openFile(m_b);
    m_workspace.openFile(m_c);
    m_workspace.setActiveFileURL(m_a);

    closeRow(0);

    EXPECT_EQ(openNames(), (QStringList{u"b.md"_s, u"c.txt"_s}));
    EXPECT_EQ(m_workspace.activeFileURL(), m_c); // not its neighbour
}

TEST_F(OpenFilesListTest, ClosingTheOnlyFileLeavesNone)
{
    m_workspace.openFile(m_a);

    closeRow(0);

    EXPECT_EQ(m_workspace.activeFileURL(), std::nullopt);
    EXPECT_TRUE(showsText(m_view, u"No Open Files"_s));
}

TEST_F(OpenFilesListTest, ClosingAnotherFileLeavesTheActiveOneAlone)
{
    m_workspace.openFile(m_a);
    m_workspace.openFile(m_b);
    QSignalSpy changed(&m_workspace, &Workspace::activeFileURLChanged);

    closeRow(0);

    EXPECT_EQ(m_workspace.activeFileURL(), m_b);
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(openNames(), QStringList{u"b.md"_s});
}

TEST_F(OpenFilesListTest, AClickOnTheCloseButtonDoesNotOpenTheRow)
{
    m_workspace.openFile(m_a);
    m_workspace.openFile(m_b);
    QSignalSpy chosen(&m_view, &FileBrowserView::documentChosen);

    closeRow(0);

    EXPECT_EQ(chosen.count(), 0);
}

TEST_F(OpenFilesListTest, ARepeatedEntryIsClosedOneAtATime)
{
    m_workspace.setOpenFiles({{m_a, std::nullopt}, {m_a, std::nullopt}});

    closeRow(1);

    EXPECT_EQ(openNames(), QStringList{u"a.md"_s});
}

TEST_F(OpenFilesListTest, EveryCloseButtonIsReachableByName)
{
    m_workspace.openFile(m_a);
    m_workspace.openFile(m_b);

    EXPECT_NE(buttonNamed(m_view, u"Close “a.md”"_s), nullptr);
    EXPECT_NE(buttonNamed(m_view, u"Close “b.md”"_s), nullptr);
}

TEST_F(OpenFilesListTest, IsAListOfListItemsToAssistiveTechnology)
{
    m_workspace.openFile(m_a);
    auto *list = m_view.findChild<OpenFilesList *>();

    EXPECT_EQ(accessibleText(list, QAccessible::Name), u"Open Files"_s);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(list)->role(), QAccessible::List);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(openRows().at(0))->role(), QAccessible::ListItem);
    EXPECT_TRUE(QAccessible::queryAccessibleInterface(openRows().at(0))->state().selectable);
}

TEST_F(OpenFilesListTest, ArrowsMoveReturnOpensAndDeleteCloses)
{
    m_workspace.openFile(m_a);
    m_workspace.openFile(m_b);
    m_workspace.openFile(m_c);
    openRows().at(2)->setFocus(Qt::TabFocusReason);

    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Up);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Up);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Up); // the first stays the first
    EXPECT_TRUE(openRows().at(0)->hasFocus());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(m_workspace.activeFileURL(), m_a);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Delete);
    EXPECT_EQ(openNames(), (QStringList{u"a.md"_s, u"c.txt"_s}));
    EXPECT_EQ(m_workspace.activeFileURL(), m_a);
}

TEST_F(OpenFilesListTest, ClosingTheLastRowByKeyboardLeavesTheFocusInTheList)
{
    m_workspace.openFile(m_a);
    m_workspace.openFile(m_b);
    openRows().at(1)->setFocus(Qt::TabFocusReason);

    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Delete);

    ASSERT_EQ(openRows().size(), 1);
    EXPECT_TRUE(openRows().at(0)->hasFocus());
}

TEST_F(OpenFilesListTest, ANameWithALineBreakKeepsItsRow)
{
    m_files.write(u"two\nlines.md"_s, "x");
    m_workspace.openFile(m_files.url(u"two\nlines.md"_s));

    EXPECT_EQ(openNames(), QStringList{u"two\nlines.md"_s});
    EXPECT_EQ(openRows().at(0)->height(), 40);
}

TEST_F(OpenFilesListTest, AnAmpersandInANameMakesNoShortcut)
{
    m_files.write(u"R&D.md"_s, "x");
    m_workspace.openFile(m_files.url(u"R&D.md"_s));

    EXPECT_EQ(openNames(), QStringList{u"R&D.md"_s});
    EXPECT_TRUE(openRows().at(0)->shortcut().isEmpty());
}

TEST_F(OpenFilesListTest, MarkupInANameIsShownAsItIs)
{
    m_files.write(u"<b>bold.md"_s, "x");
    m_workspace.openFile(m_files.url(u"<b>bold.md"_s));

    EXPECT_EQ(openNames(), QStringList{u"<b>bold.md"_s});
    EXPECT_TRUE(openRows().at(0)->toolTip().contains(u"&lt;b&gt;bold.md"_s));
}

TEST_F(OpenFilesListTest, ManyOpenFilesLeaveMostOfTheHeightToTheProjects)
{
    addProject(m_one);
    for (int number = 0; number < 40; ++number) {
        const QString name = u"f%1.md"_s.arg(number);
        m_files.write(name, "x");
        m_workspace.openFile(m_files.url(name));
    }
    QCoreApplication::processEvents();

    EXPECT_GT(tree().height(), m_view.height() / 3);
    OpenFileRow *active = openRows().constLast();
    EXPECT_FALSE(active->visibleRegion().isEmpty()); // the newest was brought into view
}

} // namespace Tessaline
