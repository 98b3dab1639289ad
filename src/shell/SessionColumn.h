#pragma once

#include "foundation_ui/Ground.h"

namespace Tessaline {

class FramelessWindow;

/// The right column, the place of the assistant: its title and the window's buttons in the top row, and below it, while
/// there is no assistant, a few words that say so.
class SessionColumn final : public Ground
{
    Q_OBJECT
public:
    /// Both must outlive the column.
    SessionColumn(const Theme &theme, FramelessWindow &window, QWidget *parent = nullptr);
};

} // namespace Tessaline
