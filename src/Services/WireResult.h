#pragma once

#include <QtCore/QString>

#include <utility>
#include <variant>

namespace Tessaline {

/// Why a request brought no answer.
struct WireFailure {
    enum class Kind {
        Transport, // no connection, a broken one, no byte for too long, or a reply beyond all bounds
        Status,    // an answer whose status is not exactly 200
        Malformed, // a body that does not mean what it should
        Stopped,   // ended on request; nothing of it is shown
    };
    Kind kind = Kind::Transport;
    int status = -1;     // of Kind::Status: the HTTP status
    QString description; // one sentence for the person at the screen, "Could not connect to the server." for instance
    friend bool operator==(const WireFailure &, const WireFailure &) = default;
};

/// What a request brought, or why nothing. `Value` is std::monostate where only the end counts.
template <class Value>
class [[nodiscard]] WireResult
{
public:
    WireResult() = default;
    WireResult(Value value) : m_state(std::in_place_index<0>, std::move(value)) {}
    WireResult(WireFailure failure) : m_state(std::in_place_index<1>, std::move(failure)) {}

    explicit operator bool() const { return m_state.index() == 0; }
    const Value &value() const { return std::get<0>(m_state); }
    const WireFailure &failure() const { return std::get<1>(m_state); }

private:
    std::variant<Value, WireFailure> m_state;
};

} // namespace Tessaline
