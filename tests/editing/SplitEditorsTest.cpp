#include "tests/editing/SplitEditors.h"

#include "editing/MarkdownRendering.h"
#include "editing/MarkdownWriting.h"
#include "editing/TextBoundaries.h"
#include "foundation/AppEvents.h"

#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/GeneratedMarkdown.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QString paragraphs(int count)
{
    QString text;
    for (int i = 0; i < count; ++i)
        text.append(u"## Heading %1\n\nSome *words* of the text, enough of them to go over more than one row of the "
                    "view.\n\n"_s.arg(i));
    return text;
}

void type(TextView &view, const QString &text)
{
    for (const QChar c : text)
        QTest::sendKeyEvent(QTest::Click, &view, Qt::Key_unknown, QString(c), Qt::NoModifier);
}

qsizetype find(TextView &view, const QString &words)
{
    return view.document().text().toString().indexOf(words);
}

void putCaret(TextView &view, qsizetype position)
{
    view.setFocus();
    view.document().select({position, position});
}

/// The middle of the viewport, and where what stands there stands later.
struct Sight {
    explicit Sight(TextView &seen) : view(seen), position(seen.positionAt(seen.viewport()->rect().center()))
    {
        top = view.caretRectInViewport(position).top();
    }
    int movedBy(qsizetype shift) const { return view.caretRectInViewport(position + shift).top() - top; }

    TextView &view;
    qsizetype position;
    int top = 0;
};

/// The heights at which the blocks of a text stand, all of them laid out.
QList<int> tops(TextLayout &layout)
{
    QList<int> tops;
    for (std::optional<TextLayout::Block> block = layout.blockAt(0); block; block = layout.blockAfter(*block))
        tops.append(layout.placeAt(block->place.range.location).top);
    tops.append(layout.height());
    return tops;
}

class GeneratedSplitEdits : public testing::TestWithParam<unsigned>
{};

void act(SplitEditors &split, TextView &view, GeneratedMarkdown &random)
{
    EditableText &document = view.document();
    const auto anywhere = [&] { return random.below(document.text().size() + 1); };
    switch (random.below(14)) {
    case 0:
    case 1:
    case 2:
        return type(view, random.inlineNoise(1 + random.below(2)));
    case 3:
        return QTest::keyClick(&view, Qt::Key_Return);
    case 4:
        return QTest::keyClick(&view, Qt::Key_Backspace);
    case 5:
        return QTest::keyClick(&view, Qt::Key_Delete);
    case 6:
        return document.replace(document.selection().range(), random.document(random.below(4)), EditKind::Other);
    case 7:
    case 8:
        return document.select({anywhere(), anywhere()});
    case 9: {
        const qsizetype place = anywhere();
        return document.select({place, place});
    }
    case 10:
        return QTest::keyClick(&view, Qt::Key_Z, Qt::ControlModifier);
    case 11:
        return QTest::keyClick(&view, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    default: {
        const QStringList types{u"bold"_s,       u"italic"_s,    u"h1"_s,     u"h2"_s,    u"quote"_s,
                                u"codeInline"_s, u"link"_s,      u"image"_s,  u"table"_s, u"numbered"_s,
                                u"hr"_s,         u"codeBlock"_s, u"bullet"_s, u"task"_s};
        split.events.post(AppEvents::kInsertMarkdownFormat, {{AppEvents::kType, types.at(random.below(types.size()))}});
    }
    }
}

} // namespace

TEST_P(GeneratedSplitEdits, ShowInBothPanesWhatTheMarkdownSays)
{
    GeneratedMarkdown random(GetParam());
    SplitEditors split(random.document(random.below(30)));
    for (int i = 0; i < 150; ++i) {
        const bool isFormatted = random.oneIn(2);
        TextView &view = split.view(isFormatted);
        view.setFocus();
        const int editsBefore = split.sourceEdits + split.formattedEdits;

        act(split, view, random);

        ASSERT_EQ(split.source->shownText().toString(), split.markdown()) << "action " << i;
        if (split.sourceEdits + split.formattedEdits == editsBefore)
            continue;
        // Through a ChunkedText, which takes no half of a surrogate pair.
        if (isFormatted)
            ASSERT_EQ(split.markdown(), ChunkedText(serializeMarkdown(split.formatted())).toString()) << "action " << i;
        else
            ASSERT_EQ(split.formatted(), renderMarkdown(split.markdown())) << "action " << i;
        for (const bool pane : {false, true}) {
            const EditableText &document = split.view(pane).document();
            TextLayout &layout = split.view(pane).textLayout();
            TextLayout anew(document.text(), layout.look());
            anew.setWidth(layout.width());
            ASSERT_EQ(tops(layout), tops(anew)) << "action " << i;
            ASSERT_TRUE(TextBoundaries::isCharacterBoundary(document.text(), document.selection().caret));
            ASSERT_TRUE(TextBoundaries::isCharacterBoundary(document.text(), document.selection().anchor));
        }
    }
    QApplication::processEvents(); // paints what came of it
}

INSTANTIATE_TEST_SUITE_P(SplitEditors, GeneratedSplitEdits, testing::Range(1u, 41u));

TEST(SplitEditors, ShowEachEditInTheOtherPaneAtOnce)
{
    SplitEditors split(u"# One\n\ntext"_s);

    putCaret(split.view(false), 5);
    type(split.view(false), u" *x*"_s);
    EXPECT_EQ(split.formatted(), renderMarkdown(u"# One *x*\n\ntext"));

    putCaret(split.view(true), 4);
    type(split.view(true), u"y"_s);
    EXPECT_EQ(split.markdown(), u"# One *yx*\n\ntext"_s);
    EXPECT_EQ(split.source->shownText().toString(), split.markdown());
    EXPECT_EQ(split.sourceEdits, 4);
    EXPECT_EQ(split.formattedEdits, 1) << "what is followed is not reported again";
}

TEST(SplitEditors, TheFormattedPaneKeepsItsCaretAndPlaceWhileTheSourceIsTyped)
{
    SplitEditors split(paragraphs(200));
    TextView &formatted = split.view(true);
    const qsizetype caret = find(formatted, u"Heading 100"_s);
    formatted.document().select({caret, caret + 7});
    formatted.ensureVisible({caret, 7});
    QApplication::processEvents();
    const Sight sight(formatted);

    putCaret(split.view(false), find(split.view(false), u"Some"_s)); // far above what is in view
    type(split.view(false), u"abc "_s);
    EXPECT_EQ(formatted.document().selection(), (TextSelection{caret + 4, caret + 11}));
    EXPECT_EQ(sight.movedBy(4), 0);
    QTest::keyClick(&split.view(false), Qt::Key_Return);
    QTest::keyClick(&split.view(false), Qt::Key_Return);
    EXPECT_EQ(sight.movedBy(4), 0);
    type(split.view(false), u"# new *heading*"_s);
    QApplication::processEvents();

    EXPECT_EQ(formatted.document().selectedText(), u"Heading"_s);
    EXPECT_EQ(sight.movedBy(formatted.document().selection().anchor - caret), 0);
}

TEST(SplitEditors, TheSourcePaneKeepsItsCaretAndPlaceWhileTheFormattedTextIsTyped)
{
    SplitEditors split(paragraphs(200));
    TextView &source = split.view(false);
    const qsizetype caret = find(source, u"Heading 100"_s);
    source.document().select({caret, caret + 7});
    source.ensureVisible({caret, 7});
    QApplication::processEvents();
    const Sight sight(source);

    putCaret(split.view(true), 0);
    type(split.view(true), u"abc"_s);
    QTest::keyClick(&split.view(true), Qt::Key_Return);
    type(split.view(true), u"*"_s);
    QApplication::processEvents();

    EXPECT_EQ(source.document().selectedText(), u"Heading"_s);
    EXPECT_EQ(sight.movedBy(source.document().selection().anchor - caret), 0);
}

TEST(SplitEditors, TheCaretOfThePaneThatIsTypedInStaysBehindWhatIsTyped)
{
    SplitEditors split(u"one"_s);
    for (const bool isFormatted : {true, false, true}) {
        TextView &view = split.view(isFormatted);
        putCaret(view, view.document().text().size());
        for (const QChar c : u"- # *x* `y` | \\ "_s) {
            const qsizetype caret = view.document().selection().caret;
            type(view, QString(c));
            EXPECT_EQ(view.document().selection(), (TextSelection{caret + 1, caret + 1}));
        }
    }
}

TEST(SplitEditors, ThePaneThatWasTypedInKeepsWhatReadingAgainWouldChangeUntilTheOtherIsTypedIn)
{
    SplitEditors split(u"a"_s);
    putCaret(split.view(true), 1);
    QTest::keyClick(&split.view(true), Qt::Key_Return);
    QTest::keyClick(&split.view(true), Qt::Key_Return);
    type(split.view(true), u"# b"_s);
    EXPECT_EQ(split.formatted().text(), u"a\n\n# b"_s);
    EXPECT_EQ(split.markdown(), u"a\n\n\n\n# b"_s);

    putCaret(split.view(false), 0);
    type(split.view(false), u"x"_s);

    EXPECT_EQ(split.formatted(), renderMarkdown(u"xa\n\n# b"));
}

TEST(SplitEditors, AnEmptyParagraphFarAboveDoesNotMoveTheFormattedPaneWhenTheSourceIsTyped)
{
    SplitEditors split(paragraphs(200));
    TextView &formatted = split.view(true);
    putCaret(formatted, find(formatted, u"view."_s) + 5);
    QTest::keyClick(&formatted, Qt::Key_Return); // an empty paragraph, which is none when it is read again
    const qsizetype caret = find(formatted, u"Heading 100"_s);
    formatted.document().select({caret, caret + 7});
    formatted.ensureVisible({caret, 7});
    QApplication::processEvents();
    const Sight sight(formatted);
    const qsizetype size = formatted.document().text().size();

    putCaret(split.view(false), split.view(false).document().text().size());
    type(split.view(false), u"below"_s);
    QApplication::processEvents();

    EXPECT_EQ(split.formatted(), renderMarkdown(split.markdown()));
    EXPECT_EQ(formatted.document().text().size(), size - 1 + 5);
    EXPECT_EQ(formatted.document().selection(), (TextSelection{caret - 1, caret + 6}));
    EXPECT_EQ(sight.movedBy(-1), 0);
}

TEST(SplitEditors, TheFirstEditOfTheFormattedTextBringsTheSourceIntoItsNormalFormWithoutMovingIt)
{
    QString markdown = u"* one\r\n+ two\r\n\r\n\r\n\r\n"_s + paragraphs(200);
    markdown += u"a\nsoft\nbreak\n\n***\n"_s + u"1) text\n\n\n"_s.repeated(300);
    SplitEditors split(markdown);
    TextView &source = split.view(false);
    const qsizetype caret = find(source, u"Heading 100"_s);
    source.document().select({caret, caret + 7});
    source.ensureVisible({caret, 7});
    QApplication::processEvents();
    const Sight sight(source);

    putCaret(split.view(true), 0);
    type(split.view(true), u"x"_s);
    QApplication::processEvents();

    EXPECT_EQ(source.document().selectedText(), u"Heading"_s);
    const qsizetype moved = source.document().selection().anchor - caret;
    EXPECT_LT(moved, 0);
    EXPECT_EQ(sight.movedBy(moved), 0);
    source.setFocus();
    QTest::keyClick(&source, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(split.markdown(), markdown) << "one step in the source, back to every byte";
}

TEST(SplitEditors, OnlyThePaneWithTheFocusTakesACommand)
{
    SplitEditors split(u"one"_s);
    split.view(false).document().select({0, 3});
    split.view(true).document().select({0, 3});

    split.view(true).setFocus();
    split.events.post(AppEvents::kInsertMarkdownFormat, {{AppEvents::kType, u"bold"_s}});
    EXPECT_EQ(split.markdown(), u"**one**"_s);
    split.view(false).setFocus();
    split.view(false).document().select({2, 5});
    split.events.post(AppEvents::kInsertMarkdownFormat, {{AppEvents::kType, u"hr"_s}});

    EXPECT_EQ(split.markdown(), u"**---**"_s);
    EXPECT_EQ(split.formatted(), renderMarkdown(u"**---**"));
}

TEST(SplitEditors, ARunTypedInOnePaneIsOneStepOfUndoInTheOther)
{
    for (const bool isFormatted : {false, true}) {
        SplitEditors split(u"one **two**\n\nthree"_s);
        putCaret(split.view(isFormatted), find(split.view(isFormatted), u"wo"_s));
        type(split.view(isFormatted), u"abc"_s);
        ASSERT_EQ(split.markdown(), u"one **tabcwo**\n\nthree"_s);

        split.view(!isFormatted).setFocus();
        QTest::keyClick(&split.view(!isFormatted), Qt::Key_Z, Qt::ControlModifier);

        EXPECT_EQ(split.markdown(), u"one **two**\n\nthree"_s);
    }
}

TEST(SplitEditors, UndoInOnePaneIsFollowedByTheOther)
{
    SplitEditors split(u"* a\n"_s);
    putCaret(split.view(false), 3);
    type(split.view(false), u"b"_s);
    putCaret(split.view(true), 4);
    type(split.view(true), u"c"_s);
    ASSERT_EQ(split.markdown(), u"- abc"_s);

    split.view(false).setFocus();
    QTest::keyClick(&split.view(false), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(split.markdown(), u"* ab\n"_s) << "the other pane's edit was one step here, with all that it wrote";
    EXPECT_EQ(split.formatted(), renderMarkdown(u"* ab\n"));
    split.view(true).setFocus();
    QTest::keyClick(&split.view(true), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(split.source->shownText().toString(), split.markdown());
    EXPECT_EQ(split.formatted(), renderMarkdown(split.markdown()));
}

} // namespace Tessaline
