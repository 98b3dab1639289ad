#pragma once

#include <QtCore/QString>
#include <QtCore/QStringView>

#include <chrono>
#include <optional>

namespace Tessaline {

/// The text of an answer while its tokens arrive, and when it is time to show it. What is shown lags behind: a view
/// that drew each token could not keep up with a fast model. So whoever shows it takes the text once more at the end.
class GrowingAnswer
{
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// The least time between two updates of what is shown: 20 a second.
    static constexpr std::chrono::milliseconds kUpdateInterval{50};

    void append(QStringView token) { m_text.append(token); }
    void setText(const QString &text) { m_text = text; }
    const QString &text() const { return m_text; }
    bool isEmpty() const { return m_text.isEmpty(); }

    /// Whether the text is to be shown now. A yes counts as having shown it; the first question is answered yes.
    bool takeUpdate(TimePoint now)
    {
        if (m_lastUpdate && now - *m_lastUpdate < kUpdateInterval)
            return false;
        m_lastUpdate = now;
        return true;
    }

private:
    QString m_text;
    std::optional<TimePoint> m_lastUpdate;
};

} // namespace Tessaline
