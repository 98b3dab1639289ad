#include "editing/FormattedHtml.h"

#include "editing/MarkdownRendering.h"

#include "tests/editing/Printers.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

struct Case {
    const char *name;
    QString markdown;
    QString html;
};

void PrintTo(const Case &row, std::ostream *out)
{
    *out << row.name;
}

class FormattedHtml : public testing::TestWithParam<Case>
{};

const Case kCases[] = {
    {"Nothing", u""_s, u""_s},
    {"AParagraph", u"a"_s, u"<p>a</p>"_s},
    {"Headings", u"# a\n###### b"_s, u"<h1>a</h1><h6>b</h6>"_s},
    {"Runs", u"**b** *i* ***bi*** `c`"_s,
     u"<p><strong>b</strong> <em>i</em> <strong><em>bi</em></strong> <code>c</code></p>"_s},
    {"ALink", u"[a](http://b?c&d)"_s, u"<p><a href=\"http://b?c&amp;d\">a</a></p>"_s},
    {"ABoldLink", u"**[a](b)**"_s, u"<p><a href=\"b\"><strong>a</strong></a></p>"_s},
    {"AnImage", u"![a \"b\"](c)"_s, u"<p><img src=\"c\" alt=\"a &quot;b&quot;\"></p>"_s},
    {"Lists", u"- a\n- b\n3. c\n4. d"_s,
     u"<ul><li>a</li><li>b</li></ul><ol><li value=\"3\">c</li><li value=\"4\">d</li></ol>"_s},
    {"Tasks", u"- [ ] a\n- [x] b"_s, u"<ul><li>☐ a</li><li>☑ b</li></ul>"_s},
    {"AQuote", u"> a\n> b\n\nc"_s, u"<blockquote><p>a</p><p>b</p></blockquote><p>c</p>"_s},
    {"Code", u"```js\na < b\n\n  c\n```"_s, u"<pre>a &lt; b\n\n  c\n</pre>"_s},
    {"TwoBlocksOfCode", u"```js\na\n```\n```c\nb\n```"_s, u"<pre>a\n</pre><pre>b\n</pre>"_s},
    {"ATable", u"|a|*b*|\n|---|---|\n|1|2|"_s,
     u"<table><tr><th>a</th><th><em>b</em></th></tr><tr><td>1</td><td>2</td></tr></table>"_s},
    {"ACellOfSeveralRuns", u"|a *b* c|d|\n|---|---|"_s, u"<table><tr><th>a <em>b</em> c</th><th>d</th></tr></table>"_s},
    {"TwoTables", u"|a|b|\n|---|---|\n\n|c|d|\n|---|---|"_s,
     u"<table><tr><th>a</th><th>b</th></tr></table><table><tr><th>c</th><th>d</th></tr></table>"_s},
    {"ARule", u"a\n\n---"_s, u"<p>a</p><hr>"_s},
    {"AHardBreak", u"a  \nb"_s, u"<p>a<br>b</p>"_s},
    {"SignsOfMarkup", u"<b> & \"q\""_s, u"<p>&lt;b&gt; &amp; &quot;q&quot;</p>"_s},
    {"SignsOfMarkupInATag", u"[a](\"><script>)"_s, u"<p><a href=\"&quot;&gt;&lt;script&gt;\">a</a></p>"_s},
};

} // namespace

TEST_P(FormattedHtml, IsThis)
{
    EXPECT_EQ(htmlOf(renderMarkdown(GetParam().markdown)), GetParam().html);
}

INSTANTIATE_TEST_SUITE_P(Of, FormattedHtml, testing::ValuesIn(kCases),
                         [](const testing::TestParamInfo<Case> &row) { return std::string(row.param.name); });

TEST(FormattedHtmlRuns, ABoldCellKeepsItsTags)
{
    TextAttributes attributes;
    attributes.bold = true;
    attributes.blockStyle = SharedText(u"tableRow"_s);

    EXPECT_EQ(htmlOf(AttributedText(u"a\tb", attributes)),
              u"<table><tr><td><strong>a</strong></td><td><strong>b</strong></td></tr></table>"_s);
}

TEST(FormattedHtmlRuns, AnImageThatIsPartlyBoldIsOneImage)
{
    AttributedText text = renderMarkdown(u"![ab](c)");
    text.set({2, 2}, &TextAttributes::bold, true);

    EXPECT_EQ(htmlOf(text), u"<p><img src=\"c\" alt=\"ab\"></p>"_s);
}

TEST(FormattedHtmlRuns, AStyleThatIsNoneIsAParagraph)
{
    TextAttributes attributes;
    attributes.blockStyle = SharedText(u"<x>"_s);

    EXPECT_EQ(htmlOf(AttributedText(u"a", attributes)), u"<p>a</p>"_s);
}

} // namespace Tessaline
