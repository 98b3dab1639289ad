#include "Services/JsonReader.h"
#include "Services/JsonWriter.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

#include <limits>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QByteArray written(QStringView text)
{
    JsonWriter writer(JsonLayout::Compact);
    writer.text(text);
    return writer.take();
}

QByteArray written(double number)
{
    JsonWriter writer(JsonLayout::Compact);
    writer.number(number);
    return writer.take();
}

QByteArray writtenNested(JsonLayout layout)
{
    JsonWriter writer(layout);
    writer.beginObject();
    writer.key("a");
    writer.beginList();
    writer.number(1);
    writer.text(u"b");
    writer.endList();
    writer.key("c");
    writer.beginList();
    writer.endList();
    writer.key("d");
    writer.number(2);
    writer.endObject();
    return writer.take();
}

bool isWellFormed(QByteArrayView json)
{
    JsonReader reader(json);
    reader.skip();
    return reader.finish();
}

std::optional<QString> readText(QByteArrayView json)
{
    JsonReader reader(json);
    std::optional<QString> text = reader.text();
    return reader.finish() ? text : std::nullopt;
}

std::optional<qint64> readInteger(QByteArrayView json)
{
    JsonReader reader(json);
    const std::optional<qint64> integer = reader.integer();
    EXPECT_TRUE(reader.finish()) << json.toByteArray().constData();
    return integer;
}

QByteArray nested(qsizetype depth)
{
    return QByteArray(depth, '[') + QByteArray(depth, ']');
}

} // namespace

TEST(JsonWriter, EscapesQuotesBackslashesSlashesAndControlCharactersAndNothingElse)
{
    const QString controls = u"\b\f\n\r\t"_s + QChar(0) + QChar(1) + QChar(0x1F);

    EXPECT_EQ(written(u"\"a\\b/c\""), R"("\"a\\b\/c\"")");
    EXPECT_EQ(written(controls), R"("\b\f\n\r\t\u0000\u0001\u001f")");
    EXPECT_EQ(written(u"Ü \u007F\u2028\u2029\uFEFF 📝"), "\"Ü \u007F\u2028\u2029\uFEFF 📝\"");
    EXPECT_EQ(written(u""), R"("")");
}

TEST(JsonWriter, HalfASurrogatePairBecomesAReplacementCharacter)
{
    const QString text = u"a"_s + QChar(0xD83D) + u"b"_s + QChar(0xDE00);

    EXPECT_EQ(written(text), "\"a\uFFFDb\uFFFD\"");
    EXPECT_EQ(written(QString(QChar(0xD83D))), "\"\uFFFD\"");
}

TEST(JsonWriter, WritesLongTextsWholeWhereverTheirCharactersFall)
{
    for (const qsizetype before : {8189, 8190, 8191, 8192, 16383}) {
        const QString text = QString(before, u'x') + u"📝/é"_s + QString(9000, u'Ж');

        EXPECT_EQ(written(text), "\"" + QByteArray(before, 'x') + "📝\\/é" + QByteArray("Ж").repeated(9000) + "\"")
            << before;
    }
}

TEST(JsonWriter, WritesNumbersInTheirShortestForm)
{
    EXPECT_EQ(written(0.7), "0.7");
    EXPECT_EQ(written(0.30000000000000004), "0.30000000000000004");
    EXPECT_EQ(written(1), "1");
    EXPECT_EQ(written(0), "0");
    EXPECT_EQ(written(-0.5), "-0.5");
    EXPECT_EQ(written(100000), "100000");
    EXPECT_EQ(written(0.0001), "0.0001");
    EXPECT_EQ(written(0.00001), "1e-05");
    EXPECT_EQ(written(1e20), "1e+20");
    EXPECT_EQ(written(9007199254740991), "9007199254740991");
    EXPECT_EQ(written(std::numeric_limits<double>::max()), "1.7976931348623157e+308");
}

TEST(JsonWriter, WritesInOneLineOrIndentedByTwoBlanks)
{
    EXPECT_EQ(writtenNested(JsonLayout::Compact), R"({"a":[1,"b"],"c":[],"d":2})");
    EXPECT_EQ(writtenNested(JsonLayout::Indented),
              "{\n  \"a\" : [\n    1,\n    \"b\"\n  ],\n  \"c\" : [\n\n  ],\n  \"d\" : 2\n}");
}

TEST(JsonReader, KnowsWhatIsJsonByTheLetter)
{
    for (const char *json : {"{}", " [ ] ", "\t{\"a\"\r:\n1 , \"a\":[]}", "\"\"", "0", "-0.5e+10", "1E5", "true",
                             "null", "[1,[2,{\"b\":[{}]}],false]", "\xEF\xBB\xBF{}", "{\"\\u0061\\n\":1}", "1e999"})
        EXPECT_TRUE(isWellFormed(json)) << json;

    for (const char *json : {"",
                             " ",
                             "{",
                             "}",
                             "[1",
                             "[1,]",
                             "[,1]",
                             "[1 2]",
                             "{\"a\"}",
                             "{\"a\":}",
                             "{\"a\":1,}",
                             "{a:1}",
                             "{1:1}",
                             "{\"a\" 1}",
                             "[1}",
                             "{\"a\":1]",
                             "01",
                             "1.",
                             ".5",
                             "+1",
                             "-",
                             "1e",
                             "1e+",
                             "tru",
                             "nul",
                             "nullx",
                             "True",
                             "NaN",
                             "'a'",
                             "\"a",
                             "\"\\x\"",
                             "\"\\u12\"",
                             "\"\\u12G4\"",
                             "\"a\nb\"",
                             "\"\t\"",
                             "\"\\ud83d\"",
                             "\"\\ude00\"",
                             "\"\\ud83d\\n\"",
                             "\"\\ud83dx\"",
                             "\"\\ud83d\\ud83d\"",
                             "\"\\",
                             "{} {}",
                             "1 2",
                             "[] x",
                             "// a\n1",
                             "\xFF",
                             "\"\xC3\"",
                             "\"\xED\xA0\x80\"",
                             "\xEF\xBB\xBF",
                             "{\"a\":1,\"b\"",
                             "[[[1,2]",
                             "\v1"})
        EXPECT_FALSE(isWellFormed(json)) << json;
    EXPECT_FALSE(isWellFormed(QByteArrayView("[\0]", 3)));
    EXPECT_FALSE(isWellFormed(QByteArrayView("1\0", 2)));
}

TEST(JsonReader, ReadsListsUpToItsDeepestAndNoFurther)
{
    EXPECT_TRUE(isWellFormed(nested(JsonReader::kDeepest)));
    EXPECT_FALSE(isWellFormed(nested(JsonReader::kDeepest + 1)));
    EXPECT_FALSE(isWellFormed(QByteArray(10'000'000, '[')));
    EXPECT_TRUE(isWellFormed("[" + nested(JsonReader::kDeepest - 1) + "," + nested(JsonReader::kDeepest - 1) + "]"));
}

TEST(JsonReader, ReadsTextsWithTheirEscapes)
{
    EXPECT_EQ(readText(R"("\"\\\/\b\f\n\r\tx")"), u"\"\\/\b\f\n\r\tx"_s);
    EXPECT_EQ(readText(R"("\u00dC\ud83D\udcdd\u0000é📝")"), u"Ü📝"_s + QChar(0) + u"é📝"_s);
    EXPECT_EQ(readText("\"\uFEFFa\uFEFF\""), u"\uFEFFa\uFEFF"_s);
    EXPECT_EQ(readText(R"("")"), QString());
}

TEST(JsonReader, ReadsBackWhatIsWritten)
{
    QString text;
    for (char32_t sign = 0; sign < 0x11000; ++sign) {
        if (!QChar::isSurrogate(sign))
            text += QString::fromUcs4(&sign, 1);
    }

    EXPECT_EQ(readText(written(text)), text);
}

TEST(JsonReader, AnIntegerIsANumberWithoutAFractionThatFits)
{
    EXPECT_EQ(readInteger("8192"), 8192);
    EXPECT_EQ(readInteger("-0"), 0);
    EXPECT_EQ(readInteger("12.0"), 12);
    EXPECT_EQ(readInteger("1.5e1"), 15);
    EXPECT_EQ(readInteger("-9223372036854775808"), std::numeric_limits<qint64>::min());
    EXPECT_EQ(readInteger("9223372036854775807"), std::numeric_limits<qint64>::max());

    for (const char *json :
         {"9223372036854775808", "9.3e18", "-1e19", "1e999", "1.5", "\"12\"", "true", "null", "[1]", "{}"})
        EXPECT_EQ(readInteger(json), std::nullopt) << json;
}

TEST(JsonReader, AValueOfAnotherTypeIsPassedOver)
{
    JsonReader reader(R"([{"a":[1]},"b",2,null,[3],{"c":4}])");
    QStringList found;

    const bool isList = reader.list([&, index = 0]() mutable {
        switch (index++) {
        case 0:
            EXPECT_EQ(reader.text(), std::nullopt);
            break;
        case 1:
            EXPECT_EQ(reader.integer(), std::nullopt);
            break;
        case 2:
            EXPECT_FALSE(reader.null());
            EXPECT_EQ(reader.integer(), 2);
            break;
        case 3:
            EXPECT_TRUE(reader.null());
            break;
        case 4:
            EXPECT_FALSE(reader.object([](QByteArrayView) { FAIL(); }));
            break;
        default:
            EXPECT_FALSE(reader.list([] { FAIL(); }));
        }
    });

    EXPECT_TRUE(isList);
    EXPECT_TRUE(reader.finish());
}

TEST(JsonReader, AnObjectGivesItsKeysUnescapedAndInOrder)
{
    JsonReader reader(R"({"b":1,"\u0061\/":"x","":null})");
    QList<QByteArray> keys;

    EXPECT_TRUE(reader.object([&](QByteArrayView key) {
        keys.append(key.toByteArray());
        reader.skip();
    }));

    EXPECT_EQ(keys, (QList<QByteArray>{"b", "a/", ""}));
    EXPECT_TRUE(reader.finish());
}

TEST(JsonReader, NothingIsBelievedOfBytesThatBreakOff)
{
    JsonReader reader(R"({"a":"x","b":)");
    int members = 0;

    const bool isObject = reader.object([&](QByteArrayView) {
        ++members;
        reader.text();
    });

    EXPECT_FALSE(isObject);
    EXPECT_EQ(members, 2);
    EXPECT_EQ(reader.text(), std::nullopt);
    EXPECT_FALSE(reader.finish());
}

} // namespace Tessaline
