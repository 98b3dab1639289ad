#include "Services/ConceptExpansion.h"

#include "Services/FileDigest.h"
#include "Services/WireClient.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

const ConceptCard kCard{u"Hamlet"_s, u"Play"_s, u"A prince of Denmark"_s};
const ContextItem kItem{u"Hamlet"_s, u"Play"_s, u"A prince of Denmark"_s, std::nullopt};
const ContextItem kFallback{u"hamlet"_s, u"Concept"_s, u"Reference card for hamlet"_s, std::nullopt};

/// The answer of an operation and what was printed meanwhile.
template <class Value>
struct Heard {
    std::optional<Value> answer;
    std::string console;
};

/// Asks a server that has one reply about both, for cards and for digests.
class EnrichmentTest : public ::testing::Test
{
protected:
    void serve(const QByteArray &reply)
    {
        m_server = std::make_unique<ScriptedServer>(R"({"replies":{"*":[)" + reply + "]}}");
        WireOptions options;
        options.address.port = m_server->port();
        m_wire = std::make_unique<WireClient>(options);
    }

    template <class Value>
    Heard<Value> hear(QCoro::Task<std::optional<Value>> (*ask)(WireClient &))
    {
        ::testing::internal::CaptureStdout();
        std::optional<std::optional<Value>> answer;
        auto task = ask(*m_wire).then([&answer](const std::optional<Value> &value) { answer = value; });
        EXPECT_TRUE(eventually([&] { return answer.has_value(); }, 60s));
        return {answer.value_or(std::nullopt), ::testing::internal::GetCapturedStdout()};
    }

    Heard<ConceptExpansionResponse> expand()
    {
        return hear<ConceptExpansionResponse>(
            [](WireClient &wire) { return expandConcept(wire, u"a/hamlet"_s, std::stop_token()); });
    }

    Heard<QString> digest()
    {
        return hear<QString>(
            [](WireClient &wire) { return fetchDigest(wire, u"play.txt"_s, u"To be"_s, std::stop_token()); });
    }

    std::string body() const { return bodyOf(m_server->requests().at(0)).toStdString(); }

    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<WireClient> m_wire;
};

using ConceptExpansionTest = EnrichmentTest;
using FileDigestTest = EnrichmentTest;

} // namespace

// Cards

TEST_F(ConceptExpansionTest, AnAnswerWithExtraKeysIsTheRecord)
{
    serve(R"({"body":"{\"status\":\"success\",\"x\":{},\"card\":{\"title\":\"Hamlet\",\"subtitle\":\"Play\",)"
          R"(\"content\":\"A prince of Denmark\",\"y\":1}}"})");

    const auto heard = expand();

    EXPECT_EQ(heard.answer, (ConceptExpansionResponse{u"success"_s, kCard, std::nullopt}));
    EXPECT_EQ(heard.console, "");
    EXPECT_TRUE(m_server->requests().at(0).startsWith("POST /v1/expand-concept HTTP/1.1\r\n"));
    EXPECT_EQ(body(), R"({"concept":"a\/hamlet"})");
}

TEST_F(ConceptExpansionTest, AStatusOtherThan200IsNoAnswerInSilence)
{
    serve(R"({"status":500,"body":"{\"status\":\"success\"}"})");

    const auto heard = expand();

    EXPECT_EQ(heard.answer, std::nullopt);
    EXPECT_EQ(heard.console, "");
}

TEST_F(ConceptExpansionTest, ABodyThatDoesNotDecodeIsNoAnswerAndALineOnTheConsole)
{
    serve(R"({"body":"{\"card\":null}"})");

    const auto heard = expand();

    EXPECT_EQ(heard.answer, std::nullopt);
    EXPECT_EQ(heard.console, "Concept expansion failed: The server's answer could not be read.\n");
}

TEST_F(ConceptExpansionTest, WithoutAServerThereIsNoAnswerAndALineOnTheConsole)
{
    serve("{}");
    m_server->kill();

    const auto heard = expand();

    EXPECT_EQ(heard.answer, std::nullopt);
    EXPECT_EQ(heard.console, "Concept expansion failed: Could not connect to the server.\n");
}

struct OutcomeCase {
    const char *name;
    std::optional<ConceptExpansionResponse> response;
    ConceptOutcome outcome;
    friend void PrintTo(const OutcomeCase &row, std::ostream *out) { *out << row.name; }
};

class ConceptOutcomeTest : public ::testing::TestWithParam<OutcomeCase>
{};

TEST_P(ConceptOutcomeTest, IsTheItemOrTheChoice)
{
    EXPECT_EQ(conceptOutcome(GetParam().response, u"hamlet"_s), GetParam().outcome);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ConceptOutcomeTest,
    ::testing::Values(
        OutcomeCase{"ACardIsAttached", ConceptExpansionResponse{u"success"_s, kCard, std::nullopt}, kItem},
        OutcomeCase{"ACardWinsOverOptions", ConceptExpansionResponse{u"success"_s, kCard, QList<ConceptCard>{}}, kItem},
        OutcomeCase{"SuccessWithoutACardFallsBack",
                    ConceptExpansionResponse{u"success"_s, std::nullopt, QList<ConceptCard>{kCard}}, kFallback},
        OutcomeCase{"OptionsAreOffered",
                    ConceptExpansionResponse{u"ambiguous"_s, std::nullopt, QList<ConceptCard>{kCard, kCard}},
                    QList<ConceptCard>{kCard, kCard}},
        OutcomeCase{"NoOptionsAreOfferedToo",
                    ConceptExpansionResponse{u"ambiguous"_s, std::nullopt, QList<ConceptCard>{}}, QList<ConceptCard>{}},
        OutcomeCase{"AmbiguousWithoutOptionsFallsBack", ConceptExpansionResponse{u"ambiguous"_s, kCard, std::nullopt},
                    kFallback},
        OutcomeCase{"AnotherCaseIsUnknownAndFallsBack", ConceptExpansionResponse{u"Success"_s, kCard, std::nullopt},
                    kFallback},
        OutcomeCase{"AnUnknownStatusFallsBack", ConceptExpansionResponse{u"done"_s, kCard, QList<ConceptCard>{kCard}},
                    kFallback},
        OutcomeCase{"NoAnswerFallsBack", std::nullopt, kFallback}),
    [](const auto &row) { return std::string(row.param.name); });

// Digests

TEST_F(FileDigestTest, TheDigestOfAFileIsTheServers)
{
    serve(R"({"body":"{\"digest\":\"A play.\",\"more\":1}"})");

    const auto heard = digest();

    EXPECT_EQ(heard.answer, u"A play."_s);
    EXPECT_EQ(heard.console, "");
    EXPECT_TRUE(m_server->requests().at(0).startsWith("POST /v1/digest-file HTTP/1.1\r\n"));
    EXPECT_EQ(body(), R"({"filename":"play.txt","content":"To be"})");
}

TEST_F(FileDigestTest, AStatusOtherThan200IsNoDigestInSilence)
{
    serve(R"({"status":404})");

    const auto heard = digest();

    EXPECT_EQ(heard.answer, std::nullopt);
    EXPECT_EQ(heard.console, "");
}

TEST_F(FileDigestTest, ABodyThatDoesNotDecodeIsNoDigestAndALineOnTheConsole)
{
    serve(R"({"body":"{\"digest\":1}"})");

    const auto heard = digest();

    EXPECT_EQ(heard.answer, std::nullopt);
    EXPECT_EQ(heard.console, "Failed to fetch file digest: The server's answer could not be read.\n");
}

TEST_F(FileDigestTest, WithoutAServerThereIsNoDigestAndALineOnTheConsole)
{
    serve("{}");
    m_server->kill();

    const auto heard = digest();

    EXPECT_EQ(heard.answer, std::nullopt);
    EXPECT_EQ(heard.console, "Failed to fetch file digest: Could not connect to the server.\n");
}

} // namespace Tessaline
