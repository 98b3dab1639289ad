#include "editing/WYSIWYGEditor.h"

#include "editing/MarkdownRendering.h"
#include "foundation/AppEvents.h"

#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/OpenFormattedEditor.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>
#include <QtTest/QSignalSpy>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QScrollBar>

#include <memory>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// One of everything, written in a way that no edit would leave it in.
const QString kEverything = u"# Title #\r\n"
                            "Some *text*  \nwith\n**more**\n\n\n\n"
                            "* one\n+ two\n007. seven\n* [X] done\n- [ ] open\n\n"
                            "> said\n> more\n\n"
                            "````js x\nlet a = `1`;\n\n````\n"
                            "a | b\n:---|---:\n1|2\n***\n"
                            "![pic](p.png) and [link](https://example.com)\n\n"_s;

QString paragraphs(int count)
{
    QString text;
    for (int i = 0; i < count; ++i)
        text.append(u"* paragraph %1 of the text\n\nwords\n\n"_s.arg(i));
    return text;
}

TextSelection caretAt(qsizetype position)
{
    return {position, position};
}

} // namespace

// The document

TEST(WYSIWYGEditor, ShowsTheDocumentWithoutItsSyntax)
{
    OpenFormattedEditor open(u"# Title\n\nSome **bold** text\n\n- item"_s);

    EXPECT_EQ(open.shown(), u"Title\nSome bold text\n•\titem"_s);
    EXPECT_EQ(open.view().accessibleName(), u"Document"_s);
}

TEST(WYSIWYGEditor, OpeningAndViewingWriteNothing)
{
    OpenFormattedEditor open(kEverything);
    QSignalSpy edited(&open.editor, &DocumentEditor::edited);

    open.press(Qt::Key_End, Qt::ControlModifier);
    open.press(Qt::Key_PageUp, Qt::ShiftModifier);
    open.press(Qt::Key_A, Qt::ControlModifier);
    open.press(Qt::Key_C, Qt::ControlModifier);
    open.wheel(-240);
    open.click({100, 100});
    open.doubleClick({120, 120});
    open.drag({100, 60}, {300, 200});
    for (const int width : {200, 559, 817, 1600}) {
        open.editor.resize(width, 300);
        open.settle();
    }
    open.theme.setAppearance(Appearance::Dark);
    open.settle();
    open.editor.setFontSize(9);
    open.editor.setFontSize(40);
    open.settle();
    open.setMarkdown(kEverything);
    open.open(u"/tmp/folder/other.md"_s, kEverything);

    EXPECT_EQ(edited.count(), 0);
    EXPECT_EQ(open.attributed(), renderMarkdown(kEverything));
}

TEST(WYSIWYGEditor, TheFirstEditWritesTheDocumentInItsNormalForm)
{
    OpenFormattedEditor open(kEverything);

    open.putCaretBehind(u"Title #"_s);
    open.type(u"!"_s);

    EXPECT_EQ(open.markdown(), u"# Title #!\n\n"
                               "Some *text*  \nwith **more**\n\n"
                               "- one\n- two\n7. seven\n- [x] done\n- [ ] open\n\n"
                               "> said\n> more\n\n"
                               "````js x\nlet a = `1`;\n\n```\n\n"
                               "| a | b |\n| --- | --- |\n| 1 | 2 |\n\n---\n\n"
                               "![pic](p.png) and [link](https://example.com)"_s);
    EXPECT_EQ(open.editCount(), 1);
}

TEST(WYSIWYGEditor, TheSameMarkdownUnderAnotherURLIsAnotherDocument)
{
    OpenFormattedEditor open(u"- text"_s);
    open.putCaretAtEnd();
    open.type(u"x"_s);
    QSignalSpy shown(&open.editor, &DocumentEditor::shownTextChanged);

    open.open(u"/tmp/folder/other.md"_s, u"- textx"_s);

    EXPECT_EQ(shown.count(), 1);
    open.undo();
    EXPECT_EQ(open.shown(), u"•\ttextx"_s) << "the history of the other document is not this one's";
    EXPECT_EQ(open.selection(), caretAt(7));
}

TEST(WYSIWYGEditor, AnotherURLWithTheSameMarkdownShowsItAnewEvenWhereTheTextHadOtherAttributes)
{
    OpenFormattedEditor open(u"1"_s);
    open.putCaret(0);
    open.type(u"# "_s); // a paragraph here, but a heading when it is read

    open.open(u"/tmp/folder/other.md"_s, open.markdown());

    EXPECT_EQ(open.attributed(), renderMarkdown(u"# 1"));
}

TEST(WYSIWYGEditor, TheSameDocumentWithEqualMarkdownLeavesEverythingAlone)
{
    OpenFormattedEditor open(paragraphs(200));
    open.press(Qt::Key_End, Qt::ControlModifier);
    open.press(Qt::Key_Left, Qt::ShiftModifier, 3);
    open.takeSelectionEvents();
    const TextSelection selection = open.selection();
    const int scrolled = open.view().verticalScrollBar()->value();
    QSignalSpy shown(&open.editor, &DocumentEditor::shownTextChanged);
    QSignalSpy changed(&open.view().document(), &EditableText::changed);

    open.setMarkdown(open.markdown());

    EXPECT_EQ(open.selection(), selection);
    EXPECT_EQ(open.view().verticalScrollBar()->value(), scrolled);
    EXPECT_EQ(shown.count() + changed.count(), 0);
    EXPECT_TRUE(open.takeSelectionEvents().isEmpty());
}

TEST(WYSIWYGEditor, TheSameDocumentWithOtherMarkdownIsShownAnewWithTheNumbersOfTheSelection)
{
    OpenFormattedEditor open(u"one two three"_s);
    open.select(13, 4);

    open.setMarkdown(u"on **two**\n"_s);

    EXPECT_EQ(open.attributed(), renderMarkdown(u"on **two**\n"));
    EXPECT_EQ(open.selection(), (TextSelection{6, 4}));
    EXPECT_EQ(open.editCount(), 0);
    EXPECT_EQ(open.markdown(), u"on **two**\n"_s) << "as it was given, not in its normal form";
}

TEST(WYSIWYGEditor, MarkdownFromOutsideAboveTheSelectionKeepsItsNumbersToo)
{
    OpenFormattedEditor open(u"one\n\ntwo\n\nthree"_s);
    open.select(4, 7);

    open.setMarkdown(u"zero\n\none\n\ntwo\n\nthree"_s);

    EXPECT_EQ(open.shown(), u"zero\none\ntwo\nthree"_s);
    EXPECT_EQ(open.selection(), (TextSelection{4, 7}));
}

TEST(WYSIWYGEditor, ANewDocumentKeepsTheNumbersOfTheSelectionClamped)
{
    OpenFormattedEditor open(u"one two three"_s);
    open.select(2, 9);

    open.open(u"/tmp/folder/other.md"_s, u"# other"_s);

    EXPECT_EQ(open.shown(), u"other"_s);
    EXPECT_EQ(open.selection(), (TextSelection{2, 5}));
}

TEST(WYSIWYGEditor, MarkdownFromOutsideWritesNothingAndCanBeUndone)
{
    OpenFormattedEditor open(u"* as it was"_s);
    open.setMarkdown(u"* as it is"_s);
    EXPECT_EQ(open.editCount(), 0);

    open.undo();

    EXPECT_EQ(open.markdown(), u"- as it was"_s) << "undoing is an edit by the person";
    EXPECT_EQ(open.editCount(), 1);
}

TEST(WYSIWYGEditor, MarkdownFromOutsideThatOnlyAddsToWhatIsTypedIsAStepOfItsOwn)
{
    for (const QString &around : {u"%1"_s, u"```\n%1\n```"_s}) {
        OpenFormattedEditor open(around.arg(u"plain "_s));
        open.putCaretBehind(u"plain "_s);
        open.type(u"typed"_s);
        const QString typed = open.markdown();
        open.setMarkdown(QString(typed).replace(u"typed"_s, u"typed and added"_s));
        open.putCaretBehind(u"added"_s);
        open.type(u" to"_s);
        const QString all = open.markdown();

        open.undo();
        EXPECT_EQ(open.markdown(), QString(typed).replace(u"typed"_s, u"typed and added"_s));
        open.undo();
        EXPECT_EQ(open.markdown(), typed);
        open.undo();
        EXPECT_FALSE(open.markdown().contains(u"typed"_s));
        for (int i = 0; i < 3; ++i)
            open.redo();
        EXPECT_EQ(open.markdown(), all);
    }
}

TEST(WYSIWYGEditor, AnEditIsNotShownAnewWhenItsMarkdownComesBack)
{
    OpenFormattedEditor open;
    QObject::connect(&open.editor, &DocumentEditor::edited, &open.editor, [&open](const ChunkedText &markdown) {
        open.editor.setDocument(FileURL(u"/tmp/folder/document.md"_s), markdown); // as the owner of the text may do
    });

    open.type(u"# typed"_s);

    EXPECT_EQ(open.shown(), u"# typed"_s) << "a heading only when it is opened again";
    EXPECT_EQ(open.selection(), caretAt(7));
    open.undo();
    EXPECT_EQ(open.shown(), u""_s) << "still one run of typing";
}

TEST(WYSIWYGEditor, ADocumentWithoutAURLWorksLikeAnyOther)
{
    OpenFormattedEditor open(u"text"_s);
    const auto setDocument = [&open](const QString &markdown) {
        open.editor.setDocument(std::nullopt, ChunkedText(markdown));
    };
    setDocument(u"# one"_s);
    EXPECT_EQ(open.shown(), u"one"_s);

    QSignalSpy shown(&open.editor, &DocumentEditor::shownTextChanged);
    setDocument(u"# one"_s);
    EXPECT_EQ(shown.count(), 0);
    setDocument(u"# two"_s);
    EXPECT_EQ(open.shown(), u"two"_s);
}

// What it looks like

TEST(WYSIWYGEditor, AnOtherFontSizeAloneTouchesNeitherTextNorSelection)
{
    OpenFormattedEditor open(kEverything);
    open.select(3, 8);
    open.takeSelectionEvents();
    QSignalSpy shown(&open.editor, &DocumentEditor::shownTextChanged);
    const int height = open.rectOf(20).height();

    open.editor.setFontSize(30);

    EXPECT_GT(open.rectOf(20).height(), height);
    EXPECT_EQ(open.selection(), (TextSelection{3, 8}));
    EXPECT_EQ(shown.count(), 0);
    EXPECT_EQ(open.editCount(), 0);
    EXPECT_FALSE(open.view().document().canUndo());
}

TEST(WYSIWYGEditor, TheInsetFollowsTheWidthOfTheView)
{
    const struct {
        int width;
        double inset;
    } kCases[] = {{200, 28}, {559, 28}, {560, 48}, {816, 48}, {817, 48.5}, {818, 49}, {1720, 500}};
    OpenFormattedEditor open(u"text"_s);
    for (const auto &[width, inset] : kCases) {
        EXPECT_EQ(WYSIWYGEditor::insetFor(width), QSizeF(inset, 36)) << width;

        open.editor.resize(width, 300);
        open.settle();

        EXPECT_EQ(open.view().textInset(), QSizeF(inset, 36)) << width;
        EXPECT_EQ(open.pointAt(0).x(), static_cast<int>(inset)) << width;
        EXPECT_EQ(open.view().caretRectInViewport(0).top(), 36) << width;
        EXPECT_LE(open.view().textLayout().width(), 720) << width;
    }
    EXPECT_EQ(WYSIWYGEditor::insetFor(816.5), QSizeF(48.25, 36)) << "continuous";
    EXPECT_EQ(WYSIWYGEditor::insetFor(559.9), QSizeF(28, 36));
}

TEST(WYSIWYGEditor, AnOtherWidthKeepsTheStartOfTheDocumentInViewAndThePlaceInTheMiddle)
{
    OpenFormattedEditor open(paragraphs(300));
    open.editor.resize(1000, 400);
    open.settle();
    EXPECT_EQ(open.view().verticalScrollBar()->value(), 0);

    open.view().ensureVisible({3000, 0});
    open.settle();
    const qsizetype top = open.view().textLayout().placeAt(open.view().positionAt({200, 0})).range.location;
    open.editor.resize(500, 400);
    open.settle();

    EXPECT_EQ(open.view().textLayout().placeAt(open.view().positionAt({200, 0})).range.location, top);
}

// Selection events

TEST(WYSIWYGEditor, PostsTheSelectionAsTextAndAsInlineMarkdownWithItsRectangle)
{
    OpenFormattedEditor open(u"one **two** three"_s);

    open.select(u"two"_s);

    const QList<QVariantMap> posted = open.takeSelectionEvents();
    ASSERT_EQ(posted.size(), 1);
    EXPECT_EQ(posted.at(0).size(), 4);
    EXPECT_EQ(posted.at(0).value(AppEvents::kText), QVariant(u"two"_s));
    EXPECT_EQ(posted.at(0).value(AppEvents::kSourceText), QVariant(u"**two**"_s));
    EXPECT_EQ(posted.at(0).value(AppEvents::kIsRendered), QVariant(true));
    ASSERT_EQ(posted.at(0).value(AppEvents::kRect).typeId(), QMetaType::QRectF);
    const QRectF rect = posted.at(0).value(AppEvents::kRect).toRectF();
    EXPECT_NEAR(rect.left(), open.pointAt(4).x(), 1);
    EXPECT_NEAR(rect.right(), open.pointAt(7).x(), 2);
    EXPECT_NEAR(rect.top(), 36, 1);
}

TEST(WYSIWYGEditor, ASelectionIsReportedWithoutMarkersAndWithoutTheSyntaxOfBlocks)
{
    const struct {
        QString markdown;
        QString text;
        QString sourceText;
    } kCases[] = {
        {u"# A *b*"_s, u"A b"_s, u"A *b*"_s},
        {u"- one\n- [x] two\n3. three"_s, u"one\ntwo\nthree"_s, u"one\ntwo\nthree"_s},
        {u"> a\n\nb"_s, u"a\nb"_s, u"a\nb"_s},
        {u"a  \nb"_s, u"a\u2028b"_s, u"a  \nb"_s},
        {u"|a|b|\n|---|---|\n|1|2|"_s, u"a\tb\n1\t2"_s, u"a\tb\n1\t2"_s},
        {u"```\na *b*\n```"_s, u"a *b*"_s, u"a \\*b\\*"_s},
        {u"[l](u) ![i](s)"_s, u"l 🖼 i"_s, u"[l](u) ![i](s)"_s},
        {u"***a*** `b`"_s, u"a b"_s, u"***a*** `b`"_s},
        {u"---"_s, u"────────────────"_s, u"────────────────"_s},
    };
    for (const auto &[markdown, text, sourceText] : kCases) {
        OpenFormattedEditor open(markdown);

        open.press(Qt::Key_A, Qt::ControlModifier);

        const QList<QVariantMap> posted = open.takeSelectionEvents();
        ASSERT_EQ(posted.size(), 1) << markdown.toStdString();
        EXPECT_EQ(posted.at(0).value(AppEvents::kText).toString(), text);
        EXPECT_EQ(posted.at(0).value(AppEvents::kSourceText).toString(), sourceText);
        EXPECT_EQ(open.editCount(), 0);
    }
}

TEST(WYSIWYGEditor, ASelectedMarkerAloneIsASelectionOfNothing)
{
    OpenFormattedEditor open(u"- one"_s);

    open.select(0, 2);

    const QList<QVariantMap> posted = open.takeSelectionEvents();
    ASSERT_EQ(posted.size(), 1);
    EXPECT_EQ(posted.at(0).value(AppEvents::kText), QVariant(QString()));
    EXPECT_EQ(posted.at(0).value(AppEvents::kSourceText), QVariant(QString()));
    EXPECT_EQ(posted.at(0).value(AppEvents::kIsRendered), QVariant(true));
}

TEST(WYSIWYGEditor, PostsNothingWithTheEventOfAnEmptySelection)
{
    OpenFormattedEditor open(u"one two"_s);
    open.select(0, 3);
    open.takeSelectionEvents();

    open.press(Qt::Key_Right);

    EXPECT_EQ(open.takeSelectionEvents(), QList<QVariantMap>{QVariantMap()});
}

TEST(WYSIWYGEditor, ScrollingPostsTheEventWithoutUserInfoWhileTheSelectionStays)
{
    OpenFormattedEditor open(paragraphs(100));
    open.select(2, 9);
    open.takeSelectionEvents();

    open.wheel(-240);
    open.settle();

    EXPECT_EQ(open.takeSelectionEvents(), QList<QVariantMap>{QVariantMap()});
    EXPECT_EQ(open.selection(), (TextSelection{2, 9}));
}

TEST(WYSIWYGEditor, ClearEditorTextSelectionCollapsesTheSelectionToItsLocation)
{
    OpenFormattedEditor open(u"one two three"_s);
    for (const TextSelection &selection : {TextSelection{4, 7}, TextSelection{7, 4}}) {
        open.select(selection.anchor, selection.caret);

        open.events.post(AppEvents::kClearEditorTextSelection);

        EXPECT_EQ(open.selection(), caretAt(4));
    }
    open.takeSelectionEvents();
    open.events.post(AppEvents::kClearEditorTextSelection);
    EXPECT_TRUE(open.takeSelectionEvents().isEmpty());
    EXPECT_EQ(open.editCount(), 0);
}

// The end

TEST(WYSIWYGEditor, EndsWhileItHasTheFocusAndASelection)
{
    auto open = std::make_unique<OpenFormattedEditor>(kEverything);
    open->select(3, 30);
    open->compose(u"abc"_s);
    ASSERT_TRUE(open->view().hasFocus());

    open.reset();
    QApplication::processEvents();

    EXPECT_EQ(QApplication::focusWidget(), nullptr);
}

TEST(WYSIWYGEditor, AnEditorThatHasGoneHearsNoEvents)
{
    EventCenter events;
    Theme theme;
    auto editor = std::make_unique<WYSIWYGEditor>(theme, events, [](const QUrl &) {});
    editor.reset();

    events.post(AppEvents::kClearEditorTextSelection);
    events.post(AppEvents::kInsertMarkdownFormat, {{AppEvents::kType, u"bold"_s}});
    theme.setAppearance(Appearance::Dark);
}

TEST(WYSIWYGEditor, TheFocusOfTheEditorIsThatOfItsText)
{
    OpenFormattedEditor open(u"text"_s);
    QLineEdit other(&open.editor);
    other.show();
    other.setFocus();

    open.editor.setFocus();

    EXPECT_TRUE(open.view().hasFocus());
}

} // namespace Tessaline
