#include "editing/FindBar.h"

#include "foundation/BackgroundPool.h"
#include "foundation_ui/IconButton.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/TextButton.h"

#include "tests/editing/OpenEditor.h"
#include "tests/editing/Printers.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QVBoxLayout>

#include <memory>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// A bar above an editor, as a window has them.
struct Finding {
    std::unique_ptr<OpenEditor> open;
    QWidget window;
    FindBar *bar = nullptr;

    explicit Finding(const QString &text) : open(std::make_unique<OpenEditor>(text))
    {
        bar = new FindBar(open->theme);
        auto *const rows = new QVBoxLayout(&window);
        rows->addWidget(bar);
        rows->addWidget(&open->editor, 1);
        window.resize(900, 500);
        window.show();
        window.activateWindow();
        (void)QTest::qWaitForWindowActive(&window);
        bar->setTarget(&open->editor);
        open->view().setFocus();
    }
    ~Finding()
    {
        if (open)
            open->editor.setParent(nullptr); // it is the other's
    }

    template <class Widget>
    Widget *named(const QString &name) const
    {
        for (auto *const widget : bar->findChildren<Widget *>())
            if (widget->accessibleName() == name || widget->property("text").toString() == name)
                return widget;
        return nullptr;
    }
    QLineEdit &findField() const { return *named<QLineEdit>(u"Find"_s); }
    QLineEdit &replaceField() const { return *named<QLineEdit>(u"Replace with"_s); }
    QString count() const { return bar->findChild<Label *>()->text(); }
    bool counts(const QString &expected) const
    {
        return eventually([this, &expected] { return count() == expected; });
    }
    bool selects(const TextRange &range) const
    {
        return eventually([this, &range] { return open->editor.selection() == range; });
    }
    void look(const QString &text) const
    {
        findField().setFocus();
        findField().selectAll();
        QTest::keyClicks(&findField(), text);
        backgroundPool().waitForDone(); // the count of the last key, not of one before
        QApplication::processEvents();
    }
    void click(const QString &name) const { named<QAbstractButton>(name)->click(); }
};

} // namespace

TEST(FindBar, IsHiddenUntilItIsAskedFor)
{
    Finding finding(u"text"_s);

    EXPECT_FALSE(finding.bar->isVisible());
    finding.bar->openFind();
    EXPECT_TRUE(finding.bar->isVisible());
    EXPECT_TRUE(finding.findField().hasFocus());
    EXPECT_FALSE(finding.replaceField().isVisible());
    finding.bar->openReplace();
    EXPECT_TRUE(finding.replaceField().isVisible());
}

TEST(FindBar, OpensWithTheSelectionAndCountsItAmongAll)
{
    Finding finding(u"one two one two one"_s);
    finding.open->editor.select({8, 3});

    finding.bar->openFind();

    EXPECT_EQ(finding.findField().text(), u"one"_s);
    EXPECT_EQ(finding.findField().selectedText(), u"one"_s);
    EXPECT_TRUE(finding.counts(u"2 of 3"_s));
    EXPECT_EQ(finding.open->editor.selection(), (TextRange{8, 3}));
}

TEST(FindBar, ASelectionOfSeveralLinesIsNotLookedFor)
{
    for (const QString &lineEnd : {u"\n"_s, u"\r"_s, u"\r\n"_s, u"\u2029"_s}) {
        Finding finding(u"one"_s + lineEnd + u"two"_s);
        finding.open->editor.select({0, 6});

        finding.bar->openFind();

        EXPECT_EQ(finding.findField().text(), u""_s);
        EXPECT_EQ(finding.count(), u""_s);
    }
}

TEST(FindBar, OpensAgainWithTheLastText)
{
    Finding finding(u"one two one"_s);
    finding.bar->openFind();
    finding.look(u"one"_s);
    ASSERT_TRUE(finding.counts(u"1 of 2"_s));
    finding.bar->close();
    finding.open->select(5, 5);

    finding.bar->openFind();

    EXPECT_EQ(finding.findField().text(), u"one"_s);
    EXPECT_TRUE(finding.counts(u"2 found"_s));
}

TEST(FindBar, FollowsWhoTypes)
{
    Finding finding(u"to two twin"_s);
    finding.bar->openFind();

    finding.look(u"t"_s);
    EXPECT_TRUE(finding.selects({0, 1}));
    EXPECT_TRUE(finding.counts(u"1 of 3"_s));
    finding.look(u"tw"_s);
    EXPECT_TRUE(finding.selects({3, 2}));
    EXPECT_TRUE(finding.counts(u"1 of 2"_s));
    finding.look(u"twx"_s);
    EXPECT_TRUE(finding.counts(u"Not found"_s));
    EXPECT_EQ(finding.open->editor.selection(), (TextRange{3, 2}));
    finding.findField().clear();
    QTest::keyClick(&finding.findField(), Qt::Key_Backspace);
    finding.look(u"twi"_s);
    EXPECT_TRUE(finding.selects({7, 3}));
}

TEST(FindBar, ReturnGoesOnAndShiftReturnBack)
{
    Finding finding(u"a b a b a"_s);
    finding.bar->openFind();
    finding.look(u"a"_s);
    ASSERT_TRUE(finding.counts(u"1 of 3"_s));

    QTest::keyClick(&finding.findField(), Qt::Key_Return);
    EXPECT_TRUE(finding.counts(u"2 of 3"_s));
    EXPECT_EQ(finding.open->editor.selection(), (TextRange{4, 1}));
    QTest::keyClick(&finding.findField(), Qt::Key_Return, Qt::ShiftModifier);
    QTest::keyClick(&finding.findField(), Qt::Key_Enter, Qt::ShiftModifier);
    EXPECT_TRUE(finding.counts(u"3 of 3"_s));
    EXPECT_TRUE(finding.findField().hasFocus());
}

TEST(FindBar, TheButtonsGoOnAndBack)
{
    Finding finding(u"a b a b a"_s);
    finding.bar->openFind();
    finding.look(u"a"_s);
    ASSERT_TRUE(finding.counts(u"1 of 3"_s));

    finding.click(u"Next Occurrence (F3)"_s);
    EXPECT_TRUE(finding.counts(u"2 of 3"_s));
    finding.click(u"Previous Occurrence (Shift+F3)"_s);
    EXPECT_TRUE(finding.counts(u"1 of 3"_s));
}

TEST(FindBar, FindsTheNextAlsoWhileItIsClosed)
{
    Finding finding(u"a b a"_s);
    finding.bar->openFind();
    finding.look(u"a"_s);
    ASSERT_TRUE(finding.counts(u"1 of 2"_s));
    finding.bar->close();

    finding.bar->findNext();
    EXPECT_TRUE(finding.selects({4, 1}));
    finding.bar->findPrevious();
    EXPECT_TRUE(finding.selects({0, 1}));
    EXPECT_FALSE(finding.bar->isVisible());
}

TEST(FindBar, EscClosesItAndGivesTheFocusBack)
{
    Finding finding(u"a b a"_s);
    finding.bar->openReplace();
    finding.look(u"a"_s);

    QTest::keyClick(&finding.findField(), Qt::Key_Escape);
    EXPECT_FALSE(finding.bar->isVisible());
    EXPECT_TRUE(finding.open->view().hasFocus());
    finding.bar->openReplace();
    finding.replaceField().setFocus();
    QTest::keyClick(&finding.replaceField(), Qt::Key_Escape);

    EXPECT_FALSE(finding.bar->isVisible());
    EXPECT_TRUE(finding.open->view().hasFocus());
}

TEST(FindBar, ClosingItLeavesTheFocusWhereElseItIs)
{
    Finding finding(u"a b a"_s);
    QLineEdit other(&finding.window);
    other.show();
    finding.bar->openFind();
    other.setFocus();

    finding.bar->close();

    EXPECT_TRUE(other.hasFocus());
}

TEST(FindBar, MatchesCaseAndWholeWordsOnDemand)
{
    Finding finding(u"Cat cat concat"_s);
    finding.bar->openFind();
    finding.look(u"cat"_s);
    ASSERT_TRUE(finding.counts(u"1 of 3"_s));

    finding.click(u"Match Case"_s);
    EXPECT_TRUE(finding.counts(u"1 of 2"_s));
    EXPECT_EQ(finding.open->editor.selection(), (TextRange{4, 3}));
    finding.click(u"Whole Words"_s);
    EXPECT_TRUE(finding.counts(u"1 of 1"_s));
    finding.click(u"Match Case"_s);
    finding.click(u"Whole Words"_s);
    EXPECT_TRUE(finding.counts(u"1 of 3"_s));
}

TEST(FindBar, ReplacesOneAfterTheOther)
{
    Finding finding(u"cat cat dog cat"_s);
    finding.bar->openReplace();
    finding.look(u"cat"_s);
    ASSERT_TRUE(finding.counts(u"1 of 3"_s));
    finding.replaceField().setText(u"lion"_s);

    finding.click(u"Replace"_s);
    EXPECT_TRUE(finding.counts(u"1 of 2"_s));
    EXPECT_EQ(finding.open->text(), u"lion cat dog cat"_s);
    EXPECT_EQ(finding.open->editor.selection(), (TextRange{5, 3}));
    finding.replaceField().setFocus();
    QTest::keyClick(&finding.replaceField(), Qt::Key_Return);
    EXPECT_TRUE(finding.counts(u"1 of 1"_s));

    EXPECT_EQ(finding.open->text(), u"lion lion dog cat"_s);
    EXPECT_EQ(finding.open->editedTexts.size(), 2);
}

TEST(FindBar, ReplacesAllAsOneStepOfUndoAndSaysHowMany)
{
    Finding finding(u"cat cat dog cat"_s);
    finding.bar->openReplace();
    finding.look(u"cat"_s);
    ASSERT_TRUE(finding.counts(u"1 of 3"_s));
    finding.replaceField().setText(u"a\\1$&"_s); // to the letter

    finding.click(u"Replace All"_s);
    EXPECT_TRUE(finding.counts(u"3 replaced"_s));
    EXPECT_EQ(finding.open->text(), u"a\\1$& a\\1$& dog a\\1$&"_s);
    EXPECT_EQ(finding.open->editedTexts.size(), 1);
    QTest::qWait(300); // the text is searched again meanwhile
    EXPECT_EQ(finding.count(), u"3 replaced"_s);
    finding.open->view().undo();

    EXPECT_EQ(finding.open->text(), u"cat cat dog cat"_s);
    EXPECT_TRUE(eventually([&] { return QStringList{u"3 found"_s, u"1 of 3"_s}.contains(finding.count()); }));
}

TEST(FindBar, ReplacingByNothingDeletes)
{
    Finding finding(u"a-b-c"_s);
    finding.bar->openReplace();
    finding.look(u"-"_s);
    ASSERT_TRUE(finding.counts(u"1 of 2"_s));

    finding.click(u"Replace All"_s);

    EXPECT_TRUE(finding.counts(u"2 replaced"_s));
    EXPECT_EQ(finding.open->text(), u"abc"_s);
}

TEST(FindBar, FollowsEditsOfTheText)
{
    Finding finding(u"cat dog"_s);
    finding.bar->openFind();
    finding.look(u"cat"_s);
    ASSERT_TRUE(finding.counts(u"1 of 1"_s));

    finding.open->view().setFocus();
    finding.open->press(Qt::Key_End, Qt::ControlModifier);
    finding.open->type(u" cat"_s);

    EXPECT_TRUE(finding.counts(u"2 found"_s));
}

TEST(FindBar, CountsFollowTheSelectionOfThePerson)
{
    Finding finding(u"cat dog cat"_s);
    finding.bar->openFind();
    finding.look(u"cat"_s);
    ASSERT_TRUE(finding.counts(u"1 of 2"_s));

    finding.open->click(finding.open->pointAt(5));

    EXPECT_TRUE(finding.counts(u"2 found"_s));
}

TEST(FindBar, SearchesFromWhereThePersonHasClicked)
{
    Finding finding(u"cat dog cat cow"_s);
    finding.bar->openFind();
    finding.look(u"d"_s);
    ASSERT_TRUE(finding.counts(u"1 of 1"_s));

    finding.open->click(finding.open->pointAt(6));
    finding.look(u"c"_s);

    EXPECT_TRUE(finding.selects({8, 1}));
}

TEST(FindBar, AnotherEditorIsSearchedInstead)
{
    Finding finding(u"cat"_s);
    OpenEditor other(u"cat cat"_s);
    finding.bar->openFind();
    finding.look(u"cat"_s);
    ASSERT_TRUE(finding.counts(u"1 of 1"_s));

    finding.bar->setTarget(&other.editor);

    EXPECT_TRUE(finding.counts(u"2 found"_s));
    finding.bar->setTarget(&finding.open->editor);
}

TEST(FindBar, WithoutAnEditorItClosesAndDoesNothing)
{
    Finding finding(u"cat"_s);
    finding.bar->openFind();
    finding.look(u"cat"_s);

    finding.bar->setTarget(nullptr);
    EXPECT_FALSE(finding.bar->isVisible());
    finding.bar->openFind();
    EXPECT_FALSE(finding.bar->isVisible());
    finding.bar->findNext();
    finding.bar->findPrevious();

    EXPECT_EQ(finding.open->text(), u"cat"_s);
}

TEST(FindBar, ClosesWhenItsEditorIsDestroyed)
{
    Finding finding(u"cat "_s.repeated(50'000));
    finding.bar->openFind();
    finding.look(u"cat"_s); // is being searched for

    finding.open.reset();
    QTest::qWait(100);

    EXPECT_FALSE(finding.bar->isVisible());
    finding.bar->findNext();
    finding.bar->openFind();
    EXPECT_FALSE(finding.bar->isVisible());
}

TEST(FindBar, ItsEndUnmarksTheEditor)
{
    Finding finding(u"cat dog"_s);
    finding.open->view().clearFocus();
    const QImage plain = finding.open->view().viewport()->grab().toImage();
    finding.bar->openFind();
    finding.look(u"cat"_s);
    ASSERT_TRUE(finding.counts(u"1 of 1"_s));

    delete finding.bar;
    finding.open->select(0, 0);

    EXPECT_EQ(finding.open->view().viewport()->grab(QRect(QPoint(), plain.size())).toImage(), plain);
}

} // namespace Tessaline
