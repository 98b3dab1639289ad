#pragma once

namespace MarkdownUI {

/// A visitor for std::visit from one function for each case.
template <class... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

} // namespace MarkdownUI
