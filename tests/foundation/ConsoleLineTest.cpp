#include "foundation/ConsoleLine.h"

#include <QtCore/QStringList>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

} // namespace

TEST(ConsoleLine, IsPrintedInUtf8OnStandardOutput)
{
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    printConsoleLine(u"Could not read “tide 🌊.md”: 100 %1."_s);

    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Could not read “tide 🌊.md”: 100 %1.\n");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST(ConsoleLine, LinesOfSeveralThreadsDoNotMix)
{
    constexpr int kLines = 200;
    ::testing::internal::CaptureStdout();
    {
        std::vector<std::jthread> threads;
        for (const QChar letter : u"abc"_s)
            threads.emplace_back([letter] {
                for (int i = 0; i < kLines; ++i)
                    printConsoleLine(QString(50, letter));
            });
    }
    const std::string printed = ::testing::internal::GetCapturedStdout();

    const QStringList lines = QString::fromStdString(printed).split(u'\n', Qt::SkipEmptyParts);
    EXPECT_EQ(lines.size(), 3 * kLines);
    for (const QString &line : lines)
        EXPECT_EQ(line, QString(50, line.at(0)));
}

} // namespace Tessaline
