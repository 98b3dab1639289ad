#pragma once

#include "MarkdownUI/ImageFlow.h"
#include "MarkdownUI/TextStyle.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

namespace MarkdownUI {

/// The constructs that give a text a style.
enum class InlineStyle { Code, Emphasis, Strong, Strikethrough, Link };

/// A text with its looks, ready to be laid out.
class AttributedString
{
public:
    static constexpr qsizetype kNoStyles = -1;

    struct Run {
        qsizetype location = 0; // in UTF-16 units, as `length`; runs follow each other without gaps
        qsizetype length = 0;   // never 0
        MarkdownUIAttributes attributes;
        qsizetype styles = kNoStyles;      // what `stylesOf` looks up; equal numbers stand for equal styles
        std::optional<RawImageData> image; // the run is then one U+FFFC, in the place of this image
        friend bool operator==(const Run &, const Run &) = default;
    };

    const QString &text() const { return m_text; }
    /// Maximal: two neighbours differ in their attributes or styles, or one is an image.
    const QList<Run> &runs() const { return m_runs; }

    /// The styles in force in the run, the outermost first; a style inside itself stands twice.
    QList<InlineStyle> stylesOf(const Run &run) const;

    // --- for renderers ---

    /// A number for `style` inside the styles of the number `outer`. Each call gives another number: whoever wants
    /// maximal runs asks once for each pair.
    qsizetype nest(qsizetype outer, InlineStyle style);
    /// Joins the text to the last run if it has the same looks. Nothing happens if it is empty.
    void append(QStringView text, const MarkdownUIAttributes &attributes, qsizetype styles);
    void appendImage(const RawImageData &image, const MarkdownUIAttributes &attributes);

    friend bool operator==(const AttributedString &, const AttributedString &) = default;

private:
    /// Styles as a tree: a deep nesting costs one entry for each level, not one for each level in each run.
    struct Nesting {
        qsizetype outer = kNoStyles;
        InlineStyle style = InlineStyle::Code;
        friend bool operator==(const Nesting &, const Nesting &) = default;
    };

    QString m_text;
    QList<Run> m_runs;
    QList<Nesting> m_nestings;
};

} // namespace MarkdownUI
