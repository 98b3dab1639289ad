#include "tests/documents/EditorAreaViewFixture.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class EditorAreaViewModesTest : public EditorAreaViewFixture
{};

} // namespace

TEST_F(EditorAreaViewModesTest, AnotherModeGetsAnEditorOfItsOwn)
{
    showWith(m_a);
    editors().first()->select({3, 2});

    clickButton(u"Editor"_s);

    EXPECT_EQ(m_preferences.viewMode(), ViewMode::Editor);
    ASSERT_EQ(editors().size(), 1);
    EXPECT_EQ(editors().first()->objectName(), u"/docs/a.md-editor"_s);
    EXPECT_EQ(editors().first()->selection(), TextRange());
}

TEST_F(EditorAreaViewModesTest, SplitShowsSourceAndFormattedSideBySide)
{
    m_preferences.setViewMode(ViewMode::Split);
    showWith(m_a);
    QCoreApplication::processEvents();

    ASSERT_EQ(editors().size(), 2);
    EXPECT_EQ(editors().at(0)->objectName(), u"/docs/a.md-split-markdown-editor"_s);
    EXPECT_EQ(editors().at(1)->objectName(), u"/docs/a.md-split-formatted-editor"_s);
    EXPECT_NEAR(editors().at(0)->width(), editors().at(1)->width(), 2);
    m_window.resize(420, 600);
    QCoreApplication::processEvents();
    EXPECT_GE(editors().at(0)->width(), 200);
    EXPECT_GE(editors().at(1)->width(), 200);
}

TEST_F(EditorAreaViewModesTest, BothPanesShareOneText)
{
    m_preferences.setViewMode(ViewMode::Split);
    showWith(m_a);

    QTest::keyClicks(editors().at(0)->textView(), u"left "_s);
    EXPECT_EQ(editorText(1), u"left text of a"_s);
    QTest::keyClicks(editors().at(1)->textView(), u"right "_s);
    EXPECT_EQ(editorText(0), u"right left text of a"_s);
    EXPECT_EQ(shown(m_a), editorText(0));

    m_disk.setText(m_a, u"from outside"_s);
    ASSERT_TRUE(finishes(m_store.flushAll()));
    m_disk.setText(m_a, u"from outside"_s);
    m_area->loadFile(m_a, EditorArea::LoadPolicy::Force);
    ASSERT_TRUE(eventually([&] { return editorText(0) == u"from outside"_s; }));
    EXPECT_EQ(editorText(1), u"from outside"_s);
}

TEST_F(EditorAreaViewModesTest, TheCurrentEditorIsTheOneThatLastHadTheFocus)
{
    m_preferences.setViewMode(ViewMode::Split);
    showWith(m_a);
    EXPECT_EQ(m_view->currentEditor(), editors().at(0));
    QSignalSpy changed(m_view.get(), &EditorAreaView::currentEditorChanged);

    editors().at(1)->textView()->setFocus();
    EXPECT_EQ(m_view->currentEditor(), editors().at(1));
    EXPECT_EQ(changed.count(), 1);
    m_elsewhere.setFocus();
    EXPECT_EQ(m_view->currentEditor(), editors().at(1));
}

TEST_F(EditorAreaViewModesTest, MayGoWhileOneOfTwoEditorsHasTheFocus)
{
    m_preferences.setViewMode(ViewMode::Split);
    showWith(m_a);
    editors().at(1)->textView()->setFocus();

    m_view.reset();

    EXPECT_EQ(QApplication::focusWidget(), nullptr);
}

TEST_F(EditorAreaViewModesTest, TheEditorHasTheFocusAtTheStart)
{
    showWith(m_a);

    EXPECT_TRUE(editorHasFocus());
}

TEST_F(EditorAreaViewModesTest, TheFocusGoesFromTheEditorOfOneFileToThatOfTheNext)
{
    showWith(m_a);

    open(m_b);

    EXPECT_TRUE(editorHasFocus());
}

TEST_F(EditorAreaViewModesTest, TheFocusIsNotTakenFromAnotherPlace)
{
    showWith(m_a);
    m_elsewhere.setFocus();

    open(m_b);

    EXPECT_TRUE(m_elsewhere.hasFocus());
}

TEST_F(EditorAreaViewModesTest, TheFocusIsGivenOnRequest)
{
    showWith(m_a);
    m_elsewhere.setFocus();

    m_view->focusEditor();

    EXPECT_TRUE(editorHasFocus());
}

TEST_F(EditorAreaViewModesTest, TheFocusIsGivenOnceTheFileIsThere)
{
    showWith(m_a);
    m_elsewhere.setFocus();
    const auto hold = m_disk.holdNextRead(m_b);

    m_workspace.openFile(m_b);
    m_view->focusEditor();
    EXPECT_TRUE(m_view->hasFocus());
    hold->release();

    EXPECT_TRUE(eventually([&] { return editorHasFocus(); }));
}

TEST_F(EditorAreaViewModesTest, TheFocusIsNotGivenIfThePersonHasGoneElsewhereMeanwhile)
{
    showWith(m_a);
    m_elsewhere.setFocus();
    const auto hold = m_disk.holdNextRead(m_b);
    QLineEdit other(&m_window);
    other.show();

    m_workspace.openFile(m_b);
    m_view->focusEditor();
    other.setFocus();
    hold->release();
    ASSERT_TRUE(eventually([&] { return !editors().isEmpty(); }));

    EXPECT_TRUE(other.hasFocus());
}

TEST_F(EditorAreaViewModesTest, AClickOnAModeGivesTheFocusToTheEditor)
{
    showWith(m_a);
    m_elsewhere.setFocus();

    clickButton(u"Editor"_s);

    EXPECT_TRUE(editorHasFocus());
}

TEST_F(EditorAreaViewModesTest, WalkingThroughTheModesByKeyboardStaysInTheToolbar)
{
    showWith(m_a);
    buttonNamed(*m_view, u"Markdown"_s)->setFocus(Qt::TabFocusReason);

    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
    EXPECT_EQ(m_preferences.viewMode(), ViewMode::Split);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Left);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Left);

    EXPECT_EQ(m_preferences.viewMode(), ViewMode::Editor);
    EXPECT_EQ(accessibleText(QApplication::focusWidget(), QAccessible::Name), u"Editor"_s);
}

TEST_F(EditorAreaViewModesTest, TheFindBarStandsBetweenTheToolbarAndTheEditor)
{
    showWith(m_a);

    m_view->findBar().openFind();
    QCoreApplication::processEvents();

    EXPECT_TRUE(m_view->findBar().isVisible());
    EXPECT_GE(m_view->findBar().y(), m_view->findChild<EditorControlToolbar *>()->geometry().bottom());
    EXPECT_LE(m_view->findBar().geometry().bottom(), editors().first()->mapTo(m_view.get(), QPoint()).y());
}

TEST_F(EditorAreaViewModesTest, EscInTheDocumentClosesTheFindBarAndLeavesTheFocusThere)
{
    showWith(m_a);
    m_view->findBar().openFind();
    m_view->focusEditor();
    ASSERT_TRUE(editorHasFocus());

    QTest::keyClick(editors().first()->textView(), Qt::Key_Escape);

    EXPECT_FALSE(m_view->findBar().isVisible());
    EXPECT_TRUE(editorHasFocus());
    EXPECT_EQ(editorText(), u"text of a"_s);
}

TEST_F(EditorAreaViewModesTest, TheFindBarClosesWithItsEditor)
{
    showWith(m_a);
    m_view->findBar().openFind();

    m_workspace.closeFile(m_a);

    EXPECT_FALSE(m_view->findBar().isVisible());
}

} // namespace Tessaline
