#pragma once

#include "editing/TextAttributes.h"
#include "foundation/TextRange.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <algorithm>

namespace Tessaline {

/// A stretch of text with one set of attributes.
struct AttributeRun {
    TextRange range;
    TextAttributes attributes;
    friend bool operator==(const AttributeRun &, const AttributeRun &) = default;
};

/// A UTF-16 text with attributes: a value, cheap to copy. Its runs cover the text in order, none is empty, and two
/// neighbours always differ. Ranges and indices that are passed in must lie inside the text.
class AttributedText
{
public:
    AttributedText() = default;
    explicit AttributedText(QStringView text, const TextAttributes &attributes = {}) { append(text, attributes); }

    const QString &text() const { return m_text; }
    const QList<AttributeRun> &runs() const { return m_runs; }
    qsizetype size() const { return m_text.size(); }
    bool isEmpty() const { return m_text.isEmpty(); }

    /// The index, in `runs()`, of the run that holds this unit; the number of runs for the end of the text.
    qsizetype runAt(qsizetype index) const;
    /// The attributes of one unit, which must exist.
    const TextAttributes &attributesAt(qsizetype index) const { return m_runs.at(runAt(index)).attributes; }
    /// The longest range around `index`, inside `limits`, over which `attribute` has the value that it has there.
    template <class Value>
    TextRange effectiveRange(qsizetype index, Value TextAttributes::*attribute, TextRange limits) const;
    AttributedText sliced(TextRange range) const;

    void reserve(qsizetype size) { m_text.reserve(size); }
    void append(QStringView text, const TextAttributes &attributes);
    void append(const AttributedText &text);
    /// Puts `replacement` in the place of `range`, which may be empty. Costs a copy of what follows.
    void replace(TextRange range, const AttributedText &replacement);
    /// Gives one attribute a value over a range; false or an absent text removes it.
    template <class Value>
    void set(TextRange range, Value TextAttributes::*attribute, const Value &value);

    friend bool operator==(const AttributedText &, const AttributedText &) = default;

private:
    void appendRun(qsizetype length, const TextAttributes &attributes);

    QString m_text;
    QList<AttributeRun> m_runs;
};

template <class Value>
TextRange AttributedText::effectiveRange(qsizetype index, Value TextAttributes::*attribute, TextRange limits) const
{
    const qsizetype at = runAt(index);
    const Value &value = m_runs.at(at).attributes.*attribute;
    qsizetype first = at;
    while (m_runs.at(first).range.location > limits.location && m_runs.at(first - 1).attributes.*attribute == value)
        --first;
    qsizetype last = at;
    while (m_runs.at(last).range.end() < limits.end() && m_runs.at(last + 1).attributes.*attribute == value)
        ++last;
    const qsizetype begin = std::max(m_runs.at(first).range.location, limits.location);
    return {begin, std::min(m_runs.at(last).range.end(), limits.end()) - begin};
}

template <class Value>
void AttributedText::set(TextRange range, Value TextAttributes::*attribute, const Value &value)
{
    if (range.isEmpty())
        return;
    QList<AttributeRun> old;
    old.swap(m_runs);
    m_runs.reserve(old.size() + 2);
    for (const AttributeRun &run : old) {
        const qsizetype begin = std::clamp(range.location, run.range.location, run.range.end());
        const qsizetype end = std::clamp(range.end(), run.range.location, run.range.end());
        TextAttributes changed = run.attributes;
        changed.*attribute = value;
        appendRun(begin - run.range.location, run.attributes);
        appendRun(end - begin, changed);
        appendRun(run.range.end() - end, run.attributes);
    }
}

} // namespace Tessaline

Q_DECLARE_TYPEINFO(Tessaline::AttributeRun, Q_RELOCATABLE_TYPE);
