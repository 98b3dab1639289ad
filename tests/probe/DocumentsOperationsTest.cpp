#include "tests/probe/ProbeProcess.h"
#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QJsonObject file(const TemporaryFiles &files, const QString &name)
{
    const FileURL url = files.url(name);
    return {{u"path"_s, url.path()},
            {u"name"_s, url.lastPathComponent()},
            {u"isDirectory"_s, false},
            {u"project"_s, files.folder().path()},
            {u"children"_s, QJsonValue::Null}};
}

QJsonObject folder(const TemporaryFiles &files, const QString &name, const QJsonArray &children)
{
    QJsonObject item = file(files, name);
    item[u"isDirectory"_s] = true;
    item[u"children"_s] = children;
    return item;
}

} // namespace

TEST(DocumentsOperations, DocumentType)
{
    const TemporaryFiles files{{u"text"_s, "text"}, {u"data"_s, QByteArray("\0", 1)}};
    ProbeProcess probe;
    const auto typeOf = [&probe](const QString &path) {
        return probe.resultOf({{u"op"_s, u"documentType"_s}, {u"path"_s, path}});
    };

    EXPECT_EQ(typeOf(u"/a/b.Markdown"_s), QJsonValue(u"markdown"_s));
    EXPECT_EQ(typeOf(u"/a/b.txt"_s), QJsonValue(u"plainText"_s));
    EXPECT_EQ(typeOf(files.url(u"text"_s).path()), QJsonValue(u"plainText"_s));
    EXPECT_EQ(typeOf(files.url(u"data"_s).path()), QJsonValue(QJsonValue::Null));
}

TEST(DocumentsOperations, Contains)
{
    ProbeProcess probe;
    const auto contains = [&probe](const QString &path) {
        return probe.resultOf({{u"op"_s, u"contains"_s}, {u"root"_s, u"/a/b"_s}, {u"path"_s, path}});
    };

    EXPECT_EQ(contains(u"/a/b/x.md"_s), QJsonValue(true));
    EXPECT_EQ(contains(u"/a/bc/x.md"_s), QJsonValue(false));
}

TEST(DocumentsOperations, RelativePath)
{
    ProbeProcess probe;
    const auto relativePath = [&probe](const QString &path) {
        return probe.resultOf({{u"op"_s, u"relativePath"_s}, {u"root"_s, u"/a/b"_s}, {u"path"_s, path}});
    };

    EXPECT_EQ(relativePath(u"/a/b/c/../x.md"_s), QJsonValue(u"x.md"_s));
    EXPECT_EQ(relativePath(u"/a/b"_s), QJsonValue(u"b"_s));
    EXPECT_EQ(relativePath(u"/a/bc/x.md"_s), QJsonValue(QJsonValue::Null));
}

TEST(DocumentsOperations, ProjectForFile)
{
    ProbeProcess probe;
    const auto projectOf = [&probe](const QString &path) {
        return probe.resultOf(
            {{u"op"_s, u"projectForFile"_s}, {u"path"_s, path}, {u"projects"_s, QJsonArray{u"/a"_s, u"/a/b"_s}}});
    };

    EXPECT_EQ(projectOf(u"/a/b/c.md"_s), QJsonValue(u"/a/b"_s));
    EXPECT_EQ(projectOf(u"/x.md"_s), QJsonValue(QJsonValue::Null));
}

TEST(DocumentsOperations, LocalizedStandardCompare)
{
    ProbeProcess probe;
    const auto compare = [&probe](const QString &a, const QString &b) {
        return probe.resultOf({{u"op"_s, u"localizedStandardCompare"_s}, {u"a"_s, a}, {u"b"_s, b}});
    };

    EXPECT_EQ(compare(u"file2.md"_s, u"File10.md"_s), QJsonValue(-1));
    EXPECT_EQ(compare(u"a"_s, u"a"_s), QJsonValue(0));
    EXPECT_EQ(compare(u"b"_s, u"a"_s), QJsonValue(1));
}

TEST(DocumentsOperations, BuildTree)
{
    const TemporaryFiles files{{u"sub/File10.md"_s, ""}, {u"sub/file2.md"_s, ""}, {u"\"quo\nted\" 📝.md"_s, ""}};
    files.makeFolder(u"empty"_s);
    ProbeProcess probe;

    const QJsonValue tree =
        probe.resultOf({{u"op"_s, u"buildTree"_s}, {u"projects"_s, QJsonArray{files.folder().path()}}});

    const QJsonArray children = {
        folder(files, u"empty"_s, {}),
        folder(files, u"sub"_s, {file(files, u"sub/file2.md"_s), file(files, u"sub/File10.md"_s)}),
        file(files, u"\"quo\nted\" 📝.md"_s),
    };
    QJsonObject root = folder(files, u"."_s, children);
    root[u"path"_s] = files.folder().path();
    root[u"name"_s] = files.folder().lastPathComponent();
    EXPECT_EQ(tree, QJsonValue(QJsonArray{root})) << QJsonDocument(tree.toArray()).toJson().constData();
}

TEST(DocumentsOperations, BuildTreeOfNoProjects)
{
    ProbeProcess probe;

    EXPECT_EQ(probe.resultOf({{u"op"_s, u"buildTree"_s}, {u"projects"_s, QJsonArray()}}), QJsonValue(QJsonArray()));
}

TEST(DocumentsOperations, BuildTreeOfFoldersTwoThousandDeep)
{
    const TemporaryFiles files;
    QString path;
    for (int i = 0; i < 2000; ++i)
        path += u"d/"_s;
    files.write(path + u"x.md"_s, "");
    ProbeProcess probe;

    const QByteArray answer =
        probe.answerTo(R"({"op":"buildTree","projects":[")" + files.folder().path().toUtf8() + "\"]}");

    EXPECT_TRUE(answer.startsWith(R"({"ok":true,"result":[)"));
    EXPECT_EQ(answer.count(R"("isDirectory":true)"), 2001);
    EXPECT_EQ(answer.count(R"("name":"x.md")"), 1);
}

} // namespace Tessaline
