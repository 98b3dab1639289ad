#pragma once

#include "editing/AttributedText.h"
#include "tests/editing/GeneratedText.h"

namespace Tessaline {

/// Markdown, attributed texts and edits of them for tests on generated input: the same for the same seed. The signs of
/// the dialect stand densely, whole and broken, some with marks on them that make them other characters.
class GeneratedMarkdown
{
public:
    explicit GeneratedMarkdown(unsigned seed) : m_random(seed) {}

    qsizetype below(qsizetype end) { return m_random.below(end); }
    bool oneIn(qsizetype times) { return m_random.oneIn(times); }

    /// Signs and words in any order.
    QString noise(qsizetype pieces);
    /// The same without line breaks.
    QString inlineNoise(qsizetype pieces);
    /// Lines that mostly are what they seem to be, one below the other.
    QString document(qsizetype lines);

    /// Whole constructs, in any spelling, none of which reading and writing loses.
    QString soundDocument(qsizetype constructs);

    TextAttributes attributes();
    /// Any runs, also such as no reading of Markdown gives.
    AttributedText attributedText(qsizetype runs);

private:
    QString line();
    QString soundInline();
    QString soundConstruct();

    GeneratedText m_random;
};

} // namespace Tessaline
