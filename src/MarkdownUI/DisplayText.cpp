#include "MarkdownUI/DisplayText.h"

#include <algorithm>

namespace MarkdownUI {

DisplayText::DisplayText(const MarkdownDisplay &display)
{
    m_starts.reserve(static_cast<size_t>(display.leafCount()));
    for (qsizetype leaf = 0; leaf < display.leafCount(); ++leaf) {
        const TextLeaf *const text = std::get_if<TextLeaf>(&display.leaf(leaf).content);
        if (leaf > 0 && !(text && text->continuesAbove))
            m_text.append(u'\n');
        m_starts.push_back(m_text.size());
        m_text.append(display.leafText(leaf));
    }
}

qsizetype DisplayText::offsetOf(const DisplayPosition &position) const
{
    if (position.leaf < 0 || m_starts.empty())
        return 0;
    if (position.leaf >= static_cast<qsizetype>(m_starts.size()))
        return m_text.size();
    return std::min(m_starts[static_cast<size_t>(position.leaf)] + position.offset, m_text.size());
}

DisplayPosition DisplayText::positionOf(qsizetype offset) const
{
    if (m_starts.empty())
        return {};
    offset = std::clamp<qsizetype>(offset, 0, m_text.size());
    const auto after = std::upper_bound(m_starts.begin(), m_starts.end(), offset);
    const qsizetype leaf = std::max<qsizetype>(after - m_starts.begin() - 1, 0);
    return {leaf, offset - m_starts[static_cast<size_t>(leaf)]};
}

} // namespace MarkdownUI
