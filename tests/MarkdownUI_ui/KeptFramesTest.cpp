#include "tests/MarkdownUI_ui/ShownMarkdown.h"

#include <gtest/gtest.h>
#include <QtCore/QFile>

// The frames of every construct, beside the ones that were looked at and kept. To keep new ones:
// tessaline-gallery --width 280 --frames > tests/MarkdownUI_ui/data/constructs-280.frames, and the same for 720.

namespace MarkdownUI {

namespace {

using namespace Qt::StringLiterals;

// Faces differ from machine to machine: letters are wider or narrower, and so rows are more or fewer.
constexpr double kSidewaysTolerance = 8; // points
constexpr double kMostHeight = 1.6;      // of what was kept
constexpr double kRowHeight = 26;

QStringList keptLines(int width)
{
    QFile file(QStringLiteral(TESSALINE_KEPT_FRAMES "/constructs-%1.frames").arg(width));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).split(u'\n') : QStringList();
}

/// A line without its numbers.
QString wordsOf(const QString &line)
{
    return line.section(u' ', 0, 0) + u' ' + line.section(u' ', 3);
}

class KeptFramesTest : public testing::TestWithParam<int>
{};

} // namespace

TEST_P(KeptFramesTest, EveryConstructStandsWhereItStood)
{
    ShownMarkdown shown(everyConstruct(), GetParam());

    const QStringList kept = keptLines(GetParam());
    const QStringList lines = frameListing(shown.display).split(u'\n');
    ASSERT_GT(kept.size(), 60);
    ASSERT_EQ(lines.size(), kept.size());
    for (qsizetype i = 1; i + 1 < kept.size(); ++i) {
        SCOPED_TRACE(kept.at(i).toStdString());
        const QRectF was = rectIn(kept.at(i));
        const QRectF is = rectIn(lines.at(i));
        EXPECT_EQ(wordsOf(lines.at(i)), wordsOf(kept.at(i)));
        EXPECT_NEAR(is.x(), was.x(), kSidewaysTolerance);
        EXPECT_NEAR(is.width(), was.width(), kSidewaysTolerance);
        EXPECT_LE(is.height(), was.height() * kMostHeight + kRowHeight);
        EXPECT_GE(is.height(), was.height() / kMostHeight - kRowHeight);
    }
}

INSTANTIATE_TEST_SUITE_P(Widths, KeptFramesTest, testing::Values(280, 720));

} // namespace MarkdownUI
