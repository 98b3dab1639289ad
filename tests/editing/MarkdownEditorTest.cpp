#include "editing/MarkdownEditor.h"

#include "foundation/AppEvents.h"

#include "tests/editing/OpenEditor.h"
#include "tests/editing/Printers.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>
#include <QtTest/QSignalSpy>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QScrollBar>

#include <memory>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

TextSelection caretAt(qsizetype position)
{
    return {position, position};
}

QString lines(int count)
{
    QString text;
    for (int i = 0; i < count; ++i)
        text.append(u"line %1 of the text\n"_s.arg(i));
    return text;
}

void format(OpenEditor &open, const QVariant &type)
{
    open.events.post(AppEvents::kInsertMarkdownFormat, {{AppEvents::kType, type}});
}

} // namespace

// The document

TEST(MarkdownEditor, ShowsTheDocumentAndReportsNothing)
{
    OpenEditor open(u"# Title\n\nText"_s);

    EXPECT_EQ(open.text(), u"# Title\n\nText"_s);
    EXPECT_TRUE(open.editedTexts.isEmpty());
    EXPECT_EQ(open.editor.textView()->accessibleName(), u"Markdown Source"_s);
}

TEST(MarkdownEditor, TextThatDiffersInAnyCharacterIsSetAnewWithTheSelectionClamped)
{
    OpenEditor open(u"one two three"_s);
    open.select(4, 13);

    open.setText(u"one tWo"_s);

    EXPECT_EQ(open.text(), u"one tWo"_s);
    EXPECT_EQ(open.selection(), (TextSelection{4, 7}));
    EXPECT_TRUE(open.editedTexts.isEmpty()) << "the program's own replacement is no edit";
}

TEST(MarkdownEditor, TextThatDiffersInAnInvisibleCharacterIsSetAnewToo)
{
    OpenEditor open(u"e\u0301"_s); // equal to the letter é in every comparison that normalises

    open.setText(u"\u00e9"_s);
    EXPECT_EQ(open.text(), u"\u00e9"_s);
    open.setText(u"\uFEFF\u00e9"_s);
    EXPECT_EQ(open.text(), u"\uFEFF\u00e9"_s);
    open.setText(u"\uFEFF\u00e9\r"_s);
    EXPECT_EQ(open.text(), u"\uFEFF\u00e9\r"_s);
}

TEST(MarkdownEditor, TheSameDocumentWithTheSameTextLeavesEverythingAlone)
{
    OpenEditor open(lines(200));
    open.press(Qt::Key_End, Qt::ControlModifier);
    open.press(Qt::Key_Left, Qt::ShiftModifier, 3);
    open.takeSelectionEvents();
    const TextSelection selection = open.selection();
    const int scrolled = open.view().verticalScrollBar()->value();
    QSignalSpy shown(&open.editor, &DocumentEditor::shownTextChanged);

    open.setText(open.text());

    EXPECT_EQ(open.selection(), selection);
    EXPECT_EQ(open.view().verticalScrollBar()->value(), scrolled);
    EXPECT_EQ(shown.count(), 0);
    EXPECT_TRUE(open.takeSelectionEvents().isEmpty());
}

TEST(MarkdownEditor, AnotherDocumentKeepsTheNumbersOfTheSelectionAndForgetsTheHistory)
{
    OpenEditor open(u"one two three"_s);
    open.type(u"x"_s);
    open.select(2, 9);

    open.open(u"/tmp/other.md"_s, u"other"_s);

    EXPECT_EQ(open.text(), u"other"_s);
    EXPECT_EQ(open.selection(), (TextSelection{2, 5}));
    open.press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(open.text(), u"other"_s);
}

TEST(MarkdownEditor, AnotherDocumentWithTheSameTextForgetsTheHistoryToo)
{
    OpenEditor open(u""_s);
    open.type(u"x"_s);

    open.open(u"/tmp/other.md"_s, u"x"_s);
    open.press(Qt::Key_Z, Qt::ControlModifier);

    EXPECT_EQ(open.text(), u"x"_s);
}

TEST(MarkdownEditor, TextFromOutsideCanBeUndone)
{
    OpenEditor open(u"as it was"_s);

    open.setText(u"as it is now"_s);
    open.press(Qt::Key_Z, Qt::ControlModifier);

    EXPECT_EQ(open.text(), u"as it was"_s);
    ASSERT_EQ(open.editedTexts.size(), 1) << "undoing is an edit by the person";
    EXPECT_EQ(open.editedTexts.constLast().toString(), u"as it was"_s);
}

TEST(MarkdownEditor, AfterAnEditTheUpdateWithItsTextChangesNothing)
{
    OpenEditor open(u"one"_s);
    QObject::connect(&open.editor, &DocumentEditor::edited, &open.editor, [&open](const ChunkedText &text) {
        open.editor.setDocument(FileURL(u"/tmp/document.md"_s), text); // as the owner of the text does
    });
    QSignalSpy shown(&open.editor, &DocumentEditor::shownTextChanged);

    open.press(Qt::Key_End);
    open.type(u"!?"_s);

    EXPECT_EQ(open.text(), u"one!?"_s);
    EXPECT_EQ(open.selection(), caretAt(5));
    EXPECT_EQ(shown.count(), 2);
    open.press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(open.text(), u"one"_s) << "still one run of typing";
}

TEST(MarkdownEditor, ReportsEachEditWithTheWholeTextAndTheChange)
{
    OpenEditor open(u"ab"_s);
    QSignalSpy edited(&open.editor, &DocumentEditor::edited);
    open.press(Qt::Key_Right);

    open.type(u"x"_s);
    open.press(Qt::Key_Delete);

    ASSERT_EQ(edited.count(), 2);
    EXPECT_EQ(edited.at(0).at(0).value<ChunkedText>(), ChunkedText(u"axb"_s));
    EXPECT_EQ(edited.at(0).at(1).value<TextChange>(), (TextChange{1, 0, 1}));
    EXPECT_EQ(edited.at(1).at(0).value<ChunkedText>(), ChunkedText(u"ax"_s));
    EXPECT_EQ(edited.at(1).at(1).value<TextChange>(), (TextChange{2, 1, 0}));
}

TEST(MarkdownEditor, AnOtherFontSizeAloneTouchesNeitherTextNorSelection)
{
    OpenEditor open(lines(50));
    open.select(3, 8);
    open.takeSelectionEvents();
    QSignalSpy shown(&open.editor, &DocumentEditor::shownTextChanged);
    const int rowHeight = open.view().caretRectInViewport(0).height();

    open.editor.setFontSize(24);

    EXPECT_GT(open.view().caretRectInViewport(0).height(), rowHeight);
    EXPECT_EQ(open.text(), lines(50));
    EXPECT_EQ(open.selection(), (TextSelection{3, 8}));
    EXPECT_EQ(shown.count(), 0);
    EXPECT_TRUE(open.editedTexts.isEmpty());
    EXPECT_FALSE(open.view().document().canUndo());
}

TEST(MarkdownEditor, EveryCharacterHasTheSameFixedWidth)
{
    OpenEditor open(u"# iiii\n**WWWW**\n"_s);
    TextLayout &layout = open.view().textLayout();
    const qreal width = layout.caretRect(1).x();

    for (qsizetype i = 0; i < 6; ++i)
        EXPECT_NEAR(layout.caretRect(i + 1).x() - layout.caretRect(i).x(), width, 0.1);
    for (qsizetype i = 7; i < 15; ++i)
        EXPECT_NEAR(layout.caretRect(i + 1).x() - layout.caretRect(i).x(), width, 0.1);
}

TEST(MarkdownEditor, TheTextStandsInAnInsetOfEqualSizeAtEveryWidth)
{
    OpenEditor open(u"text"_s);

    for (const int width : {200, 600, 1400}) {
        open.editor.resize(width, 300);
        open.settle();

        EXPECT_EQ(open.view().caretRectInViewport(0).topLeft(), QPoint(28, 28));
        EXPECT_EQ(open.view().textLayout().width(), open.view().viewport()->width() - 56);
    }
}

// Following another editor

TEST(MarkdownEditor, FollowsAnEditOfAnotherEditorWithItsSelectionAndScrollPosition)
{
    OpenEditor open(lines(500));
    open.view().ensureVisible({5000, 0});
    open.select(5000, 5004);
    open.settle();
    open.editedTexts.clear();
    open.takeSelectionEvents();
    const QPoint place = open.pointAt(5000);
    ChunkedText text = open.editor.shownText();

    open.editor.followEdit(text, text.replace(10, 0, u"three\nmore\nlines\n"));
    open.settle();

    EXPECT_EQ(open.editor.shownText(), text);
    EXPECT_EQ(open.selection(), (TextSelection{5017, 5021}));
    EXPECT_EQ(open.pointAt(5017), place);
    EXPECT_TRUE(open.editedTexts.isEmpty());
}

TEST(MarkdownEditor, FollowsDeletionsAboveWithoutMovingWhatIsInView)
{
    OpenEditor open(lines(500));
    open.view().ensureVisible({5000, 0});
    open.settle();
    const QPoint place = open.pointAt(5000);
    ChunkedText text = open.editor.shownText();

    open.editor.followEdit(text, text.replace(0, 1000, u""));
    open.settle();

    EXPECT_EQ(open.pointAt(4000), place);
}

TEST(MarkdownEditor, KeepsWhatIsInViewWhenTheLineAboveJoinsIt)
{
    OpenEditor open(lines(500));
    open.view().ensureVisible({5000, 0});
    open.settle();
    const qsizetype top = open.view().positionAt({28, 0});
    const qsizetype topLine = open.view().textLayout().placeAt(top).range.location;
    const qsizetype below = open.view().positionAt({28, 200});
    const QPoint place = open.pointAt(below);
    ChunkedText text = open.editor.shownText();

    open.editor.followEdit(text, text.replace(topLine - 1, 1, u" "));
    open.settle();

    // The joined lines may wrap otherwise: what follows moves by a row and a paragraph's spacing at the most.
    EXPECT_LE(std::abs(open.pointAt(below).y() - place.y()), open.view().textLayout().rowHeight() + 6);
}

TEST(MarkdownEditor, FollowsTheDeletionOfAllThatIsInView)
{
    OpenEditor open(lines(500));
    open.press(Qt::Key_End, Qt::ControlModifier);
    open.settle();
    ChunkedText text = open.editor.shownText();

    open.editor.followEdit(text, text.replace(30, text.size() - 30, u""));
    open.settle();

    EXPECT_EQ(open.view().verticalScrollBar()->maximum(), 0);
    EXPECT_EQ(open.view().caretRectInViewport(0).top(), 28) << "no empty view below the end of the text";
}

TEST(MarkdownEditor, FollowingADeletionNeverLeavesTheViewBelowTheEndOfTheText)
{
    OpenEditor open(lines(500));
    open.press(Qt::Key_End, Qt::ControlModifier);
    open.settle();
    ChunkedText text = open.editor.shownText();

    open.editor.followEdit(text, text.replace(4000, text.size() - 4000, u""));
    open.settle();

    EXPECT_TRUE(open.isInView(4000));
    EXPECT_EQ(open.view().verticalScrollBar()->value(), open.view().verticalScrollBar()->maximum());
    EXPECT_GT(open.view().caretRectInViewport(4000).bottom(), open.view().viewport()->height() - 60);
}

// Selection events

TEST(MarkdownEditor, PostsTheSelectedTextWithItsRectangle)
{
    OpenEditor open(u"one two\nthree"_s);

    open.select(4, 7);

    const QList<QVariantMap> posted = open.takeSelectionEvents();
    ASSERT_EQ(posted.size(), 1);
    EXPECT_EQ(posted.at(0).size(), 4);
    EXPECT_EQ(posted.at(0).value(AppEvents::kText), QVariant(u"two"_s));
    EXPECT_EQ(posted.at(0).value(AppEvents::kSourceText), QVariant(u"two"_s));
    EXPECT_EQ(posted.at(0).value(AppEvents::kIsRendered), QVariant(false));
    ASSERT_EQ(posted.at(0).value(AppEvents::kRect).typeId(), QMetaType::QRectF);
    const QRectF rect = posted.at(0).value(AppEvents::kRect).toRectF();
    EXPECT_NEAR(rect.left(), open.pointAt(4).x(), 1);
    EXPECT_NEAR(rect.right(), open.pointAt(7).x(), 2);
    EXPECT_NEAR(rect.top(), 28, 1);
    EXPECT_NEAR(rect.height(), open.view().caretRectInViewport(4).height(), 1);
}

TEST(MarkdownEditor, TheRectangleOfSeveralLinesIsAroundAllOfThem)
{
    OpenEditor open(u"one two\nthree\nfour"_s);

    open.select(16, 4); // backwards

    const QList<QVariantMap> posted = open.takeSelectionEvents();
    ASSERT_EQ(posted.size(), 1);
    EXPECT_EQ(posted.at(0).value(AppEvents::kText), QVariant(u"two\nthree\nfo"_s));
    const QRectF rect = posted.at(0).value(AppEvents::kRect).toRectF();
    EXPECT_LE(rect.top(), open.pointAt(4).y());
    EXPECT_GE(rect.bottom(), open.pointAt(16).y());
    EXPECT_LE(rect.left(), open.pointAt(8).x());
}

TEST(MarkdownEditor, PostsNothingWithTheEventOfAnEmptySelection)
{
    OpenEditor open(u"one two"_s);
    open.select(0, 3);
    open.takeSelectionEvents();

    open.press(Qt::Key_Right);

    EXPECT_EQ(open.takeSelectionEvents(), QList<QVariantMap>{QVariantMap()});
}

TEST(MarkdownEditor, ScrollingPostsTheEventWithoutUserInfoWhileTheSelectionStays)
{
    OpenEditor open(lines(200));
    open.select(0, 4);
    open.takeSelectionEvents();

    open.wheel(-240);
    open.settle();

    EXPECT_EQ(open.takeSelectionEvents(), QList<QVariantMap>{QVariantMap()});
    EXPECT_EQ(open.selection(), (TextSelection{0, 4}));
    open.view().verticalScrollBar()->setValue(open.view().verticalScrollBar()->maximum());
    EXPECT_FALSE(open.takeSelectionEvents().isEmpty());
    EXPECT_EQ(open.selection(), (TextSelection{0, 4}));
}

TEST(MarkdownEditor, AViewThatCannotScrollPostsNothingForTheWheel)
{
    OpenEditor open(u"short"_s);
    open.takeSelectionEvents();

    open.wheel(-240);

    EXPECT_TRUE(open.takeSelectionEvents().isEmpty());
}

TEST(MarkdownEditor, JumpingFarAwayPostsAScrollToo)
{
    OpenEditor open(lines(2000));
    open.takeSelectionEvents();

    open.press(Qt::Key_End, Qt::ControlModifier);

    // One for the caret, one for the scroll.
    EXPECT_EQ(open.takeSelectionEvents(), (QList<QVariantMap>{QVariantMap(), QVariantMap()}));
}

TEST(MarkdownEditor, ClearEditorTextSelectionCollapsesTheSelectionToItsLocation)
{
    OpenEditor open(u"one two three"_s);
    for (const TextSelection &selection : {TextSelection{4, 7}, TextSelection{7, 4}}) {
        open.select(selection.anchor, selection.caret);

        open.events.post(AppEvents::kClearEditorTextSelection);

        EXPECT_EQ(open.selection(), caretAt(4));
    }
}

TEST(MarkdownEditor, ClearEditorTextSelectionWithoutASelectionDoesNothing)
{
    OpenEditor open(u"one two"_s);
    open.press(Qt::Key_Right, Qt::NoModifier, 3);
    open.takeSelectionEvents();

    open.events.post(AppEvents::kClearEditorTextSelection);

    EXPECT_EQ(open.selection(), caretAt(3));
    EXPECT_TRUE(open.takeSelectionEvents().isEmpty());
}

// Format commands

TEST(MarkdownEditor, AFormatCommandReplacesTheSelectionAndPutsTheCaretBehind)
{
    OpenEditor open(u"say x now"_s);
    open.select(4, 5);

    format(open, u"bold"_s);

    EXPECT_EQ(open.text(), u"say **x** now"_s);
    EXPECT_EQ(open.selection(), caretAt(9));
    ASSERT_EQ(open.editedTexts.size(), 1);
    EXPECT_EQ(open.editedTexts.at(0).toString(), u"say **x** now"_s);
}

TEST(MarkdownEditor, ALinkWithoutASelectionPutsTheCaretBetweenTheBrackets)
{
    OpenEditor open(u"ab"_s);
    open.press(Qt::Key_Right);

    format(open, u"link"_s);

    EXPECT_EQ(open.text(), u"a[](url)b"_s);
    EXPECT_EQ(open.selection(), caretAt(2));
}

TEST(MarkdownEditor, AHeadingPrefixGoesInAtTheCaretAlsoInTheMiddleOfALine)
{
    OpenEditor open(u"one two"_s);
    open.press(Qt::Key_Right, Qt::NoModifier, 4);

    format(open, u"h2"_s);

    EXPECT_EQ(open.text(), u"one ## two"_s);
    EXPECT_EQ(open.selection(), caretAt(7));
}

TEST(MarkdownEditor, EachFormatCommandIsOneStepOfUndo)
{
    OpenEditor open(u"x"_s);
    open.type(u"ab"_s);
    format(open, u"bold"_s);
    format(open, u"table"_s);
    open.type(u"cd"_s);
    EXPECT_EQ(open.editedTexts.size(), 6);

    open.press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(open.text().endsWith(u"Cell 2 |**x"_s));
    open.press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(open.text(), u"ab****x"_s);
    open.press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(open.text(), u"abx"_s);
    EXPECT_EQ(open.selection(), caretAt(2));
    open.press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(open.text(), u"x"_s);
}

TEST(MarkdownEditor, AFormatCommandWithTheFocusInAnotherControlDoesNothing)
{
    OpenEditor open(u"text"_s);
    QLineEdit other(&open.editor);
    other.show();
    other.setFocus();
    ASSERT_TRUE(other.hasFocus());

    format(open, u"bold"_s);

    EXPECT_EQ(open.text(), u"text"_s);
    EXPECT_TRUE(open.editedTexts.isEmpty());
}

TEST(MarkdownEditor, AnUnknownFormatOrAWrongPayloadDoesNothing)
{
    OpenEditor open(u"text"_s);
    open.select(0, 4);

    format(open, u"strike"_s);
    format(open, 3);
    format(open, QByteArray("bold"));
    format(open, QStringList{u"bold"_s});
    open.events.post(AppEvents::kInsertMarkdownFormat);
    open.events.post(AppEvents::kInsertMarkdownFormat, {{u"kind"_s, u"bold"_s}});

    EXPECT_EQ(open.text(), u"text"_s);
    EXPECT_EQ(open.selection(), (TextSelection{0, 4}));
    EXPECT_TRUE(open.editedTexts.isEmpty());
}

// Zoom, and the end

TEST(MarkdownEditor, TheWheelWithCtrlPostsTheZoomEventsAndDoesNotScroll)
{
    OpenEditor open(lines(200));
    QStringList posted;
    for (const auto name : {AppEvents::kZoomInFont, AppEvents::kZoomOutFont})
        open.events.observe(name, &open.editor, [&posted, name](const QVariantMap &) { posted.append(name); });

    open.wheel(120, Qt::ControlModifier);
    open.wheel(-120, Qt::ControlModifier);

    EXPECT_EQ(posted, (QStringList{AppEvents::kZoomInFont, AppEvents::kZoomOutFont}));
    EXPECT_EQ(open.view().verticalScrollBar()->value(), 0);
}

TEST(MarkdownEditor, FineWheelsZoomOnceForEachWholeStep)
{
    OpenEditor open(u"text"_s);
    int zooms = 0;
    open.events.observe(AppEvents::kZoomInFont, &open.editor, [&zooms](const QVariantMap &) { ++zooms; });

    for (int i = 0; i < 16; ++i) // two steps in sixteen pieces, as a touch pad sends them
        open.wheel(15, Qt::ControlModifier);

    EXPECT_EQ(zooms, 2);
}

TEST(MarkdownEditor, EndsWhileItHasTheFocusAndASelection)
{
    auto open = std::make_unique<OpenEditor>(lines(50));
    open->select(3, 30);
    open->compose(u"abc"_s);
    ASSERT_TRUE(open->view().hasFocus());

    open.reset();
    QApplication::processEvents();

    EXPECT_EQ(QApplication::focusWidget(), nullptr);
}

TEST(MarkdownEditor, AnEditorThatHasGoneHearsNoEvents)
{
    EventCenter events;
    Theme theme;
    auto editor = std::make_unique<MarkdownEditor>(theme, events);
    editor.reset();

    events.post(AppEvents::kClearEditorTextSelection);
    events.post(AppEvents::kInsertMarkdownFormat, {{AppEvents::kType, u"bold"_s}});
}

TEST(MarkdownEditor, TheFocusOfTheEditorIsThatOfItsText)
{
    OpenEditor open(u"text"_s);
    QLineEdit other(&open.editor);
    other.show();
    other.setFocus();

    open.editor.setFocus();

    EXPECT_TRUE(open.view().hasFocus());
}

} // namespace Tessaline
