#pragma once

#include "foundation_ui/Theme.h"

#include <QtWidgets/QWidget>

namespace Tessaline {

/// A surface in the colour of a role: the sidebar, the page, the right column. It paints opaquely and leaves mouse
/// events to its parent.
class Ground : public QWidget
{
    Q_OBJECT
public:
    /// `theme` must outlive the ground; the role must be an opaque one.
    Ground(const Theme &theme, ColorRole role, QWidget *parent = nullptr);

    const Theme &theme() const { return m_theme; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    ColorRole m_role;
};

} // namespace Tessaline
