#include "tests/probe/OperationCase.h"
#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

#include <QtCore/QJsonArray>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const OperationCase kCases[] = {
    {"TheRecommendedModel", R"("op":"recommendedModel","physicalMemoryBytes":17179869184)", R"("llama-3.1-8b-q4")"},
    {"TheModelForLessMemory", R"("op":"recommendedModel","physicalMemoryBytes":17179869183)", R"("llama-3.2-3b-q4")"},
    {"TheChosenModel", R"("op":"resolveActiveModel","selection":"qwen-2.5-14b-q4","physicalMemoryBytes":0)",
     R"("qwen-2.5-14b-q4")"},
    {"NoChosenModel", R"("op":"resolveActiveModel","selection":null,"physicalMemoryBytes":51539607552)",
     R"("qwen-2.5-14b-q4")"},
    {"AnUnknownModel", R"("op":"resolveActiveModel","selection":"x","physicalMemoryBytes":0)", R"("llama-3.2-3b-q4")"},
    {"TheServersEnvironment", R"("op":"serverEnvironment","modelId":"llama-3.1-8b-q4","activeProcessorCount":9)",
     R"({"OMP_NUM_THREADS":"4","RAYON_NUM_THREADS":"4","TESSALINE_CONTEXT_TOKENS":"16384",
         "TESSALINE_MODEL_ID":"llama-3.1-8b-q4","TESSALINE_THREADS":"7"})"},
    {"ARequestInFull",
     R"("op":"encodeChatRequest","prompt":"a/b","fileContent":"","contexts":[{"name":"n","subtitle":"s","content":"c",
        "digest":null}],"workspaceItems":[{"name":"w","content":"x"}],"history":[{"role":"user","content":"q"}],
        "temperature":0.7,"topP":1)",
     R"("{\"prompt\":\"a\\/b\",\"file_content\":\"\",\"context_items\":[{\"name\":\"n\",\"subtitle\":\"s\",\"content\":\"c\"}],\"workspace_context_items\":[{\"name\":\"w\",\"content\":\"x\"}],\"history\":[{\"role\":\"user\",\"content\":\"q\"}],\"temperature\":0.7,\"top_p\":1}")"},
    {"ARequestWithNothing",
     R"("op":"encodeChatRequest","prompt":"","fileContent":null,"contexts":[],"workspaceItems":[],"history":[],
        "temperature":0.3,"topP":0.9)",
     R"("{\"prompt\":\"\",\"temperature\":0.3,\"top_p\":0.9}")"},
    {"TheKeyOfASession", R"("op":"sessionKey","path":"/Users/writer/Notes/\u00DCbung.md")", R"("e94bc06d69626b03")"},
    {"TheKeyOfAnUntidyPath", R"("op":"sessionKey","path":"/a/../a")", R"("0000d0a20b61ad10")"},
    {"WrittenMessages",
     R"("op":"encodeChatHistory","messages":[{"id":"0f9619ff-8b86-d011-b42d-00cf4fc964ab","role":"user","content":"a"}])",
     R"("[\n  {\n    \"id\" : \"0F9619FF-8B86-D011-B42D-00CF4FC964AB\",\n    \"role\" : \"user\",\n    \"content\" : \"a\"\n  }\n]")"},
    {"ReadMessages",
     R"("op":"decodeChatHistory",
        "text":"[{\"id\":\"0f9619ff-8b86-d011-b42d-00cf4fc964ab\",\"role\":\"user\",\"content\":\"a\"}]")",
     R"([{"id":"0F9619FF-8B86-D011-B42D-00CF4FC964AB","role":"user","content":"a"}])"},
    {"MessagesWithABadId", R"("op":"decodeChatHistory","text":"[{\"id\":\"x\",\"role\":\"user\",\"content\":\"a\"}]")",
     "null"},
    {"WrittenItems", R"("op":"encodeContexts","items":[{"name":"n","content":"c","digest":"d"}])",
     R"("[\n  {\n    \"name\" : \"n\",\n    \"content\" : \"c\",\n    \"digest\" : \"d\"\n  }\n]")"},
    {"ReadItems", R"("op":"decodeContexts","text":"[{\"name\":\"n\",\"content\":\"c\",\"digest\":\"d\"}]")",
     R"([{"name":"n","subtitle":null,"content":"c","digest":"d"}])"},
    {"ItemsThatDoNotDecode", R"("op":"decodeContexts","text":"{}")", "null"},
    {"AConcept",
     R"("op":"decodeConceptResponse",
        "text":"{\"status\":\"success\",\"card\":{\"title\":\"t\",\"subtitle\":\"s\",\"content\":\"c\"}}")",
     R"({"status":"success","card":{"title":"t","subtitle":"s","content":"c"},"options":null})"},
    {"AnAmbiguousConcept", R"("op":"decodeConceptResponse","text":"{\"status\":\"ambiguous\",\"options\":[]}")",
     R"({"status":"ambiguous","card":null,"options":[]})"},
    {"NoConcept", R"("op":"decodeConceptResponse","text":"{}")", "null"},
    {"AToken", R"("op":"streamLine","path":"oneShot","line":"data: {\"token\":\"é\"}")",
     R"({"kind":"token","token":"é"})"},
    {"ALineThatIsIgnored", R"("op":"streamLine","path":"oneShot","line":"data:[DONE]")", R"({"kind":"ignored"})"},
    {"ALineThatIsDone", R"("op":"streamLine","path":"chat","line":"data:[DONE]")", R"({"kind":"done"})"},
    {"AnError", R"("op":"streamLine","path":"chat","line":"data: {\"error\":\"e\"}")",
     R"({"kind":"error","error":"e"})"},
    {"Stats",
     R"("op":"streamLine","path":"chat","line":"data: {\"context\":{\"context_window_tokens\":1,\"estimated_input_tokens\":2,\"active_document_chars\":3,\"attached_context_count\":4,\"workspace_context_count\":5,\"history_message_count\":6}}")",
     R"({"kind":"context","stats":{"context_window_tokens":1,"estimated_input_tokens":2,"active_document_chars":3,
        "attached_context_count":4,"workspace_context_count":5,"history_message_count":6}})"},
    {"LinesOfAStream", R"("op":"splitStream","chunks":["a\r","\n\nb","c\r","d"])", R"(["a","","bc","d"])"},
    {"TheStatusLine",
     R"("op":"statusLine","stats":{"context_window_tokens":1,"estimated_input_tokens":2345,"active_document_chars":3,
        "attached_context_count":1,"workspace_context_count":3,"history_message_count":6})",
     R"("Using document + 4 sources · ~2.3K tokens")"},
    {"TheTokensOfAQuery", R"("op":"queryTokens","query":"What of the TIDE, the harbour, the tide?")",
     R"(["harbour","the","tide"])"},
    {"TheHitsOfTokens", R"("op":"tokenHits","tokens":["art","tide"],"text":"start, tide, tides")", "3"},
    {"TheHitsOfNoToken", R"("op":"tokenHits","tokens":[],"text":"start")", "0"},
    {"TheChunksOfAText", R"("op":"splitIntoChunks","text":"abc👩‍👧ef","size":3,"overlap":1)",
     R"(["abc","c👩‍👧e","ef"])"},
    {"NoChunks", R"("op":"splitIntoChunks","text":"abc","size":0,"overlap":0)", "[]"},
    {"TheBestExcerpt", R"("op":"bestExcerpt","content":"A short text.","query":"tide")", R"("A short text.")"},
};

class ServicesOperations : public testing::TestWithParam<OperationCase>
{};

} // namespace

TEST_P(ServicesOperations, Answers)
{
    ProbeProcess probe;
    expectResult(probe, GetParam());
}

INSTANTIATE_TEST_SUITE_P(All, ServicesOperations, testing::ValuesIn(kCases), nameOfCase);

TEST(ServicesOperationsOnDisk, RankFiles)
{
    const TemporaryFiles files{{u"a.md"_s, "tide"}, {u"b/tide.txt"_s, "none"}, {u"c.md"_s, "tide"}, {u"d.md"_s, "x"}};
    ProbeProcess probe;
    const QString subtitle = u"Project · "_s + files.folder().lastPathComponent();
    const auto item = [&subtitle](const QString &name, const QString &content) {
        return QJsonObject{
            {u"name"_s, name}, {u"subtitle"_s, subtitle}, {u"content"_s, content}, {u"digest"_s, QJsonValue::Null}};
    };
    QJsonObject request{{u"op"_s, u"rankFiles"_s},
                        {u"query"_s, u"tide"_s},
                        {u"root"_s, files.folder().path()},
                        {u"activeFile"_s, files.url(u"c.md"_s).path()},
                        {u"limit"_s, 6}};

    EXPECT_EQ(probe.resultOf(request),
              QJsonValue(QJsonArray{item(u"b/tide.txt"_s, u"none"_s), item(u"a.md"_s, u"tide"_s)}));

    request[u"activeFile"_s] = QJsonValue::Null;
    request[u"limit"_s] = 2;
    EXPECT_EQ(probe.resultOf(request),
              QJsonValue(QJsonArray{item(u"b/tide.txt"_s, u"none"_s), item(u"a.md"_s, u"tide"_s)}));
}

TEST(ServicesOperationsErrors, WrongArgumentsAreNamed)
{
    const std::pair<const char *, const char *> cases[] = {
        {R"({"op":"encodeContexts","items":[1]})", "An element of \"items\" is not an object."},
        {R"({"op":"encodeContexts","items":[{"name":"n","content":"c","digest":1}]})", R"("digest" is not a text.)"},
        {R"({"op":"encodeChatHistory","messages":[{"id":"x","role":"user","content":""}]})",
         "The id of a message is not a UUID."},
        {R"({"op":"streamLine","line":"","path":"x"})", R"("path" is neither "chat" nor "oneShot".)"},
        {R"({"op":"statusLine","stats":{}})", R"("context_window_tokens" is missing.)"},
    };
    ProbeProcess probe;

    for (const auto &[request, error] : cases)
        expectError(probe, request, error);
}

} // namespace Tessaline
