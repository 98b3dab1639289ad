#include "editing/InlineMarkdown.h"

#include "editing/Characters.h"

#include <algorithm>
#include <array>
#include <optional>

namespace Tessaline {

namespace {

/// The signs at which a construct can begin.
constexpr auto kOpeners = [] {
    std::array<bool, 128> openers{};
    for (const char sign : {'\\', '!', '[', '*', '`'})
        openers[static_cast<size_t>(sign)] = true;
    return openers;
}();

/// Where a delimiter stands next. It is asked for ascending positions only and remembers its answer, so all its
/// searches together walk the text once.
class NextDelimiter
{
public:
    /// `delimiter` is of ASCII.
    NextDelimiter(QStringView text, QStringView delimiter) : m_text(text), m_delimiter(delimiter) {}

    /// The first place at or behind `position`; -1 if there is none.
    qsizetype from(qsizetype position)
    {
        if (m_found != kNone && m_found < position)
            m_found = search(position);
        return m_found;
    }

private:
    static constexpr qsizetype kNone = -1;
    static constexpr qsizetype kNotAsked = -2;

    qsizetype search(qsizetype position) const
    {
        for (;; ++position) {
            position = m_text.indexOf(m_delimiter.front(), position);
            if (position < 0)
                return kNone;
            if (m_text.sliced(position).startsWith(m_delimiter) &&
                Characters::standAlone(m_text, position, m_delimiter.size()))
                return position;
        }
    }

    QStringView m_text;
    QStringView m_delimiter;
    qsizetype m_found = kNotAsked;
};

/// The delimiters in one text that is read.
struct Delimiters {
    explicit Delimiters(QStringView text)
        : middle(text, u"]("), closing(text, u")"), three(text, u"***"), two(text, u"**"), one(text, u"*"),
          backtick(text, u"`")
    {}
    NextDelimiter middle; // of a link or an image
    NextDelimiter closing;
    NextDelimiter three;
    NextDelimiter two;
    NextDelimiter one;
    NextDelimiter backtick;
};

/// A part of a text from `begin` up to `end`.
struct Part {
    qsizetype begin = 0;
    qsizetype end = 0;

    QStringView of(QStringView text) const { return text.sliced(begin, end - begin); }
};

struct Construct {
    enum Kind { Image, Link, BoldItalic, Bold, Italic, Code };
    Kind kind = Code;
    Part content;     // the label, the description, or what stands between the delimiters
    Part destination; // of a link or an image
    qsizetype end = 0;
};

/// Whether the signs (ASCII) stand there as characters of their own.
bool has(QStringView text, qsizetype position, QStringView signs)
{
    return text.sliced(position).startsWith(signs) && Characters::standAlone(text, position, signs.size());
}

/// What stands between two delimiters of the length `width`, the first of them at `position`.
std::optional<Construct> span(Construct::Kind kind, qsizetype position, qsizetype width, NextDelimiter &delimiter)
{
    const qsizetype begin = position + width;
    const qsizetype end = delimiter.from(begin);
    if (end < 0)
        return std::nullopt;
    return Construct{kind, {begin, end}, {}, end + width};
}

/// A link or an image whose content begins at `begin`: "](" and then ")" end its two parts, wherever they stand.
std::optional<Construct> reference(Construct::Kind kind, qsizetype begin, Delimiters &next)
{
    const qsizetype middle = next.middle.from(begin);
    const qsizetype closing = middle < 0 ? -1 : next.closing.from(middle + 2);
    if (closing < 0)
        return std::nullopt;
    return Construct{kind, {begin, middle}, {middle + 2, closing}, closing + 1};
}

/// The construct that begins at `position`, if one does.
std::optional<Construct> constructAt(QStringView text, qsizetype position, Delimiters &next)
{
    if (has(text, position, u"!["))
        return reference(Construct::Image, position + 2, next);
    if (has(text, position, u"["))
        return reference(Construct::Link, position + 1, next);
    if (has(text, position, u"`"))
        return span(Construct::Code, position, 1, next.backtick);
    // A run of asterisks counts as the longest delimiter that is closed somewhere.
    std::optional<Construct> emphasis;
    if (has(text, position, u"***"))
        emphasis = span(Construct::BoldItalic, position, 3, next.three);
    if (!emphasis && has(text, position, u"**"))
        emphasis = span(Construct::Bold, position, 2, next.two);
    if (!emphasis && has(text, position, u"*"))
        emphasis = span(Construct::Italic, position, 1, next.one);
    return emphasis;
}

void read(QStringView text, const TextAttributes &attributes, AttributedText &result);

void append(const Construct &construct, QStringView text, TextAttributes attributes, AttributedText &result)
{
    const QStringView content = construct.content.of(text);
    switch (construct.kind) {
    case Construct::Image:
        attributes.imageSource = SharedText(construct.destination.of(text));
        attributes.imageAlt = SharedText(content);
        result.append(imagePlaceholder(content), attributes);
        return;
    case Construct::Code:
        attributes.inlineCode = true;
        result.append(content, attributes);
        return;
    case Construct::Link:
        attributes.linkDestination = SharedText(construct.destination.of(text));
        break;
    case Construct::BoldItalic:
        attributes.bold = attributes.italic = true;
        break;
    case Construct::Bold:
        attributes.bold = true;
        break;
    case Construct::Italic:
        attributes.italic = true;
        break;
    }
    read(content, attributes, result);
}

/// Constructs hold others, but never many inside each other: what stands inside "***" has no "***" in it, then no "**"
/// and no "*", and a link's label has no "](" and so neither links nor images. Five calls deep is the most, and each
/// walks its own part of the text once for each delimiter.
void read(QStringView text, const TextAttributes &attributes, AttributedText &result)
{
    const auto isOpener = [](QChar unit) { return unit.unicode() < kOpeners.size() && kOpeners[unit.unicode()]; };
    Delimiters next(text);
    qsizetype plain = 0; // what was not appended yet begins here
    qsizetype position = 0;
    for (;;) {
        position = std::find_if(text.begin() + position, text.end(), isOpener) - text.begin();
        if (position == text.size())
            break;
        if (text[position] == u'\\') {
            if (has(text, position, u"\\") && position + 1 < text.size()) {
                result.append(text.sliced(plain, position - plain), attributes);
                plain = ++position; // the next character is plain text, whatever it is
            }
            ++position;
        } else if (const auto construct = constructAt(text, position, next)) {
            result.append(text.sliced(plain, position - plain), attributes);
            append(*construct, text, attributes, result);
            plain = position = construct->end;
        } else {
            ++position;
        }
    }
    result.append(text.sliced(plain), attributes);
}

} // namespace

AttributedText parseInlineMarkdown(QStringView markdown)
{
    AttributedText text;
    read(markdown, {}, text);
    return text;
}

void appendInlineMarkdown(QStringView markdown, const TextAttributes &attributes, AttributedText &text)
{
    read(markdown, attributes, text);
}

QString imagePlaceholder(QStringView description)
{
    return QStringLiteral("\U0001F5BC ").append(description);
}

} // namespace Tessaline
