#include "GeneratedAnswer.h"

#include <QtCore/QStringList>

namespace MarkdownUI {

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView kPrefixes[] = {u"",   u"",       u"",       u"",      u"",       u"> ",  u"> > ",
                                     u">",  u"- ",     u"* ",     u"1. ",   u"2) ",    u"  ",  u"    ",
                                     u"\t", u"- [ ] ", u"- [x] ", u"   - ", u"\ufeff", u"> - "};
constexpr QStringView kLines[] = {u"",
                                  u"",
                                  u"",
                                  u"",
                                  u"a",
                                  u"word",
                                  u"# h",
                                  u"## h ##",
                                  u"===",
                                  u"---",
                                  u"-",
                                  u"***",
                                  u"```",
                                  u"```c",
                                  u"~~~",
                                  u"````",
                                  u"a|b",
                                  u"|a|b|",
                                  u"-|-",
                                  u"|:-|-:|",
                                  u"|-|",
                                  u"1|2|3",
                                  u"<div>",
                                  u"</div>",
                                  u"<!-- a",
                                  u"-->",
                                  u"<b>",
                                  u"<script>",
                                  u"</script",
                                  u"[a]: /b",
                                  u"[a]:",
                                  u"[a",
                                  u"]: /c",
                                  u"[b]: <d e>",
                                  u"'t'",
                                  u"[a]",
                                  u"[a][b]",
                                  u"[b]",
                                  u"x[1]: y",
                                  u"![a](b)",
                                  u"[a](b \"c\")",
                                  u"*a",
                                  u"b*",
                                  u"**a** b",
                                  u"`a",
                                  u"https://a.b",
                                  u"www.a.b",
                                  u"a@b.c",
                                  u"~~a~~",
                                  u"a<br>b",
                                  u"a  ",
                                  u"a\\",
                                  u"&amp;",
                                  u"\\[a]: b",
                                  u"\U0001f600",
                                  u"\u05d0",
                                  u"<?a",
                                  u"?>",
                                  u"<a href='",
                                  u"{#x}",
                                  u"$x$",
                                  u"    c",
                                  u"\u00a0"};
constexpr QStringView kLineEnds[] = {u"\n", u"\n", u"\n", u"\n", u"\n", u"\n\n", u"\r\n", u"\r", u"", u"\n \n"};

template <size_t count>
QStringView oneOf(const QStringView (&choices)[count], std::mt19937 &random)
{
    return choices[random() % count];
}

} // namespace

QString generatedAnswer(std::mt19937 &random, int lines)
{
    QString text;
    for (int i = 0; i < lines; ++i) {
        text += oneOf(kPrefixes, random);
        text += oneOf(kLines, random);
        text += oneOf(kLineEnds, random);
    }
    return text;
}

QString ordinaryAnswer(qsizetype size)
{
    const QString part =
        u"## Heading %1\n\nA paragraph of *ordinary* prose that runs over a line or two, with `code`, a "
        "[link](https://example.org/%1) and **strong** words in it. It ends here.\n\n- An item of a list\n- Another "
        "one with `code`\n  - and one inside it\n\n```cpp\nint main()\n{\n    return %1; // a[1]: b\n}\n```\n\n> A "
        "quote that somebody said,\n> on two lines.\n\n| Name | Value |\n|------|------:|\n| one  |     1 |\n| two  |  "
        "   2 |\n\n1. First, do this\n2. Then do that\n\n"_s;
    QString text;
    for (int i = 1; text.size() < size; ++i)
        text += part.arg(i);
    return text.first(size);
}

} // namespace MarkdownUI
