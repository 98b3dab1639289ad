#include "tests/probe/ProbeProcess.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

#include <QtCore/QJsonArray>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

} // namespace

TEST(Probe, EndsWithStatus0AtTheEndOfItsInput)
{
    ProbeProcess probe;

    EXPECT_EQ(probe.finish(), 0);
    EXPECT_EQ(probe.standardError(), "");
}

TEST(Probe, AnswersEachLineBeforeTheNextIsSent)
{
    ProbeProcess probe;

    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(probe.answerTo(R"({"op":"documentType","path":"/a.md"})"), R"({"ok":true,"result":"markdown"})");
}

TEST(Probe, ALastLineWithoutItsBreakIsAnswered)
{
    QProcess process;
    process.start(QStringLiteral(TESSALINE_PROBE), QStringList());
    process.write(R"({"op":"documentType","path":"/a.md"})");
    process.closeWriteChannel();

    ASSERT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.readAllStandardOutput(), "{\"ok\":true,\"result\":\"markdown\"}\n");
    EXPECT_EQ(process.exitCode(), 0);
}

TEST(Probe, AnIdOfAnyTypeIsCopied)
{
    ProbeProcess probe;

    for (const QByteArray id :
         {"1", "-2.5", "\"x \\u00e9 \\n\"", "true", "null", "[1,[2]]", R"({"b":1,"a":{"c":null}})"}) {
        const QByteArray answer = probe.answerTo(R"({"op":"documentType","path":"/a.md","id":)" + id + '}');
        const QByteArray expected = id == "\"x \\u00e9 \\n\"" ? QByteArray("\"x é \\n\"") : id;
        EXPECT_EQ(answer, R"({"ok":true,"result":"markdown","id":)" + expected + '}');
    }
}

TEST(Probe, AnIdIsCopiedIntoAnErrorToo)
{
    ProbeProcess probe;

    for (const char *request :
         {R"({"op":"unknown","id":7})", R"({"id":7})", R"({"op":4,"id":7})", R"({"op":"documentType","id":7})"}) {
        const QByteArray answer = probe.answerTo(request);
        EXPECT_TRUE(answer.startsWith(R"({"ok":false,"error":")")) << answer.constData();
        EXPECT_TRUE(answer.endsWith(R"(,"id":7})")) << answer.constData();
    }
}

struct BadLine {
    const char *name;
    QByteArray line;
    QByteArray error;
};

void PrintTo(const BadLine &row, std::ostream *out)
{
    *out << row.name;
}

class BadLines : public testing::TestWithParam<BadLine>
{};

TEST_P(BadLines, AreAnsweredByAnErrorAndTheProbeGoesOn)
{
    const auto &[name, line, error] = GetParam();
    ProbeProcess probe;

    EXPECT_EQ(probe.answerTo(line), R"({"ok":false,"error":")" + error + "\"}");

    EXPECT_EQ(probe.answerTo(R"({"op":"documentType","path":"/a.md"})"), R"({"ok":true,"result":"markdown"})");
    EXPECT_EQ(probe.finish(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Probe, BadLines,
    testing::Values(
        BadLine{"AnEmptyLine", "", "The line is not JSON: see byte 1."},
        BadLine{"NotJson", "garbage", "The line is not JSON: see byte 1."},
        BadLine{"CutOff", R"({"op":"documentType")", "The line is not JSON: see byte 21."},
        BadLine{"MoreAfterTheObject", R"({"op":"x"} {})", "The line is not JSON: see byte 12."},
        BadLine{"AList", R"([{"op":"documentType"}])", "The line is not a JSON object."},
        BadLine{"AText", R"("documentType")", "The line is not a JSON object."},
        BadLine{"Nothing", "null", "The line is not a JSON object."},
        BadLine{"NoOperation", R"({"path":"/a.md"})", R"(\"op\" is missing.)"},
        BadLine{"AnOperationThatIsNoText", R"({"op":1})", R"(\"op\" is not a text.)"},
        BadLine{"AnUnknownOperation", R"({"op":"documenttype"})", R"(There is no operation \"documenttype\".)"},
        BadLine{"AMissingArgument", R"({"op":"documentType"})", R"(\"path\" is missing.)"},
        BadLine{"AnArgumentOfAnotherType", R"({"op":"documentType","path":1})", R"(\"path\" is not a text.)"},
        BadLine{"AnAbsentArgumentWhereATextIsNeeded", R"({"op":"documentType","path":null})",
                R"(\"path\" is not a text.)"},
        BadLine{"AListWithSomethingElseInIt", R"({"op":"buildTree","projects":["/a",1]})",
                R"(\"projects\" is not a list of texts.)"},
        BadLine{"ATextWhereAListIsNeeded", R"({"op":"buildTree","projects":"/a"})",
                R"(\"projects\" is not a list of texts.)"},
        BadLine{"InvalidUtf8", "{\"op\":\"documentType\",\"path\":\"\xff\"}", "The line is not JSON: see byte 30."},
        BadLine{"InvalidUtf8InTheOperation", "{\"op\":\"\xc3(\"}", "The line is not JSON: see byte 9."},
        BadLine{"AHighSurrogateAlone", R"({"op":"documentType","path":"\ud800"})",
                "The line is not JSON: see byte 36."},
        BadLine{"ALowSurrogateAlone", R"({"op":"documentType","path":"\udc00"})", "The line is not JSON: see byte 35."},
        BadLine{"SurrogatesInTheWrongOrder", R"({"op":"documentType","path":"\udc00\ud800"})",
                "The line is not JSON: see byte 35."},
        BadLine{"AZeroByte", QByteArray("{\"op\":\"a\0b\"}", 12), "The line is not JSON: see byte 9."},
        BadLine{"ANumberThatIsTooLarge", R"({"op":"documentType","id":1e999})",
                "The line has a number that is too large."},
        BadLine{"ListsInListsWithoutEnd", QByteArray(500'000, '['), "The line is not JSON: see byte 500001."}),
    [](const auto &row) { return row.param.name; });

TEST(Probe, ADeepIdIsCopied)
{
    const QByteArray id = QByteArray(100'000, '[') + QByteArray(100'000, ']');
    ProbeProcess probe;

    EXPECT_TRUE(probe.answerTo(R"({"op":"documentType","path":"/a.md","id":)" + id + '}') ==
                R"({"ok":true,"result":"markdown","id":)" + id + '}');
}

TEST(Probe, AnEscapedPairAndAnEscapedZeroAreTexts)
{
    ProbeProcess probe;

    EXPECT_EQ(probe.answerTo(R"({"op":"relativePath","root":"/a","path":"/a/\ud83d\udcdd \u0000.md"})"),
              R"({"ok":true,"result":"📝 \u0000.md"})");
}

TEST(Probe, WhatTheLibrariesPrintStaysOutOfTheAnswers)
{
    ProbeProcess probe;

    const QJsonValue tree =
        probe.resultOf({{u"op"_s, u"buildTree"_s}, {u"projects"_s, QJsonArray{u"/no such folder"_s}}});

    EXPECT_TRUE(tree.isArray()) << tree.toString().toStdString();
    EXPECT_EQ(probe.finish(), 0);
    EXPECT_EQ(probe.standardError(), "Error loading contents of /no such folder: No such file or directory\n");
}

} // namespace Tessaline
