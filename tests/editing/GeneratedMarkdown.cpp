#include "tests/editing/GeneratedMarkdown.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const QStringList &signs()
{
    static const QStringList kSigns{u"*"_s,
                                    u"*"_s,
                                    u"**"_s,
                                    u"***"_s,
                                    u"`"_s,
                                    u"`"_s,
                                    u"["_s,
                                    u"]"_s,
                                    u"]("_s,
                                    u"]("_s,
                                    u")"_s,
                                    u")"_s,
                                    u"!["_s,
                                    u"!"_s,
                                    u"\\"_s,
                                    u"|"_s,
                                    u"|"_s,
                                    u" "_s,
                                    u" "_s,
                                    u"  "_s,
                                    u"\t"_s,
                                    u"#"_s,
                                    u"## "_s,
                                    u"- "_s,
                                    u"+ "_s,
                                    u"* "_s,
                                    u"> "_s,
                                    u"-"_s,
                                    u"---"_s,
                                    u"***"_s,
                                    u"___"_s,
                                    u"```"_s,
                                    u"```js"_s,
                                    u"- [ ] "_s,
                                    u"- [x] "_s,
                                    u"* [X] "_s,
                                    u"1. "_s,
                                    u"007. "_s,
                                    u"-5. "_s,
                                    u"."_s,
                                    u":"_s,
                                    u"_"_s,
                                    u"9"_s,
                                    u"| --- | --- |"_s,
                                    u"a | b"_s,
                                    u"99999999999999999999. "_s,
                                    u"9223372036854775807. "_s};
    return kSigns;
}

const QStringList &words()
{
    static const QStringList kWords{
        u"a"_s,           u"b"_s,          u"word"_s, u"two words"_s, u"é"_s,
        u"漢字"_s,        u"\U0001F600"_s, u"url"_s,  u"x"_s,         u"\U0001F468\u200D\U0001F469"_s,
        u"\U0001F5BC "_s, u"•\t"_s};
    return kWords;
}

const QStringList &oddities()
{
    static const QStringList kOddities{
        u"\u0301"_s,     // a combining mark
        u"\u200D"_s,     // a joiner
        u"\uFE0F"_s,     // a variation selector
        u"\u20E3"_s,     // the keycap
        u"\u0903"_s,     // a spacing mark
        u"\U0001F3FD"_s, // a skin tone
        u"\U000E0020"_s, // a tag
        u"\u0600"_s,     // draws in what follows
        u"\U000110BD"_s, // likewise, as a pair
        u"\u00A0"_s,
        u"\u3000"_s,
        u"\u2028"_s,
        u"\u2029"_s,
        u"\u200B"_s,
        u"\u0085"_s,
        u"\v"_s,
        u"\f"_s,
        QString(QChar(0)),
        QString(QChar(0xD83D)),
        QString(QChar(0xDC00)),
        u"\u1100"_s,
        u"\u1161"_s,
        u"\U0001F1EB"_s,
    };
    return kOddities;
}

const QStringList &lineEnds()
{
    static const QStringList kLineEnds{u"\n"_s, u"\n"_s, u"\n\n"_s, u"\r\n"_s, u"\r"_s, u"  \n"_s, u"\n\r"_s};
    return kLineEnds;
}

const QStringList &tags()
{
    static const QStringList kTags{
        u"paragraph"_s,      u"heading:1"_s,   u"heading:2"_s,   u"heading:9"_s, u"heading:"_s,
        u"heading:x"_s,      u"quote"_s,       u"quote"_s,       u"bullet"_s,    u"bullet"_s,
        u"numbered:1"_s,     u"numbered:9"_s,  u"numbered:"_s,   u"task:0"_s,    u"task:1"_s,
        u"task:2"_s,         u"code:"_s,       u"code:"_s,       u"code:js"_s,   u"code:js"_s,
        u"tableHeader"_s,    u"tableHeader"_s, u"tableRow"_s,    u"tableRow"_s,  u"tableRow"_s,
        u"horizontalRule"_s, u"unknown"_s,     u"code:\u0301"_s, u""_s};
    return kTags;
}

} // namespace

QString GeneratedMarkdown::inlineNoise(qsizetype pieces)
{
    QString text;
    for (qsizetype i = 0; i < pieces; ++i) {
        const QStringList &list = oneIn(8) ? oddities() : oneIn(3) ? words() : signs();
        text += list.at(below(list.size()));
    }
    return text;
}

QString GeneratedMarkdown::noise(qsizetype pieces)
{
    QString text;
    for (qsizetype i = 0; i < pieces; ++i)
        text += oneIn(6) ? lineEnds().at(below(lineEnds().size())) : inlineNoise(1);
    return text;
}

QString GeneratedMarkdown::line()
{
    const QString text = inlineNoise(below(5));
    switch (below(16)) {
    case 0:
        return QString(1 + below(7), u'#') + u" "_s + text;
    case 1:
        return u"- "_s + text;
    case 2:
        return u"> "_s + text;
    case 3:
        return QString::number(below(12)) + u". "_s + text;
    case 4:
        return u"- [ ] "_s + text;
    case 5:
        return u"+ [x] "_s + text;
    case 6:
        return u"```"_s + (oneIn(2) ? u"js"_s : QString());
    case 7:
        return u"| "_s + text + u" | "_s + inlineNoise(1) + u" |"_s;
    case 8:
        return u"a | b"_s;
    case 9:
        return oneIn(2) ? u"--- | :--:"_s : u"| --- | --- |"_s;
    case 10:
        return oneIn(2) ? u"---"_s : u"* * *"_s;
    case 11:
        return u"words and **bold** and *a `code`* "_s + text;
    case 12:
        return u"[a link](u) and ![an image](v)"_s + text + u"  "_s;
    case 13:
        return QString();
    default:
        return text;
    }
}

QString GeneratedMarkdown::document(qsizetype lines)
{
    QString text;
    for (qsizetype i = 0; i < lines; ++i)
        text += line() + lineEnds().at(below(lineEnds().size()));
    return text;
}

QString GeneratedMarkdown::soundInline()
{
    // Words that are no block's sign, with spans between them.
    static const QStringList kSpans{u"word"_s,
                                    u"two  words"_s,
                                    u"é漢字"_s,
                                    u"\U0001F468\u200D\U0001F469"_s,
                                    u"**bold**"_s,
                                    u"*italic*"_s,
                                    u"***both***"_s,
                                    u"** spaced **"_s,
                                    u"**a *nested* b**"_s,
                                    u"`co*de\\`"_s,
                                    u"[a link](https://example.org/x_y)"_s,
                                    u"[a **bold** link](u)"_s,
                                    u"**[x](y)**"_s,
                                    u"![an image](picture.png)"_s,
                                    u"\\*escaped\\*"_s,
                                    u"\\x"_s,
                                    u"\\[x\\]"_s,
                                    u"*\u0301"_s,
                                    u"| pipe"_s,
                                    u"# - 1."_s};
    QString text = u"text"_s;
    for (qsizetype i = below(6); i > 0; --i)
        text += u" "_s + kSpans.at(below(kSpans.size()));
    return text;
}

QString GeneratedMarkdown::soundConstruct()
{
    static const QStringList kPrefixes{u"# "_s,  u"## "_s,   u"###### "_s, u"- "_s,     u"* "_s,     u"+ "_s,
                                       u"1. "_s, u"007. "_s, u"-3. "_s,    u"- [ ] "_s, u"* [X] "_s, u"> "_s};
    switch (below(6)) {
    case 0:
        return kPrefixes.at(below(kPrefixes.size())) + soundInline();
    case 1: {
        // The info text differs each time, so that neighbours do not merge.
        const QString info = u"c"_s + QString::number(below(1'000'000'000));
        const QString indent = oneIn(3) ? u"  "_s : QString();
        return indent + u"```"_s + info + u"\n  a *b* \n\n# c\n"_s + indent + u"``` x"_s;
    }
    case 2:
        return oneIn(2) ? u"| a | **b** |\n|:---|---:|\n| 1 | `2` | [3](u) |"_s : u"a|b\n---\n|1||\n2 | 3"_s;
    case 3:
        return oneIn(2) ? u"* * *"_s : u"  ___"_s;
    case 4:
        return u"text with a hard break  \n"_s + soundInline();
    default:
        return soundInline() + (oneIn(2) ? u"\n  "_s + soundInline() : QString()) +
               (oneIn(4) ? u" an open *"_s : QString());
    }
}

QString GeneratedMarkdown::soundDocument(qsizetype constructs)
{
    QString text;
    for (qsizetype i = 0; i < constructs; ++i)
        text += soundConstruct() + (oneIn(4) ? u"\r\n\r\n"_s : oneIn(3) ? u"\n\n\n"_s : u"\n\n"_s);
    return text;
}

TextAttributes GeneratedMarkdown::attributes()
{
    TextAttributes attributes;
    attributes.bold = oneIn(4);
    attributes.italic = oneIn(4);
    attributes.inlineCode = oneIn(5);
    attributes.generatedMarker = oneIn(8);
    if (!oneIn(6))
        attributes.blockStyle = SharedText(tags().at(below(tags().size())));
    if (oneIn(6))
        attributes.linkDestination = SharedText(oneIn(2) ? u"u"_s : u"v)w"_s);
    if (oneIn(6))
        attributes.imageSource = SharedText(oneIn(2) ? u"u"_s : u"v"_s);
    if (oneIn(6))
        attributes.imageAlt = SharedText(oneIn(2) ? u"a"_s : u"b]c"_s);
    return attributes;
}

AttributedText GeneratedMarkdown::attributedText(qsizetype runs)
{
    AttributedText text;
    TextAttributes last;
    for (qsizetype i = 0; i < runs; ++i) {
        // Most runs of a paragraph have its tag, and a paragraph's line break comes with it.
        TextAttributes fresh = attributes();
        if (!text.isEmpty() && !text.text().endsWith(u'\n') && !oneIn(5))
            fresh.blockStyle = last.blockStyle;
        text.append(oneIn(3) ? lineEnds().at(below(lineEnds().size())) : inlineNoise(1 + below(3)), fresh);
        last = fresh;
    }
    return text;
}

} // namespace Tessaline
