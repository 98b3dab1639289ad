#pragma once

#include "MarkdownUI/BlockBox.h"
#include "MarkdownUI/FlowLayout.h"
#include "MarkdownUI/LaidOutText.h"

#include <memory>
#include <optional>
#include <vector>

namespace MarkdownUI {

/// A picture as a block, or what stands for it: its alternative text while it is loading or if it cannot be shown.
struct Picture {
    QImage image;               // null if there is none
    QSizeF idealSize;           // in points
    StyledText label;           // the alternative text
    std::optional<QUrl> target; // where a click leads
    bool isBreak = false;       // no picture: what follows begins a new row
};

/// An image, or several in rows.
class PictureBox final : public BlockBox
{
public:
    PictureBox(std::vector<Picture> pictures, double spacing, QColor ground, QColor symbol);

    void layOut(int width) override;
    int height() const override { return m_height; }
    void paint(QPainter &painter, QPointF origin, const BoxPaint &paint) const override;

    QString text() const override; // the alternative texts
    qsizetype positionAt(QPointF point) const override;
    QRectF caretRect(qsizetype position) const override;
    Tessaline::TextRange rowAt(qsizetype position) const override;
    qsizetype nextCharacter(qsizetype position) const override;
    qsizetype previousCharacter(qsizetype position) const override;
    QList<BlockTarget> targets() const override;

private:
    struct Item {
        Picture picture;
        std::unique_ptr<LaidOutText> label; // only without an image
        Tessaline::TextRange range;         // of the alternative text
        QRectF frame;
        mutable QImage reduced; // the image by `reduction`, made when it is needed
        mutable int reduction = 1;
    };

    static const QImage &imageFor(const Item &item, double pixelRatio);
    QSizeF measure(Item &item, std::optional<double> proposedWidth) const;
    const Item *itemAt(qsizetype position) const;

    std::vector<Item> m_items;
    double m_spacing;
    QColor m_ground;
    QColor m_symbol;
    int m_height = 0;
};

} // namespace MarkdownUI
