#pragma once

#include "editing/AttributedText.h"
#include "foundation/ChunkedText.h"
#include "foundation/SummedList.h"

#include <QtCore/QHash>

namespace Tessaline {

/// The text of a document with its attributes, for editing: what AttributedText is for a stretch of text, but an edit
/// costs what it touches and not what the document holds. Equal sets of attributes are kept once, so a run takes eight
/// bytes.
///
/// Runs are maximal, as those of AttributedText are. A document without attributes is one run, whatever its size.
class AttributedDocument
{
public:
    AttributedDocument() = default;
    explicit AttributedDocument(const ChunkedText &text); // without attributes

    /// Begins anew.
    void reset(const ChunkedText &text);
    void reset(const AttributedText &text);

    const ChunkedText &text() const { return m_text; }
    qsizetype size() const { return m_text.size(); }
    qsizetype runCount() const { return m_runs.count(); }

    /// The attributes of one unit, which must exist.
    const TextAttributes &attributesAt(qsizetype index) const;
    /// The run around one unit: the longest range over which all attributes are the same.
    TextRange runAt(qsizetype index) const;
    AttributedText sliced(TextRange range) const;
    /// The longest range around `index`, inside `limits`, over which `attribute` has the value that it has there.
    template <class Value>
    TextRange effectiveRange(qsizetype index, Value TextAttributes::*attribute, TextRange limits) const;

    /// Puts `replacement` in the place of `range`. Unpaired surrogates become U+FFFD.
    TextChange replace(TextRange range, const AttributedText &replacement);

private:
    struct Run {
        quint32 length = 0;
        quint32 attributes = 0; // index into m_attributes
        qsizetype sum() const { return length; }
    };
    using Runs = SummedList<Run, qsizetype>;

    quint32 idOf(const TextAttributes &attributes);
    Runs::Place placeOf(qsizetype index) const;
    std::vector<Run> runsOf(const AttributedText &text);
    static void appendRun(std::vector<Run> &runs, Run run);

    ChunkedText m_text;
    Runs m_runs; // empty for an empty text
    QList<TextAttributes> m_attributes;
    QHash<TextAttributes, quint32> m_ids;
};

template <class Value>
TextRange AttributedDocument::effectiveRange(qsizetype index, Value TextAttributes::*attribute, TextRange limits) const
{
    const Value value = attributesAt(index).*attribute;
    TextRange range = runAt(index);
    while (range.location > limits.location && attributesAt(range.location - 1).*attribute == value) {
        const TextRange before = runAt(range.location - 1);
        range = {before.location, range.end() - before.location};
    }
    while (range.end() < limits.end() && attributesAt(range.end()).*attribute == value)
        range.length = runAt(range.end()).end() - range.location;
    const qsizetype begin = std::max(range.location, limits.location);
    return {begin, std::min(range.end(), limits.end()) - begin};
}

} // namespace Tessaline
