#pragma once

#include "foundation_ui/Theme.h"
#include "MarkdownUI/LinkOpening.h"
#include "MarkdownUI/MarkdownInteraction.h"

#include <QtCore/QBasicTimer>
#include <QtCore/QElapsedTimer>
#include <QtGui/QColor>
#include <QtWidgets/QAbstractScrollArea>

#include <memory>

class QMenu;

namespace MarkdownUI {

/// Shows a Markdown text, formatted and to read only. It draws a MarkdownDisplay and forwards keys and mouse to a
/// MarkdownInteraction. What is in view is held by a block, not by a height: better guesses elsewhere, a picture that
/// comes and another width move nothing away.
class MarkdownView final : public QAbstractScrollArea
{
    Q_OBJECT
public:
    /// `theme` must outlive the view: its appearance is followed.
    explicit MarkdownView(const Tessaline::Theme &theme, QWidget *parent = nullptr);
    ~MarkdownView() override;

    void setMarkdown(const QString &markdown);
    /// The scheme is left as the appearance has it.
    void setEnvironment(DisplayEnvironment environment);
    /// What opens links; at first openWithCare with the programs of the desktop.
    void setOpenURL(OpenURL openURL) { m_openURL = std::move(openURL); }
    /// Lies under a text whose style has no background, opaque; the editor's background unless it is set.
    void setGroundColor(const QColor &color);
    /// Between the edges of the viewport and the text, points; 16 at first.
    void setInset(int inset);

    MarkdownDisplay &display() { return *m_display; }
    MarkdownInteraction &interaction() { return *m_interaction; }

    void copy() { m_interaction->copy(); }
    void selectAll() { m_interaction->selectAll(); }
    /// Scrolls as little as it takes to show a rectangle of the display.
    void ensureVisible(const QRectF &rect);
    QPointF toDisplay(QPointF viewportPoint) const;
    QPointF toViewport(QPointF displayPoint) const;
    std::unique_ptr<QMenu> makeContextMenu(const TargetPlace &place);

protected:
    bool event(QEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void timerEvent(QTimerEvent *event) override;

private:
    int top() const; // the height of the display at the upper edge of the viewport; negative inside the inset
    int lowestTop();
    void setTop(const MarkdownDisplay::Anchor &anchor);
    void scrollBy(int points);
    void follow();
    void syncScrollBar();
    void followAppearance();
    void open(const QUrl &url);

    const Tessaline::Theme &m_theme;
    std::unique_ptr<MarkdownDisplay> m_display;
    std::unique_ptr<MarkdownInteraction> m_interaction;
    DisplayEnvironment m_environment; // as it was set, with the scheme of the appearance
    OpenURL m_openURL;
    int m_inset = 16;              // stands before what is made from it
    MarkdownDisplay::Anchor m_top; // of the display, at the upper edge of the viewport
    QColor m_ground;               // not valid: the editor's background
    bool m_isSyncing = false;      // the scroll bar is being set to what is shown
    QPointF m_lastPoint;           // of the mouse, in the viewport
    QElapsedTimer m_sinceDoubleClick;
    QBasicTimer m_autoScroll;
};

} // namespace MarkdownUI
