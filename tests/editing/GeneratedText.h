#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

#include <random>

namespace Tessaline {

/// Texts and choices for tests on generated input: the same for the same seed. The texts are short words mixed with
/// everything that is easy to get wrong: all line ends, joined emoji, marks, surrogate pairs, right-to-left letters.
class GeneratedText
{
public:
    explicit GeneratedText(unsigned seed) : m_random(seed) {}

    /// A number from 0 to `end` - 1.
    qsizetype below(qsizetype end) { return static_cast<qsizetype>(m_random() % static_cast<std::uint_fast32_t>(end)); }
    bool oneIn(qsizetype times) { return below(times) == 0; }

    QString piece();
    QString text(qsizetype pieces);
    /// Text without a line end, at least this long.
    QString longLine(qsizetype length);

private:
    std::mt19937 m_random;
};

} // namespace Tessaline
