#include "tests/editing/OpenEditor.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>

/// What a document holds, it holds after an edit elsewhere: the bytes of the file are the user's.

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

struct BytesCase {
    const char *name;
    QByteArray bytes; // of the file
};

class Bytes : public testing::TestWithParam<BytesCase>
{
protected:
    ChunkedText m_document = ChunkedText::fromUtf8(GetParam().bytes).value();
};

QByteArray bytesOf(const ChunkedText &text)
{
    QByteArray bytes;
    for (const QString &chunk : text.chunks())
        bytes.append(chunk.toUtf8());
    return bytes;
}

} // namespace

TEST_P(Bytes, SurviveAKeyTypedBeforeThem)
{
    OpenEditor open(m_document);
    ASSERT_EQ(bytesOf(open.editor.shownText()), GetParam().bytes);

    open.press(Qt::Key_Home, Qt::ControlModifier);
    open.type(u"x"_s);

    ASSERT_EQ(open.editedTexts.size(), 1);
    EXPECT_EQ(bytesOf(open.editedTexts.constLast()), "x" + GetParam().bytes);
}

TEST_P(Bytes, SurviveAKeyTypedBehindThem)
{
    OpenEditor open(m_document);

    open.press(Qt::Key_End, Qt::ControlModifier);
    open.type(u"x"_s);

    ASSERT_EQ(open.editedTexts.size(), 1);
    EXPECT_EQ(bytesOf(open.editedTexts.constLast()), GetParam().bytes + "x");
}

TEST_P(Bytes, SurviveUndo)
{
    OpenEditor open(m_document);

    open.press(Qt::Key_A, Qt::ControlModifier);
    open.type(u"x"_s);
    ASSERT_EQ(open.text(), u"x"_s);
    open.press(Qt::Key_Z, Qt::ControlModifier);

    EXPECT_EQ(bytesOf(open.editedTexts.constLast()), GetParam().bytes);
}

TEST_P(Bytes, SurviveCopyAndPaste)
{
    OpenEditor open(m_document);

    open.press(Qt::Key_A, Qt::ControlModifier);
    open.press(Qt::Key_C, Qt::ControlModifier);
    open.press(Qt::Key_End, Qt::ControlModifier);
    open.type(u"|"_s);
    open.press(Qt::Key_V, Qt::ControlModifier);

    EXPECT_EQ(bytesOf(open.editor.shownText()), GetParam().bytes + "|" + GetParam().bytes);
}

TEST_P(Bytes, SurviveALineOfTheirOwnBeingDeleted)
{
    OpenEditor open(m_document.toString() + u"\u2029last"_s);

    open.press(Qt::Key_End, Qt::ControlModifier);
    open.press(Qt::Key_Backspace, Qt::NoModifier, 5);

    EXPECT_EQ(bytesOf(open.editedTexts.constLast()), GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(
    MarkdownEditor, Bytes,
    testing::Values(BytesCase{"LineFeeds", "one\ntwo\n\nthree\n"}, BytesCase{"NoFinalLineBreak", "one\ntwo"},
                    BytesCase{"CarriageReturnsAndLineFeeds", "one\r\ntwo\r\n\r\nthree\r\n"},
                    BytesCase{"LoneCarriageReturns", "one\rtwo\r\rthree"},
                    BytesCase{"MixedLineEnds", "one\r\ntwo\nthree\rfour\n\rfive"},
                    BytesCase{"ByteOrderMark", "\xEF\xBB\xBF# Title\n"},
                    BytesCase{"ByteOrderMarkInside", "a\xEF\xBB\xBF"
                                                     "b"},
                    BytesCase{"LineSeparator", "one\xE2\x80\xA8two"},
                    BytesCase{"ParagraphSeparator", "one\xE2\x80\xA9two\xE2\x80\xA9"},
                    BytesCase{"NoBreakSpaces", "a\xC2\xA0"
                                               "b\xE2\x80\xAF"
                                               "c"},
                    BytesCase{"Nul", QByteArray("a\0b\0", 4)},
                    BytesCase{"FrameMarks", "a\xEF\xB7\x90"
                                            "b\xEF\xB7\x91"
                                            "c"}, // U+FDD0 and U+FDD1
                    BytesCase{"NonCharacters", "a\xEF\xBF\xBE"
                                               "b\xEF\xBF\xBF"
                                               "c\xF0\x9F\xBF\xBE"},
                    BytesCase{"ObjectReplacement", "a\xEF\xBF\xBC"
                                                   "b"},
                    BytesCase{"ReplacementCharacter", "a\xEF\xBF\xBD"
                                                      "b"},
                    BytesCase{"JoinedEmoji",
                              "\xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7"},
                    BytesCase{"Decomposed", "e\xCC\x81"
                                            "a\xCC\x80\xCC\xA3"},
                    BytesCase{"Composed", "\xC3\xA9"},
                    BytesCase{"RightToLeftMarks", "\xE2\x80\x8F\xD7\xA9\xD7\x9C\xE2\x80\xAE"
                                                  "abc\xE2\x80\xAC"},
                    BytesCase{"SoftHyphenAndZeroWidth", "a\xC2\xAD"
                                                        "b\xE2\x80\x8B"
                                                        "c\xE2\x80\x8C"
                                                        "d"},
                    BytesCase{"Controls", "a\x01\x07\x08\x0B\x0C\x1B\x7F"
                                          "b\xC2\x85"
                                          "c"},
                    BytesCase{"TabsAndTrailingSpaces", "\ta  \n  \t\n"},
                    BytesCase{"QuotesAndDashes", "\"a\" -- 'b' ..."}, BytesCase{"OnlyALineEnd", "\r\n"}),
    [](const auto &test) { return test.param.name; });

TEST(MarkdownEditor, SubstitutesNeitherQuotesNorDashesNorSpelling)
{
    OpenEditor open;

    open.type(u"\"teh\" -- it's ... (c) 1/2 :-)"_s);

    EXPECT_EQ(open.text(), u"\"teh\" -- it's ... (c) 1/2 :-)"_s);
}

} // namespace Tessaline
