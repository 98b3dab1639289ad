#pragma once

#include "editing/SharedText.h"

#include <QtCore/QList>
#include <QtCore/QString>

namespace Tessaline {

/// One paragraph of a document as it is shown. Each line of a block of code, and each line of a table, is one.
struct Block {
    QString content;                  // without the block's own signs; inline Markdown if it is to be parsed
    SharedText style;                 // the tag (BlockStyle.h)
    SharedText marker;                // generated text to show before the content; absent for most kinds
    bool parsesInlineMarkdown = true; // false for code and rules
    friend bool operator==(const Block &, const Block &) = default;
};

/// What a rule shows: sixteen box-drawing lines, however it was written.
QString horizontalRuleText();

/// The blocks of a Markdown text, in order. Blank lines leave no trace, and nothing fails: what is no construct of this
/// dialect is a paragraph. Lines end with LF, CR LF or CR.
QList<Block> parseBlocks(QStringView text);

/// Reads a Markdown text construct by construct: a paragraph, a list item, a whole block of code, a whole table, a
/// blank line. What a construct becomes depends on nothing before it and on at most two lines behind it, so reading can
/// begin at any place where an earlier reading stood.
class MarkdownBlockReader
{
public:
    /// `text` must outlive the reader; `position` is the start of a line.
    explicit MarkdownBlockReader(QStringView text, qsizetype position = 0);

    /// A text that ends with a line break has an empty last line, which is read too; `position` is then the size, and
    /// one more at the end.
    bool atEnd() const { return m_position > m_text.size(); }
    qsizetype position() const { return m_position; }

    /// Reads the next construct and appends its blocks; a blank line gives none.
    void readNext(QList<Block> &blocks);

private:
    struct Line {
        QStringView text;
        qsizetype next = 0; // where the next line starts; behind the end of the text for the last one
    };
    bool hasLineAt(qsizetype start) const { return start <= m_text.size(); }
    Line lineAt(qsizetype start);
    qsizetype carriageReturnFrom(qsizetype start);
    bool opensTable(const Line &line);
    bool startsNewBlock(const Line &line, QStringView trimmed);
    void readCode(QStringView info, qsizetype bodyStart, QList<Block> &blocks);
    void readTable(const Line &header, QList<Block> &blocks);
    void readParagraph(const Line &first, QList<Block> &blocks);

    QStringView m_text;
    qsizetype m_position;
    // The first CR at or behind m_searchedFrom, or the size of the text. It is kept since most texts have none.
    qsizetype m_carriageReturn;
    qsizetype m_searchedFrom;
};

} // namespace Tessaline
