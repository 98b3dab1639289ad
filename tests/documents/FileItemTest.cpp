#include "documents/FileItem.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

#include <QtCore/QSet>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const ProjectReference kProject{FileURL(u"/p"_s)};

FileItem file(const QString &path)
{
    const FileURL url(path);
    return FileItem(url, url.lastPathComponent(), false, kProject);
}

FileItem folder(const QString &path, const QList<FileItem> &children)
{
    const FileURL url(path);
    return FileItem(url, url.lastPathComponent(), true, kProject, children);
}

/// A folder in a folder in a folder; a call for each level would need more than any stack has.
FileItem deepTree(const FileItem &innermost)
{
    constexpr int kLevels = 200'000;
    FileItem item = innermost;
    for (int i = 0; i < kLevels; ++i) {
        FileItem outer = folder(u"/p"_s, {});
        outer.children->append(std::move(item));
        item = std::move(outer);
    }
    return item;
}

} // namespace

TEST(FileItem, EachOfItsFieldsCountsInEqualityAndHash)
{
    const FileItem item = folder(u"/p/a"_s, {file(u"/p/a/x.md"_s)});
    FileItem otherURL = item;
    otherURL.url = FileURL(u"/p/b"_s);
    FileItem otherName = item;
    otherName.name = u"b"_s;
    FileItem otherKind = item;
    otherKind.isDirectory = false;
    FileItem otherProject = item;
    otherProject.project = {FileURL(u"/q"_s)};
    FileItem otherChild = item;
    otherChild.children = {file(u"/p/a/y.md"_s)};
    FileItem moreChildren = item;
    moreChildren.children->append(file(u"/p/a/y.md"_s));

    for (const FileItem &other : {otherURL, otherName, otherKind, otherProject, otherChild, moreChildren}) {
        EXPECT_NE(item, other);
        EXPECT_NE(qHash(item, 1), qHash(other, 1));
    }
    const FileItem same = folder(u"/p/a"_s, {file(u"/p/a/x.md"_s)});
    EXPECT_EQ(item, same);
    EXPECT_EQ(qHash(item, 1), qHash(same, 1));
}

TEST(FileItem, NoChildrenIsNotAnEmptyList)
{
    FileItem none = folder(u"/p/a"_s, {});
    const FileItem empty = none;
    none.children.reset();

    EXPECT_NE(none, empty);
    EXPECT_NE(qHash(none, 1), qHash(empty, 1));
}

TEST(FileItem, TheOrderOfChildrenCounts)
{
    const FileItem one = folder(u"/p/a"_s, {file(u"/p/a/x"_s), file(u"/p/a/y"_s)});
    const FileItem other = folder(u"/p/a"_s, {file(u"/p/a/y"_s), file(u"/p/a/x"_s)});

    EXPECT_NE(one, other);
    EXPECT_NE(qHash(one, 1), qHash(other, 1));
}

TEST(FileItem, WhereAListEndsCounts)
{
    const FileItem leaf = folder(u"/p/e"_s, {});
    const FileItem nested = folder(u"/p"_s, {folder(u"/p/e"_s, {leaf})});
    const FileItem flat = folder(u"/p"_s, {folder(u"/p/e"_s, {}), leaf});

    EXPECT_NE(nested, flat);
    EXPECT_NE(qHash(nested, 1), qHash(flat, 1));
}

TEST(FileItem, IsAKeyOfASet)
{
    EXPECT_EQ((QSet<FileItem>{file(u"/p/a"_s), file(u"/p/b"_s), file(u"/p/a"_s)}.size()), 2);
}

TEST(FileItem, ADeepTreeIsComparedHashedAndDestroyed)
{
    const FileItem one = deepTree(file(u"/p/x"_s));
    const FileItem same = deepTree(file(u"/p/x"_s));
    const FileItem other = deepTree(file(u"/p/y"_s));

    EXPECT_TRUE(one == same); // not EXPECT_EQ, which would print the trees
    EXPECT_FALSE(one == other);
    EXPECT_EQ(qHash(one, 1), qHash(same, 1));
    EXPECT_NE(qHash(one, 1), qHash(other, 1));
}

TEST(FileItem, ADeepTreeIsReplaced)
{
    FileItem item = deepTree(file(u"/p/x"_s));
    item = file(u"/p/y"_s);
    EXPECT_EQ(item, file(u"/p/y"_s));

    QList<FileItem> items{deepTree(file(u"/p/x"_s)), file(u"/p/y"_s)};
    items.clear();
    EXPECT_TRUE(items.isEmpty());
}

TEST(FileItem, ACopyOutlivesTheTreeItWasTakenFrom)
{
    FileItem copy;
    FileItem inner;
    {
        const FileItem original = folder(u"/p"_s, {folder(u"/p/a"_s, {file(u"/p/a/x"_s)}), file(u"/p/y"_s)});
        copy = original;
        inner = original.children->at(0);
    }

    EXPECT_EQ(copy, folder(u"/p"_s, {folder(u"/p/a"_s, {file(u"/p/a/x"_s)}), file(u"/p/y"_s)}));
    copy = FileItem();
    EXPECT_EQ(inner, folder(u"/p/a"_s, {file(u"/p/a/x"_s)}));
}

} // namespace Tessaline
