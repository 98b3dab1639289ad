#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Tessaline::Server {

/// What the model is told about itself before anything else: what it is, how it proposes an edit, and that what it is
/// shown is data. `markerLines` are the lines of the document, counted from 1, that look like the marks of an edit and
/// so cannot stand in one.
std::string systemText(const std::vector<int> &markerLines);

/// The lines of a document that would end a part of an edit too early, or begin one.
std::vector<int> markerLinesIn(std::string_view document);

} // namespace Tessaline::Server
