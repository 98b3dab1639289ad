#include "editing/TaskMarkers.h"
#include "editing/MarkdownRendering.h"
#include "editing/MarkdownWriting.h"
#include "tests/editing/AttributedTextPrinter.h"

#include <gtest/gtest.h>

#include <limits>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// The Markdown after a toggle, or "-" if there was none.
QString toggled(const QString &markdown, qsizetype index)
{
    AttributedText text = renderMarkdown(markdown);
    const AttributedText before = text;
    if (toggleTaskMarker(index, text))
        return serializeMarkdown(text);
    EXPECT_EQ(text, before);
    return u"-"_s;
}

} // namespace

TEST(TaskMarkers, AnOpenTaskIsTicked)
{
    AttributedText text = renderMarkdown(u"- [ ] a\n- [ ] b");
    EXPECT_TRUE(toggleTaskMarker(4, text));
    EXPECT_EQ(described(text), u"{task:0,marker}☐⇥{task:0}a⏎{task:1,marker}☑⇥{task:1}b");
}

TEST(TaskMarkers, ADoneTaskIsUnticked)
{
    AttributedText text = renderMarkdown(u"- [x] a\nb");
    EXPECT_TRUE(toggleTaskMarker(0, text));
    EXPECT_EQ(described(text), u"{task:0,marker}☐⇥{task:0}a⏎{paragraph}b");
}

TEST(TaskMarkers, TheTabBelongsToTheBox)
{
    EXPECT_EQ(toggled(u"- [ ] a"_s, 1), u"- [x] a");
}

TEST(TaskMarkers, ContentTogglesNothing)
{
    EXPECT_EQ(toggled(u"- [ ] a"_s, 2), u"-");
    EXPECT_EQ(toggled(u"- [ ] a\n- [ ] b"_s, 3), u"-"); // the line break
    EXPECT_EQ(toggled(u"text"_s, 0), u"-");
}

TEST(TaskMarkers, OtherMarkersToggleNothing)
{
    EXPECT_EQ(toggled(u"- a"_s, 0), u"-");
    EXPECT_EQ(toggled(u"1. a"_s, 0), u"-");
}

TEST(TaskMarkers, AnIndexOutsideTogglesNothing)
{
    EXPECT_EQ(toggled(u"- [ ] a"_s, -1), u"-");
    EXPECT_EQ(toggled(u"- [ ] a"_s, 3), u"-");
    EXPECT_EQ(toggled(u""_s, 0), u"-");
    EXPECT_EQ(toggled(u"- [ ] a"_s, std::numeric_limits<qsizetype>::min()), u"-");
    EXPECT_EQ(toggled(u"- [ ] a"_s, std::numeric_limits<qsizetype>::max()), u"-");
}

TEST(TaskMarkers, TheTagDecidesAndNotTheBox)
{
    TextAttributes done;
    done.blockStyle = SharedText(u"task:1"_s);
    done.generatedMarker = true;
    AttributedText text(u"☐\t", done);
    EXPECT_TRUE(toggleTaskMarker(0, text));
    EXPECT_EQ(described(text), u"{task:0,marker}☐⇥");
    EXPECT_TRUE(toggleTaskMarker(0, text));
    EXPECT_EQ(described(text), u"{task:1,marker}☑⇥");
}

TEST(TaskMarkers, ATaskThatIsNeitherBecomesDone)
{
    TextAttributes odd;
    odd.blockStyle = SharedText(u"task:maybe"_s);
    odd.generatedMarker = true;
    AttributedText text(u"☐\t", odd);
    EXPECT_TRUE(toggleTaskMarker(1, text));
    EXPECT_EQ(described(text), u"{task:1,marker}☑⇥");
}

TEST(TaskMarkers, TheWholeParagraphChangesAndNoMore)
{
    EXPECT_EQ(toggled(u"- [ ] a\n- [ ] b **c** d\n- [ ] e"_s, 5), u"- [ ] a\n- [x] b **c** d\n- [ ] e");
}

TEST(TaskMarkers, ABoxThatIsPartlyBoldIsFoundAsAWhole)
{
    AttributedText text = renderMarkdown(u"- [ ] a");
    text.set({1, 2}, &TextAttributes::bold, true);
    EXPECT_TRUE(toggleTaskMarker(1, text));
    EXPECT_EQ(described(text), u"{task:1,marker}☑{task:1,marker,bold}⇥{task:1,bold}a");
}

} // namespace Tessaline
