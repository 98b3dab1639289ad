#pragma once

#include <QtCore/QString>
#include <QtCore/QStringView>

#include <mutex>

namespace Tessaline {

/// The growing text of one answer beside the chat. Whoever ordered the answer may read it at any time while it grows.
/// Safe from any thread: the lock guards the text.
class TokenAccumulator
{
public:
    void append(QStringView token)
    {
        const std::scoped_lock lock(m_lock);
        m_text.append(token);
    }

    QString text() const // all that has come so far
    {
        const std::scoped_lock lock(m_lock);
        return m_text;
    }

private:
    mutable std::mutex m_lock;
    QString m_text;
};

} // namespace Tessaline
