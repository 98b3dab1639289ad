#pragma once

#include "MarkdownUI/StyledText.h"

#include <QtCore/QRectF>

#include <memory>

class QPainter;

namespace MarkdownUI {

/// The characters of a text with plain stand-ins, of the same length, for those that mean something to the toolkit's
/// layout.
QString textForLayout(const StyledText &styled);

/// A paragraph's text in rows of a width: measured, painted, and asked where its characters stand. Coordinates are
/// points from the top left corner of the text; positions count UTF-16 units.
class LaidOutText
{
public:
    enum class Alignment { Leading, Center, Trailing };

    explicit LaidOutText(StyledText text);

    /// Breaks the text into rows. What was shaped once is kept, so another width costs less than the first.
    void layOut(double width, Alignment alignment = Alignment::Leading);

    const StyledText &styled() const { return m_styled; }
    qsizetype length() const { return m_styled.text.size(); }
    double height() const { return m_height; }
    double widestRow() const;                              // without spaces at its end
    double firstBaseline() const;                          // from the top
    bool isRightToLeft() const { return m_isRightToLeft; } // the first strong character decides

    /// Paints with the top left corner at `origin` what touches `clip`, which has the coordinates of `origin`.
    void paint(QPainter &painter, QPointF origin, const Tessaline::TextRange &selection, const QColor &selectionColor,
               const QRectF &clip) const;

    /// The caret nearest to a point; points outside count as inside.
    qsizetype positionAt(QPointF point) const;
    /// Whether a character stands at the point, as opposed to the empty rest of a row.
    bool isOverText(QPointF point) const;
    QRectF caretRect(qsizetype position) const; // one point wide
    /// One rectangle for each row that the range touches.
    QList<QRectF> rects(const Tessaline::TextRange &range) const;
    const LinkSpan *linkAt(QPointF point) const; // null if there is none
    Tessaline::TextRange rowAt(qsizetype position) const;
    qsizetype nextCharacter(qsizetype position) const;
    qsizetype previousCharacter(qsizetype position) const;

private:
    QTextLine lineAt(qsizetype position) const;
    int lineAtY(double y) const;
    void paintGrounds(QPainter &painter, QPointF origin) const;
    void paintPictures(QPainter &painter, QPointF origin) const;

    StyledText m_styled;
    std::unique_ptr<QTextLayout> m_layout;
    double m_height = 0;
    bool m_isRightToLeft = false;
};

} // namespace MarkdownUI
