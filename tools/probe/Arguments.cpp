#include "probe/Arguments.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>

namespace Tessaline::Probe {

namespace {

QString textFrom(const Json &value)
{
    return QString::fromStdString(value.get_ref<const std::string &>());
}

} // namespace

const Json &Arguments::valueOf(const char *name) const
{
    const auto found = m_request.find(name);
    if (found == m_request.end())
        throw BadArgument('"' + std::string(name) + "\" is missing.");
    return *found;
}

QString Arguments::text(const char *name) const
{
    const Json &value = valueOf(name);
    if (!value.is_string())
        throw BadArgument('"' + std::string(name) + "\" is not a text.");
    return textFrom(value);
}

std::optional<QString> Arguments::textIfThere(const char *name) const
{
    const auto found = m_request.find(name);
    if (found == m_request.end() || found->is_null())
        return std::nullopt;
    return text(name);
}

QStringList Arguments::texts(const char *name) const
{
    const Json &value = valueOf(name);
    if (!value.is_array() || !std::ranges::all_of(value, [](const Json &element) { return element.is_string(); }))
        throw BadArgument('"' + std::string(name) + "\" is not a list of texts.");
    QStringList texts;
    for (const Json &element : value)
        texts.append(textFrom(element));
    return texts;
}

double Arguments::number(const char *name) const
{
    const Json &value = valueOf(name);
    if (!value.is_number())
        throw BadArgument('"' + std::string(name) + "\" is not a number.");
    return value.get<double>();
}

std::optional<double> Arguments::optionalNumber(const char *name) const
{
    if (valueOf(name).is_null())
        return std::nullopt;
    return number(name);
}

qint64 Arguments::integer(const char *name) const
{
    const Json &value = valueOf(name);
    constexpr auto kLargest = static_cast<std::uint64_t>(std::numeric_limits<qint64>::max());
    if (!value.is_number_integer() || (value.is_number_unsigned() && value.get<std::uint64_t>() > kLargest))
        throw BadArgument('"' + std::string(name) + "\" is not an integer of 64 bits.");
    return value.get<qint64>();
}

bool Arguments::flag(const char *name) const
{
    const Json &value = valueOf(name);
    if (!value.is_boolean())
        throw BadArgument('"' + std::string(name) + "\" is neither true nor false.");
    return value.get<bool>();
}

const Json &Arguments::object(const char *name) const
{
    const Json &value = valueOf(name);
    if (!value.is_object())
        throw BadArgument('"' + std::string(name) + "\" is not an object.");
    return value;
}

const Json &Arguments::list(const char *name) const
{
    const Json &value = valueOf(name);
    if (!value.is_array())
        throw BadArgument('"' + std::string(name) + "\" is not a list.");
    return value;
}

} // namespace Tessaline::Probe
