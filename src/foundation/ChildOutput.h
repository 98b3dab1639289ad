#pragma once

#include <QtCore/QByteArray>

#include <functional>
#include <thread>
#include <utility>

namespace Tessaline {

/// An open file of the system, closed with this object; -1 for none.
class ChildDescriptor
{
public:
    ChildDescriptor() = default;
    explicit ChildDescriptor(int number) : m_number(number) {}
    ChildDescriptor(ChildDescriptor &&other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    ChildDescriptor &operator=(ChildDescriptor &&other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~ChildDescriptor() { close(); }

    int number() const { return m_number; }
    bool isOpen() const { return m_number != -1; }
    void close();

private:
    int m_number = -1;
};

/// Reads the pipe that a child writes to, on a thread of its own, and hands over what it finds.
class ChildOutput
{
public:
    using Handler = std::function<void(const QByteArray &bytes)>;
    static constexpr int kLargestPiece = 65536; // bytes; what a pipe holds

    /// `handler` is called on the reading thread, until the pipe has ended or this object is destroyed.
    ChildOutput(ChildDescriptor pipe, Handler handler);
    /// Hands over what is in the pipe by now, and waits for that.
    ~ChildOutput();
    ChildOutput(const ChildOutput &) = delete;
    ChildOutput &operator=(const ChildOutput &) = delete;

private:
    void run();
    qsizetype handOver(); // one piece; its size, 0 at the end of the pipe
    void handOverTheRest();

    ChildDescriptor m_pipe;
    ChildDescriptor m_wake; // readable when the thread shall end
    Handler m_handler;
    std::thread m_thread;
};

} // namespace Tessaline
