#pragma once

#include "probe/Operations.h"

#include <span>
#include <string>
#include <string_view>

namespace Tessaline::Probe {

/// The answer to one line, as one line without its line break: {"ok":true,"result":…}, or {"ok":false,"error":"…"} if
/// the line is no JSON object, names no operation of `operations` or lacks an argument. The request's "id" is copied
/// into it whenever the line could be read. Never throws and never crashes, whatever the bytes.
std::string answer(std::string_view line, std::span<const Operation> operations);

} // namespace Tessaline::Probe
