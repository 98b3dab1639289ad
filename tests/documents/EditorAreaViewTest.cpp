#include "documents/EditorAreaView.h"

#include "foundation_ui/TextButton.h"
#include "tests/documents/EditorAreaViewFixture.h"

#include <QtWidgets/QHBoxLayout>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class EditorAreaViewTest : public EditorAreaViewFixture
{};

/// Runs something in the midst of the show of the widget that it filters.
class OnShow final : public QObject
{
public:
    explicit OnShow(std::function<void()> action) : m_action(std::move(action)) {}

private:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Show)
            std::exchange(m_action, [] {})();
        return false;
    }

    std::function<void()> m_action;
};

} // namespace

TEST_F(EditorAreaViewTest, WithoutAFileItOffersANewDocument)
{
    show();

    EXPECT_TRUE(showsText(*m_view, u"Select a file from the sidebar or start a new document."_s));
    EXPECT_FALSE(m_view->findChild<EditorControlToolbar *>()->isVisible());
    EXPECT_TRUE(editors().isEmpty());
    EXPECT_EQ(m_view->currentEditor(), nullptr);
}

TEST_F(EditorAreaViewTest, HasANameForAssistiveTechnology)
{
    show();

    EXPECT_EQ(accessibleText(m_view.get(), QAccessible::Name), u"Editor Area"_s);
}

TEST_F(EditorAreaViewTest, TheButtonOfTheEmptyStateMakesADocument)
{
    m_workspace.addProject(m_files.folder());
    m_answer = m_files.url(u"Untitled.md"_s);
    show();

    clickButton(u"New Document…"_s);

    EXPECT_EQ(m_askedIn, QList{m_files.folder()});
    ASSERT_TRUE(eventually([&] { return m_workspace.activeFileURL() == m_answer; }));
    ASSERT_TRUE(eventually([&] { return editorHasFocus(); })); // ready to be written in
    EXPECT_EQ(editorText(), QString());
}

TEST_F(EditorAreaViewTest, CancellingThePanelChangesNothing)
{
    show();

    clickButton(u"New Document…"_s);

    EXPECT_EQ(m_askedIn.size(), 1);
    EXPECT_TRUE(showsText(*m_view, u"Select a file from the sidebar or start a new document."_s));
}

TEST_F(EditorAreaViewTest, ASlowFileIsSaidToBeOpening)
{
    const auto hold = m_disk.holdNextRead(m_a);
    m_workspace.openFile(m_a);
    show();

    EXPECT_FALSE(showsText(*m_view, u"Opening a.md…"_s)); // not for the moment that most files take
    ASSERT_TRUE(eventually([&] { return showsText(*m_view, u"Opening a.md…"_s); }));
    EXPECT_TRUE(m_view->findChild<EditorControlToolbar *>()->isVisible());
    hold->release();

    ASSERT_TRUE(eventually([&] { return !editors().isEmpty(); }));
    EXPECT_FALSE(showsText(*m_view, u"Opening a.md…"_s));
}

TEST_F(EditorAreaViewTest, AFileThatCannotBeOpenedShowsWhyAndCanBeTriedAgain)
{
    m_disk.failReads(m_a, {FailureKind::NotReadable, u"You have no permission to read this file."_s});
    m_workspace.openFile(m_a);
    show();
    ASSERT_TRUE(eventually([&] { return m_area->state() == EditorAreaState::Failed; }));

    EXPECT_TRUE(showsText(*m_view, u"Couldn’t Open a.md"_s));
    EXPECT_TRUE(showsText(*m_view, u"You have no permission to read this file."_s));
    const qsizetype reads = m_disk.reads().size();
    const auto hold = m_disk.holdNextRead(m_a);
    clickButton(u"Try Again"_s);

    EXPECT_EQ(m_area->state(), EditorAreaState::Loading);
    EXPECT_FALSE(showsText(*m_view, u"Couldn’t Open a.md"_s));
    hold->release();
    ASSERT_TRUE(eventually([&] { return m_area->state() == EditorAreaState::Failed; }));
    EXPECT_EQ(m_disk.reads().size(), reads + 1);
    EXPECT_TRUE(showsText(*m_view, u"Couldn’t Open a.md"_s));
}

TEST_F(EditorAreaViewTest, ALongMessageIsBrokenWithinItsWidth)
{
    m_disk.failReads(m_a, {FailureKind::NotReadable, QString(400, u'x')});
    m_workspace.openFile(m_a);
    show();
    ASSERT_TRUE(eventually([&] { return m_area->state() == EditorAreaState::Failed; }));
    QCoreApplication::processEvents();

    for (QLabel *label : m_view->findChildren<QLabel *>()) {
        if (label->text().size() != 400)
            continue;
        EXPECT_LE(label->width(), 420);
        EXPECT_GT(label->height(), 3 * label->fontMetrics().height());
    }
}

TEST_F(EditorAreaViewTest, AnOpenFileIsShownInItsEditor)
{
    showWith(m_a);

    ASSERT_EQ(editors().size(), 1);
    EXPECT_EQ(editorText(), u"text of a"_s);
    EXPECT_EQ(m_view->currentEditor(), editors().first());
}

TEST_F(EditorAreaViewTest, AFileThatIsThereWithinTheFirstShowHasItsPlaceAtOnce)
{
    m_area->loadFile(m_a, EditorArea::LoadPolicy::Force);
    ASSERT_TRUE(eventually([&] { return m_area->hasText(m_a); }));
    OnShow opening([&] { m_workspace.openFile(m_a); });
    m_viewFilter = &opening;

    show();

    ASSERT_EQ(editors().size(), 1);
    EXPECT_EQ(editors().first()->width(), m_view->width());
    EXPECT_GT(editors().first()->height(), m_view->height() / 2);
}

TEST_F(EditorAreaViewTest, WhatIsTypedWhileTheFirstFileIsOpenedIsInIt)
{
    const auto hold = m_disk.holdNextRead(m_a);
    m_workspace.openFile(m_a);
    show();
    ASSERT_TRUE(m_view->hasFocus());

    QTest::keyClicks(m_view.get(), u"Hallo"_s);
    QTest::keyClick(m_view.get(), Qt::Key_Left);
    QTest::keyClick(m_view.get(), Qt::Key_Backspace);
    QInputMethodEvent composing(u"´"_s, {});
    QApplication::sendEvent(m_view.get(), &composing);
    QInputMethodEvent composed;
    composed.setCommitString(u"é"_s);
    QApplication::sendEvent(m_view.get(), &composed);
    QTest::keyClick(m_view.get(), Qt::Key_Tab);
    hold->release();
    ASSERT_TRUE(eventually([&] { return m_area->state() == EditorAreaState::Ready; }));

    EXPECT_EQ(editorText(), u"Halé\totext of a"_s);
    EXPECT_EQ(shown(m_a), editorText());
    EXPECT_TRUE(editorHasFocus());
    QTest::keyClicks(editors().first()->textView(), u"!"_s);
    EXPECT_EQ(editorText(), u"Halé\t!otext of a"_s);
}

TEST_F(EditorAreaViewTest, WhatIsTypedWhileAChosenFileIsOpenedIsInIt)
{
    showWith(m_b);
    m_elsewhere.setFocus();
    const auto hold = m_disk.holdNextRead(m_a);
    m_workspace.openFile(m_a);
    m_view->focusEditor();

    QTest::keyClicks(QApplication::focusWidget(), u"new "_s);
    hold->release();
    ASSERT_TRUE(eventually([&] { return m_area->state() == EditorAreaState::Ready; }));

    EXPECT_EQ(editorText(), u"new text of a"_s);
    EXPECT_EQ(shown(m_b), u"text of b"_s);
    EXPECT_EQ(m_elsewhere.text(), QString());
}

TEST_F(EditorAreaViewTest, WhatIsTypedForAFileGoesToNoOther)
{
    showWith(m_b);
    const auto hold = m_disk.holdNextRead(m_a);
    m_workspace.openFile(m_a);
    QTest::keyClicks(QApplication::focusWidget(), u"for a"_s);

    m_workspace.setActiveFileURL(m_b);
    ASSERT_EQ(m_area->state(), EditorAreaState::Ready);
    EXPECT_EQ(editorText(), u"text of b"_s);
    hold->release();
    open(m_a);

    EXPECT_EQ(editorText(), u"text of a"_s);
}

TEST_F(EditorAreaViewTest, WhatIsTypedForAFileThatCannotBeOpenedIsForgotten)
{
    m_disk.failReads(m_a, {FailureKind::NotFound, u"The file is gone."_s});
    const auto hold = m_disk.holdNextRead(m_a);
    m_workspace.openFile(m_a);
    show();
    QTest::keyClicks(m_view.get(), u"lost"_s);
    hold->release();
    ASSERT_TRUE(eventually([&] { return m_area->state() == EditorAreaState::Failed; }));

    QTest::keyClicks(m_view.get(), u"too"_s); // there is nothing to hold it for
    m_workspace.closeFile(m_a);
    open(m_b);

    EXPECT_EQ(editorText(), u"text of b"_s);
}

TEST_F(EditorAreaViewTest, AFailedReloadKeepsTheEditor)
{
    showWith(m_a);
    m_disk.failReads(m_a, {FailureKind::NotFound, u"The file is gone."_s});

    m_area->loadFile(m_a, EditorArea::LoadPolicy::Force);
    settle();

    ASSERT_EQ(editors().size(), 1);
    EXPECT_EQ(editorText(), u"text of a"_s);
    EXPECT_FALSE(showsText(*m_view, u"Couldn’t Open a.md"_s));
}

TEST_F(EditorAreaViewTest, WhatIsTypedReachesTheTextAndTheDisk)
{
    showWith(m_a);

    QTest::keyClicks(editors().first()->textView(), u"Hello, "_s);
    EXPECT_EQ(shown(m_a), u"Hello, text of a"_s);
    ASSERT_TRUE(finishes(m_store.flushAll()));

    EXPECT_EQ(m_disk.text(m_a), u"Hello, text of a"_s);
}

TEST_F(EditorAreaViewTest, AReloadShowsTheNewTextInTheSameEditor)
{
    showWith(m_a);
    DocumentEditor *before = editors().first();
    m_disk.setText(m_a, u"changed elsewhere"_s);

    m_area->loadFile(m_a, EditorArea::LoadPolicy::Force);
    ASSERT_TRUE(eventually([&] { return editorText() == u"changed elsewhere"_s; }));

    EXPECT_EQ(editors().first(), before);
    EXPECT_TRUE(m_disk.textsWritten(m_a).isEmpty()); // showing is no edit
}

TEST_F(EditorAreaViewTest, AnotherFileGetsAnEditorOfItsOwn)
{
    showWith(m_a);
    const QString name = editors().first()->objectName();

    open(m_b);

    ASSERT_EQ(editors().size(), 1);
    EXPECT_EQ(editorText(), u"text of b"_s);
    EXPECT_NE(editors().first()->objectName(), name);
    EXPECT_EQ(editors().first()->objectName(), u"/docs/b.md-raw-markdown-editor"_s);
}

TEST_F(EditorAreaViewTest, ReturningToAFileBeginsWithAFreshEditor)
{
    showWith(m_a);
    editors().first()->select({3, 2});
    open(m_b);

    open(m_a);

    EXPECT_EQ(editorText(), u"text of a"_s);
    EXPECT_EQ(editors().first()->selection(), TextRange());
}

TEST_F(EditorAreaViewTest, WhatDoesNotConcernTheEditorLeavesItAlone)
{
    showWith(m_a);
    DocumentEditor *before = editors().first();

    m_workspace.addProject(FileURL(u"/docs"_s));
    m_preferences.setAppTheme(AppTheme::Dark);
    m_theme.setAppearance(Appearance::Dark);

    EXPECT_EQ(editors(), QList{before});
}

TEST_F(EditorAreaViewTest, ClosingTheOnlyFileLeavesTheEmptyState)
{
    showWith(m_a);

    m_workspace.closeFile(m_a);

    EXPECT_TRUE(editors().isEmpty());
    EXPECT_EQ(m_view->currentEditor(), nullptr);
    EXPECT_TRUE(showsText(*m_view, u"Select a file from the sidebar or start a new document."_s));
}

TEST_F(EditorAreaViewTest, APlainTextFileOffersPlainTextOnlyAndThePreferenceStays)
{
    m_preferences.setViewMode(ViewMode::Split);
    showWith(m_plain);

    ASSERT_EQ(editors().size(), 1);
    EXPECT_EQ(editors().first()->objectName(), u"/docs/plain.txt-plain-text-editor"_s);
    const auto &items = m_view->findChild<ViewModeSelector *>()->control().items();
    ASSERT_EQ(items.size(), 1);
    EXPECT_EQ(items.first().label, u"Plain Text"_s);
    EXPECT_EQ(m_preferences.viewMode(), ViewMode::Split);
}

TEST_F(EditorAreaViewTest, TheTextSizeFollowsAtOnce)
{
    showWith(m_a);
    const QImage before = editors().first()->grab().toImage();

    m_events.post(AppEvents::kZoomInFont);

    EXPECT_EQ(m_preferences.editorFontSize(), 18.0);
    EXPECT_NE(editors().first()->grab().toImage(), before);
}

TEST_F(EditorAreaViewTest, TheFormatToolbarIsThereForMarkdownOnly)
{
    showWith(m_a);
    auto *formatToolbar = new QLabel(u"B"_s);
    m_view->setFormatToolbar(formatToolbar);

    EXPECT_TRUE(formatToolbar->isVisible());
    open(m_plain);
    EXPECT_FALSE(formatToolbar->isVisible());
    m_workspace.closeFile(m_plain);
    m_workspace.closeFile(m_a);
    EXPECT_FALSE(formatToolbar->isVisible());
}

TEST_F(EditorAreaViewTest, TabWalksFromTheControlRowThroughTheFormatToolbarToTheDocument)
{
    showWith(m_a);
    auto *formatToolbar = new QWidget;
    auto *row = new QHBoxLayout(formatToolbar);
    for (const QString &name : {u"Bold"_s, u"Italic"_s})
        row->addWidget(new TextButton(m_theme, name, TextButton::Kind::Bordered));
    m_view->setFormatToolbar(formatToolbar);
    buttonNamed(*m_view, u"System"_s)->setFocus(Qt::TabFocusReason);

    QStringList names;
    for (int step = 0; step < 3; ++step) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        names.append(accessibleText(QApplication::focusWidget(), QAccessible::Name));
    }

    EXPECT_EQ(names, (QStringList{u"Bold"_s, u"Italic"_s, u"Markdown Source"_s}));
}

TEST_F(EditorAreaViewTest, GoingAwayWritesWhatIsPending)
{
    showWith(m_a);
    QTest::keyClicks(editors().first()->textView(), u"x"_s);

    m_window.hide();

    EXPECT_TRUE(eventually([&] { return m_disk.text(m_a) == u"xtext of a"_s; }));
}

TEST_F(EditorAreaViewTest, MayGoWhileAFileIsBeingOpened)
{
    const auto hold = m_disk.holdNextRead(m_a);
    m_workspace.openFile(m_a);
    show();

    m_view.reset();
    hold->release();

    ASSERT_TRUE(eventually([&] { return m_area->state() == EditorAreaState::Ready || !m_area->hasText(m_a); }));
}

} // namespace Tessaline
