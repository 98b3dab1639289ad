#include "Services/HttpReplyParser.h"

#include <QList>

#include <gtest/gtest.h>

#include <random>

namespace Tessaline {

namespace {

enum class Outcome { Open, Complete, Malformed };

struct Parsed {
    QByteArray body;
    int status = -1;
    Outcome outcome = Outcome::Open;
    friend bool operator==(const Parsed &, const Parsed &) = default;
};

void PrintTo(const Parsed &parsed, std::ostream *out)
{
    *out << parsed.status << ' ' << static_cast<int>(parsed.outcome) << " \"" << parsed.body.toStdString() << '"';
}

Outcome outcomeOf(const HttpReplyParser &parser)
{
    EXPECT_FALSE(parser.isComplete() && parser.isMalformed());
    return parser.isComplete() ? Outcome::Complete : parser.isMalformed() ? Outcome::Malformed : Outcome::Open;
}

Parsed parse(const QList<QByteArray> &pieces)
{
    HttpReplyParser parser;
    Parsed parsed;
    for (const QByteArray &piece : pieces)
        parsed.body += parser.take(piece);
    parsed.status = parser.status().value_or(-1);
    parsed.outcome = outcomeOf(parser);
    return parsed;
}

/// The same, and then the connection ends.
Parsed parseToTheEnd(const QByteArray &bytes)
{
    HttpReplyParser parser;
    Parsed parsed;
    parsed.body = parser.take(bytes);
    parser.finish();
    parsed.status = parser.status().value_or(-1);
    parsed.outcome = outcomeOf(parser);
    return parsed;
}

const QByteArray kChunked = "HTTP/1.1 200 OK\r\ntransfer-encoding: Chunked\r\n\r\n";

} // namespace

TEST(HttpReplyParser, ABodyOfGivenLengthEndsThere)
{
    EXPECT_EQ(parse({"HTTP/1.1 200 OK\r\nA: b\r\ncontent-LENGTH:  3 \r\n\r\nabc"}),
              (Parsed{"abc", 200, Outcome::Complete}));
    EXPECT_EQ(parse({"HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nabcdef"}), (Parsed{"abc", 200, Outcome::Complete}));
    EXPECT_EQ(parse({"HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"}), (Parsed{"", 200, Outcome::Complete}));
    EXPECT_EQ(parse({"HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nab"}), (Parsed{"ab", 200, Outcome::Open}));
    EXPECT_EQ(parseToTheEnd("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nab"), (Parsed{"ab", 200, Outcome::Malformed}));
}

TEST(HttpReplyParser, ABodyWithoutLengthEndsWithTheConnection)
{
    EXPECT_EQ(parse({"HTTP/1.0 200\nA: b\n\nab", "c\r\n\r\n"}), (Parsed{"abc\r\n\r\n", 200, Outcome::Open}));
    EXPECT_EQ(parseToTheEnd("HTTP/1.1 200 OK\r\n\r\nabc"), (Parsed{"abc", 200, Outcome::Complete}));
    EXPECT_EQ(parseToTheEnd("HTTP/1.1 200 OK\r\n\r\n"), (Parsed{"", 200, Outcome::Complete}));
}

TEST(HttpReplyParser, ChunksAreJoined)
{
    EXPECT_EQ(parse({kChunked + "3\r\nabc\r\n00A;x=y\r\n0123456789\r\n0\r\n\r\n"}),
              (Parsed{"abc0123456789", 200, Outcome::Complete}));
    EXPECT_EQ(parse({kChunked + "1\r\na\r\n0\r\nTrailer: b\r\n\r\nmore"}), (Parsed{"a", 200, Outcome::Complete}));
    EXPECT_EQ(parse({kChunked + "1\r\na\r\n"}), (Parsed{"a", 200, Outcome::Open}));
    EXPECT_EQ(parseToTheEnd(kChunked + "1\r\na\r\n"), (Parsed{"a", 200, Outcome::Malformed}));
    EXPECT_EQ(parseToTheEnd(kChunked + "1\r\na\r\n0\r\n"), (Parsed{"a", 200, Outcome::Malformed}));
}

TEST(HttpReplyParser, ChunksWinOverALength)
{
    EXPECT_EQ(parse({"HTTP/1.1 200 OK\r\nContent-Length: 99\r\nTransfer-Encoding: chunked\r\n\r\n1\r\na\r\n0\r\n\r\n"}),
              (Parsed{"a", 200, Outcome::Complete}));
}

TEST(HttpReplyParser, WrongChunksAreMalformedBehindWhatWasRight)
{
    for (const char *chunks : {"1\r\nab\r\n", "1\r\na\r\nx\r\n", "1\r\na\r\n-1\r\n", "1\r\na\r\n\r\n",
                               "1\r\na\r\nfffffffffffffffff\r\n", "1\r\na\r\n0x1\r\n", "1\r\na\r\n+1\r\n"})
        EXPECT_EQ(parse({kChunked + chunks}), (Parsed{"a", 200, Outcome::Malformed})) << chunks;
}

TEST(HttpReplyParser, InterimRepliesArePassedOver)
{
    EXPECT_EQ(parse({"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Hints\r\nContent-Length: 9\r\nTransfer-Encoding: "
                     "chunked\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\na"}),
              (Parsed{"a", 200, Outcome::Complete}));
    EXPECT_EQ(parse({"HTTP/1.1 100 Continue\r\n\r\n"}), (Parsed{"", -1, Outcome::Open}));
    EXPECT_EQ(parse({"HTTP/1.1 101 Switching\r\n\r\nabc"}), (Parsed{"", 101, Outcome::Complete}));
}

TEST(HttpReplyParser, SomeRepliesHaveNoBody)
{
    EXPECT_EQ(parse({"HTTP/1.1 204 No Content\r\n\r\nabc"}), (Parsed{"", 204, Outcome::Complete}));
    EXPECT_EQ(parse({"HTTP/1.1 304 Not Modified\r\nContent-Length: 3\r\n\r\nabc"}),
              (Parsed{"", 304, Outcome::Complete}));
}

TEST(HttpReplyParser, WhatIsNoHttpIsMalformed)
{
    for (const char *bytes :
         {"SSH-2.0\r\n", "\r\n", "HTTP/2 200 OK\r\n", "HTTP/1.1 OK\r\n", "HTTP/1.1 20\r\n", "HTTP/1.1 2000\r\n",
          "HTTP/1.1 -20 OK\r\n", "HTTP/1.1 099 OK\r\n", "http/1.1 200 OK\r\n", "HTTP/1.1 200 OK\r\nno colon\r\n",
          "HTTP/1.1 200 OK\r\n: b\r\n", "HTTP/1.1 200 OK\r\nContent-Length: x\r\n",
          "HTTP/1.1 200 OK\r\nContent-Length: -1\r\n", "HTTP/1.1 200 OK\r\nContent-Length: \r\n",
          "HTTP/1.1 200 OK\r\nContent-Length: 1\r\nContent-Length: 2\r\n",
          "HTTP/1.1 200 OK\r\nTransfer-Encoding: gzip, chunked\r\n"})
        EXPECT_EQ(parse({bytes}), (Parsed{"", -1, Outcome::Malformed})) << bytes;
    EXPECT_EQ(parseToTheEnd(""), (Parsed{"", -1, Outcome::Malformed}));
    EXPECT_EQ(parseToTheEnd("HTTP/1.1 200 OK\r\nA: b\r\n"), (Parsed{"", -1, Outcome::Malformed}));
}

TEST(HttpReplyParser, AHeadWithoutEndIsMalformed)
{
    const QByteArray line = "X: " + QByteArray(997, 'x') + "\r\n";

    EXPECT_EQ(parse({"HTTP/1.1 200 OK\r\n", line.repeated(60)}).outcome, Outcome::Open);
    EXPECT_EQ(parse({"HTTP/1.1 200 OK\r\n", line.repeated(70)}).outcome, Outcome::Malformed);
    EXPECT_EQ(parse({QByteArray(HttpReplyParser::kLongestHead + 1, 'x')}).outcome, Outcome::Malformed);
    EXPECT_EQ(parse({kChunked + "0\r\n" + line.repeated(70)}).outcome, Outcome::Malformed);
    EXPECT_EQ(parse({kChunked, QByteArray("1\r\na\r\n").repeated(100'000)}).body.size(), 100'000);
}

TEST(HttpReplyParser, HoweverTheBytesAreCutTheReplyIsTheSame)
{
    const QByteArray bytes = "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                             "3\r\na\nb\r\n10\r\n0123456789abcdef\r\n0\r\nX: y\r\n\r\n";
    const Parsed whole{"a\nb0123456789abcdef", 200, Outcome::Complete};
    ASSERT_EQ(parse({bytes}), whole);

    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        QList<QByteArray> pieces;
        for (qsizetype at = 0; at < bytes.size();) {
            const auto length = static_cast<qsizetype>(random() % 9);
            pieces.append(bytes.mid(at, length));
            at += length;
        }
        ASSERT_EQ(parse(pieces), whole) << round;
    }
}

} // namespace Tessaline
