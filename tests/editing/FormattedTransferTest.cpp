#include "editing/FormattedTransfer.h"

#include "editing/MarkdownRendering.h"

#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/GeneratedMarkdown.h"
#include "tests/editing/OpenFormattedEditor.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>

#include <memory>
#include <random>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const QString kAttributed = u"application/x-tessaline-attributed-text"_s;

AttributedDocument documentOf(const AttributedText &text)
{
    AttributedDocument document;
    document.reset(text);
    return document;
}

std::optional<AttributedText> readBack(const QByteArray &bytes)
{
    QMimeData transfer;
    transfer.setData(kAttributed, bytes);
    return FormattedTransfer::attributedText(transfer);
}

QString textOf(const QMimeData &transfer, const QString &format)
{
    return QString::fromUtf8(transfer.data(format));
}

void copy(OpenFormattedEditor &open, const QString &words)
{
    open.select(words);
    open.press(Qt::Key_C, Qt::ControlModifier);
}

void paste(OpenFormattedEditor &open)
{
    open.press(Qt::Key_V, Qt::ControlModifier);
}

void offer(std::unique_ptr<QMimeData> transfer)
{
    QGuiApplication::clipboard()->setMimeData(transfer.release());
}

} // namespace

// What is offered

TEST(FormattedTransfer, OffersTheTextWithoutMarkersAsHtmlAndAsMarkdown)
{
    const AttributedDocument document = documentOf(renderMarkdown(u"# A *b*\n\n- [x] c\n\n`d`"));
    const FormattedTransfer transfer(document, {0, document.size()});

    EXPECT_EQ(transfer.text(), u"A b\nc\nd"_s);
    EXPECT_EQ(transfer.html(), u"<h1>A <em>b</em></h1><ul><li>☑ c</li></ul><p><code>d</code></p>"_s);
    EXPECT_EQ(textOf(transfer, u"text/markdown"_s), u"# A *b*\n\n- [x] c\n\n`d`"_s);
    EXPECT_EQ(transfer.formats().size(), 4);
    EXPECT_TRUE(transfer.hasText());
    EXPECT_TRUE(transfer.hasHtml());
    EXPECT_FALSE(transfer.hasFormat(u"image/png"_s));
    EXPECT_TRUE(transfer.data(u"image/png"_s).isEmpty());
}

TEST(FormattedTransfer, APartOfAParagraphIsInlineMarkdownAndAWholeOneHasItsSyntax)
{
    const AttributedDocument document = documentOf(renderMarkdown(u"# A *bc*\n\n> d\n\n- e"));
    const struct {
        TextRange range;
        QString markdown;
    } kCases[] = {
        {{2, 1}, u"*b*"_s},
        {{0, 3}, u"A *b*"_s},
        {{0, 4}, u"# A *bc*"_s},
        {{0, 5}, u"# A *bc*"_s},
        {{2, 3}, u"# *bc*"_s},
        {{2, 4}, u"# *bc*\n\n> d"_s},
        {{5, 1}, u"> d"_s},
        {{9, 1}, u"e"_s},
        {{7, 3}, u"- e"_s},
        {{5, 5}, u"> d\n\n- e"_s},
        {{2, 8}, u"# *bc*\n\n> d\n\n- e"_s},
    };
    for (const auto &[range, markdown] : kCases) {
        const FormattedTransfer transfer(document, range);
        EXPECT_EQ(textOf(transfer, u"text/markdown"_s), markdown) << range.location << ' ' << range.length;
    }
}

TEST(FormattedTransfer, KeepsWhatWasCopiedWhenTheTextChangesOrTheEditorGoes)
{
    auto open = std::make_unique<OpenFormattedEditor>(u"one **two**"_s);
    copy(*open, u"two"_s);
    open->type(u"x"_s);
    open.reset();

    EXPECT_EQ(textOf(*QGuiApplication::clipboard()->mimeData(), u"text/markdown"_s), u"**two**"_s);
}

// What is taken back

TEST(FormattedTransfer, AttributedTextGoesThereAndBack)
{
    for (unsigned seed = 1; seed <= 200; ++seed) {
        GeneratedMarkdown random(seed);
        const AttributedDocument document = documentOf(random.attributedText(1 + random.below(12)));
        const TextRange whole{0, document.size()};
        const FormattedTransfer transfer(document, whole);

        if (document.size() > 0) {
            ASSERT_EQ(FormattedTransfer::attributedText(transfer), document.sliced(whole)) << seed;
        }
    }
}

TEST(FormattedTransfer, AnAbsentTextAndAnEmptyOneStayApart)
{
    TextAttributes attributes;
    attributes.linkDestination = SharedText(QString());
    attributes.imageAlt = SharedText(u""_s);
    const AttributedText text(u"a", attributes);
    const AttributedDocument document = documentOf(text);

    EXPECT_EQ(FormattedTransfer::attributedText(FormattedTransfer(document, {0, 1})), text);
}

TEST(FormattedTransfer, TruncatedDataIsNotTaken)
{
    const AttributedDocument document = documentOf(renderMarkdown(u"# A *b* [c](d)\n\n- ![e](f)"));
    const QByteArray bytes = FormattedTransfer(document, {0, document.size()}).data(kAttributed);
    ASSERT_TRUE(readBack(bytes));

    for (qsizetype length = 0; length < bytes.size(); ++length)
        EXPECT_FALSE(readBack(bytes.first(length))) << length << " of " << bytes.size() << " bytes";
    EXPECT_FALSE(readBack(bytes + '\0')) << "more than there should be";
}

TEST(FormattedTransfer, DamagedDataGivesAWellFormedTextOrNone)
{
    const AttributedDocument document = documentOf(renderMarkdown(u"# A *b* [c](d)\n\n- ![e](f)"));
    const QByteArray bytes = FormattedTransfer(document, {0, document.size()}).data(kAttributed);
    std::mt19937 random(7);
    for (int i = 0; i < 20000; ++i) {
        QByteArray damaged = bytes;
        for (std::uint_fast32_t n = 0; n < 1 + random() % 3; ++n)
            damaged[static_cast<qsizetype>(random() % static_cast<std::uint_fast32_t>(bytes.size()))] =
                static_cast<char>(random());
        const std::optional<AttributedText> text = readBack(damaged);
        if (!text)
            continue;
        qsizetype covered = 0;
        for (const AttributeRun &run : text->runs()) {
            ASSERT_EQ(run.range.location, covered);
            ASSERT_GT(run.range.length, 0);
            covered = run.range.end();
        }
        ASSERT_EQ(covered, text->size());
    }
}

TEST(FormattedTransfer, OtherBytesAreNotTaken)
{
    EXPECT_FALSE(readBack({}));
    EXPECT_FALSE(readBack("text"));
    EXPECT_FALSE(readBack(QByteArray(100, '\0')));
    EXPECT_FALSE(readBack(QByteArray(100, '\xff')));
    EXPECT_FALSE(FormattedTransfer::attributedText(QMimeData()));
}

// Pasting

TEST(FormattedTransfer, PastingInsideTheEditorKeepsAttributes)
{
    OpenFormattedEditor open(u"a **b** [c](u) ![d](s) `e`\n\nend"_s);
    copy(open, u"b c 🖼 d e"_s);
    open.putCaretAtEnd();

    paste(open);

    EXPECT_EQ(open.markdown(), u"a **b** [c](u) ![d](s) `e`\n\nend**b** [c](u) ![d](s) `e`"_s);
    EXPECT_EQ(open.selection().caret, open.shown().size());
}

TEST(FormattedTransfer, PastedParagraphsKeepTheirKindAndThePartsAtTheEndsJoin)
{
    OpenFormattedEditor open(u"# Head\n\n- item\n\nend"_s);
    copy(open, u"ad\n•\titem\n"_s);
    open.putCaretBefore(u"nd"_s);

    paste(open);

    EXPECT_EQ(open.markdown(), u"# Head\n\n- item\n\nead\n\n- item\n\nnd"_s);
}

TEST(FormattedTransfer, AnItemPastedAtTheStartOfAParagraphMakesItAnItem)
{
    OpenFormattedEditor open(u"- item\n\nend"_s);
    copy(open, u"•\titem"_s);
    open.putCaretBefore(u"end"_s);

    paste(open);

    EXPECT_EQ(open.markdown(), u"- item\n- itemend"_s);
}

TEST(FormattedTransfer, PastingReplacesTheSelection)
{
    OpenFormattedEditor open(u"a **b** c"_s);
    copy(open, u"b"_s);
    open.select(u"c"_s);

    paste(open);

    EXPECT_EQ(open.markdown(), u"a **b** **b**"_s);
}

TEST(FormattedTransfer, CutTakesTheTextAndItsAttributesAlong)
{
    OpenFormattedEditor open(u"a **b** c"_s);
    open.select(u"b "_s);
    open.press(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(open.markdown(), u"a c"_s);
    open.putCaret(0);

    paste(open);

    EXPECT_EQ(open.markdown(), u"**b** a c"_s);
}

TEST(FormattedTransfer, ForeignRichTextPastesAsPlainText)
{
    OpenFormattedEditor open(u"- a"_s);
    auto transfer = std::make_unique<QMimeData>();
    transfer->setHtml(u"<h1>big <b>bold</b></h1>"_s);
    transfer->setText(u"big bold"_s);
    offer(std::move(transfer));
    open.putCaretAtEnd();

    paste(open);

    EXPECT_EQ(open.markdown(), u"- abig bold"_s);
}

TEST(FormattedTransfer, HtmlAlonePastesAsWhatItShows)
{
    OpenFormattedEditor open(u"- a"_s);
    auto transfer = std::make_unique<QMimeData>();
    transfer->setHtml(u"<style>p { color: red }</style><p>one&nbsp;<b>two</b><img src='x.png'></p>"
                      "<script>three()</script><table><tr><td>four</td></tr></table><p>five"_s);
    offer(std::move(transfer));
    open.putCaretAtEnd();

    paste(open);

    EXPECT_EQ(open.markdown(), u"- aone two\n- four\n- \n- five"_s);
}

TEST(FormattedTransfer, SyntaxInPastedTextStaysText)
{
    OpenFormattedEditor open;
    QGuiApplication::clipboard()->setText(u"# a *b*"_s);

    paste(open);

    EXPECT_EQ(open.shown(), u"# a *b*"_s);
    EXPECT_EQ(open.markdown(), u"# a \\*b\\*"_s);
}

TEST(FormattedTransfer, SeveralLinesBecomeSeveralParagraphs)
{
    const QString lines = u"one\ntwo\r\nthree\rfour"_s;
    const struct {
        QString markdown;
        QString expected;
    } kCases[] = {
        {u""_s, u"one\n\ntwo\n\nthree\n\nfour"_s},       {u"x"_s, u"xone\n\ntwo\n\nthree\n\nfour"_s},
        {u"- x"_s, u"- xone\n- two\n- three\n- four"_s}, {u"```\nx\n```"_s, u"```\nxone\ntwo\nthree\nfour\n```"_s},
        {u"> x"_s, u"> xone\n> two\n> three\n> four"_s},
    };
    for (const auto &[markdown, expected] : kCases) {
        OpenFormattedEditor open(markdown);
        QGuiApplication::clipboard()->setText(lines);
        open.putCaretAtEnd();

        paste(open);

        EXPECT_EQ(open.markdown(), expected);
        EXPECT_FALSE(open.shown().contains(u'\r'));
    }
}

TEST(FormattedTransfer, PastedTextThatOnlySeemsToBeFormattedIsTakenAsPlainText)
{
    OpenFormattedEditor open(u"a"_s);
    auto transfer = std::make_unique<QMimeData>();
    transfer->setData(kAttributed, "nonsense");
    transfer->setText(u"plain"_s);
    offer(std::move(transfer));
    open.putCaretAtEnd();

    paste(open);

    EXPECT_EQ(open.markdown(), u"aplain"_s);
}

TEST(FormattedTransfer, NothingIsPastedWhereThereIsNothing)
{
    OpenFormattedEditor open(u"* a"_s);
    open.select(2, 3);
    for (const QString &format : {u"image/png"_s, kAttributed, u"text/plain"_s}) {
        auto transfer = std::make_unique<QMimeData>();
        transfer->setData(format, {});
        offer(std::move(transfer));

        paste(open);

        EXPECT_EQ(open.shown(), u"•\ta"_s);
        EXPECT_EQ(open.editCount(), 0);
    }
}

TEST(FormattedTransfer, NothingSelectedLeavesTheClipboardAlone)
{
    OpenFormattedEditor open(u"a"_s);
    QGuiApplication::clipboard()->setText(u"kept"_s);

    open.press(Qt::Key_C, Qt::ControlModifier);
    open.press(Qt::Key_X, Qt::ControlModifier);

    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"kept"_s);
    EXPECT_EQ(open.editCount(), 0);
}

} // namespace Tessaline
