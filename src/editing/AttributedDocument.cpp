#include "editing/AttributedDocument.h"

#include <algorithm>
#include <limits>

namespace Tessaline {

AttributedDocument::AttributedDocument(const ChunkedText &text)
{
    reset(text);
}

void AttributedDocument::reset(const ChunkedText &text)
{
    *this = AttributedDocument();
    m_text = text;
    std::vector<Run> runs;
    // One run holds at most what its length can count.
    for (qsizetype rest = text.size(); rest > 0;) {
        const qsizetype length = std::min<qsizetype>(rest, std::numeric_limits<quint32>::max());
        runs.push_back({static_cast<quint32>(length), idOf({})});
        rest -= length;
    }
    m_runs.reset(runs);
}

void AttributedDocument::reset(const AttributedText &text)
{
    *this = AttributedDocument();
    m_text = ChunkedText(text.text());
    m_runs.reset(runsOf(text));
}

quint32 AttributedDocument::idOf(const TextAttributes &attributes)
{
    const auto known = m_ids.constFind(attributes);
    if (known != m_ids.constEnd())
        return *known;
    const auto id = static_cast<quint32>(m_attributes.size());
    m_attributes.append(attributes);
    m_ids.insert(attributes, id);
    return id;
}

std::vector<AttributedDocument::Run> AttributedDocument::runsOf(const AttributedText &text)
{
    std::vector<Run> runs;
    runs.reserve(static_cast<std::size_t>(text.runs().size()));
    for (const AttributeRun &run : text.runs())
        runs.push_back({static_cast<quint32>(run.range.length), idOf(run.attributes)});
    return runs;
}

AttributedDocument::Runs::Place AttributedDocument::placeOf(qsizetype index) const
{
    return m_runs.find([index](qsizetype behind) { return behind > index; });
}

const TextAttributes &AttributedDocument::attributesAt(qsizetype index) const
{
    Q_ASSERT(index >= 0 && index < size());
    return m_attributes.at(m_runs.at(placeOf(index)).attributes);
}

TextRange AttributedDocument::runAt(qsizetype index) const
{
    const Runs::Place place = placeOf(index);
    return {place.before, m_runs.at(place).length};
}

AttributedText AttributedDocument::sliced(TextRange range) const
{
    AttributedText result;
    if (range.isEmpty())
        return result;
    const QString text = m_text.sliced(range.location, range.length);
    result.reserve(range.length);
    Runs::Place place = placeOf(range.location);
    qsizetype position = range.location;
    while (position < range.end()) {
        const Run &run = m_runs.at(place);
        const qsizetype end = std::min(place.before + run.length, range.end());
        result.append(QStringView(text).sliced(position - range.location, end - position),
                      m_attributes.at(run.attributes));
        position = end;
        if (!m_runs.advance(place))
            break;
    }
    return result;
}

void AttributedDocument::appendRun(std::vector<Run> &runs, Run run)
{
    if (run.length == 0)
        return;
    if (!runs.empty() && runs.back().attributes == run.attributes)
        runs.back().length += run.length;
    else
        runs.push_back(run);
}

TextChange AttributedDocument::replace(TextRange range, const AttributedText &replacement)
{
    const TextChange change = m_text.replace(range.location, range.length, replacement.text());
    const std::vector<Run> inserted = runsOf(replacement);
    if (m_runs.isEmpty()) {
        m_runs.reset(inserted);
        return change;
    }

    // The runs that the range touches, and one more on each side: a new neighbour may turn out to be equal to it.
    Runs::Place first = placeOf(std::max<qsizetype>(range.location - 1, 0));
    std::size_t count = 1;
    Runs::Place last = first;
    while (last.before + m_runs.at(last).length <= range.end() && m_runs.advance(last))
        ++count;

    std::vector<Run> fresh;
    fresh.reserve(inserted.size() + 2);
    Runs::Place at = first;
    for (std::size_t i = 0; i < count; ++i, m_runs.advance(at)) {
        const Run &run = m_runs.at(at);
        const qsizetype begin = at.before;
        if (begin >= range.location)
            break;
        appendRun(fresh,
                  {static_cast<quint32>(std::min<qsizetype>(run.length, range.location - begin)), run.attributes});
    }
    for (const Run &run : inserted)
        appendRun(fresh, run);
    at = first;
    for (std::size_t i = 0; i < count; ++i, m_runs.advance(at)) {
        const Run &run = m_runs.at(at);
        const qsizetype end = at.before + run.length;
        if (end > range.end())
            appendRun(fresh,
                      {static_cast<quint32>(std::min<qsizetype>(run.length, end - range.end())), run.attributes});
    }
    m_runs.replace(first, count, fresh);
    return change;
}

} // namespace Tessaline
