#pragma once

#include <QtCore/QMetaType>
#include <QtCore/QString>

#include <utility>
#include <variant>

namespace Tessaline {

/// What went wrong, in the few classes that a caller branches on.
enum class FailureKind {
    NotFound,    // no such file or folder
    NotReadable, // it is there, but cannot be read (permission, a folder, a device error)
    NotWritable, // it cannot be written (permission, read-only, no such folder)
    NoSpace,     // the disk or a quota is full
    Malformed,   // the bytes do not mean what they should
    Stopped,     // ended on request; has no text and is never shown
};

/// An expected failure. `text` is one whole sentence for the person at the screen.
struct Failure {
    FailureKind kind = FailureKind::NotReadable;
    QString text;
    friend bool operator==(const Failure &, const Failure &) = default;
};

/// A value, or the reason why there is none. Asking for the one that is not there is a mistake of the caller.
template <class T>
class [[nodiscard]] Result
{
public:
    Result() = default; // a default-made value; QFuture needs it
    Result(T value) : m_state(std::in_place_index<0>, std::move(value)) {}
    Result(Failure failure) : m_state(std::in_place_index<1>, std::move(failure)) {}

    explicit operator bool() const { return m_state.index() == 0; }
    const T &value() const & { return std::get<0>(m_state); }
    T &&value() && { return std::get<0>(std::move(m_state)); }
    const Failure &failure() const { return std::get<1>(m_state); }

private:
    std::variant<T, Failure> m_state;
};

/// Success without a value, or the reason why not.
template <>
class [[nodiscard]] Result<void>
{
public:
    Result() = default;
    Result(Failure failure) : m_state(std::move(failure)) {}

    explicit operator bool() const { return m_state.index() == 0; }
    const Failure &failure() const { return std::get<1>(m_state); }

private:
    std::variant<std::monostate, Failure> m_state;
};

} // namespace Tessaline
