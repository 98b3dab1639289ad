#pragma once

#include "foundation/Descriptor.h"

#include <QtCore/QByteArray>

#include <functional>
#include <thread>

namespace Tessaline {

/// Reads the pipe that a child writes to, on a thread of its own, and hands over what it finds.
class ChildOutput
{
public:
    using Handler = std::function<void(const QByteArray &bytes)>;
    static constexpr int kLargestPiece = 65536; // bytes; what a pipe holds

    /// `handler` is called on the reading thread, until the pipe has ended or this object is destroyed.
    ChildOutput(Descriptor pipe, Handler handler);
    /// Hands over what is in the pipe by now, and waits for that.
    ~ChildOutput();
    ChildOutput(const ChildOutput &) = delete;
    ChildOutput &operator=(const ChildOutput &) = delete;

private:
    void run();
    qsizetype handOver(); // one piece; its size, 0 at the end of the pipe
    void handOverTheRest();

    Descriptor m_pipe;
    Descriptor m_wake; // readable when the thread shall end
    Handler m_handler;
    std::thread m_thread;
};

} // namespace Tessaline
