#include "editing/InlineWriting.h"

#include "editing/Characters.h"

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

enum class Escaping { Code, Description, Text };

bool isEscaped(QChar unit, Escaping escaping)
{
    switch (escaping) {
    case Escaping::Code:
        return unit == u'`';
    case Escaping::Description:
        return unit == u']';
    case Escaping::Text:
        return unit == u'\\' || unit == u'*' || unit == u'`' || unit == u'[' || unit == u']';
    }
    return false;
}

/// Appends `text` with a backslash before each sign that needs one.
template <Escaping kEscaping>
void appendEscaped(QStringView text, QString &markdown)
{
    constexpr bool kHasHardBreaks = kEscaping != Escaping::Description;
    const auto isSpecial = [](QChar unit) {
        return isEscaped(unit, kEscaping) || (kHasHardBreaks && unit == QChar(QChar::LineSeparator));
    };
    qsizetype written = 0;
    auto special = std::find_if(text.begin(), text.end(), isSpecial);
    for (; special != text.end(); special = std::find_if(special + 1, text.end(), isSpecial)) {
        const qsizetype at = special - text.begin();
        if (*special == QChar(QChar::LineSeparator)) {
            markdown.append(text.sliced(written, at - written)).append(u"  \n"_s);
            written = at + 1;
        } else if (Characters::standAlone(text, at)) {
            markdown.append(text.sliced(written, at - written)).append(u'\\');
            written = at;
        }
    }
    markdown.append(text.sliced(written));
}

/// The part of a run that lies inside the limits.
TextRange clipped(TextRange run, TextRange limits)
{
    const qsizetype begin = std::max(run.location, limits.location);
    return {begin, std::min(run.end(), limits.end()) - begin};
}

QStringView emphasisOf(const TextAttributes &attributes)
{
    if (attributes.bold)
        return attributes.italic ? u"***" : u"**";
    return attributes.italic ? QStringView(u"*") : QStringView();
}

void appendImage(const TextAttributes &attributes, QString &markdown)
{
    markdown.append(u"!["_s);
    if (attributes.imageAlt.isPresent())
        appendEscaped<Escaping::Description>(attributes.imageAlt.view(), markdown);
    else
        markdown.append(u"Image"_s);
    markdown.append(u"]("_s).append(attributes.imageSource.view()).append(u')');
}

} // namespace

void serializeInlineRun(const AttributedText &text, qsizetype runIndex, TextRange limits, QString &markdown)
{
    const AttributeRun &run = text.runs().at(runIndex);
    const TextAttributes &attributes = run.attributes;
    if (attributes.generatedMarker)
        return;
    if (attributes.imageSource.isPresent()) {
        const bool continuesImage = run.range.location > limits.location &&
                                    text.runs().at(runIndex - 1).attributes.imageSource == attributes.imageSource;
        if (!continuesImage)
            appendImage(attributes, markdown);
        return;
    }

    const TextRange range = clipped(run.range, limits);
    const QStringView characters = QStringView(text.text()).sliced(range.location, range.length);
    const QStringView emphasis = emphasisOf(attributes);
    markdown.append(emphasis);
    if (attributes.linkDestination.isPresent())
        markdown.append(u'[');
    if (attributes.inlineCode) {
        markdown.append(u'`');
        appendEscaped<Escaping::Code>(characters, markdown);
        markdown.append(u'`');
    } else {
        appendEscaped<Escaping::Text>(characters, markdown);
    }
    if (attributes.linkDestination.isPresent())
        markdown.append(u"]("_s).append(attributes.linkDestination.view()).append(u')');
    markdown.append(emphasis);
}

void collectPlainRun(const AttributedText &text, qsizetype runIndex, TextRange limits, QString &plain)
{
    const AttributeRun &run = text.runs().at(runIndex);
    if (run.attributes.generatedMarker)
        return;
    const TextRange range = clipped(run.range, limits);
    plain.append(QStringView(text.text()).sliced(range.location, range.length));
}

void serializeInline(const AttributedText &text, qsizetype firstRun, TextRange range, QString &markdown)
{
    for (qsizetype i = firstRun; i < text.runs().size() && text.runs().at(i).range.location < range.end(); ++i)
        serializeInlineRun(text, i, range, markdown);
}

void collectPlain(const AttributedText &text, qsizetype firstRun, TextRange range, QString &plain)
{
    for (qsizetype i = firstRun; i < text.runs().size() && text.runs().at(i).range.location < range.end(); ++i)
        collectPlainRun(text, i, range, plain);
}

QString serializeInline(const AttributedText &text, TextRange range)
{
    QString markdown;
    if (!range.isEmpty())
        serializeInline(text, text.runAt(range.location), range, markdown);
    return markdown;
}

QString plainText(const AttributedText &text, TextRange range)
{
    QString plain;
    if (!range.isEmpty())
        collectPlain(text, text.runAt(range.location), range, plain);
    return plain;
}

} // namespace Tessaline
