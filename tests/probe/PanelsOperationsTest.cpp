#include "tests/probe/ProbeProcess.h"

#include <gtest/gtest.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const QString kAnswer = u"So:\n<<<<<<< SEARCH\nold\n=======\nnew\n>>>>>>> REPLACE"_s;

} // namespace

TEST(PanelsOperations, EditSuggestions)
{
    ProbeProcess probe;
    const auto idOf = [&probe](const QString &messageId) {
        const QJsonArray list =
            probe.resultOf({{u"op"_s, u"editSuggestions"_s}, {u"messageId"_s, messageId}, {u"content"_s, kAnswer}})
                .toArray();
        EXPECT_EQ(list.size(), 1);
        EXPECT_EQ(list.at(0)[u"originalText"], u"old"_s);
        EXPECT_EQ(list.at(0)[u"replacementText"], u"new"_s);
        return list.at(0)[u"id"].toString();
    };
    EXPECT_EQ(idOf(u"0f0e0d0c-0b0a-0908-0706-050403020100"_s), u"0F0E0D0C-0B0A-0908-0706-050403020100_0"_s);
    EXPECT_EQ(idOf(u"m"_s), u"m_0"_s);
}

TEST(PanelsOperations, DisplayText)
{
    ProbeProcess probe;
    EXPECT_EQ(probe.resultOf({{u"op"_s, u"displayText"_s}, {u"content"_s, kAnswer}}), u"So:"_s);
}

TEST(PanelsOperations, UniqueRange)
{
    ProbeProcess probe;
    const auto find = [&probe](const QString &needle, bool caseInsensitive) {
        return probe.resultOf({{u"op"_s, u"uniqueRange"_s},
                               {u"needle"_s, needle},
                               {u"haystack"_s, u"One two one"_s},
                               {u"caseInsensitive"_s, caseInsensitive}});
    };
    EXPECT_EQ(find(u"one"_s, false), (QJsonObject{{u"kind"_s, u"unique"_s}, {u"location"_s, 8}, {u"length"_s, 3}}));
    EXPECT_EQ(find(u"one"_s, true), (QJsonObject{{u"kind"_s, u"ambiguous"_s}}));
    EXPECT_EQ(find(u"six"_s, true), (QJsonObject{{u"kind"_s, u"absent"_s}}));
}

TEST(PanelsOperations, Matching)
{
    ProbeProcess probe;
    EXPECT_EQ(probe.resultOf({{u"op"_s, u"normalizedForMatching"_s}, {u"text"_s, u"a\r\n\u2014"_s}}),
              (QJsonObject{{u"text"_s, u"a\n-"_s}, {u"positions"_s, QJsonArray{0, 1, 3, 4}}}));
    const auto match = [&probe](const QString &original) {
        return probe.resultOf(
            {{u"op"_s, u"robustMatchRange"_s}, {u"original"_s, original}, {u"document"_s, u"say \"yes\""_s}});
    };
    EXPECT_EQ(match(u"\u201CYes\u201D"_s), (QJsonObject{{u"location"_s, 4}, {u"length"_s, 5}}));
    EXPECT_EQ(match(u"no"_s), QJsonValue(QJsonValue::Null));
}

TEST(PanelsOperations, ContextCards)
{
    ProbeProcess probe;
    const QJsonArray attached{u"Notes"_s, u"Hamlet (play)"_s};
    const auto duplicate = [&](const QString &name) {
        return probe.resultOf({{u"op"_s, u"findLikelyDuplicate"_s}, {u"name"_s, name}, {u"attached"_s, attached}});
    };
    EXPECT_EQ(duplicate(u"hamlet"_s), 1);
    EXPECT_EQ(duplicate(u"Faust"_s), QJsonValue(QJsonValue::Null));
    EXPECT_EQ(probe.resultOf({{u"op"_s, u"visibleSuggestions"_s},
                              {u"suggested"_s, QJsonArray{u"Faust "_s, u"faust"_s, u"notes"_s}},
                              {u"attached"_s, attached}}),
              (QJsonArray{u"Faust "_s}));
    const auto link = [&probe](const QString &url) {
        return probe.resultOf({{u"op"_s, u"contextLink"_s}, {u"url"_s, url}});
    };
    EXPECT_EQ(link(u"tessaline://add-context?concept=a%20b"_s),
              (QJsonObject{{u"handled"_s, true}, {u"concept"_s, u"a b"_s}}));
    EXPECT_EQ(link(u"https://add-context"_s), (QJsonObject{{u"handled"_s, false}, {u"concept"_s, QJsonValue::Null}}));
}

} // namespace Tessaline
