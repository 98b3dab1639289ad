#include "MarkdownUI/SelectionText.h"
#include "MarkdownUI/InlineWriting.h"
#include "MarkdownUI/MarkdownParser.h"
#include "tests/MarkdownUI_ui/ShownMarkdown.h"

#include <gtest/gtest.h>

namespace MarkdownUI {

namespace {

using namespace Qt::StringLiterals;

/// The position before the first of some words in a display.
DisplayPosition positionOf(const MarkdownDisplay &display, const QString &words)
{
    for (qsizetype leaf = 0; leaf < display.leafCount(); ++leaf)
        if (const qsizetype at = display.leafText(leaf).indexOf(words); at >= 0)
            return {leaf, at};
    ADD_FAILURE() << words.toStdString() << " is not shown";
    return {};
}

struct Copied {
    const char *name;
    const char *markdown;
    const char *plain;
};

class CopyTest : public testing::TestWithParam<Copied>
{};

} // namespace

TEST_P(CopyTest, TheWholeTextIsCopiedAsPlainTextAndAsMarkdownThatReadsBack)
{
    const QString markdown = QString::fromUtf8(GetParam().markdown);
    ShownMarkdown shown(markdown);

    EXPECT_EQ(plainTextOf(shown.display, shown.all()), QString::fromUtf8(GetParam().plain));
    const QString copied = markdownOf(shown.display, shown.all());
    EXPECT_TRUE(parseBlocks(copied) == parseBlocks(markdown)) << copied.toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    All, CopyTest,
    testing::Values(Copied{"Paragraphs", "one *two* **three**\n\n~~four~~ `five`", "one two three\n\nfour five"},
                    Copied{"StylesInStyles", "***both* bold** and *a **b** c*", "both bold and a b c"},
                    Copied{"Links", "see [the *log*](https://a.example/x_y) now", "see the log now"},
                    Copied{"Breaks", "one\\\ntwo", "one\ntwo"},
                    Copied{"Signs", "1\\. \\# \\*no\\* \\_x\\_ \\[a\\] \\<b\\> &amp;lt; \\`c\\` \\\\",
                           "1. # *no* _x_ [a] <b> &lt; `c` \\"},
                    Copied{"SignsAtTheStart", "\\- one\n\n\\+ two\n\n\\> three\n\n7\\) four",
                           "- one\n\n+ two\n\n> three\n\n7) four"},
                    Copied{"Headings", "## one *two*\n\nthree", "one two\n\nthree"},
                    Copied{"TightList", "- one\n- two\n  - three\n- four", "• one\n• two\n  • three\n• four"},
                    Copied{"LooseList", "- one\n\n  two\n\n- three", "• one\n\n  two\n\n• three"},
                    Copied{"Numbers", "9. one\n10. two", "9. one\n10. two"},
                    Copied{"Tasks", "- [x] one\n- [ ] two", "[x] one\n[ ] two"},
                    Copied{"ListAfterParagraph", "one\n\n- two", "one\n\n• two"},
                    Copied{"Quote", "> one\n>\n> two", "one\n\ntwo"},
                    Copied{"QuoteInItem", "- one\n\n  > two", "• one\n\n  two"},
                    Copied{"Code", "```c\na\n\nb\n```", "a\n\nb"},
                    Copied{"CodeWithFences", "````\n```\nx\n```\n````", "```\nx\n```"},
                    Copied{"CodeInItem", "- one\n\n  ```\n  a\n  b\n  ```", "• one\n\n  a\n  b"},
                    Copied{"Table", "| a | b |\n| :-- | --: |\n| c \\| d | *e* |", "a\tb\nc | d\te"},
                    Copied{"Rule", "one\n\n---\n\ntwo", "one\n\ntwo"},
                    Copied{"Image", "![a chart](https://gallery.invalid/40x40)", "a chart"},
                    Copied{"ImageInLine", "see ![a chart](https://gallery.invalid/40x40) there", "see a chart there"},
                    Copied{"BackticksInCode", "`` a`b `` and `` ` ``", "a`b and `"}),
    [](const auto &row) { return row.param.name; });

TEST(SelectionText, APartKeepsItsStyles)
{
    ShownMarkdown shown(u"one **two three** four\n\n- five\n- six"_s);
    const DisplayRange range{positionOf(shown.display, u"three"_s), positionOf(shown.display, u"x"_s)};

    EXPECT_EQ(plainTextOf(shown.display, range), u"three four\n\n• five\n• si");
    EXPECT_EQ(markdownOf(shown.display, range), u"**three** four\n\n- five\n- si");
}

TEST(SelectionText, APartOfATableGetsAHeaderOfItsOwn)
{
    ShownMarkdown shown(u"| a | b |\n|---|---|\n| c | d |\n| e | f |"_s);
    const DisplayRange range{positionOf(shown.display, u"c"_s), positionOf(shown.display, u"f"_s)};

    EXPECT_EQ(markdownOf(shown.display, range), u"| c | d |\n| --- | --- |\n| e |  |");
}

TEST(SelectionText, ASelectionThatEndsBeforeABlockLeavesItOut)
{
    ShownMarkdown shown(u"one\n\n- two"_s);

    EXPECT_EQ(plainTextOf(shown.display, {{0, 0}, {1, 0}}), u"one");
    EXPECT_EQ(markdownOf(shown.display, {{0, 1}, {0, 1}}), QString());
}

TEST(SelectionText, PartsOfALongParagraphAreOneText)
{
    const QString words = u"some words in a long paragraph "_s.repeated(500).trimmed();
    ShownMarkdown shown(words);

    ASSERT_GT(shown.display.leafCount(), 3);
    EXPECT_EQ(plainTextOf(shown.display, shown.all()), words);
    EXPECT_EQ(markdownOf(shown.display, shown.all()), words);
}

TEST(SelectionText, TheClipboardGetsBothForms)
{
    ShownMarkdown shown(u"one **two**"_s);

    const auto transfer = makeTransfer(shown.display, shown.all());
    EXPECT_EQ(transfer->text(), u"one two");
    EXPECT_EQ(transfer->data(u"text/markdown"_s), "one **two**");
}

} // namespace MarkdownUI
