#pragma once

#include "MarkdownUI/BlockBox.h"
#include "MarkdownUI/LaidOutText.h"

namespace MarkdownUI {

/// A line under a heading.
struct TextDivider {
    int distance = 0;  // from the text
    int thickness = 0; // 0 for no line
    QColor color;
};

/// A paragraph or a heading.
class TextBox final : public BlockBox
{
public:
    explicit TextBox(StyledText text, TextDivider divider = {});

    void layOut(int width) override;
    int height() const override;
    void paint(QPainter &painter, QPointF origin, const BoxPaint &paint) const override;

    QString text() const override { return m_text.styled().text; }
    double firstBaseline() const override { return m_text.firstBaseline(); }
    qsizetype positionAt(QPointF point) const override { return m_text.positionAt(point); }
    bool isOverText(QPointF point) const override { return m_text.isOverText(point); }
    QRectF caretRect(qsizetype position) const override { return m_text.caretRect(position); }
    Tessaline::TextRange rowAt(qsizetype position) const override { return m_text.rowAt(position); }
    qsizetype nextCharacter(qsizetype position) const override { return m_text.nextCharacter(position); }
    qsizetype previousCharacter(qsizetype position) const override { return m_text.previousCharacter(position); }
    QList<BlockTarget> targets() const override;

private:
    LaidOutText m_text;
    TextDivider m_divider;
    int m_width = 0;
};

/// The links of a laid-out text as targets, moved by `offset` and `firstPosition`.
QList<BlockTarget> linkTargets(const LaidOutText &text, QPointF offset = {}, qsizetype firstPosition = 0);

} // namespace MarkdownUI
