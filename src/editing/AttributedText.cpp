#include "editing/AttributedText.h"

#include <algorithm>

namespace Tessaline {

qsizetype AttributedText::runAt(qsizetype index) const
{
    const auto found = std::upper_bound(m_runs.begin(), m_runs.end(), index,
                                        [](qsizetype i, const AttributeRun &run) { return i < run.range.end(); });
    return found - m_runs.begin();
}

AttributedText AttributedText::sliced(TextRange range) const
{
    AttributedText slice;
    slice.m_text = m_text.sliced(range.location, range.length);
    for (qsizetype i = runAt(range.location); i < m_runs.size() && m_runs.at(i).range.location < range.end(); ++i) {
        const TextRange run = m_runs.at(i).range;
        const qsizetype begin = std::max(run.location, range.location);
        slice.appendRun(std::min(run.end(), range.end()) - begin, m_runs.at(i).attributes);
    }
    return slice;
}

void AttributedText::append(QStringView text, const TextAttributes &attributes)
{
    m_text.append(text);
    appendRun(text.size(), attributes);
}

void AttributedText::append(const AttributedText &text)
{
    const QList<AttributeRun> runs = text.m_runs; // stays as it is if `text` is this one
    m_text.append(text.m_text);
    for (const AttributeRun &run : runs)
        appendRun(run.range.length, run.attributes);
}

void AttributedText::replace(TextRange range, const AttributedText &replacement)
{
    AttributedText result = sliced({0, range.location});
    result.reserve(size() - range.length + replacement.size());
    result.append(replacement);
    result.append(sliced({range.end(), size() - range.end()}));
    *this = std::move(result);
}

void AttributedText::appendRun(qsizetype length, const TextAttributes &attributes)
{
    if (length == 0)
        return;
    if (!m_runs.isEmpty() && m_runs.constLast().attributes == attributes) {
        m_runs.last().range.length += length;
        return;
    }
    const qsizetype location = m_runs.isEmpty() ? 0 : m_runs.constLast().range.end();
    m_runs.append({{location, length}, attributes});
}

} // namespace Tessaline
