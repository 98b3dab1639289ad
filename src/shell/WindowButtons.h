#pragma once

#include "foundation_ui/PlainButton.h"

namespace Tessaline {

class FramelessWindow;

/// The three buttons that act on a window without a frame, in a row: minimize, maximize or restore, close.
class WindowButtons final : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kSide = 28; // of one button
    static constexpr int kGap = 4;

    /// Both must outlive the buttons.
    WindowButtons(const Theme &theme, FramelessWindow &window, QWidget *parent = nullptr);
};

} // namespace Tessaline
