#include "editing/FindBar.h"
#include "editing/FindSession.h"
#include "editing/WYSIWYGEditor.h"

#include "foundation/AppEvents.h"

#include "tests/editing/OpenFormattedEditor.h"
#include "tests/editing/Printers.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>
#include <QtTest/QTest>
#include <QtWidgets/QLineEdit>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// Looks for something in the formatted editor, to the end.
void find(FindSession &session, const QString &text)
{
    SearchQuery query;
    query.text = text;
    session.setQuery(query, FindSession::Follow::Nothing);
    ASSERT_TRUE(eventually([&session] { return !session.isSearching(); }));
}

struct Replacement {
    const char *name;
    QString markdown;
    QString text;
    QString replacement;
    QString expected;
};

void PrintTo(const Replacement &row, std::ostream *out)
{
    *out << row.name;
}

class WYSIWYGEditorReplaceAll : public testing::TestWithParam<Replacement>
{};

} // namespace

TEST(WYSIWYGEditorFind, LooksThroughWhatIsShown)
{
    OpenFormattedEditor open(u"# One\n\na **wo**rd and `a word`\n\n[word](word)"_s);
    FindSession session;
    session.setTarget(&open.editor);
    session.setActive(true);

    find(session, u"word"_s);
    EXPECT_EQ(session.count(), 3) << "over the ends of runs, but not in what is hidden";
    find(session, u"**"_s);
    EXPECT_EQ(session.count(), 0);

    find(session, u"word"_s);
    session.findNext();
    EXPECT_EQ(open.editor.selection(), (TextRange{6, 4}));
    EXPECT_EQ(open.editCount(), 0);
}

TEST_P(WYSIWYGEditorReplaceAll, GivesThisMarkdownAsOneStep)
{
    const Replacement &row = GetParam();
    OpenFormattedEditor open(row.markdown);
    FindSession session;
    session.setTarget(&open.editor);
    session.setActive(true);
    find(session, row.text);

    session.replaceAll(row.replacement);

    EXPECT_EQ(open.markdown(), row.expected);
    if (row.expected != row.markdown) {
        EXPECT_EQ(open.editCount(), 1);
        open.undo();
        EXPECT_EQ(open.markdown(), row.markdown);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Of, WYSIWYGEditorReplaceAll,
    testing::Values(Replacement{"Words", u"# a b\n\n- b\n\n**b** `b` [b](b)"_s, u"b"_s, u"c"_s,
                                u"# a c\n\n- c\n\n**c** `c` [c](b)"_s},
                    Replacement{"AWordAcrossRuns", u"a **b**c"_s, u"bc"_s, u"d"_s, u"a **d**"_s},
                    Replacement{"Nothing", u"a"_s, u"x"_s, u"y"_s, u"a"_s},
                    Replacement{"NumbersOfItems", u"1. is 1\n2. is 1"_s, u"1"_s, u"one"_s, u"1. is one\n2. is one"_s},
                    Replacement{"SignsOfItems", u"- a •\n- b"_s, u"•"_s, u"x"_s, u"- a x\n- b"_s},
                    Replacement{"DescriptionsOfImages", u"a ![a](s) a"_s, u"a"_s, u"b"_s, u"b ![a](s) b"_s},
                    Replacement{"TabsOfATable", u"| a | b |\n| --- | --- |\n\n- c"_s, u"\t"_s, u"-"_s,
                                u"| a-b |\n| --- |\n\n- c"_s}),
    [](const testing::TestParamInfo<Replacement> &row) { return std::string(row.param.name); });

TEST(WYSIWYGEditorFind, ReplacingStepsOverWhatIsNotContent)
{
    OpenFormattedEditor open(u"1. is 1"_s);
    FindSession session;
    session.setTarget(&open.editor);
    session.setActive(true);
    find(session, u"1"_s);
    session.findNext();
    ASSERT_EQ(open.editor.selection(), (TextRange{0, 1}));

    session.replaceCurrent(u"one"_s);
    EXPECT_TRUE(eventually([&open] { return open.editor.selection() == TextRange{6, 1}; }));
    session.replaceCurrent(u"one"_s);

    EXPECT_TRUE(eventually([&open] { return open.markdown() == u"1. is one"_s; }));
}

TEST(WYSIWYGEditorFind, TheBarSearchesTheFormattedEditor)
{
    QWidget window;
    OpenFormattedEditor open(u"# One\n\n**tw**o two"_s);
    FindBar bar(open.theme, &window);
    bar.setTarget(&open.editor);
    bar.openReplace();
    auto *const field = bar.findChildren<QLineEdit *>().constFirst();

    QTest::keyClicks(field, u"two"_s);

    EXPECT_TRUE(eventually([&open] { return open.editor.selection() == TextRange{4, 3}; }));
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_TRUE(eventually([&open] { return open.editor.selection() == TextRange{8, 3}; }));
    EXPECT_EQ(open.editCount(), 0);
}

TEST(WYSIWYGEditorFind, TheWheelWithCtrlPostsTheZoomEvents)
{
    OpenFormattedEditor open(u"text"_s);
    QStringList posted;
    for (const auto name : {AppEvents::kZoomInFont, AppEvents::kZoomOutFont})
        open.events.observe(name, &open.editor, [&posted, name](const QVariantMap &) { posted.append(name); });

    open.wheel(120, Qt::ControlModifier);
    open.wheel(-120, Qt::ControlModifier);

    EXPECT_EQ(posted, (QStringList{AppEvents::kZoomInFont, AppEvents::kZoomOutFont}));
    EXPECT_EQ(open.editCount(), 0);
}

} // namespace Tessaline
