#pragma once

#include "MarkdownUI/BlockBox.h"
#include "MarkdownUI/BlockOutline.h"
#include "MarkdownUI/GrowingContent.h"

#include <QtCore/QObject>
#include <QtCore/QPointF>

#include <compare>
#include <memory>
#include <vector>

namespace MarkdownUI {

class PictureStore;

/// A place in the text of a display: before the unit `offset` of a leaf.
struct DisplayPosition {
    qsizetype leaf = 0;
    qsizetype offset = 0; // UTF-16 units
    friend auto operator<=>(const DisplayPosition &, const DisplayPosition &) = default;
};

/// A stretch of text, `start` not behind `end`.
struct DisplayRange {
    DisplayPosition start;
    DisplayPosition end;
    bool isEmpty() const { return start == end; }
    friend bool operator==(const DisplayRange &, const DisplayRange &) = default;
};

/// A link or a button of a display.
struct TargetPlace {
    qsizetype leaf = -1;
    int index = -1; // of the leaf's targets
    bool isValid() const { return leaf >= 0; }
    friend bool operator==(const TargetPlace &, const TargetPlace &) = default;
};

/// A Markdown text as a column of laid-out blocks of a width, without a widget: a view paints it, and so does a list of
/// many of them. Only what is asked for is laid out. The heights of all other blocks are guesses, which become right
/// when they are laid out; who scrolls holds on to an `Anchor`, not to a height.
///
/// A text that grows costs what was added to it: blocks that did not change keep their laid-out form, inside of lists,
/// quotes and tables too. Coordinates are points from the top left corner. Main thread only.
class MarkdownDisplay final : public QObject
{
    Q_OBJECT
public:
    explicit MarkdownDisplay(QObject *parent = nullptr);
    ~MarkdownDisplay() override;

    /// Everything is laid out anew.
    void setEnvironment(DisplayEnvironment environment);
    const DisplayEnvironment &environment() const { return m_environment; }

    /// Shows a text. When it has only grown since the last call, little is read and laid out.
    void setMarkdown(const QString &markdown);
    /// Shows blocks from elsewhere.
    void setContent(const MarkdownContent &content);

    void setWidth(int width);
    int width() const { return m_width; }
    int height() const; // a guess as far as blocks are not laid out

    /// Lays out what lies between two heights; from then on that is exact, and heights above `top` have not changed.
    void prepare(int top, int bottom);
    void layOutAll();
    /// Frees what is laid out outside of two heights. Heights that are known stay so.
    void keepOnly(int top, int bottom);

    /// A place that stays with its block while heights change.
    struct Anchor {
        qsizetype leaf = 0;
        int offset = 0; // points below the top of the leaf
        friend bool operator==(const Anchor &, const Anchor &) = default;
    };
    Anchor anchorAt(int y) const;
    int yOf(const Anchor &anchor) const;
    /// The place some points further down, or up if negative. Lays out what is passed, so that the way is exact; for
    /// ways of a few screens. It ends at the first and at the last leaf, where offsets can lie outside.
    Anchor moved(Anchor anchor, int points);
    /// Lays out the last leaves, as many as fill a height: the end of the text is then where `height` says.
    void prepareEnd(int height);

    // Leaves: paragraphs, rows of tables, blocks of code, from top to bottom
    qsizetype leafCount() const { return static_cast<qsizetype>(m_leaves.size()); }
    const OutlineLeaf &leaf(qsizetype index) const { return leafAt(index).outline; }
    qsizetype blockOf(qsizetype leaf) const { return leafAt(leaf).block; } // of the document
    /// The containers around a leaf, the innermost first.
    std::vector<const OutlineContainer *> containersOf(qsizetype leaf) const;
    /// A container that there is room for, with its left edge. Deeper ones are not drawn, and indent nothing.
    struct ShownContainer {
        const OutlineContainer *container = nullptr;
        int left = 0;
        qsizetype firstLeaf = 0; // of the display
        qsizetype lastLeaf = 0;
    };
    std::vector<ShownContainer> shownContainersOf(qsizetype leaf) const; // the innermost first
    /// Whether the leaf is the first of a container that `containersOf` gave for it.
    bool isFirstOf(qsizetype leaf, const OutlineContainer &container) const;
    QRectF leafRect(qsizetype index) const; // without the padding above
    qsizetype leafAtY(double y) const;      // the one above a gap; -1 without any leaf
    QString leafText(qsizetype index) const;
    /// The text of a leaf with its styles: of a paragraph or heading, or of a cell in a row of a table. Empty for
    /// others.
    AttributedString styledLeafText(qsizetype index, qsizetype cell = 0) const;
    /// The laid-out leaf.
    const BlockBox &box(qsizetype index);

    // Text
    DisplayPosition positionAt(QPointF point);
    bool isOverText(QPointF point);
    QRectF caretRect(DisplayPosition position);
    DisplayPosition endPosition() const;
    /// `position` where it is in the text, the nearest place where it is not.
    DisplayPosition clamped(DisplayPosition position) const;

    // Links and buttons
    TargetPlace targetAt(QPointF point);
    /// The target of a place that exists, with its rectangles in the display.
    BlockTarget target(const TargetPlace &place);
    int targetCount(qsizetype leaf) const;
    /// The target before or behind a place, or the last or first if the place is not valid; not valid if there is none.
    TargetPlace nextTarget(const TargetPlace &place) const;
    TargetPlace previousTarget(const TargetPlace &place) const;

    /// Moves the block at a point sideways, to the right if positive; false if it cannot be moved that way.
    bool scrollSideways(QPointF point, double points);
    /// Moves a block sideways so that a rectangle of the display is seen, as far as that is a question of sideways.
    void showSideways(qsizetype leaf, const QRectF &rect);

    /// Counts how often it was `changed`, for those who keep something made from it.
    int revision() const { return m_revision; }

Q_SIGNALS:
    /// The text is another one, or stands elsewhere: a new content or width, or a picture that has come. Not emitted
    /// for guesses that became right.
    void changed();

private:
    struct Leaf {
        OutlineLeaf outline;
        qsizetype block = 0;
        std::unique_ptr<BlockBox> box; // while it is laid out
        int boxWidth = 0;
        int boxRevision = 0; // of the table
        int padding = 0;     // above it
        int height = 0;
        bool isExact = false;
        double sideways = 0;
        mutable int targetCount = -1; // not known
    };
    struct Place { // of a container or of a whole block
        int x = 0;
        int width = 0;
        bool isShown = false;
        int shownParent = -1;
    };
    struct Block {
        BlockNode source; // as it was given
        std::vector<OutlineContainer> containers;
        std::vector<Place> places; // of the containers
        BlockMargin margin;
        qsizetype firstLeaf = 0;
        qsizetype leafCount = 0;
    };

    const Leaf &leafAt(qsizetype index) const { return m_leaves[static_cast<size_t>(index)]; }
    Leaf &leafAt(qsizetype index) { return m_leaves[static_cast<size_t>(index)]; }
    void setBlocks(const QList<BlockNode> &blocks, qsizetype firstChanged);
    void appendBlock(const BlockNode &source, std::vector<Leaf> &old, qsizetype oldFirst);
    void reuse(Leaf &leaf, Leaf &old);
    void placeContainers(Block &block) const;
    Place placeOf(const Leaf &leaf) const;
    void guess(Leaf &leaf) const;
    void guessAll();
    void layOut(qsizetype index);
    void forgetPictures();
    void announceChange();
    int topOf(qsizetype index) const; // of the padding above the leaf

    DisplayEnvironment m_environment;
    std::unique_ptr<PictureStore> m_pictures;
    GrowingContent m_growing;
    std::vector<Block> m_blocks;
    std::vector<Leaf> m_leaves;
    int m_width = 600;
    int m_revision = 0;
    mutable std::vector<int> m_tops; // one more than there are leaves
    mutable size_t m_validTops = 0;  // how many of them are right
};

} // namespace MarkdownUI
