#pragma once

#include "foundation_ui/TessalineStyle.h"

namespace Tessaline {

/// The theme that dresses the application. The toolkit's style goes on using it after a test.
inline Theme &dressingTheme()
{
    static Theme theme;
    [[maybe_unused]] static const bool kDressed = (dressApplication(theme), true);
    return theme;
}

} // namespace Tessaline
