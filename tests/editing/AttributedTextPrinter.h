#pragma once

#include "editing/AttributedText.h"
#include "editing/FormatCommands.h"
#include "editing/MarkdownBlocks.h"
#include "editing/MarkdownPieces.h"

#include <ostream>

/// How the values of the codec look in a test: each run in braces with what it is, then its text.
///
///     {bullet,marker}•⇥{bullet}one {bullet,bold}two{bullet}⏎
namespace Tessaline {

inline QString visible(QString text)
{
    constexpr struct {
        char16_t unit;
        char16_t sign;
    } kSigns[] = {{u'\n', u'⏎'}, {u'\r', u'␍'}, {u'\t', u'⇥'}, {0x2028, u'↵'}, {0x2029, u'¶'}};
    for (const auto &[unit, sign] : kSigns)
        text.replace(QChar(unit), QChar(sign));
    return text;
}

inline QString described(const TextAttributes &attributes)
{
    QStringList words;
    if (attributes.blockStyle.isPresent())
        words += attributes.blockStyle.toString();
    if (attributes.generatedMarker)
        words += QStringLiteral("marker");
    if (attributes.bold)
        words += QStringLiteral("bold");
    if (attributes.italic)
        words += QStringLiteral("italic");
    if (attributes.inlineCode)
        words += QStringLiteral("code");
    if (attributes.linkDestination.isPresent())
        words += QStringLiteral("link=") + attributes.linkDestination.toString();
    if (attributes.imageSource.isPresent())
        words += QStringLiteral("image=") + attributes.imageSource.toString();
    if (attributes.imageAlt.isPresent())
        words += QStringLiteral("alt=") + attributes.imageAlt.toString();
    return u'{' + words.join(u',') + u'}';
}

inline QString described(const AttributedText &text)
{
    QString result;
    for (const AttributeRun &run : text.runs())
        result += described(run.attributes) + visible(text.text().mid(run.range.location, run.range.length));
    return result;
}

inline QString described(const Block &block)
{
    QString result = block.style.toString();
    if (block.marker.isPresent())
        result += u'(' + visible(block.marker.toString()) + u')';
    return result + QChar(block.parsesInlineMarkdown ? u':' : u'=') + u' ' + visible(block.content);
}

/// The selection stands in angles, a caret as ‸.
inline QString described(const FormattedText &formatted)
{
    const TextRange selection = formatted.selection;
    const auto text = [&](TextRange range) { return described(formatted.text.sliced(range)); };
    const QString selected = selection.isEmpty() ? QStringLiteral("‸") : u'<' + text(selection) + u'>';
    return text({0, selection.location}) + selected + text({selection.end(), formatted.text.size() - selection.end()});
}

inline void PrintTo(const AttributedText &text, std::ostream *out)
{
    *out << described(text).toStdString();
}

inline void PrintTo(const Block &block, std::ostream *out)
{
    *out << described(block).toStdString();
}

inline void PrintTo(const MarkdownChange &change, std::ostream *out)
{
    *out << change.removed << " units at " << change.location << " became \"" << change.inserted.toStdString() << '"';
}

} // namespace Tessaline
