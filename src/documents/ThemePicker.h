#pragma once

#include "foundation_ui/SegmentedControl.h"

namespace Tessaline {

class AppPreferences;

/// Chooses the appearance of the application, which is stored at once.
class ThemePicker final : public QWidget
{
    Q_OBJECT
public:
    /// Both must outlive the picker.
    ThemePicker(AppPreferences &preferences, const Theme &theme, QWidget *parent = nullptr);

    SegmentedControl &control() { return *m_control; }
    const SegmentedControl &control() const { return *m_control; }

private:
    SegmentedControl *m_control;
};

} // namespace Tessaline
