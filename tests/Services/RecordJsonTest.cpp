#include "Services/RecordJson.h"
#include "Services/ReplyBodies.h"
#include "Services/RequestBodies.h"
#include "Services/SessionCodec.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

#include <QtCore/QSet>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const QUuid kId(u"{0f9619ff-8b86-d011-b42d-00cf4fc964ab}"_s);
constexpr const char *kUpperId = "0F9619FF-8B86-D011-B42D-00CF4FC964AB";

ContextItem item(const QString &name, const QString &content)
{
    return {name, std::nullopt, content, std::nullopt};
}

QByteArray history(const QByteArray &id, const QByteArray &rest = R"(,"role":"user","content":"b")")
{
    return "[{\"id\":" + id + rest + "}]";
}

} // namespace

// --- requests ---

TEST(RequestBodies, AFirstQuestionHasNoKeysForWhatItLacks)
{
    ChatRequestPayload payload;
    payload.prompt = u"Hello/you"_s;

    EXPECT_EQ(encodeChatRequest(payload), R"({"prompt":"Hello\/you","temperature":0.7,"top_p":0.9})");
}

TEST(RequestBodies, AnEmptyDocumentIsSent)
{
    ChatRequestPayload payload;
    payload.fileContent = QString();
    payload.temperature = ChatRequestPayload::kOneShotTemperature;

    EXPECT_EQ(encodeChatRequest(payload), R"({"prompt":"","file_content":"","temperature":0.3,"top_p":0.9})");
}

TEST(RequestBodies, AFullQuestionHasItsKeysInOrder)
{
    ChatRequestPayload payload;
    payload.prompt = u"p"_s;
    payload.fileContent = u"# Ü\n\"q\"\t\\"_s;
    payload.contextItems = {{u"n"_s, u"Local File"_s, u"c"_s, u"d"_s}, item(u"m"_s, QString())};
    payload.workspaceContextItems = {{u"a/b.md"_s, u""_s, u"x"_s, std::nullopt}};
    payload.history = {{u"user"_s, u"q"_s}, {u"assistant"_s, u"a"_s}};
    payload.temperature = 1;
    payload.topP = 0.95;

    EXPECT_EQ(encodeChatRequest(payload),
              R"({"prompt":"p","file_content":"# Ü\n\"q\"\t\\",)"
              R"("context_items":[{"name":"n","subtitle":"Local File","content":"c","digest":"d"},)"
              R"({"name":"m","content":""}],)"
              R"("workspace_context_items":[{"name":"a\/b.md","subtitle":"","content":"x"}],)"
              R"("history":[{"role":"user","content":"q"},{"role":"assistant","content":"a"}],)"
              R"("temperature":1,"top_p":0.95})");
}

TEST(RequestBodies, TheSmallRequestsHaveTheirKeysInOrder)
{
    EXPECT_EQ(encodeSuggestionsRequest(u" a/b\n"), R"({"content":" a\/b\n"})");
    EXPECT_EQ(encodeConceptRequest(u"Ü"), R"({"concept":"Ü"})");
    EXPECT_EQ(encodeDigestRequest(u"a.md", u""), R"({"filename":"a.md","content":""})");
}

// --- records ---

TEST(RecordJson, AnEditSuggestionIsWrittenAndReadWithItsThreeKeys)
{
    const EditSuggestion suggestion{u"i"_s, u"a/b"_s, QString()};
    const QByteArray json = R"({"id":"i","originalText":"a\/b","replacementText":""})";

    EXPECT_EQ(encodeJson(suggestion, JsonLayout::Compact), json);
    EXPECT_EQ(decodeJson<EditSuggestion>(json), suggestion);
    EXPECT_EQ(decodeJson<EditSuggestion>(R"({"id":"i","originalText":"a"})"), std::nullopt);
    EXPECT_EQ(decodeJson<EditSuggestion>(R"({"id":1,"originalText":"a","replacementText":"b"})"), std::nullopt);
}

TEST(RecordJson, OfTwoMembersWithOneKeyTheFirstCounts)
{
    EXPECT_EQ(decodeDigestResponse(R"({"digest":"a","digest":"b"})"), u"a"_s);
    EXPECT_EQ(decodeDigestResponse(R"({"digest":1,"digest":"b"})"), std::nullopt);
}

TEST(ContextItem, ItemsAreEqualWhenAllFourFieldsAre)
{
    const ContextItem plain = item(u"n"_s, u"c"_s);
    ContextItem withEmptySubtitle = plain;
    withEmptySubtitle.subtitle = QString();
    ContextItem withDigest = plain;
    withDigest.digest = u"d"_s;

    EXPECT_EQ(plain, item(u"n"_s, u"c"_s));
    EXPECT_NE(plain, withEmptySubtitle); // an empty subtitle is not an absent one
    EXPECT_NE(plain, withDigest);
    EXPECT_NE(plain, item(u"n"_s, u"x"_s));
    EXPECT_EQ((QSet<ContextItem>{plain, withEmptySubtitle, withDigest, plain}).size(), 3);
}

// --- session files ---

TEST(SessionCodec, MessagesAreWrittenIndentedWithTheirIdsInUpperCase)
{
    EXPECT_EQ(encodeChatHistory({{kId, u"user"_s, u"a/b\n"_s}, {kId, u"assistant"_s, QString()}}),
              R"([
  {
    "id" : "0F9619FF-8B86-D011-B42D-00CF4FC964AB",
    "role" : "user",
    "content" : "a\/b\n"
  },
  {
    "id" : "0F9619FF-8B86-D011-B42D-00CF4FC964AB",
    "role" : "assistant",
    "content" : ""
  }
])");
}

TEST(SessionCodec, EmptyListsAreWrittenAsEmptyLists)
{
    EXPECT_EQ(encodeChatHistory({}), "[\n\n]");
    EXPECT_EQ(encodeContexts({}), "[\n\n]");
    EXPECT_EQ(decodeChatHistory(encodeChatHistory({})), QList<ChatMessage>());
    EXPECT_EQ(decodeContexts("[]"), QList<ContextItem>());
}

TEST(SessionCodec, AnItemWithoutSubtitleAndDigestHasTwoKeys)
{
    EXPECT_EQ(encodeContexts({item(u"n"_s, u"c"_s)}), "[\n  {\n    \"name\" : \"n\",\n    \"content\" : \"c\"\n  }\n]");
}

TEST(SessionCodec, WhatIsWrittenReadsBackAsItWas)
{
    const QList<ChatMessage> messages = {{QUuid::createUuid(), u"user"_s, u"\uFEFF \"\\/\n📝"_s},
                                         {QUuid::createUuid(), u"system"_s, QString()}};
    const QList<ContextItem> items = {
        {u"n"_s, u"s"_s, u"c"_s, u"d"_s}, {u"n"_s, QString(), u"c"_s, QString()}, item(QString(), QString())};

    EXPECT_EQ(decodeChatHistory(encodeChatHistory(messages)), messages);
    EXPECT_EQ(decodeContexts(encodeContexts(items)), items);
}

TEST(SessionCodec, OneIdThatIsNoUuidFailsTheWholeFile)
{
    const QByteArray good = R"({"id":")" + QByteArray(kUpperId) + R"(","role":"user","content":""})";
    const QByteArray bad = R"({"id":"x","role":"user","content":""})";

    EXPECT_EQ(decodeChatHistory("[" + good + "," + good + "]")->size(), 2);
    EXPECT_EQ(decodeChatHistory("[" + good + "," + bad + "," + good + "]"), std::nullopt);
    for (const char *id :
         {R"("")", R"("{0F9619FF-8B86-D011-B42D-00CF4FC964AB}")", R"("0F9619FF8B86D011B42D00CF4FC964AB")",
          R"("0F9619FF-8B86-D011-B42D-00CF4FC964AG")", R"("0F9619FF-8B86-D011-B42D-00CF4FC964ABx")",
          R"("0F9619FF-8B86-D011-B42D-00CF4FC964A")", R"("{0F9619FF-8B86-D011-B42D-00CF4FC964A")",
          R"("0F9619FF+8B86+D011+B42D+00CF4FC964AB")", "null", "1"})
        EXPECT_EQ(decodeChatHistory(history(id)), std::nullopt) << id;
}

TEST(SessionCodec, AnIdMayBeInLowerCase)
{
    EXPECT_EQ(decodeChatHistory(history(R"("0f9619ff-8b86-d011-b42d-00cf4fc964ab")")),
              (QList<ChatMessage>{{kId, u"user"_s, u"b"_s}}));
    EXPECT_EQ(decodeChatHistory(history(R"("00000000-0000-0000-0000-000000000000")")),
              (QList<ChatMessage>{{QUuid(), u"user"_s, u"b"_s}}));
}

TEST(SessionCodec, MissingKeysAndWrongTypesFailTheWholeFileAndUnknownKeysDoNot)
{
    const QByteArray id = QByteArray("\"") + kUpperId + '"';

    EXPECT_TRUE(decodeChatHistory(history(id, R"(,"content":"b","x":{"role":[1]},"role":"user")")));
    for (const char *rest : {"", R"(,"role":"user")", R"(,"content":"b")", R"(,"role":null,"content":"b")",
                             R"(,"role":"user","content":1)", R"(,"Role":"user","content":"b")"})
        EXPECT_EQ(decodeChatHistory(history(id, rest)), std::nullopt) << rest;
    for (const char *file : {"", "garbage", "{}", "null", "[1]", "[null]", "[[]]", "[] []", "[", "[{}"})
        EXPECT_EQ(decodeChatHistory(file), std::nullopt) << file;
}

TEST(SessionCodec, OptionalFieldsOfAnItemMayBeMissingOrNullButNotOfAnotherType)
{
    const QList<ContextItem> plain = {item(u"n"_s, u"c"_s)};

    EXPECT_EQ(decodeContexts(R"([{"content":"c","name":"n"}])"), plain);
    EXPECT_EQ(decodeContexts(R"([{"name":"n","subtitle":null,"content":"c","digest":null}])"), plain);
    EXPECT_EQ(decodeContexts(R"([{"name":"n","subtitle":1,"content":"c"}])"), std::nullopt);
    EXPECT_EQ(decodeContexts(R"([{"name":"n","content":"c","digest":[]}])"), std::nullopt);
    EXPECT_EQ(decodeContexts(R"([{"name":"n"}])"), std::nullopt);
    EXPECT_EQ(decodeContexts(R"([{"name":null,"content":"c"}])"), std::nullopt);
}

TEST(SessionCodec, TheMetadataHasTwoTexts)
{
    EXPECT_EQ(encodeSessionMetadata(u"/a/b.md"_s, u"1763225401.23917"_s),
              "{\n  \"filePath\" : \"\\/a\\/b.md\",\n  \"lastModified\" : \"1763225401.23917\"\n}");
}

// --- replies ---

TEST(ReplyBodies, SuggestionsAreARequiredListOfTexts)
{
    EXPECT_EQ(decodeSuggestionsResponse(R"({"suggestions":["b","a"],"x":1})"), (QStringList{u"b"_s, u"a"_s}));
    EXPECT_EQ(decodeSuggestionsResponse(R"({"suggestions":[]})"), QStringList());
    for (const char *body :
         {"{}", "[]", R"({"suggestions":null})", R"({"suggestions":"a"})", R"({"suggestions":["a",1]})",
          R"({"suggestions":["a",null]})", R"({"suggestions":["a"]} x)", ""})
        EXPECT_EQ(decodeSuggestionsResponse(body), std::nullopt) << body;
}

TEST(ReplyBodies, AConceptHasAStatusAndPerhapsACardOrOptions)
{
    const ConceptCard card{u"t"_s, u"s"_s, u"c"_s};
    const QByteArray json = R"({"title":"t","subtitle":"s","content":"c","more":[]})";

    EXPECT_EQ(decodeConceptResponse(R"({"status":"success","card":)" + json + R"(,"options":null})"),
              (ConceptExpansionResponse{u"success"_s, card, std::nullopt}));
    EXPECT_EQ(decodeConceptResponse(R"({"options":[)" + json + "," + json + R"(],"status":"ambiguous"})"),
              (ConceptExpansionResponse{u"ambiguous"_s, std::nullopt, QList<ConceptCard>{card, card}}));
    EXPECT_EQ(decodeConceptResponse(R"({"status":"ambiguous","options":[]})"),
              (ConceptExpansionResponse{u"ambiguous"_s, std::nullopt, QList<ConceptCard>()}));
    EXPECT_EQ(decodeConceptResponse(R"({"status":"Success"})"),
              (ConceptExpansionResponse{u"Success"_s, std::nullopt, std::nullopt}));

    for (const char *body : {"{}", R"({"status":null})", R"({"status":1})", R"({"card":null})",
                             R"({"status":"success","card":{"title":"t","subtitle":"s"}})",
                             R"({"status":"success","card":{"title":"t","subtitle":null,"content":"c"}})",
                             R"({"status":"success","card":[]})", R"({"status":"ambiguous","options":{}})",
                             R"({"status":"ambiguous","options":[null]})"})
        EXPECT_EQ(decodeConceptResponse(body), std::nullopt) << body;
}

TEST(ReplyBodies, ADigestIsARequiredText)
{
    EXPECT_EQ(decodeDigestResponse(R"({"digest":"d"})"), u"d"_s);
    EXPECT_EQ(decodeDigestResponse(R"({"digest":""})"), QString());
    EXPECT_EQ(decodeDigestResponse(R"({"digest":null})"), std::nullopt);
    EXPECT_EQ(decodeDigestResponse("{}"), std::nullopt);
}

} // namespace Tessaline
