#include "shell/ColumnSplitter.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Theme.h"

#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>

namespace Tessaline {

namespace {

constexpr int kHandleWidth = 1; // the toolkit widens what the pointer can grasp
constexpr int kMinimumHeight = 600;
constexpr int kKeyStep = 10; // by which an arrow key moves a handle

/// The line between two columns. It is moved by the pointer or, once Tab has come to it, by the arrow keys.
class ColumnHandle final : public QSplitterHandle
{
public:
    ColumnHandle(const Theme &theme, QSplitter *splitter) : QSplitterHandle(Qt::Horizontal, splitter), m_theme(theme)
    {
        setFocusPolicy(Qt::TabFocus);
        connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        // The handle reaches over its neighbours, where nothing is painted; its middle is the line.
        QPainter painter(this);
        if (hasFocus()) {
            painter.fillRect(rect(), m_theme.color(ColorRole::Accent));
            return;
        }
        const ColorRole ground = splitter()->indexOf(this) == 1 ? ColorRole::SidebarBackground : ColorRole::RightColumn;
        painter.fillRect(contentsRect(), composed(m_theme.color(ColorRole::Hairline), m_theme.color(ground)));
    }

    void keyPressEvent(QKeyEvent *event) override
    {
        const int line = x() + contentsRect().x();
        if (event->key() == Qt::Key_Left)
            moveSplitter(line - kKeyStep);
        else if (event->key() == Qt::Key_Right)
            moveSplitter(line + kKeyStep);
        else
            QSplitterHandle::keyPressEvent(event);
    }
    void focusInEvent(QFocusEvent *event) override
    {
        QSplitterHandle::focusInEvent(event);
        showWhole();
    }
    void focusOutEvent(QFocusEvent *event) override
    {
        QSplitterHandle::focusOutEvent(event);
        showWhole();
    }
    void resizeEvent(QResizeEvent *event) override
    {
        QSplitterHandle::resizeEvent(event);
        showWhole();
    }

private:
    /// With the focus it is drawn as wide as it can be grasped, else as the line alone.
    void showWhole()
    {
        setMask(hasFocus() ? rect() : contentsRect());
        update();
    }

    const Theme &m_theme;
};

} // namespace

ColumnSplitter::ColumnSplitter(const Theme &theme, QWidget *sidebar, QWidget *content, QWidget *detail, QWidget *parent)
    : QSplitter(Qt::Horizontal, parent), m_theme(theme)
{
    setHandleWidth(kHandleWidth);
    setChildrenCollapsible(false);
    const auto add = [this](QWidget *column, const ColumnBounds &bounds) {
        column->setMinimumWidth(bounds.minimum);
        column->setMaximumWidth(bounds.maximum);
        addWidget(column);
    };
    add(sidebar, kSidebarBounds);
    add(content, kContentBounds);
    add(detail, kDetailBounds);
    setStretchFactor(1, 1);
    handle(1)->setAccessibleName(tr("Sidebar Width"));
    handle(2)->setAccessibleName(tr("Session Width"));
    connect(this, &QSplitter::splitterMoved, this, &ColumnSplitter::noteWidths);
}

QSize ColumnSplitter::minimumSizeHint() const
{
    const int columns = kSidebarBounds.minimum + kContentBounds.minimum + kDetailBounds.minimum;
    return {columns + 2 * kHandleWidth, kMinimumHeight};
}

QSplitterHandle *ColumnSplitter::createHandle()
{
    return new ColumnHandle(m_theme, this);
}

void ColumnSplitter::resizeEvent(QResizeEvent *)
{
    const ColumnWidths widths =
        columnWidths(contentsRect().width() - 2 * kHandleWidth, m_wantedSidebar, m_wantedDetail);
    setSizes({widths.sidebar, widths.content, widths.detail});
}

void ColumnSplitter::noteWidths()
{
    const QList<int> widths = sizes();
    m_wantedSidebar = widths.at(0);
    m_wantedDetail = widths.at(2);
}

} // namespace Tessaline
