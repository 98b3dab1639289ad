#pragma once

#include "documents/ViewMode.h"
#include "foundation_ui/SegmentedControl.h"

namespace Tessaline {

/// Chooses among the view modes that a file can be shown in.
class ViewModeSelector final : public QWidget
{
    Q_OBJECT
public:
    explicit ViewModeSelector(const Theme &theme, QWidget *parent = nullptr);

    void setModes(const QList<ViewMode> &available, ViewMode current);
    SegmentedControl &control() { return *m_control; }
    const SegmentedControl &control() const { return *m_control; }

Q_SIGNALS:
    void chosen(Tessaline::ViewMode mode);

private:
    SegmentedControl *m_control;
    QList<ViewMode> m_modes;
};

} // namespace Tessaline
