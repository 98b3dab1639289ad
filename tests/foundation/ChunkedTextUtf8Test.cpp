#include "foundation/ChunkedText.h"

#include "foundation/FileAccess.h"
#include "tests/support/Printers.h"
#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

struct BytesCase {
    const char *name;
    QByteArray bytes;
};

void PrintTo(const BytesCase &row, std::ostream *out)
{
    *out << row.name;
}

std::string nameOf(const ::testing::TestParamInfo<BytesCase> &info)
{
    return info.param.name;
}

class MalformedUtf8 : public ::testing::TestWithParam<BytesCase>
{};

TEST_P(MalformedUtf8, FailsTheRead)
{
    const QByteArray &bad = GetParam().bytes;
    // At the start, in the middle, at the end, and where a chunk would end.
    for (const QByteArray &bytes : {bad, "good " + bad + " text", "good " + bad, QByteArray(8190, 'x') + bad,
                                    QByteArray(100000, 'x') + bad + QByteArray(100000, 'x')}) {
        const Result<ChunkedText> text = ChunkedText::fromUtf8(bytes);
        ASSERT_FALSE(text) << bytes.size() << " bytes";
        EXPECT_EQ(text.failure(), (Failure{FailureKind::Malformed, u"The file is not text in UTF-8."_s}));
    }
}

INSTANTIATE_TEST_SUITE_P(
    ChunkedText, MalformedUtf8,
    ::testing::Values(BytesCase{"Latin1", "caf\xE9!"}, BytesCase{"LonelyContinuation", "\x80"},
                      BytesCase{"OverlongSlash", "\xC0\xAF"}, BytesCase{"OverlongNull", QByteArray("\xC0\x80", 2)},
                      BytesCase{"OverlongOfThree", "\xE0\x80\xAF"}, BytesCase{"OverlongOfFour", "\xF0\x80\x80\xAF"},
                      BytesCase{"HighSurrogate", "\xED\xA0\x80"}, BytesCase{"LowSurrogate", "\xED\xBF\xBF"},
                      BytesCase{"SurrogatePair", "\xED\xA0\xBD\xED\xB8\x80"},
                      BytesCase{"AboveUnicode", "\xF4\x90\x80\x80"}, BytesCase{"FiveBytes", "\xF8\x88\x80\x80\x80"},
                      BytesCase{"CutAfterOneOfTwo", "\xC3"}, BytesCase{"CutAfterTwoOfThree", "\xE5\xAD"},
                      BytesCase{"CutAfterThreeOfFour", "\xF0\x9F\x98"},
                      BytesCase{"Utf16", QByteArray("\xFF\xFEh\0i\0", 6)}),
    nameOf);

class SpecialText : public ::testing::TestWithParam<BytesCase>
{};

TEST_P(SpecialText, SurvivesReadingAndWritingByteForByte)
{
    const QByteArray &special = GetParam().bytes;
    for (const QByteArray &bytes : {special, "before" + special + "after", special + special,
                                    QByteArray(8191, 'x') + special + QByteArray(20000, 'y') + special,
                                    special + QByteArray(16384, 'x') + special}) {
        const TemporaryFiles files{{u"in.md"_s, bytes}};

        const Result<ChunkedText> text = readText(files.url(u"in.md"_s));
        ASSERT_TRUE(text) << testing::PrintToString(text);
        ASSERT_TRUE(writeTextAtomically(files.url(u"out.md"_s), text.value()));

        EXPECT_EQ(files.read(u"out.md"_s), bytes);
    }
}

TEST_P(SpecialText, SurvivesAnEditElsewhere)
{
    const QByteArray bytes = "first line\n" + GetParam().bytes.repeated(3000) + "\nlast";
    const TemporaryFiles files{{u"a.md"_s, bytes}};

    ChunkedText text = readText(files.url(u"a.md"_s)).value();
    text.replace(5, 1, u"_");
    ASSERT_TRUE(writeTextAtomically(files.url(u"a.md"_s), text));

    QByteArray expected = bytes;
    expected[5] = '_';
    EXPECT_EQ(files.read(u"a.md"_s), expected);
}

INSTANTIATE_TEST_SUITE_P(
    ChunkedText, SpecialText,
    ::testing::Values(BytesCase{"Lf", "\n"}, BytesCase{"CrLf", "\r\n"}, BytesCase{"LoneCr", "\r"},
                      BytesCase{"CrCrLf", "\r\r\n"}, BytesCase{"LfCr", "\n\r"}, BytesCase{"Nul", QByteArray("\0", 1)},
                      BytesCase{"ByteOrderMark", "\xEF\xBB\xBF"}, BytesCase{"LineSeparator", "\xE2\x80\xA8"},
                      BytesCase{"ParagraphSeparator", "\xE2\x80\xA9"}, BytesCase{"NextLine", "\xC2\x85"},
                      BytesCase{"NoBreakSpace", "\xC2\xA0"}, BytesCase{"NarrowNoBreakSpace", "\xE2\x80\xAF"},
                      BytesCase{"FormFeedAndVerticalTab", "\f\v"}, BytesCase{"Tab", "\t"},
                      BytesCase{"NonCharacterFDD0", "\xEF\xB7\x90"}, BytesCase{"NonCharacterFDD1", "\xEF\xB7\x91"},
                      BytesCase{"NonCharacterFFFE", "\xEF\xBF\xBE"}, BytesCase{"NonCharacterFFFF", "\xEF\xBF\xBF"},
                      BytesCase{"NonCharacter1FFFE", "\xF0\x9F\xBF\xBE"},
                      BytesCase{"ObjectReplacement", "\xEF\xBF\xBC"}, BytesCase{"ReplacementCharacter", "\xEF\xBF\xBD"},
                      BytesCase{"SoftHyphen", "\xC2\xAD"}, BytesCase{"ZeroWidthJoinerEmoji", "👩‍👩‍👧"},
                      BytesCase{"CombiningMarks", "e\xCC\x81\xCC\x80"},
                      BytesCase{"RightToLeft", "\xE2\x80\x8Fשלום\xE2\x80\xAE"}, BytesCase{"PrivateUse", "\xEE\x80\x80"},
                      BytesCase{"HighestCharacter", "\xF4\x8F\xBF\xBF"}, BytesCase{"Delete", "\x7F\x01"}),
    nameOf);

} // namespace

TEST(ChunkedText, KeepsTheByteOrderMarkAsACharacter)
{
    const ChunkedText text = ChunkedText::fromUtf8("\xEF\xBB\xBFtext").value();

    EXPECT_EQ(text.toString(), u"\uFEFFtext"_s);
}

TEST(ChunkedText, ReadsNoBytesAsTheEmptyText)
{
    EXPECT_EQ(ChunkedText::fromUtf8(QByteArray()).value(), ChunkedText());
}

TEST(ChunkedText, AMissingLastLineBreakStaysMissing)
{
    const TemporaryFiles files{{u"a.md"_s, "one\ntwo"}};

    ASSERT_TRUE(writeTextAtomically(files.url(u"a.md"_s), readText(files.url(u"a.md"_s)).value()));

    EXPECT_EQ(files.read(u"a.md"_s), "one\ntwo");
}

TEST(ChunkedText, EveryCharacterSurvives)
{
    QString every;
    for (char32_t c = 0; c <= 0x10FFFF; ++c)
        if (!QChar::isSurrogate(c))
            every.append(QChar::fromUcs4(c));
    const QByteArray bytes = every.toUtf8();
    const TemporaryFiles files{{u"in.txt"_s, bytes}};

    const Result<ChunkedText> text = readText(files.url(u"in.txt"_s));
    ASSERT_TRUE(text);
    ASSERT_TRUE(writeTextAtomically(files.url(u"out.txt"_s), text.value()));

    EXPECT_TRUE(text.value().toString() == every);
    EXPECT_TRUE(files.read(u"out.txt"_s) == bytes);
}

} // namespace Tessaline
