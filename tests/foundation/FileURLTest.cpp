#include "foundation/FileURL.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

struct PathCase {
    const char *name;
    QString path;
    QString expected;
};

void PrintTo(const PathCase &row, std::ostream *out)
{
    *out << row.name;
}

std::string nameOf(const ::testing::TestParamInfo<PathCase> &info)
{
    return info.param.name;
}

class LastPathComponent : public ::testing::TestWithParam<PathCase>
{};

TEST_P(LastPathComponent, IsTheNameOfTheFile)
{
    EXPECT_EQ(FileURL(GetParam().path).lastPathComponent(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(FileURL, LastPathComponent,
                         ::testing::Values(PathCase{"File", u"/a/b.md"_s, u"b.md"_s},
                                           PathCase{"FolderWithSlash", u"/a/b/"_s, u"b"_s},
                                           PathCase{"Root", u"/"_s, u"/"_s}, PathCase{"Empty", u""_s, u""_s},
                                           PathCase{"NameWithLineBreak", u"/a/one\ntwo.md"_s, u"one\ntwo.md"_s},
                                           PathCase{"RightToLeftMark", u"/a/\u200Fנ.md"_s, u"\u200Fנ.md"_s}),
                         nameOf);

class PathExtension : public ::testing::TestWithParam<PathCase>
{};

TEST_P(PathExtension, IsWhatFollowsTheLastDotOfTheName)
{
    EXPECT_EQ(FileURL(GetParam().path).pathExtension(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(FileURL, PathExtension,
                         ::testing::Values(PathCase{"One", u"/a/b.md"_s, u"md"_s},
                                           PathCase{"TwoDots", u"/a/b.tar.gz"_s, u"gz"_s},
                                           PathCase{"None", u"/a/b"_s, u""_s},
                                           PathCase{"DotAtTheEnd", u"/a/b."_s, u""_s},
                                           PathCase{"HiddenFile", u"/a/.profile"_s, u""_s},
                                           PathCase{"HiddenFileWithOne", u"/a/.profile.md"_s, u"md"_s},
                                           PathCase{"DotInTheFolderOnly", u"/a.b/c"_s, u""_s},
                                           PathCase{"KeepsItsCase", u"/a/b.MD"_s, u"MD"_s}),
                         nameOf);

class Standardized : public ::testing::TestWithParam<PathCase>
{};

TEST_P(Standardized, DropsWhatDoesNotCount)
{
    EXPECT_EQ(FileURL(GetParam().path).standardized().path(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    FileURL, Standardized,
    ::testing::Values(PathCase{"AsItIs", u"/a/b"_s, u"/a/b"_s}, PathCase{"Dot", u"/a/./b"_s, u"/a/b"_s},
                      PathCase{"DotDot", u"/a/c/../b"_s, u"/a/b"_s}, PathCase{"DoubledSlash", u"/a//b"_s, u"/a/b"_s},
                      PathCase{"AboveTheRoot", u"/../a"_s, u"/a"_s}, PathCase{"UpToTheRoot", u"/a/.."_s, u"/"_s},
                      PathCase{"FarAboveTheRoot", u"/a/../../.."_s, u"/"_s},
                      PathCase{"SlashAtTheEnd", u"/a/b/"_s, u"/a/b"_s},
                      PathCase{"DotsInNames", u"/a/..b/c."_s, u"/a/..b/c."_s},
                      PathCase{"TwoSlashesAtTheStart", u"//a"_s, u"/a"_s}),
    nameOf);

} // namespace

TEST(FileURL, DropsSlashesAtTheEndOnly)
{
    EXPECT_EQ(FileURL(u"/a/b//"_s).path(), u"/a/b"_s);
    EXPECT_EQ(FileURL(u"///"_s).path(), u"/"_s);
    EXPECT_EQ(FileURL(u"/a/./b"_s).path(), u"/a/./b"_s);
}

TEST(FileURL, TwoSpellingsOfOnePathAreTwoValues)
{
    EXPECT_NE(FileURL(u"/a/./b"_s), FileURL(u"/a/b"_s));
    EXPECT_EQ(FileURL(u"/a/./b"_s).standardized(), FileURL(u"/a/b"_s));
    EXPECT_EQ(qHash(FileURL(u"/a/b/"_s)), qHash(FileURL(u"/a/b"_s)));
}

TEST(FileURL, AppendsWithOneSlash)
{
    EXPECT_EQ(FileURL(u"/a"_s).appending(u"b").path(), u"/a/b"_s);
    EXPECT_EQ(FileURL(u"/"_s).appending(u"b").path(), u"/b"_s);
}

TEST(FileURL, GivesTheFolder)
{
    EXPECT_EQ(FileURL(u"/a/b.md"_s).deletingLastPathComponent().path(), u"/a"_s);
    EXPECT_EQ(FileURL(u"/a"_s).deletingLastPathComponent().path(), u"/"_s);
    EXPECT_EQ(FileURL(u"/"_s).deletingLastPathComponent().path(), u"/"_s);
}

TEST(FileURL, AnEmptyOneNamesNothing)
{
    EXPECT_TRUE(FileURL().isEmpty());
    EXPECT_FALSE(FileURL(u"/"_s).isEmpty());
}

} // namespace Tessaline
