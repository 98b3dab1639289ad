#include "shell/ColumnSplitter.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Theme.h"

#include <QtGui/QPainter>

namespace Tessaline {

namespace {

constexpr int kHandleWidth = 1; // the toolkit widens what the pointer can grasp
constexpr int kMinimumHeight = 600;

class ColumnHandle final : public QSplitterHandle
{
public:
    ColumnHandle(const Theme &theme, QSplitter *splitter) : QSplitterHandle(Qt::Horizontal, splitter), m_theme(theme)
    {
        connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        // The handle reaches over its neighbours, where nothing is painted; its middle is the line.
        QPainter painter(this);
        const ColorRole ground = splitter()->indexOf(this) == 1 ? ColorRole::SidebarBackground : ColorRole::RightColumn;
        painter.fillRect(contentsRect(), composed(m_theme.color(ColorRole::Hairline), m_theme.color(ground)));
    }

private:
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
