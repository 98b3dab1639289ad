#include "editing/TextView.h"

#include "tests/editing/GeneratedText.h"
#include "tests/editing/OpenEditor.h"
#include "tests/editing/Printers.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>
#include <QtGui/QPaintEvent>
#include <QtTest/QSignalSpy>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QScrollBar>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QString lines(int count)
{
    QString text;
    for (int i = 0; i < count; ++i)
        text.append(u"line %1 of the text\n"_s.arg(i));
    return text;
}

/// Long and short paragraphs in scripts of other widths than the heights are guessed from.
QString unevenText(unsigned seed, int paragraphs)
{
    GeneratedText random(seed);
    QString text;
    for (int i = 0; i < paragraphs; ++i) {
        const QString word = random.oneIn(3) ? u"漢字の文章 "_s : random.oneIn(2) ? u"WORD "_s : u"\t"_s;
        text.append(word.repeated(random.below(120))).append(u'\n');
    }
    return text;
}

/// Collects what is painted of a viewport.
class PaintWatch final : public QObject
{
public:
    explicit PaintWatch(QWidget *viewport) { viewport->installEventFilter(this); }

    QRegion painted;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            painted += static_cast<QPaintEvent *>(event)->region();
        return QObject::eventFilter(watched, event);
    }
};

QImage pictureOf(TextView &view)
{
    return view.viewport()->grab().toImage();
}

} // namespace

// Scrolling

TEST(TextView, ScrollingToTheEndAndBackLandsExactlyAtTheEnds)
{
    for (unsigned seed = 1; seed <= 6; ++seed) {
        OpenEditor open(unevenText(seed, 300));
        QScrollBar &bar = *open.view().verticalScrollBar();
        const QString text = open.text();
        SCOPED_TRACE(seed);

        bar.setValue(bar.maximum());
        open.settle();
        EXPECT_EQ(bar.value(), bar.maximum());
        const QRect last = open.view().caretRectInViewport(text.size());
        EXPECT_NEAR(last.bottom() + 1 + 4, open.view().viewport()->height() - 28, 1)
            << "the inset stays below the text";

        bar.setValue(0);
        open.settle();
        EXPECT_EQ(bar.value(), 0);
        EXPECT_EQ(open.view().caretRectInViewport(0).top(), 28);
    }
}

TEST(TextView, TheWheelReachesBothEndsStepByStep)
{
    OpenEditor open(unevenText(7, 200));
    QScrollBar &bar = *open.view().verticalScrollBar();

    for (int i = 0; i < 3000 && bar.value() < bar.maximum(); ++i)
        open.wheel(-120);
    EXPECT_EQ(bar.value(), bar.maximum());
    EXPECT_TRUE(open.isInView(open.text().size()));
    for (int i = 0; i < 3000 && bar.value() > 0; ++i)
        open.wheel(120);
    EXPECT_EQ(bar.value(), 0);
    EXPECT_EQ(open.view().caretRectInViewport(0).top(), 28);
}

TEST(TextView, ScrollByMovesWhatIsInViewByExactlyThesePixels)
{
    OpenEditor open(unevenText(8, 300));
    open.view().verticalScrollBar()->setValue(open.view().verticalScrollBar()->maximum() / 2);
    open.settle();
    for (const int pixels : {1, 17, 200, -3, -150, -500, 700}) {
        const qsizetype middle = open.view().positionAt({28, 200});
        const int before = open.view().caretRectInViewport(middle).top();

        open.view().scrollBy(pixels);

        EXPECT_EQ(open.view().caretRectInViewport(middle).top(), before - pixels);
    }
}

TEST(TextView, AShortTextDoesNotScroll)
{
    OpenEditor open(u"one\ntwo"_s);

    EXPECT_EQ(open.view().verticalScrollBar()->maximum(), 0);
    open.view().scrollBy(100);
    EXPECT_EQ(open.view().caretRectInViewport(0).top(), 28);
    open.view().scrollBy(-100);
    EXPECT_EQ(open.view().caretRectInViewport(0).top(), 28);
}

TEST(TextView, EnsureVisibleShowsEveryPlaceOfUnevenTexts)
{
    for (unsigned seed = 11; seed <= 16; ++seed) {
        OpenEditor open(unevenText(seed, 400));
        GeneratedText random(seed);
        for (int i = 0; i < 60; ++i) {
            const qsizetype size = open.text().size();
            qsizetype position = random.below(size + 1);
            if (random.oneIn(2)) { // near: where heights between are still guessed
                const qsizetype here = open.view().positionAt({28, 200});
                position = std::clamp<qsizetype>(here + random.below(3000) - 1500, 0, size);
            }

            open.view().ensureVisible({position, 0});

            ASSERT_TRUE(open.isInView(position)) << "seed " << seed << ", position " << position;
            if (random.oneIn(3))
                open.settle();
        }
    }
}

TEST(TextView, ARangeThatIsLargerThanTheViewShowsItsEnd)
{
    OpenEditor open(lines(300));

    open.editor.select({100, 4000});

    EXPECT_TRUE(open.isInView(4100));
}

TEST(TextView, ARangeThatFitsIsShownWhole)
{
    OpenEditor open(lines(300));

    open.editor.select({3000, 60});

    EXPECT_TRUE(open.isInView(3000));
    EXPECT_TRUE(open.isInView(3060));
}

TEST(TextView, ANarrowerWindowKeepsTheTopInView)
{
    OpenEditor open(u"many words that wrap "_s.repeated(10).append(u'\n').repeated(200));
    open.view().verticalScrollBar()->setValue(open.view().verticalScrollBar()->maximum() / 2);
    open.settle();
    const qsizetype top = open.view().positionAt({28, 5});

    open.editor.resize(350, OpenEditor::kHeight);
    open.settle();

    EXPECT_LE(std::abs(open.view().positionAt({28, 5}) - top), 211) << "within the paragraph";
}

TEST(TextView, AnotherFontSizeKeepsTheTopInView)
{
    OpenEditor open(lines(500));
    open.view().verticalScrollBar()->setValue(open.view().verticalScrollBar()->maximum() / 2);
    open.settle();
    const qsizetype top = open.view().positionAt({28, 20});

    open.editor.setFontSize(20);
    open.settle();

    EXPECT_LE(std::abs(open.view().positionAt({28, 20}) - top), 44);
    open.view().verticalScrollBar()->setValue(open.view().verticalScrollBar()->maximum());
    EXPECT_TRUE(open.isInView(open.text().size()));
}

TEST(TextView, EditsAboveNeverMoveWhatIsInView)
{
    for (unsigned seed = 21; seed <= 26; ++seed) {
        OpenEditor open(unevenText(seed, 300));
        GeneratedText random(seed);
        open.view().verticalScrollBar()->setValue(open.view().verticalScrollBar()->maximum() / 2);
        open.settle();
        qsizetype watched = open.view().positionAt({28, 200});
        for (int i = 0; i < 40; ++i) {
            const int place = open.view().caretRectInViewport(watched).top();
            const qsizetype top = open.view().textLayout().placeAt(open.view().positionAt({28, 0})).range.location;
            const qsizetype location = random.below(top);
            const qsizetype length =
                random.oneIn(2) ? random.below(std::min<qsizetype>(top - 1 - location, 900) + 1) : 0;
            ChunkedText text = open.editor.shownText();
            const TextChange change = text.replace(location, length, random.text(random.below(20)));

            open.editor.followEdit(text, change);
            watched += change.inserted - change.removed;

            ASSERT_EQ(open.view().caretRectInViewport(watched).top(), place) << "seed " << seed << ", edit " << i;
            if (random.oneIn(3))
                open.settle();
            ASSERT_EQ(open.view().caretRectInViewport(watched).top(), place) << "seed " << seed << ", edit " << i;
        }
    }
}

// Painting

TEST(TextView, TypingPaintsTheRowsOfItsParagraphOnly)
{
    OpenEditor open(lines(100));
    open.select(50, 50);
    open.settle();
    PaintWatch watch(open.view().viewport());

    open.type(u"x"_s);
    open.settle();

    const QRect caret = open.view().caretRectInViewport(51);
    EXPECT_TRUE(watch.painted.boundingRect().contains(caret));
    EXPECT_LT(watch.painted.boundingRect().height(), 3 * open.view().textLayout().rowHeight());
}

TEST(TextView, JumpingFarAwayPaintsEverything)
{
    OpenEditor open(lines(2000));
    PaintWatch watch(open.view().viewport());

    open.press(Qt::Key_End, Qt::ControlModifier);
    open.settle();

    EXPECT_EQ(watch.painted.boundingRect(), open.view().viewport()->rect());
}

TEST(TextView, ASelectionThatAnotherDocumentKeptIsPaintedAwayByTheNextClick)
{
    OpenEditor open(lines(20));
    open.select(0, 30);
    open.open(u"/tmp/other.md"_s, lines(20));
    open.settle();
    ASSERT_EQ(open.selection(), (TextSelection{0, 30}));
    PaintWatch watch(open.view().viewport());

    open.click(open.pointAt(300));
    open.settle();

    EXPECT_TRUE(watch.painted.contains(open.view().caretRectInViewport(5)));
}

TEST(TextView, SelectionsHighlightsAndTheThemeAreSeen)
{
    OpenEditor open(u"one two three"_s);
    open.view().clearFocus(); // no caret
    const QImage plain = pictureOf(open.view());

    open.editor.setHighlights({{4, 3}});
    const QImage highlighted = pictureOf(open.view());
    EXPECT_NE(highlighted, plain);
    open.editor.setHighlights({});
    EXPECT_EQ(pictureOf(open.view()), plain);
    open.select(0, 3);
    EXPECT_NE(pictureOf(open.view()), plain);
    open.select(0, 0);
    EXPECT_EQ(pictureOf(open.view()), plain);
    open.theme.setAppearance(Appearance::Dark);
    EXPECT_NE(pictureOf(open.view()), plain);
}

TEST(TextView, ASelectedLineEndIsSeen)
{
    OpenEditor open(u"one\n\nthree"_s);
    open.view().clearFocus();
    open.select(0, 3);
    const QImage withoutLineEnd = pictureOf(open.view());

    open.select(0, 4);

    EXPECT_NE(pictureOf(open.view()), withoutLineEnd);
}

TEST(TextView, HighlightsMoveAlongWithEditsUntilTheyAreSetAnew)
{
    OpenEditor open(u"one two one"_s);
    open.editor.setHighlights({{0, 3}, {8, 3}});
    open.view().clearFocus();

    ChunkedText text = open.editor.shownText();
    open.editor.followEdit(text, text.replace(4, 3, u"deux"));
    const QImage moved = pictureOf(open.view());
    open.editor.setHighlights({{0, 3}, {9, 3}});

    EXPECT_EQ(pictureOf(open.view()), moved);
}

TEST(TextView, TheCaretBlinksOnlyWithTheFocus)
{
    OpenEditor open(u"text"_s);
    ASSERT_TRUE(open.view().hasFocus());
    const QImage withCaret = pictureOf(open.view());

    open.view().clearFocus();

    EXPECT_NE(pictureOf(open.view()), withCaret);
}

TEST(TextView, ADropCaretIsSeenWhileSomethingIsDragged)
{
    OpenEditor open(u"text"_s);
    open.view().clearFocus();
    const QImage before = pictureOf(open.view());

    open.view().setDropCaret(2);
    EXPECT_NE(pictureOf(open.view()), before);
    open.view().setDropCaret(-1);

    EXPECT_EQ(pictureOf(open.view()), before);
}

// Size

namespace {

/// Opens a large text, types at both ends and in the middle, and looks at the whole of it.
void expectLargeTextWorks(const QString &text)
{
    OpenEditor open(text);
    open.type(u"a"_s);
    open.press(Qt::Key_End, Qt::ControlModifier);
    open.type(u"b"_s);
    open.settle();
    EXPECT_TRUE(open.isInView(text.size() + 2));
    open.select(text.size() / 2, text.size() / 2);
    open.view().ensureCaretVisible();
    open.settle();
    open.type(u"c"_s);
    open.press(Qt::Key_Left);
    open.press(Qt::Key_Up);
    open.press(Qt::Key_Home);
    open.press(Qt::Key_PageDown);
    open.settle();
    open.press(Qt::Key_Z, Qt::ControlModifier, 3);

    EXPECT_EQ(open.editor.shownText(), ChunkedText(text));
}

} // namespace

TEST(TextView, ATextOfFiftyMegabytesOpensAndTakesKeys)
{
    expectLargeTextWorks(u"A line of the usual length, as texts have it, with some words in it.\n"_s.repeated(750'000));
}

TEST(TextView, AParagraphOfFiveMegabytesOpensAndTakesKeys)
{
    expectLargeTextWorks(u"words "_s.repeated(900'000));
}

TEST(TextView, AWordOfFiveMegabytesOpensAndTakesKeys)
{
    expectLargeTextWorks(u"w"_s.repeated(5'000'000));
}

TEST(TextView, AParagraphOfFiveMegabytesOfEmojiOpensAndTakesKeys)
{
    expectLargeTextWorks(u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s.repeated(200'000));
}

// Focus

TEST(TextView, ATextViewThatIsDestroyedWhileItDragsASelectionEndsQuietly)
{
    auto open = std::make_unique<OpenEditor>(lines(100));
    QTest::mousePress(open->view().viewport(), Qt::LeftButton, {}, open->pointAt(3));
    const QPoint below(60, 900);
    QMouseEvent move(QEvent::MouseMove, below, open->view().viewport()->mapToGlobal(below), Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(open->view().viewport(), &move);

    open.reset();
    QTest::qWait(60);
}

} // namespace Tessaline
