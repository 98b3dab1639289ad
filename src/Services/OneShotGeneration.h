#pragma once

#include "Services/TokenAccumulator.h"
#include "Services/WireClient.h"

#include <QtCore/QFuture>
#include <QtCore/QThread>

#include <memory>

namespace Tessaline {

/// Answers beside the chat, each on its own: for the tools on a selection. They know nothing of the conversation and
/// run on a thread of their own, which the first of them starts; several may run at the same time.
class OneShotGeneration
{
public:
    using Outcome = WireResult<std::monostate>;

    explicit OneShotGeneration(WireOptions options);
    ~OneShotGeneration(); // ends what runs with WireFailure::Kind::Stopped, and waits for that
    OneShotGeneration(const OneShotGeneration &) = delete;
    OneShotGeneration &operator=(const OneShotGeneration &) = delete;

    /// Asks about `prompt` and the document's text; an empty text is sent too. The tokens go into `accumulator`, which
    /// may be read meanwhile. Finishes when the stream has ended or failed; for a status other than 200 the failure's
    /// description is "Server returned status code " and the status. Called on the thread that made this object.
    QFuture<Outcome> generate(QString prompt, QString fileContent, std::shared_ptr<TokenAccumulator> accumulator);

private:
    class Worker; // lives on m_thread

    WireOptions m_options;
    QThread m_thread;
    Worker *m_worker = nullptr; // deleted on its own thread when that ends
};

} // namespace Tessaline
