#include "Services/StreamLine.h"
#include "Services/LineSplitter.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

#include <random>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

StreamLine token(const QString &text)
{
    return TokenEvent{text};
}

StreamLine chat(QByteArrayView line)
{
    return streamLine(line, StreamPath::Chat);
}

StreamLine oneShot(QByteArrayView line)
{
    return streamLine(line, StreamPath::OneShot);
}

const StreamLine kIgnored = IgnoredLine();
const StreamLine kDone = DoneLine();

constexpr const char *kContext = R"({"context":{"context_window_tokens":1,"estimated_input_tokens":2,)"
                                 R"("active_document_chars":3,"attached_context_count":4,)"
                                 R"("workspace_context_count":5,"history_message_count":6}})";

QList<QByteArray> linesOf(const QList<QByteArray> &pieces, qsizetype longestLine = LineSplitter::kLongestLine)
{
    LineSplitter splitter(longestLine);
    QList<QByteArray> lines;
    const auto takeLines = [&] {
        while (const std::optional<QByteArrayView> line = splitter.next())
            lines.append(line->toByteArray());
    };
    for (const QByteArray &piece : pieces) {
        splitter.append(piece);
        takeLines();
    }
    splitter.finish();
    takeLines();
    if (splitter.isLineTooLong())
        lines.append("(too long)");
    return lines;
}

} // namespace

// --- single lines ---

TEST(StreamLine, ATokenMayBeEmpty)
{
    EXPECT_EQ(chat(R"(data: {"token":"a b"})"), token(u"a b"_s));
    EXPECT_EQ(chat(R"(data: {"token":""})"), token(QString()));
    EXPECT_EQ(oneShot(R"(data: {"token":""})"), token(QString()));
}

TEST(StreamLine, TheChatNeedsNoBlankBehindThePrefixAndTheOneShotDoes)
{
    EXPECT_EQ(chat(R"(data:{"token":"a"})"), token(u"a"_s));
    EXPECT_EQ(oneShot(R"(data:{"token":"a"})"), kIgnored);
    EXPECT_EQ(oneShot("data:\t{\"token\":\"a\"}"), kIgnored);
    EXPECT_EQ(chat("data:[DONE]"), kDone);
    EXPECT_EQ(oneShot("data:[DONE]"), kIgnored);
    EXPECT_EQ(oneShot("data: [DONE]"), kDone);
}

TEST(StreamLine, BlanksAndTabsAroundTheRestAreTrimmedAndNothingElse)
{
    EXPECT_EQ(chat("data: \t {\"token\":\"a\"}\t "), token(u"a"_s));
    EXPECT_EQ(chat("data:\t[DONE] "), kDone);
    EXPECT_EQ(chat("data: \v[DONE]"), kIgnored);
    EXPECT_EQ(chat("data: \u00A0[DONE]"), kIgnored);
}

TEST(StreamLine, LinesWithoutThePrefixAreIgnored)
{
    for (const char *line : {"", "event: message", ": comment", R"({"token":"a"})", R"( data: {"token":"a"})", "data",
                             R"(Data: {"token":"a"})", "data:", "data: ", "[DONE]"}) {
        EXPECT_EQ(chat(line), kIgnored) << line;
        EXPECT_EQ(oneShot(line), kIgnored) << line;
    }
}

TEST(StreamLine, OnlyTheExactWordIsDone)
{
    EXPECT_EQ(chat("data: [done]"), kIgnored);
    EXPECT_EQ(chat("data: [DONE]."), kIgnored);
    EXPECT_EQ(chat("data: [DONE"), kIgnored);
}

TEST(StreamLine, StatsNeedAllSixIntegers)
{
    const QByteArray line = QByteArray("data: ") + kContext;

    EXPECT_EQ(chat(line), StreamLine(ContextStatsEvent{{1, 2, 3, 4, 5, 6}}));
    EXPECT_EQ(chat(QByteArray(line).replace(":6", ":6,\"more\":null")),
              StreamLine(ContextStatsEvent{{1, 2, 3, 4, 5, 6}}));
    EXPECT_EQ(chat(QByteArray(line).replace(",\"history_message_count\":6", "")), kIgnored);
    for (const char *wrong : {":\"6\"", ":null", ":true", ":6.5", ":[6]", ":99999999999999999999"})
        EXPECT_EQ(chat(QByteArray(line).replace(":6", wrong)), kIgnored) << wrong;
    EXPECT_EQ(chat(R"(data: {"context":null})"), kIgnored);
    EXPECT_EQ(chat(R"(data: {"context":[]})"), kIgnored);
}

TEST(StreamLine, AnErrorIsAText)
{
    EXPECT_EQ(chat(R"(data: {"error":"e","code":1})"), StreamLine(ErrorEvent{u"e"_s}));
    EXPECT_EQ(chat(R"(data: {"error":{"message":"e"}})"), kIgnored);
}

TEST(StreamLine, AnObjectThatWouldDoAsSeveralIsATokenThenStatsThenAnError)
{
    const QByteArray context = QByteArray(kContext).chopped(1);

    EXPECT_EQ(chat(R"(data: {"error":"e","token":"t"})"), token(u"t"_s));
    EXPECT_EQ(chat("data: " + context + R"(,"token":"t"})"), token(u"t"_s));
    EXPECT_EQ(chat("data: " + context + R"(,"error":"e"})"), StreamLine(ContextStatsEvent{{1, 2, 3, 4, 5, 6}}));
    EXPECT_EQ(chat(R"(data: {"token":1,"context":{},"error":"e"})"), StreamLine(ErrorEvent{u"e"_s}));
    EXPECT_EQ(chat(R"(data: {"token":null,"error":"e"})"), StreamLine(ErrorEvent{u"e"_s}));
}

TEST(StreamLine, TheOneShotKnowsOnlyTokens)
{
    EXPECT_EQ(oneShot(QByteArray("data: ") + kContext), kIgnored);
    EXPECT_EQ(oneShot(R"(data: {"error":"e"})"), kIgnored);
    EXPECT_EQ(oneShot(R"(data: {"error":"e","token":"t"})"), token(u"t"_s));
    EXPECT_EQ(oneShot(R"(data: {"error":"e","token":1})"), kIgnored);
}

TEST(StreamLine, WhatIsNoSoundJsonIsIgnored)
{
    for (const char *line :
         {"data: {", R"(data: {"token":"a")", R"(data: {"token":"a"} x)", R"(data: {"token":"a"}{})",
          R"(data: {"token":"\ud800"})", "data: [1]", "data: \"token\"", "data: null", "data: 1",
          R"(data: {'token':'a'})", R"(data: {"token":"a",})", R"(data: {"Token":"a"})", "data: token"})
        EXPECT_EQ(chat(line), kIgnored) << line;
}

TEST(StreamLine, BytesThatAreNoUtf8AreReadAsReplacementCharacters)
{
    EXPECT_EQ(chat("data: {\"token\":\"a\xFF\"}"), token(u"a\uFFFD"_s));
    EXPECT_EQ(chat("data: {\"token\":\"\xC3\"}"), token(u"\uFFFD"_s));
}

// --- lines of a stream ---

TEST(LineSplitter, LinesEndWithLfCrOrBoth)
{
    EXPECT_EQ(linesOf({"a\nb\rc\r\nd"}), (QList<QByteArray>{"a", "b", "c", "d"}));
    EXPECT_EQ(linesOf({"\n\na\r\r\n\n"}), (QList<QByteArray>{"", "", "a", "", ""}));
    EXPECT_EQ(linesOf({"a\n\rb"}), (QList<QByteArray>{"a", "", "b"}));
}

TEST(LineSplitter, ACrLfCutInTwoIsOneLineEnd)
{
    EXPECT_EQ(linesOf({"a\r", "\nb\r", "\n", "\r", "", "\n\n"}), (QList<QByteArray>{"a", "b", "", ""}));
    EXPECT_EQ(linesOf({"a\r", "b\r"}), (QList<QByteArray>{"a", "b"}));
}

TEST(LineSplitter, ALineIsHandedOutAsSoonAsItsEndIsSeen)
{
    LineSplitter splitter;
    splitter.append("a\rb");

    EXPECT_EQ(splitter.next(), QByteArrayView("a"));
    EXPECT_EQ(splitter.next(), std::nullopt);
    splitter.append("c\n");
    EXPECT_EQ(splitter.next(), QByteArrayView("bc"));
    EXPECT_EQ(splitter.next(), std::nullopt);
}

TEST(LineSplitter, WhatStandsBehindTheLastLineEndIsALine)
{
    EXPECT_EQ(linesOf({"a\n", "b", "c"}), (QList<QByteArray>{"a", "bc"}));
    EXPECT_EQ(linesOf({"a\n"}), QList<QByteArray>{"a"});
    EXPECT_EQ(linesOf({}), QList<QByteArray>());
}

TEST(LineSplitter, OtherSignsDoNotEndALine)
{
    EXPECT_EQ(linesOf({"a\v\f\u0085\u2028\u2029b"}), QList<QByteArray>{"a\v\f\u0085\u2028\u2029b"});
}

TEST(LineSplitter, HoweverTheBytesAreCutTheLinesAreTheSame)
{
    const QByteArray bytes = "data: é📝\r\n\r\n\rx\n\n\r\ry\r\nÜ";
    const QList<QByteArray> lines = linesOf({bytes});
    ASSERT_EQ(lines, (QList<QByteArray>{"data: é📝", "", "", "x", "", "", "", "y", "Ü"}));

    QList<QByteArray> singleBytes;
    for (const char byte : bytes)
        singleBytes.append(QByteArray(1, byte));
    EXPECT_EQ(linesOf(singleBytes), lines);

    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        QList<QByteArray> pieces;
        for (qsizetype at = 0; at < bytes.size();) {
            const auto length = static_cast<qsizetype>(random() % 7);
            pieces.append(bytes.mid(at, length));
            at += length;
        }
        ASSERT_EQ(linesOf(pieces), lines) << round;
    }
}

TEST(LineSplitter, ALineBeyondTheBoundEndsTheStreamAndKeepsNothing)
{
    EXPECT_EQ(linesOf({"1234\n", "12", "34\n"}, 4), (QList<QByteArray>{"1234", "1234"}));
    EXPECT_EQ(linesOf({"a\n12345\nb\n"}, 4), (QList<QByteArray>{"a", "(too long)"}));
    EXPECT_EQ(linesOf({"12", "34", "5", "\nb\n"}, 4), QList<QByteArray>{"(too long)"});
    EXPECT_EQ(linesOf({"123", "45\nb"}, 4), QList<QByteArray>{"(too long)"});
}

} // namespace Tessaline
