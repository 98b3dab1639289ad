#pragma once

#include <QtCore/QString>

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace Tessaline::Probe {

using Json = nlohmann::ordered_json;

/// A text as JSON holds it. What UTF-8 cannot carry, half a surrogate pair, becomes a replacement character.
Json jsonFrom(const QString &text);

/// The value in one line. Needs no more stack for a deep value than for a flat one, unlike the library's own writer.
std::string lineOf(const Json &value);

} // namespace Tessaline::Probe
