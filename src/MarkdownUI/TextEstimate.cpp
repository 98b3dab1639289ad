#include "MarkdownUI/TextEstimate.h"

#include <QtGui/QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace MarkdownUI {

namespace {

constexpr QStringView kRunningText = u"the quick brown fox jumps over a lazy dog and then rests in its shade";

} // namespace

TextEstimate::TextEstimate(const QFont &font)
{
    const QFontMetricsF metrics(font);
    for (size_t i = 0; i < m_advances.size(); ++i)
        m_advances[i] = i < ' ' ? 0 : metrics.horizontalAdvance(QChar(static_cast<char16_t>(i)));
    m_em = font.pixelSize();
    m_average = width(kRunningText) / static_cast<double>(kRunningText.size());
    m_rowHeight = rowHeightOf(font);
}

int TextEstimate::rowHeightOf(const QFont &font)
{
    return static_cast<int>(std::ceil(QFontMetricsF(font).height()));
}

double TextEstimate::advance(QChar character) const
{
    if (character.unicode() < m_advances.size())
        return m_advances[character.unicode()];
    if (character.isMark() || character.isLowSurrogate())
        return 0;
    return m_em;
}

double TextEstimate::width(QStringView text) const
{
    double width = 0;
    for (const QChar character : text)
        width += advance(character);
    return width;
}

double TextEstimate::longestWord(QStringView text) const
{
    double longest = 0;
    double word = 0;
    for (const QChar character : text) {
        if (character.isSpace()) {
            word = 0;
            continue;
        }
        word += advance(character);
        longest = std::max(longest, word);
    }
    return longest;
}

int TextEstimate::height(qsizetype length, int width, int lineSpacing) const
{
    const double rows = std::ceil(static_cast<double>(length) * m_average / std::max(width, 1));
    return static_cast<int>(std::clamp(rows, 1.0, 1e6) * (m_rowHeight + lineSpacing)) - lineSpacing;
}

} // namespace MarkdownUI
