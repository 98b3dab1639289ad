#pragma once

#include "probe/Arguments.h"

#include <span>
#include <string_view>
#include <vector>

namespace Tessaline::Probe {

/// A function of the libraries under the name by which requests ask for it.
struct Operation {
    std::string_view name;
    Json (*run)(const Arguments &arguments); // the result; may throw BadArgument
};

std::span<const Operation> documentsOperations();
std::span<const Operation> editingOperations();
std::span<const Operation> markdownDisplayOperations();
std::span<const Operation> panelsOperations();
std::span<const Operation> servicesOperations();

/// Those of all modules.
std::vector<Operation> allOperations();

} // namespace Tessaline::Probe
