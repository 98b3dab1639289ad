#include "documents/FileTree.h"

#include <benchmark/benchmark.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <cstdlib>

namespace Tessaline {

namespace {

constexpr int kFolders = 5000;
constexpr int kFilesInEach = 20;

/// A project of 100,000 files in 5,000 folders, made once: eight files of ten are classified by their names, one is
/// text of an unknown extension and one a picture, both of which have to be looked into.
class LargeProject
{
public:
    LargeProject()
    {
        for (int i = 0; i < kFolders; ++i)
            makeFolder(i);
    }

    ProjectReference project() const { return {FileURL(m_folder.path())}; }

private:
    void makeFolder(int number) const
    {
        // Three levels: 10 parts of 20 chapters of 24 sections and one for their notes.
        const int part = number / 500;
        const int chapter = number / 25 % 20;
        const int section = number % 25;
        QString path = QStringLiteral("%1/Part %2/Chapter %3").arg(m_folder.path()).arg(part).arg(chapter);
        if (section > 0 || number % 500 == 0)
            path += QStringLiteral("/Section %1").arg(section);
        else
            path += QStringLiteral("/notes");
        QDir().mkpath(path);
        for (int i = 0; i < kFilesInEach; ++i)
            makeFile(path, i);
    }

    static void makeFile(const QString &folder, int number)
    {
        switch (number % 10) {
        case 0:
            return write(QStringLiteral("%1/draft %2.wip").arg(folder).arg(number),
                         QByteArray("A line of text.\n").repeated(128));
        case 1:
            return write(QStringLiteral("%1/figure-%2.png").arg(folder).arg(number), QByteArray(4096, '\0'));
        case 2:
        case 3:
        case 4:
            return write(QStringLiteral("%1/note %2.txt").arg(folder).arg(number), "A note.\n");
        default:
            return write(QStringLiteral("%1/Document_%2.md").arg(folder).arg(number), "# A title\n");
        }
    }

    static void write(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("The benchmark cannot write %s", qPrintable(path));
    }

    QTemporaryDir m_folder;
};

void scanProject(benchmark::State &state)
{
    static const LargeProject large;
    const QList<ProjectReference> projects{large.project()};
    for (auto _ : state) {
        QList<FileItem> tree = buildTree(projects);
        benchmark::DoNotOptimize(tree);
        state.PauseTiming(); // the tree is taken apart later, when the next one has replaced it
        tree.clear();
        state.ResumeTiming();
    }
}

BENCHMARK(scanProject)->Name("ScanProject/100000_files_in_5000_folders")->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

} // namespace Tessaline
