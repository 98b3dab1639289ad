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

    /// Whether the text is to be shown now. The first question is answered yes.
    bool isUpdateDue(TimePoint now) const { return !m_lastUpdate || now - *m_lastUpdate >= kUpdateInterval; }

    /// The text has been shown, `now` being when that was done. Where showing it takes long, the time to the next
    /// update counts from there: otherwise an update would be due again with every token, and nothing else would get a
    /// turn.
    void noteUpdate(TimePoint now) { m_lastUpdate = now; }

private:
    QString m_text;
    std::optional<TimePoint> m_lastUpdate;
};

} // namespace Tessaline
