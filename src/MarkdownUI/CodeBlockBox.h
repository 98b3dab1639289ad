#pragma once

#include "MarkdownUI/BlockBox.h"

#include <QtGui/QFont>
#include <QtGui/QTextLayout>

#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

namespace MarkdownUI {

/// Colours a line of code; the default leaves it as it is. Offsets count from the start of the line.
using CodeSyntaxHighlighter =
    std::function<QList<QTextLayout::FormatRange>(const QString &line, const QString &language)>;

/// How a block of code is set. Lengths are points.
struct CodeLook {
    QFont font;
    QColor color;
    QColor background;
    QColor border; // of the button
    QColor symbol;
    int lineSpacing = 0;
    int padding = 0;
    int radius = 0;
};

/// A block of code. Its lines are never wrapped, so it is moved sideways, and only those that are painted get laid out:
/// a block of a megabyte costs no more than one of a page. A button that copies the code appears in its corner while
/// the pointer is over the block or the focus is on it.
class CodeBlockBox final : public BlockBox
{
public:
    /// `content` as it was parsed, with its last line end.
    CodeBlockBox(QString content, QString language, CodeLook look, CodeSyntaxHighlighter highlighter);

    void layOut(int width) override;
    int height() const override;
    void paint(QPainter &painter, QPointF origin, const BoxPaint &paint) const override;

    QString text() const override { return m_content; }
    double firstBaseline() const override;
    qsizetype positionAt(QPointF point) const override;
    bool isOverText(QPointF point) const override;
    QRectF caretRect(qsizetype position) const override;
    Tessaline::TextRange rowAt(qsizetype position) const override;
    qsizetype nextCharacter(qsizetype position) const override;
    qsizetype previousCharacter(qsizetype position) const override;
    QList<BlockTarget> targets() const override;

    double sidewaysRange() const override;
    double sideways() const override { return m_sideways; }
    void setSideways(double points) override;

    /// The height of a block of this code, without laying it out.
    static int heightOf(QStringView content, const CodeLook &look);

private:
    /// A line, or a part of a very long one.
    struct Piece {
        qsizetype start = 0;
        qsizetype length = 0;
        double x = 0; // where it begins, points from the start of the line
    };

    qsizetype lineCount() const { return static_cast<qsizetype>(m_starts.size()); }
    qsizetype lineAt(qsizetype position) const;
    qsizetype lineEnd(qsizetype line) const;
    std::vector<Piece> pieces(qsizetype line, double from, double to) const;
    Piece pieceAt(qsizetype line, qsizetype position) const;
    const QTextLayout &laidOut(const Piece &piece) const;
    QRectF buttonRect() const;
    void paintButton(QPainter &painter, QPointF origin, const BoxPaint &paint) const;

    QString m_content;
    QString m_language;
    CodeLook m_look;
    CodeSyntaxHighlighter m_highlighter;
    std::vector<qsizetype> m_starts; // of the lines
    int m_rowHeight = 0;             // without the line spacing
    double m_advance = 0;            // of one column
    double m_longest = 0;            // the width of the longest line; guessed from its columns
    int m_width = 0;
    double m_sideways = 0;
    mutable std::unordered_map<qsizetype, std::unique_ptr<QTextLayout>> m_layouts; // by the start of the piece
};

} // namespace MarkdownUI
