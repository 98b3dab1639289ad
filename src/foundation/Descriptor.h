#pragma once

#include <unistd.h>
#include <utility>

namespace Tessaline {

/// An open file of the system, closed with this object; -1 for none.
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(Descriptor &&other) noexcept : m_number(other.release()) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor() { close(); }

    int number() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }

    /// Closes it before its time; what `close` of the system answers, 0 if there was none.
    int close()
    {
        const int number = release();
        return number >= 0 ? ::close(number) : 0;
    }
    /// Leaves the closing to the caller.
    int release() { return std::exchange(m_number, -1); }

private:
    int m_number = -1;
};

} // namespace Tessaline
