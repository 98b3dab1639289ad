#pragma once

namespace MarkdownUI {

/// The appearance that is drawn in. Other stands for one that is neither.
enum class ColorScheme { Light, Dark, Other };

} // namespace MarkdownUI
