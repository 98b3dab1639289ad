#include "editing/FormatCommands.h"

#include "editing/BlockStyle.h"
#include "editing/InlineMarkdown.h"
#include "editing/MarkdownRendering.h"
#include "editing/Paragraphs.h"

#include <algorithm>
#include <array>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr QStringView kDestination = u"url"; // to be filled in by the user
constexpr QStringView kTable = u"| Header 1 | Header 2 |\n| --- | --- |\n| Cell 1 | Cell 2 |";

TextRange clamped(TextRange range, qsizetype size)
{
    const qsizetype location = std::clamp(range.location, qsizetype(0), size);
    return {location, std::clamp(range.length, qsizetype(0), size - location)};
}

FormattedText replaceSelection(const FormattedText &formatted, const AttributedText &replacement)
{
    FormattedText result = formatted;
    result.text.replace(formatted.selection, replacement);
    result.selection = {formatted.selection.location + replacement.size(), 0};
    return result;
}

// --- parts of a paragraph ---

template <bool TextAttributes::*kAttribute>
FormattedText toggle(const FormattedText &formatted)
{
    FormattedText result = formatted;
    const TextRange selection = formatted.selection;
    // NOTE: with nothing selected the attribute would go to the text that is typed next, but the caret's own attributes
    // are taken anew behind every command.
    if (selection.isEmpty())
        return result;
    const TextRange alike = result.text.effectiveRange(selection.location, kAttribute, selection);
    const bool allHaveIt = result.text.attributesAt(selection.location).*kAttribute && alike == selection;
    result.text.set(selection, kAttribute, !allHaveIt);
    return result;
}

FormattedText makeLink(const FormattedText &formatted)
{
    TextAttributes attributes;
    attributes.linkDestination = SharedText(kDestination);
    if (formatted.selection.isEmpty()) {
        const AttributedText link(u"link", attributes);
        FormattedText result = replaceSelection(formatted, link);
        result.selection = {formatted.selection.location, link.size()};
        return result;
    }
    FormattedText result = formatted;
    result.text.set(formatted.selection, &TextAttributes::linkDestination, attributes.linkDestination);
    return result;
}

FormattedText insertImage(const FormattedText &formatted)
{
    const TextRange selection = formatted.selection;
    const QString description =
        selection.isEmpty() ? u"Image"_s : formatted.text.text().sliced(selection.location, selection.length);
    TextAttributes attributes;
    attributes.imageSource = SharedText(kDestination);
    attributes.imageAlt = SharedText(description);
    return replaceSelection(formatted, AttributedText(imagePlaceholder(description), attributes));
}

FormattedText insertRule(const FormattedText &formatted)
{
    return replaceSelection(formatted, renderMarkdown(u"---"));
}

FormattedText insertTable(const FormattedText &formatted)
{
    return replaceSelection(formatted, renderMarkdown(kTable));
}

// --- whole paragraphs ---

/// Writes a text anew, part by part, and keeps the ends of a selection on their places in it.
class Rewriting
{
public:
    explicit Rewriting(const FormattedText &source) : m_source(source) {}

    /// Appends a part of the source as it is.
    void keep(TextRange part) { append(part, m_source.text.sliced(part)); }

    /// Appends a paragraph with another tag and another marker, which may be absent.
    void retag(TextRange paragraph, const SharedText &tag, const SharedText &marker)
    {
        TextAttributes ofMarker;
        ofMarker.generatedMarker = true;
        ofMarker.blockStyle = tag;
        m_text.append(marker.view(), ofMarker);
        const AttributedText old = m_source.text.sliced(paragraph);
        for (const AttributeRun &run : old.runs()) {
            AttributedText fresh;
            if (!run.attributes.generatedMarker) {
                TextAttributes attributes = run.attributes;
                attributes.blockStyle = tag;
                fresh.append(QStringView(old.text()).sliced(run.range.location, run.range.length), attributes);
            }
            append({paragraph.location + run.range.location, run.range.length}, fresh);
        }
    }

    FormattedText result() const { return {m_text, {m_begin.value_or(m_text.size()), length()}}; }

private:
    /// `fresh` takes the place of the part, which is not shorter than it.
    void append(TextRange part, const AttributedText &fresh)
    {
        follow(m_source.selection.location, part, fresh, m_begin);
        follow(m_source.selection.end(), part, fresh, m_end);
        m_text.append(fresh);
    }
    void follow(qsizetype position, TextRange part, const AttributedText &fresh, std::optional<qsizetype> &moved) const
    {
        if (position >= part.location && position < part.end())
            moved = m_text.size() + std::min(position - part.location, fresh.size());
    }
    qsizetype length() const { return m_end.value_or(m_text.size()) - m_begin.value_or(m_text.size()); }

    const FormattedText &m_source;
    AttributedText m_text;
    std::optional<qsizetype> m_begin; // of the selection; absent as long as it lies behind what was written
    std::optional<qsizetype> m_end;
};

struct Style {
    SharedText tag;
    SharedText marker;
};

FormattedText applyBlockStyle(const FormattedText &formatted, const Style &style)
{
    const QStringView text = formatted.text.text();
    const TextRange all = Paragraphs::around(text, formatted.selection);
    QList<TextRange> paragraphs = Paragraphs::in(text, all);
    if (paragraphs.isEmpty())
        paragraphs.append(all); // the empty line behind the last line break, or the empty text

    const qsizetype first = std::min(all.location, text.size() - 1);
    const bool isOn = first >= 0 && formatted.text.attributesAt(first).blockStyle == style.tag;
    const bool countsUp = BlockStyle::read(style.tag.view()).kind == BlockStyle::Kind::Numbered;
    Rewriting rewriting(formatted);
    rewriting.keep({0, all.location});
    for (qsizetype i = 0; i < paragraphs.size(); ++i) {
        if (isOn)
            rewriting.retag(paragraphs.at(i), BlockStyle::paragraph(), {});
        else
            rewriting.retag(paragraphs.at(i), style.tag, countsUp ? ListMarker::number(i + 1) : style.marker);
    }
    rewriting.keep({all.end(), text.size() - all.end()});
    return rewriting.result();
}

struct NamedCommand {
    QStringView type;
    FormattedText (*apply)(const FormattedText &);
};

constexpr std::array kCommands{
    NamedCommand{u"bold", toggle<&TextAttributes::bold>},
    NamedCommand{u"italic", toggle<&TextAttributes::italic>},
    NamedCommand{u"codeInline", toggle<&TextAttributes::inlineCode>},
    NamedCommand{u"link", makeLink},
    NamedCommand{u"image", insertImage},
    NamedCommand{u"hr", insertRule},
    NamedCommand{u"table", insertTable},
};

struct NamedStyle {
    QStringView type;
    Style style;
};

const std::array<NamedStyle, 8> &styles()
{
    static const std::array<NamedStyle, 8> kStyles{{
        {u"h1", {BlockStyle::heading(1), {}}},
        {u"h2", {BlockStyle::heading(2), {}}},
        {u"h3", {BlockStyle::heading(3), {}}},
        {u"quote", {BlockStyle::quote(), {}}},
        {u"codeBlock", {BlockStyle::code({}), {}}},
        {u"bullet", {BlockStyle::bullet(), ListMarker::bullet()}},
        {u"numbered", {BlockStyle::numbered(1), ListMarker::number(1)}},
        {u"task", {BlockStyle::task(false), ListMarker::task(false)}},
    }};
    return kStyles;
}

} // namespace

std::optional<FormattedText> applyFormat(const FormattedText &formatted, QStringView type)
{
    const FormattedText source{formatted.text, clamped(formatted.selection, formatted.text.size())};
    for (const NamedCommand &command : kCommands) {
        if (command.type == type)
            return command.apply(source);
    }
    for (const NamedStyle &named : styles()) {
        if (named.type == type)
            return applyBlockStyle(source, named.style);
    }
    return std::nullopt;
}

std::optional<AttributedText> listContinuation(const AttributedText &text, qsizetype location)
{
    if (text.isEmpty())
        return std::nullopt;
    const qsizetype index = std::clamp(location - 1, qsizetype(0), text.size() - 1);
    const std::optional<ListItem> item = nextListItem(text.attributesAt(index).blockStyle.view());
    if (!item)
        return std::nullopt;
    TextAttributes attributes;
    attributes.blockStyle = item->style;
    AttributedText continuation(u"\n", attributes);
    attributes.generatedMarker = true;
    continuation.append(item->marker.view(), attributes);
    return continuation;
}

} // namespace Tessaline
