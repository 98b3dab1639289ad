#include "documents/ViewMode.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

struct ModeCase {
    const char *name;
    ViewMode mode;
    QString rawValue;
    QString symbol;
    QString label;
    QString helpText;
};

void PrintTo(const ModeCase &row, std::ostream *out)
{
    *out << row.name;
}

const QList<ModeCase> kCases{
    {"Editor", ViewMode::Editor, u"editor"_s, u"doc.richtext"_s, u"Editor"_s,
     u"Edit the document directly without Markdown syntax"_s},
    {"RawMarkdown", ViewMode::RawMarkdown, u"rawMarkdown"_s, u"chevron.left.forwardslash.chevron.right"_s,
     u"Markdown"_s, u"Edit the Markdown source"_s},
    {"Split", ViewMode::Split, u"split"_s, u"rectangle.split.2x1"_s, u"Split"_s,
     u"Show source and formatted editor side by side"_s},
    {"PlainText", ViewMode::PlainText, u"plainText"_s, u"doc.plaintext"_s, u"Plain Text"_s,
     u"Edit the plain-text document"_s},
};

class EachViewMode : public ::testing::TestWithParam<ModeCase>
{};

TEST_P(EachViewMode, HasItsTexts)
{
    const ModeCase &row = GetParam();
    EXPECT_EQ(rawValue(row.mode), row.rawValue);
    EXPECT_EQ(symbol(row.mode), row.symbol);
    EXPECT_EQ(label(row.mode), row.label);
    EXPECT_EQ(helpText(row.mode), row.helpText);
    EXPECT_EQ(viewModeFromRaw(row.rawValue), row.mode);
}

INSTANTIATE_TEST_SUITE_P(ViewMode, EachViewMode, ::testing::ValuesIn(kCases),
                         [](const auto &row) { return row.param.name; });

const QList<ViewMode> kMarkdownModes{ViewMode::Editor, ViewMode::RawMarkdown, ViewMode::Split};

} // namespace

TEST(ViewMode, AnyOtherTextIsNone)
{
    for (const QString &text : {u""_s, u"Editor"_s, u"raw"_s, u"plaintext"_s})
        EXPECT_EQ(viewModeFromRaw(text), std::nullopt);
}

TEST(ViewMode, MarkdownHasThreeModesAndEverythingElseOne)
{
    EXPECT_EQ(availableViewModes(DocumentType::Markdown), kMarkdownModes);
    EXPECT_EQ(availableViewModes(DocumentType::PlainText), QList<ViewMode>{ViewMode::PlainText});
    EXPECT_EQ(availableViewModes(std::nullopt), QList<ViewMode>{ViewMode::PlainText});
}

TEST(ViewMode, TheStoredModeTakesEffectWhereItIsAvailableAndTheFirstElsewhere)
{
    EXPECT_EQ(effectiveViewMode(ViewMode::Split, kMarkdownModes), ViewMode::Split);
    EXPECT_EQ(effectiveViewMode(ViewMode::PlainText, kMarkdownModes), ViewMode::Editor);
    EXPECT_EQ(effectiveViewMode(ViewMode::Split, {ViewMode::PlainText}), ViewMode::PlainText);
}

} // namespace Tessaline
