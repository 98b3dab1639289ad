#pragma once

#include "editing/CaretBlinker.h"
#include "editing/EditableText.h"
#include "editing/TextLayout.h"

#include <QtCore/QPointer>
#include <QtWidgets/QAbstractScrollArea>

#include <memory>

class QMenu;

namespace Tessaline {

class TextViewDelegate;
class TextViewInputMethod;
class TextViewKeys;
class TextViewMouse;
class Theme;

/// The text view of the editors: draws an EditableText and forwards keys, mouse and input methods to it. It lays
/// out and paints only what is in view, so neither a key nor a scroll costs more in a large text than in a small one.
///
/// What is in view is held by a block and an offset in it, not by a height: edits and better guesses elsewhere move
/// nothing on the screen.
class TextView final : public QAbstractScrollArea
{
    Q_OBJECT
public:
    /// All of them must outlive the view.
    TextView(EditableText &text, const TextLook &look, TextViewDelegate &delegate, const Theme &theme,
             QWidget *parent = nullptr);
    ~TextView() override;

    EditableText &document() { return m_text; }
    TextLayout &textLayout() { return m_layout; }
    TextViewDelegate &delegate() { return m_delegate; }
    /// The look is another one now.
    void lookChanged();
    /// The distance between the edges of the viewport and the text; 28 on all sides at first.
    void setTextInset(QSizeF inset);
    QSizeF textInset() const { return m_inset; }
    void setHighlights(const QList<TextRange> &ranges);

    /// Scrolls as little as it takes to show a range (its caret end, if it is larger than the view).
    void ensureVisible(const TextRange &range);
    void ensureCaretVisible();
    /// Scrolls by pixels, down if positive.
    void scrollBy(int pixels);

    // Between points of the viewport and the text
    qsizetype positionAt(QPoint viewportPoint);
    QRect caretRectInViewport(qsizetype position);
    /// The rectangle around a range, in the coordinates of this view.
    QRectF rangeRect(const TextRange &range);

    /// Moves a caret that a drag would drop at; negative hides it.
    void setDropCaret(qsizetype position);
    std::unique_ptr<QMenu> makeContextMenu();
    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

public Q_SLOTS:
    void undo();
    void redo();
    void cut();
    void copy();
    void paste();
    void deleteSelection();
    void selectAll();

Q_SIGNALS:
    /// The part of the text in view has changed.
    void scrolled();
    void zoomRequested(int step); // by Ctrl and the wheel, for each step: 1 for up, -1 for down

protected:
    bool event(QEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    /// What is in view: the block at the top of the viewport and how far above the viewport it begins, in pixels.
    struct Top {
        qsizetype block = 0;
        int offset = 0;
        friend bool operator==(const Top &, const Top &) = default;
    };

    int topInset() const;
    void followChange(const TextChange &change);
    void followReset();
    void moveHighlights(const TextChange &change);
    void followSelection();
    void paintBlock(QPainter &painter, const TextLayout::Block &block, int top, const QRect &clip);
    QList<QTextLayout::FormatRange> decorations(const TextLayout::Block &block) const;
    void updateCaret();
    int textTop();       // the height in the text at the top of the viewport; negative inside the inset
    int lowestTextTop(); // the greatest value of textTop
    void setTextTop(int top);
    void showFrom(const TextLayout::Block &block, int offset);
    void moveBy(int pixels);
    int distanceTo(const TextRange &range);
    void followTop(const Top &before);
    void syncScrollBar();

    EditableText &m_text;
    TextViewDelegate &m_delegate;
    const Theme &m_theme;
    TextLayout m_layout;
    CaretBlinker m_blinker;
    std::unique_ptr<TextViewMouse> m_mouse;
    std::unique_ptr<TextViewKeys> m_keys;
    std::unique_ptr<TextViewInputMethod> m_inputMethod;
    QSizeF m_inset;
    Top m_top;
    qsizetype m_lastScreen = 0; // where the blocks begin that fill the viewport at the end of the text
    int m_zoomAngle = 0;        // turned by the wheel since the last step
    bool m_isSyncing = false;   // the scroll bar is being set to what is shown
    TextRange m_shownSelection; // what the screen shows as selected
    qsizetype m_shownCaret = 0;
    qsizetype m_dropCaret = -1;
    QList<TextRange> m_highlights;
};

} // namespace Tessaline
