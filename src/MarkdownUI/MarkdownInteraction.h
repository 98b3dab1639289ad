#pragma once

#include "MarkdownUI/DisplayPainting.h"

class QKeyEvent;

namespace MarkdownUI {

/// What a person does with a display: selects its text with mouse and keyboard, copies it, goes from link to link and
/// opens them, copies code. Without a widget, so that a single view and a row of a list can share it. Points are those
/// of the display.
class MarkdownInteraction final : public QObject
{
    Q_OBJECT
public:
    /// `display` must outlive it.
    explicit MarkdownInteraction(MarkdownDisplay &display, QObject *parent = nullptr);

    /// The selection and the targets as they are to be painted; colours are the painter's to add.
    DisplayPaint paint() const;

    // Selection
    DisplayRange selection() const;
    DisplayPosition caret() const { return m_caret; }
    bool hasSelection() const { return m_anchor != m_caret; }
    void select(DisplayPosition anchor, DisplayPosition caret);
    void selectAll();
    void clearSelection();
    void copy() const; // as plain text and as Markdown; nothing without a selection

    // Mouse
    enum class Click { Single, Double, Triple };
    void press(QPointF point, Click click, Qt::KeyboardModifiers modifiers);
    void drag(QPointF point); // with the button held
    void release(QPointF point);
    void hover(QPointF point);
    void leave();
    bool isSelecting() const { return m_isSelecting; }
    Qt::CursorShape cursor() const; // for what was hovered last

    // Keyboard
    bool handleKey(const QKeyEvent &key); // false if it is not for the text
    /// Moves the focus to the next or previous link or button; false if there is no other, and the focus goes on.
    bool focusNext();
    bool focusPrevious();
    void clearFocus();
    TargetPlace focused() const { return m_focused; }

    /// Follows a link or copies code.
    void activate(const TargetPlace &place);

Q_SIGNALS:
    void changed(); // what is painted
    void selectionChanged();
    /// This part of the display should be seen.
    void showRequested(const QRectF &rect);
    void linkActivated(const QUrl &url);

private:
    enum class Movement { Character, Word, Row, RowEnd, Document };

    DisplayRange unitAt(DisplayPosition position) const;
    DisplayPosition moved(DisplayPosition from, Movement movement, int direction);
    DisplayPosition rowBeside(DisplayPosition from, int direction);
    DisplayPosition nextCharacter(DisplayPosition from);
    DisplayPosition previousCharacter(DisplayPosition from);
    void extendTo(DisplayPosition caret);
    void focus(const TargetPlace &place);
    void followDisplay();

    MarkdownDisplay &m_display;
    DisplayPosition m_anchor;
    DisplayPosition m_caret;
    DisplayRange m_origin; // what the press selected, which stays selected
    Click m_click = Click::Single;
    bool m_isSelecting = false;
    double m_wantedX = -1; // for moves from row to row
    TargetPlace m_pressed;
    TargetPlace m_hovered;
    TargetPlace m_focused;
    TargetPlace m_finished;
    qsizetype m_hoveredLeaf = -1;
    bool m_isOverText = false;
};

} // namespace MarkdownUI
