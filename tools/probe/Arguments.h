#pragma once

#include "probe/Json.h"

#include <QtCore/QStringList>

#include <optional>
#include <stdexcept>

namespace Tessaline::Probe {

/// An argument that is not there or not of the right type. Thrown by Arguments and turned into an answer by `answer`:
/// it never leaves the probe, and keeps the sixty operations to one line each.
class BadArgument final : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The arguments of one request. Each function throws BadArgument if there is no such argument or if it has another
/// type.
class Arguments
{
public:
    /// `request` must outlive this object.
    explicit Arguments(const Json &request) : m_request(request) {}

    QString text(const char *name) const;
    /// Absent for null and where there is no such argument.
    std::optional<QString> textIfThere(const char *name) const;
    QStringList texts(const char *name) const;
    double number(const char *name) const;
    /// Absent for null.
    std::optional<double> optionalNumber(const char *name) const;
    /// A number without a fraction that fits 64 bits.
    qint64 integer(const char *name) const;
    bool flag(const char *name) const;
    const Json &object(const char *name) const;
    const Json &list(const char *name) const;

private:
    const Json &valueOf(const char *name) const;

    const Json &m_request;
};

} // namespace Tessaline::Probe
