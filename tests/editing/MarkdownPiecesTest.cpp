#include "editing/MarkdownPieces.h"
#include "editing/MarkdownRendering.h"
#include "editing/Paragraphs.h"
#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/GeneratedMarkdown.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QList<ParagraphRecord> recordsOf(const AttributedText &text)
{
    QList<ParagraphRecord> records;
    for (const TextRange &paragraph : Paragraphs::in(text.text(), {0, text.size()}))
        records.append(paragraphRecord(text, paragraph));
    return records;
}

/// A document of records whose Markdown is kept by pieces and, for comparison, written as a whole.
class Document
{
public:
    explicit Document(const QList<ParagraphRecord> &records) : m_records(records)
    {
        m_markdown = m_pieces.reset(records.size(), recordAt());
    }

    void replace(qsizetype first, qsizetype removed, const QList<ParagraphRecord> &fresh)
    {
        m_records.remove(first, removed);
        for (qsizetype i = 0; i < fresh.size(); ++i)
            m_records.insert(first + i, fresh.at(i));
        m_asked = 0;
        m_change = m_pieces.replace(first, removed, fresh, recordAt());
        m_markdown.replace(m_change.location, m_change.removed, m_change.inserted);
    }

    /// As the whole-document form writes it.
    QString whole() const
    {
        MarkdownPieces pieces;
        return pieces.reset(m_records.size(), recordAt());
    }

    const QString &markdown() const { return m_markdown; }
    const MarkdownPieces &pieces() const { return m_pieces; }
    const QList<ParagraphRecord> &records() const { return m_records; }
    const MarkdownChange &change() const { return m_change; }
    int asked() const { return m_asked; } // records that the last edit looked at

private:
    MarkdownPieces::RecordSource recordAt() const
    {
        return [this](qsizetype paragraph) {
            ++m_asked;
            return m_records.at(paragraph);
        };
    }

    QList<ParagraphRecord> m_records;
    MarkdownPieces m_pieces;
    QString m_markdown;
    MarkdownChange m_change;
    mutable int m_asked = 0;
};

Document documentOf(const QString &markdown)
{
    return Document(recordsOf(renderMarkdown(markdown)));
}

ParagraphRecord record(const QString &tag, const QString &content)
{
    return {SharedText(tag), content};
}

} // namespace

TEST(MarkdownPieces, NoParagraphsAreAnEmptyText)
{
    Document document({});
    EXPECT_EQ(document.markdown(), u"");
    EXPECT_EQ(document.pieces().length(), 0);
    EXPECT_EQ(document.pieces().paragraphCount(), 0);
}

TEST(MarkdownPieces, TheFirstTextIsThatOfTheWholeDocument)
{
    GeneratedMarkdown random(20);
    for (int i = 0; i < 2000; ++i) {
        const AttributedText text = random.oneIn(2) ? random.attributedText(random.below(30))
                                                    : renderMarkdown(random.document(random.below(20)));
        const Document document(recordsOf(text));
        ASSERT_EQ(document.markdown(), serializeMarkdown(text)) << described(text).toStdString();
        ASSERT_EQ(document.pieces().length(), document.markdown().size());
    }
}

TEST(MarkdownPieces, TypingChangesThePieceAlone)
{
    Document document = documentOf(u"a\n\nb\n\nc"_s);
    document.replace(1, 1, {record(u"paragraph"_s, u"bb"_s)});
    EXPECT_EQ(document.change(), (MarkdownChange{1, 3, u"\n\nbb"_s}));
}

TEST(MarkdownPieces, TheFirstParagraphHasNothingBeforeIt)
{
    Document document = documentOf(u"a\n\nb"_s);
    document.replace(0, 1, {});
    EXPECT_EQ(document.markdown(), u"b");
    document.replace(0, 0, {record(u"bullet"_s, u"x"_s), record(u"bullet"_s, u"y"_s)});
    EXPECT_EQ(document.markdown(), u"- x\n- y\n\nb");
}

TEST(MarkdownPieces, ANewKindIsPartedAnewFromWhatFollows)
{
    Document document = documentOf(u"- a\n- b\n- c"_s);
    document.replace(1, 1, {record(u"paragraph"_s, u"b"_s)});
    EXPECT_EQ(document.markdown(), u"- a\n\nb\n\n- c");
    EXPECT_EQ(document.asked(), 0); // the neighbour's text is not needed
    document.replace(1, 1, {record(u"task:0"_s, u"b"_s)});
    EXPECT_EQ(document.markdown(), u"- a\n- [ ] b\n- c");
}

TEST(MarkdownPieces, CodeOpensAndClosesAroundAnEdit)
{
    Document document = documentOf(u"```\na\nb\nc\n```"_s);
    document.replace(1, 1, {record(u"paragraph"_s, u"b"_s)});
    EXPECT_EQ(document.markdown(), u"```\na\n```\n\nb\n\n```\nc\n```");
    document.replace(1, 1, {});
    EXPECT_EQ(document.markdown(), u"```\na\nc\n```");
    document.replace(2, 0, {record(u"code:"_s, u"d"_s)});
    EXPECT_EQ(document.markdown(), u"```\na\nc\nd\n```");
    document.replace(2, 1, {});
    EXPECT_EQ(document.markdown(), u"```\na\nc\n```");
    EXPECT_EQ(document.asked(), 0);
}

TEST(MarkdownPieces, AnotherInfoTextIsAnotherBlock)
{
    Document document = documentOf(u"```\na\nb\n```"_s);
    document.replace(0, 1, {record(u"code:js"_s, u"a"_s)});
    EXPECT_EQ(document.markdown(), u"```js\na\n```\n\n```\nb\n```");
}

TEST(MarkdownPieces, RowsFollowTheirHeader)
{
    Document document = documentOf(u"a|b\n---\n1|2\n3|4\n\ntext"_s);
    document.replace(0, 1, {record(u"paragraph"_s, u"a\tb"_s)});
    EXPECT_EQ(document.markdown(), u"a\tb\n\n1\t2\n\n3\t4\n\ntext");
    EXPECT_EQ(document.asked(), 2); // the rows alone
    document.replace(0, 1, {record(u"tableHeader"_s, u"a\tb"_s)});
    EXPECT_EQ(document.markdown(), u"| a | b |\n| --- | --- |\n| 1 | 2 |\n| 3 | 4 |\n\ntext");
    document.replace(1, 1, {record(u"paragraph"_s, u"x"_s)});
    EXPECT_EQ(document.markdown(), u"| a | b |\n| --- | --- |\n\nx\n\n3\t4\n\ntext");
}

TEST(MarkdownPieces, NothingForNothingIsNoChange)
{
    Document document = documentOf(u"a\n\n```\nb\n```"_s);
    document.replace(1, 0, {});
    EXPECT_TRUE(document.change().isEmpty());
}

TEST(MarkdownPieces, PlacesAndParagraphsFindEachOther)
{
    const Document document = documentOf(u"# a\n\n- b\n- c"_s);
    EXPECT_EQ(document.pieces().rangeOf(0), (TextRange{0, 3}));
    EXPECT_EQ(document.pieces().rangeOf(1), (TextRange{3, 5}));
    EXPECT_EQ(document.pieces().rangeOf(2), (TextRange{8, 4}));
    for (const auto &[location, paragraph] : {std::pair<qsizetype, qsizetype>{0, 0}, {2, 0}, {3, 1}, {8, 2}, {12, 2}})
        EXPECT_EQ(document.pieces().paragraphAt(location), paragraph) << location;
}

TEST(MarkdownPieces, AnySequenceOfEditsGivesTheWholeDocument)
{
    GeneratedMarkdown random(21);
    for (int i = 0; i < 400; ++i) {
        Document document(recordsOf(random.attributedText(random.below(40))));
        for (int edit = 0; edit < 25; ++edit) {
            const qsizetype first = random.below(document.records().size() + 1);
            const qsizetype most = random.oneIn(4) ? document.records().size() - first : 2;
            const qsizetype removed = random.below(std::min(most, document.records().size() - first) + 1);
            const QList<ParagraphRecord> fresh = recordsOf(random.attributedText(random.below(4)));
            const QString before = document.markdown();
            document.replace(first, removed, fresh);
            ASSERT_EQ(document.markdown(), document.whole()) << before.toStdString();
            ASSERT_EQ(document.pieces().length(), document.markdown().size());
            ASSERT_EQ(document.pieces().paragraphCount(), document.records().size());
        }
    }
}

TEST(MarkdownPieces, EditsOfTheTextItselfGiveItsMarkdown)
{
    // The paragraphs that an edit of the text touches, from start to end, are all that has to be taken anew.
    GeneratedMarkdown random(22);
    for (int i = 0; i < 200; ++i) {
        AttributedText text = renderMarkdown(random.document(random.below(30)));
        Document document(recordsOf(text));
        for (int edit = 0; edit < 25; ++edit) {
            const qsizetype location = random.below(text.size() + 1);
            const TextRange range{location, std::min(random.below(6), text.size() - location)};
            const AttributedText replacement =
                random.oneIn(3) ? AttributedText() : random.attributedText(1 + random.below(3));

            // CR and LF may meet or part at the edges, so the edges are one unit wider.
            const qsizetype begin = std::max<qsizetype>(range.location - 1, 0);
            const qsizetype end = std::min(range.end() + 1, text.size());
            const TextRange touched = Paragraphs::around(text.text(), {begin, end - begin});
            const qsizetype first = Paragraphs::in(text.text(), {0, touched.location}).size();
            const qsizetype removed = Paragraphs::in(text.text(), touched).size();
            text.replace(range, replacement);
            const TextRange now{touched.location, touched.length - range.length + replacement.size()};
            document.replace(first, removed, recordsOf(text.sliced(now)));

            ASSERT_EQ(document.markdown(), serializeMarkdown(text)) << described(text).toStdString();
        }
    }
}

TEST(MarkdownPieces, AnEditOfALargeDocumentLooksAtItsNeighboursAlone)
{
    Document document(QList<ParagraphRecord>(100'000, record(u"paragraph"_s, u"some text"_s)));
    for (const qsizetype paragraph : {0, 50'000, 99'999}) {
        document.replace(paragraph, 1, {record(u"quote"_s, u"x"_s)});
        EXPECT_EQ(document.asked(), 0);
        EXPECT_LT(document.change().removed + document.change().inserted.size(), 40);
    }
    EXPECT_EQ(document.markdown(), document.whole());
}

} // namespace Tessaline
