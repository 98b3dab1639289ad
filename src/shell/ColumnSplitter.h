#pragma once

#include "shell/ColumnWidths.h"

#include <QtWidgets/QSplitter>

namespace Tessaline {

class Theme;

/// The three columns side by side, with a hairline between them that can be dragged. The side columns keep the widths
/// that the person gave them when the window changes its size.
class ColumnSplitter final : public QSplitter
{
    Q_OBJECT
public:
    /// `theme` must outlive the splitter. It takes the columns over and sets their bounds.
    ColumnSplitter(const Theme &theme, QWidget *sidebar, QWidget *content, QWidget *detail, QWidget *parent = nullptr);

    QSize minimumSizeHint() const override;

protected:
    QSplitterHandle *createHandle() override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void noteWidths();

    const Theme &m_theme;
    int m_wantedSidebar = kSidebarBounds.ideal;
    int m_wantedDetail = kDetailBounds.ideal;
};

} // namespace Tessaline
