#include "documents/ProjectTreeModel.h"

#include "tests/support/TemporaryFiles.h"

#include <QtCore/QElapsedTimer>
#include <QtTest/QAbstractItemModelTester>

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const ProjectReference kProject{FileURL(u"/p"_s)};

FileItem file(const QString &path)
{
    const FileURL url(path);
    return {url, url.lastPathComponent(), false, kProject, std::nullopt};
}

FileItem folder(const QString &path, const QList<FileItem> &children)
{
    const FileURL url(path);
    return {url, url.lastPathComponent(), true, kProject, children};
}

QList<FileItem> sample()
{
    return {folder(u"/p"_s, {folder(u"/p/a"_s, {folder(u"/p/a/empty"_s, {}), file(u"/p/a/one.md"_s)}),
                             folder(u"/p/ab"_s, {file(u"/p/ab/two.txt"_s)}), file(u"/p/three.md"_s)}),
            folder(u"/q"_s, {})};
}

/// 100 folders of 10 folders of 100 files.
QList<FileItem> largeProject()
{
    QList<FileItem> outer;
    for (int i = 0; i < 100; ++i) {
        QList<FileItem> inner;
        for (int j = 0; j < 10; ++j) {
            QList<FileItem> files;
            for (int k = 0; k < 100; ++k)
                files.append(file(u"/p/%1/%2/%3.md"_s.arg(i).arg(j).arg(k)));
            inner.append(folder(u"/p/%1/%2"_s.arg(i).arg(j), files));
        }
        outer.append(folder(u"/p/%1"_s.arg(i), inner));
    }
    return {folder(u"/p"_s, outer)};
}

QStringList pathsOf(const ProjectTreeModel &model, const QModelIndexList &indexes)
{
    QStringList paths;
    for (const QModelIndex &index : indexes)
        paths.append(model.item(index).url.path());
    return paths;
}

} // namespace

TEST(ProjectTreeModel, IsAProperModelAlsoWhileItIsReplaced)
{
    ProjectTreeModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);

    model.setItems(sample());
    model.setItems({});
    model.setItems(sample());

    EXPECT_EQ(model.rowCount(), 2);
}

TEST(ProjectTreeModel, ShowsTheItemsInTheirOrder)
{
    ProjectTreeModel model;
    model.setItems(sample());
    const QModelIndex project = model.index(0, 0);
    const QModelIndex folderA = model.index(0, 0, project);

    EXPECT_EQ(model.index(1, 0).data().toString(), u"q"_s);
    EXPECT_EQ(model.rowCount(project), 3);
    EXPECT_EQ(model.index(2, 0, project).data().toString(), u"three.md"_s);
    EXPECT_EQ(model.index(1, 0, folderA).data(ProjectTreeModel::UrlRole).value<FileURL>(), FileURL(u"/p/a/one.md"_s));
    EXPECT_EQ(model.index(1, 0, folderA).parent(), folderA);
    EXPECT_EQ(folderA.parent(), project);
    EXPECT_FALSE(project.parent().isValid());
}

TEST(ProjectTreeModel, AFolderWithNothingInItStaysWithoutRows)
{
    ProjectTreeModel model;
    model.setItems(sample());
    const QModelIndex empty = model.indexesOf(FileURL(u"/p/a/empty"_s)).value(0);

    ASSERT_TRUE(empty.isValid());
    EXPECT_FALSE(model.hasChildren(empty));
    EXPECT_TRUE(empty.data(ProjectTreeModel::IsFolderRole).toBool());
    EXPECT_FALSE(empty.flags().testFlag(Qt::ItemNeverHasChildren));
}

TEST(ProjectTreeModel, RowsOutsideAreInvalid)
{
    ProjectTreeModel model;
    model.setItems(sample());

    EXPECT_FALSE(model.index(2, 0).isValid());
    EXPECT_FALSE(model.index(-1, 0).isValid());
    EXPECT_FALSE(model.index(0, 1).isValid());
    EXPECT_EQ(model.data(QModelIndex()), QVariant());
}

TEST(ProjectTreeModel, FindsAFileByItsURL)
{
    ProjectTreeModel model;
    model.setItems(sample());

    EXPECT_EQ(pathsOf(model, model.indexesOf(FileURL(u"/p/ab/two.txt"_s))), QStringList{u"/p/ab/two.txt"_s});
    EXPECT_EQ(pathsOf(model, model.indexesOf(FileURL(u"/p"_s))), QStringList{u"/p"_s});
    EXPECT_TRUE(model.indexesOf(FileURL(u"/p/missing.md"_s)).isEmpty());
    EXPECT_TRUE(model.indexesOf(FileURL(u"/pp/three.md"_s)).isEmpty());
    EXPECT_TRUE(model.indexesOf(FileURL()).isEmpty());
}

TEST(ProjectTreeModel, FindsAFileInEveryProjectThatHoldsIt)
{
    ProjectTreeModel model;
    model.setItems(
        {folder(u"/p"_s, {folder(u"/p/a"_s, {file(u"/p/a/one.md"_s)})}), folder(u"/p/a"_s, {file(u"/p/a/one.md"_s)})});

    const QModelIndexList found = model.indexesOf(FileURL(u"/p/a/one.md"_s));

    ASSERT_EQ(found.size(), 2);
    EXPECT_NE(found.at(0), found.at(1));
    EXPECT_FALSE(found.at(1).parent().parent().isValid());
}

TEST(ProjectTreeModel, KnowsTheSymbolOfEachRow)
{
    const TemporaryFiles files{{u"plain"_s, "text"}, {u"binary"_s, QByteArray("\0\1", 2)}};
    ProjectTreeModel model;
    model.setItems({folder(u"/p"_s, {file(u"/p/a.md"_s), file(u"/p/a.txt"_s), file(files.url(u"plain"_s).path()),
                                     file(files.url(u"binary"_s).path())})});
    const QModelIndex project = model.index(0, 0);
    const auto symbol = [&](int row) {
        return model.index(row, 0, project).data(ProjectTreeModel::SymbolRole).toString();
    };

    EXPECT_EQ(project.data(ProjectTreeModel::SymbolRole).toString(), u"folder"_s);
    EXPECT_EQ(symbol(0), u"text.document"_s);
    EXPECT_EQ(symbol(1), u"doc.plaintext"_s);
    EXPECT_EQ(symbol(2), u"doc.plaintext"_s);
    EXPECT_EQ(symbol(3), u"doc"_s);
}

TEST(ProjectTreeModel, AFileWithAnUnknownExtensionIsReadOnceUntilTheNextScan)
{
    const TemporaryFiles files{{u"notes"_s, "text"}};
    const QList<FileItem> items{folder(u"/p"_s, {file(files.url(u"notes"_s).path())})};
    ProjectTreeModel model;
    model.setItems(items);
    const auto symbol = [&] {
        return model.index(0, 0, model.index(0, 0)).data(ProjectTreeModel::SymbolRole).toString();
    };
    ASSERT_EQ(symbol(), u"doc.plaintext"_s);

    files.write(u"notes"_s, QByteArray(10, '\0'));
    EXPECT_EQ(symbol(), u"doc.plaintext"_s);
    model.setItems(items);
    EXPECT_EQ(symbol(), u"doc"_s);
}

TEST(ProjectTreeModel, ALargeProjectIsTakenAndSearchedQuickly)
{
    const QList<FileItem> items = largeProject();
    ProjectTreeModel model;
    QElapsedTimer timer;

    timer.start();
    model.setItems(items);
    const QModelIndexList last = model.indexesOf(FileURL(u"/p/99/9/99.md"_s));
    RecordProperty("takeAndSearchMicroseconds", static_cast<int>(timer.nsecsElapsed() / 1000));

    timer.start();
    qint64 rows = 0;
    std::function<void(const QModelIndex &)> walk = [&](const QModelIndex &parent) {
        for (int row = 0; row < model.rowCount(parent); ++row, ++rows) {
            const QModelIndex index = model.index(row, 0, parent);
            EXPECT_EQ(index.parent(), parent);
            walk(index);
        }
    };
    walk(QModelIndex());
    RecordProperty("walkMicroseconds", static_cast<int>(timer.nsecsElapsed() / 1000));

    ASSERT_EQ(last.size(), 1);
    EXPECT_EQ(last.first().row(), 99);
    EXPECT_EQ(rows, 1 + 100 + 1000 + 100'000);
}

} // namespace Tessaline
