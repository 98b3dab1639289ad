#include "documents/ProjectReference.h"

#include "documents/OpenFileReference.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

#include <QtCore/QSet>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

ProjectReference project(const QString &root)
{
    return {FileURL(root)};
}

std::optional<QString> rootOfProjectFor(const QString &path, const QStringList &roots)
{
    QList<ProjectReference> projects;
    for (const QString &root : roots)
        projects.append(project(root));
    const std::optional<ProjectReference> found = projectForFile(FileURL(path), projects);
    return found ? std::optional(found->rootURL.path()) : std::nullopt;
}

} // namespace

struct PathInProject {
    const char *name;
    QString root;
    QString path;
    std::optional<QString> relativePath; // absent: the project does not contain it
};

void PrintTo(const PathInProject &row, std::ostream *out)
{
    *out << row.name;
}

class ProjectPaths : public testing::TestWithParam<PathInProject>
{};

TEST_P(ProjectPaths, ContainsAndNamesWhatLiesInside)
{
    const auto &[name, root, path, relativePath] = GetParam();

    EXPECT_EQ(project(root).contains(FileURL(path)), relativePath.has_value());
    EXPECT_EQ(project(root).relativePath(FileURL(path)), relativePath);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, ProjectPaths,
    testing::Values(PathInProject{"AFileInTheRoot", u"/a/b"_s, u"/a/b/x.md"_s, u"x.md"_s},
                    PathInProject{"AFileFurtherDown", u"/a/b"_s, u"/a/b/c/d/x.md"_s, u"c/d/x.md"_s},
                    PathInProject{"TheRootItselfIsNamedByItsFolder", u"/a/b"_s, u"/a/b"_s, u"b"_s},
                    PathInProject{"TheRootWithASlashAtItsEnd", u"/a/b"_s, u"/a/b/"_s, u"b"_s},
                    PathInProject{"AFolderWhoseNameOnlyBeginsAlike", u"/a/b"_s, u"/a/bc/x.md"_s, std::nullopt},
                    PathInProject{"TheFolderAbove", u"/a/b"_s, u"/a"_s, std::nullopt},
                    PathInProject{"AnotherCase", u"/a/b"_s, u"/a/B/x.md"_s, std::nullopt},
                    PathInProject{"DotsThatLeadInside", u"/a/b"_s, u"/a/c/../b/./x.md"_s, u"x.md"_s},
                    PathInProject{"DotsThatLeadOutside", u"/a/b"_s, u"/a/b/../c/x.md"_s, std::nullopt},
                    PathInProject{"DotsAboveTheDisksRoot", u"/a/b"_s, u"/../../a/b/x.md"_s, u"x.md"_s},
                    PathInProject{"DoubledSlashes", u"/a/b"_s, u"/a//b///x.md"_s, u"x.md"_s},
                    PathInProject{"ComposedAndDecomposedLettersAreTwoNames", u"/\u00E9"_s, u"/e\u0301/x.md"_s,
                                  std::nullopt},
                    PathInProject{"ANameThatBeginsWithACombiningMark", u"/a"_s, u"/a/\u0301x.md"_s, u"\u0301x.md"_s},
                    PathInProject{"ANameOutsideTheBasicPlane", u"/a 📝"_s, u"/a 📝/📝.md"_s, u"📝.md"_s},
                    PathInProject{"TheDisksRootHoldsItself", u"/"_s, u"/"_s, u"/"_s},
                    PathInProject{"TheDisksRootHoldsNothingElse", u"/"_s, u"/a"_s, std::nullopt}),
    [](const auto &row) { return row.param.name; });

TEST(ProjectReference, IsEqualByItsFolder)
{
    EXPECT_EQ(project(u"/a/b"_s), project(u"/a/b/"_s));
    EXPECT_NE(project(u"/a/b"_s), project(u"/a/B"_s));
    EXPECT_EQ(qHash(project(u"/a/b"_s), 7), qHash(FileURL(u"/a/b"_s), 7));
}

TEST(ProjectForFile, TheInnermostProjectWinsInWhicheverOrderTheyWereAdded)
{
    EXPECT_EQ(rootOfProjectFor(u"/a/b/c.md"_s, {u"/a"_s, u"/a/b"_s}), u"/a/b"_s);
    EXPECT_EQ(rootOfProjectFor(u"/a/b/c.md"_s, {u"/a/b"_s, u"/a"_s}), u"/a/b"_s);
    EXPECT_EQ(rootOfProjectFor(u"/a/b/c.md"_s, {u"/a"_s}), u"/a"_s);
}

TEST(ProjectForFile, AFileOutsideAllProjectsHasNone)
{
    EXPECT_EQ(rootOfProjectFor(u"/x/c.md"_s, {u"/a"_s, u"/a/b"_s}), std::nullopt);
    EXPECT_EQ(rootOfProjectFor(u"/x/c.md"_s, {}), std::nullopt);
}

TEST(ProjectForFile, ARepeatedProjectIsFoundLikeAnyOther)
{
    EXPECT_EQ(rootOfProjectFor(u"/a/b/c.md"_s, {u"/a/b"_s, u"/a/b"_s, u"/a"_s}), u"/a/b"_s);
}

TEST(ProjectForFile, TheStandardizedPathDecides)
{
    EXPECT_EQ(rootOfProjectFor(u"/a/b/../c/d.md"_s, {u"/a/b"_s, u"/a/c"_s}), u"/a/c"_s);
}

TEST(OpenFileReference, IsEqualByFileAndProject)
{
    const OpenFileReference inProject{FileURL(u"/a/x.md"_s), project(u"/a"_s)};
    const OpenFileReference inOtherProject{FileURL(u"/a/x.md"_s), project(u"/"_s)};
    const OpenFileReference inNone{FileURL(u"/a/x.md"_s), std::nullopt};

    EXPECT_EQ(inProject, (OpenFileReference{FileURL(u"/a/x.md"_s), project(u"/a"_s)}));
    EXPECT_EQ(inNone, (OpenFileReference{FileURL(u"/a/x.md"_s), std::nullopt}));
    EXPECT_NE(inProject, inOtherProject);
    EXPECT_NE(inProject, inNone);
    EXPECT_NE(inNone, (OpenFileReference{FileURL(u"/a/y.md"_s), std::nullopt}));
}

TEST(OpenFileReference, HashesAllThatItComparesBy)
{
    const OpenFileReference inProject{FileURL(u"/a/x.md"_s), project(u"/a"_s)};
    const OpenFileReference inOtherProject{FileURL(u"/a/x.md"_s), project(u"/"_s)};
    const OpenFileReference inNone{FileURL(u"/a/x.md"_s), std::nullopt};
    const OpenFileReference inEmptyProject{FileURL(u"/a/x.md"_s), ProjectReference()};

    EXPECT_EQ((QSet<OpenFileReference>{inProject, inOtherProject, inNone, inEmptyProject, inProject}.size()), 4);
    EXPECT_EQ(qHash(inProject, 3), qHash(OpenFileReference(inProject), 3));
    EXPECT_NE(qHash(inNone, 3), qHash(inEmptyProject, 3));
}

} // namespace Tessaline
