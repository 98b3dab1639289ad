#include "Services/WorkspaceContextBuilder.h"

#include <benchmark/benchmark.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <cstdlib>

namespace Tessaline {

namespace {

/// A prompt of a few sentences, with 26 tokens.
QString prompt()
{
    return QStringLiteral("Rewrite the second paragraph of the harbour chapter so that the tide tables, the pilot's "
                          "letters and the storm of "
                          "November agree with the gauge readings, and mention the lighthouse keeper's diary only "
                          "where the weather column "
                          "supports it; keep the sentence about the lifeboat station and its boathouse untouched.");
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("The benchmark cannot write %s", qPrintable(path));
}

/// Prose of `size` bytes with a few letters beyond ASCII, some of whose words the prompt has too.
QByteArray prose(int size, unsigned seed)
{
    static const char *const kWords[] = {"the",  "water",    "rose",  "over",   "a",       "Tide",
                                         "at",   "night",    "gauge", "and",    "Harbour", "café",
                                         "of",   "pilot",    "men",   "stood",  "between", "lighters",
                                         "coal", "November", "mölln", "letter", "ice",     "rope"};
    QByteArray text;
    text.reserve(size + 16);
    for (unsigned number = seed; text.size() < size;) {
        number = number * 1664525 + 1013904223;
        text += kWords[(number >> 16) % std::size(kWords)];
        text += (number >> 8) % 12 == 0 ? ".\n" : " ";
    }
    return text.first(size);
}

/// 300 files of prose, 4 MB in sum, in ten folders.
class ProjectOfProse
{
public:
    ProjectOfProse()
    {
        for (int i = 0; i < 300; ++i) {
            const QString folder = QStringLiteral("%1/Chapter %2").arg(m_folder.path()).arg(i % 10);
            QDir().mkpath(folder);
            write(QStringLiteral("%1/Scene %2.md").arg(folder).arg(i), prose(13'333, static_cast<unsigned>(i)));
        }
    }
    FileURL root() const { return FileURL(m_folder.path()); }

private:
    QTemporaryDir m_folder;
};

/// 5,000 entries: in each of 250 folders eighteen pictures, of which only the kind is looked at, and one short note.
class ProjectOfPictures
{
public:
    ProjectOfPictures()
    {
        for (int i = 0; i < 250; ++i) {
            const QString folder = QStringLiteral("%1/Album %2").arg(m_folder.path()).arg(i, 3, 10, QChar(u'0'));
            QDir().mkpath(folder);
            for (int picture = 0; picture < 18; ++picture)
                write(QStringLiteral("%1/%2.png").arg(folder).arg(picture), QByteArray("\x89PNG\0\0\0\0", 8));
            write(folder + QStringLiteral("/note.md"), prose(400, static_cast<unsigned>(i)));
        }
    }
    FileURL root() const { return FileURL(m_folder.path()); }

private:
    QTemporaryDir m_folder;
};

template <class Project>
void rank(benchmark::State &state)
{
    static const Project project;
    for (auto _ : state) {
        QList<ContextItem> items = WorkspaceContextBuilder::rankFiles(prompt(), project.root(), std::nullopt, 6);
        if (items.size() != 6)
            state.SkipWithError("not six items");
        benchmark::DoNotOptimize(items);
    }
}

BENCHMARK(rank<ProjectOfProse>)->Name("rankFiles/300_files_of_4_MB")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(rank<ProjectOfPictures>)->Name("rankFiles/5000_entries")->Unit(benchmark::kMillisecond)->UseRealTime();

void excerpt(benchmark::State &state, const char *unit)
{
    const QString content = QString::fromUtf8(QByteArray(unit).repeated(400'000 / int(qstrlen(unit))));
    for (auto _ : state)
        benchmark::DoNotOptimize(WorkspaceContextBuilder::bestExcerpt(content, prompt()));
}

// The largest file that is read, of what costs most: characters of several code points, and what begins as a token
// does.
BENCHMARK_CAPTURE(excerpt, devanagari, "क्षत्रिय की कथा ")
    ->Name("bestExcerpt/devanagari_400_kB")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(excerpt, faces, "\U0001F468\u200D\U0001F469\u200D\U0001F467")
    ->Name("bestExcerpt/faces_400_kB")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(excerpt, prefixes, "harbouharboharb")
    ->Name("bestExcerpt/prefixes_400_kB")
    ->Unit(benchmark::kMillisecond);

} // namespace

} // namespace Tessaline
