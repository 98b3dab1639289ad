#include "editing/MarkdownEditor.h"
#include "editing/TextSearch.h"
#include "editing/WYSIWYGEditor.h"
#include "foundation/EventCenter.h"
#include "foundation/FileAccess.h"
#include "foundation_ui/Theme.h"

#include <QtCore/QEventLoop>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTimer>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <memory>

using namespace Tessaline;

namespace {

using namespace Qt::StringLiterals;

/// Prose as people write it, with the usual marks, of about `size` bytes.
QString document(qsizetype size)
{
    static const QString kPiece =
        u"## Before the spring tide\n\n"
        "The harbour office still prints its tables on *yellow* card. Two columns are enough for **most days**: the "
        "hour of "
        "high water, and how far it will stand above the mark that somebody cut into the third step in `1911`. "
        "Everything "
        "else is judgement, and judgement is what the [harbour log](harbour.md) is for.\n\n"
        "- [x] Copy the table for March into the log\n- [ ] Ask at the lifeboat station about the new gauge\n\n"
        "> The sea keeps better books than we do.\n\n"
        "| Day | On the card | As it came |\n| --- | --- | --- |\n| Monday | 4.12 m | 4.20 m |\n\n"_s;
    QString text;
    text.reserve(size + kPiece.size());
    while (text.size() < size)
        text.append(kPiece);
    return text;
}

/// An editor in a pane of 800 by 900, with nobody on the other end.
class Pane
{
public:
    enum class Kind { Source, Formatted };

    explicit Pane(Kind kind)
    {
        if (kind == Kind::Source)
            m_editor = std::make_unique<MarkdownEditor>(m_theme, m_events);
        else
            m_editor = std::make_unique<WYSIWYGEditor>(m_theme, m_events, [](const QUrl &) {});
        m_editor->resize(800, 900);
        m_editor->setFontSize(17);
    }

    DocumentEditor &editor() { return *m_editor; }
    void open(const ChunkedText &text) { m_editor->setDocument(FileURL(u"/bench.md"_s), text); }
    void show()
    {
        m_editor->show();
        QApplication::processEvents();
    }
    /// To the finished picture.
    void type(QChar letter)
    {
        QKeyEvent key(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, letter);
        QApplication::sendEvent(m_editor->textView(), &key);
        QApplication::processEvents();
    }

private:
    Theme m_theme;
    EventCenter m_events;
    std::unique_ptr<DocumentEditor> m_editor;
};

/// From the file to the first full screen.
void openDocument(benchmark::State &state, Pane::Kind kind)
{
    QTemporaryDir folder;
    const FileURL url(folder.filePath(u"bench.md"_s));
    if (!writeTextAtomically(url, ChunkedText(document(state.range(0)))))
        state.SkipWithError("the file cannot be written");
    for (auto _ : state) {
        Pane pane(kind);
        pane.open(readText(url).value());
        pane.show();
    }
}

/// A key at a place given in percent of the text. The first key, which may bring the document into its normal form, is
/// not counted.
void typeKey(benchmark::State &state, Pane::Kind kind)
{
    Pane pane(kind);
    pane.open(ChunkedText(document(state.range(0))));
    pane.show();
    pane.editor().select({pane.editor().shownText().size() * state.range(1) / 100, 0});
    pane.type(u'x');
    int keys = 0;
    for (auto _ : state)
        pane.type(++keys % 6 == 0 ? u' ' : u'x');
}

enum class FirstKey { AtOnce, AfterAMoment };

/// The first key in a formatted document, which writes all of it in its normal form; that is made ahead if there is
/// time.
void typeFirstKey(benchmark::State &state, FirstKey when)
{
    constexpr std::chrono::milliseconds kMoment{1000};
    const ChunkedText text(document(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        Pane pane(Pane::Kind::Formatted);
        pane.open(text);
        pane.show();
        if (when == FirstKey::AfterAMoment) {
            QEventLoop loop;
            QTimer::singleShot(kMoment, &loop, &QEventLoop::quit);
            loop.exec();
        }
        state.ResumeTiming();
        pane.type(u'x');
    }
}

QString blockOfCode(qsizetype size)
{
    const QString line = u"    return tableOf(month).row(day); // as it stood on the card\n"_s;
    return u"Some text.\n\n```cpp\n"_s + line.repeated(size / line.size()) + u"```\n\nMore text.\n"_s;
}

/// A key in the source pane of a split view, shown in both.
void typeInSplitView(benchmark::State &state, QString (*makeText)(qsizetype))
{
    Pane source(Pane::Kind::Source);
    Pane formatted(Pane::Kind::Formatted);
    const ChunkedText text(makeText(state.range(0)));
    source.open(text);
    formatted.open(text);
    source.show();
    formatted.show();
    QObject::connect(&source.editor(), &DocumentEditor::edited, &formatted.editor(),
                     [&formatted](const ChunkedText &whole, const TextChange &change) {
                         formatted.editor().followEdit(whole, change);
                     });
    source.editor().select({text.size() * state.range(1) / 100, 0});
    int keys = 0;
    for (auto _ : state)
        source.type(++keys % 6 == 0 ? u' ' : u'x');
}

void sizesAndPlaces(benchmark::internal::Benchmark *benchmark)
{
    benchmark->ArgsProduct({{10'000, 100'000, 1'000'000, 10'000'000}, {0, 50, 100}})->Unit(benchmark::kMicrosecond);
}

/// All occurrences in a text, one in each line, give way to another text, to the finished picture.
void replaceAll(benchmark::State &state)
{
    const ChunkedText text(u"The tables of the tide and an hour of low water\n"_s.repeated(state.range(0)));
    const SearchResult found = occurrences({u"the tide"_s}, text, text.size());
    Pane pane(Pane::Kind::Source);
    pane.show();
    for (auto _ : state) {
        state.PauseTiming();
        pane.open(ChunkedText());
        pane.open(text);
        QApplication::processEvents();
        state.ResumeTiming();
        pane.editor().replaceRanges(found.ranges, u"this tide"_s);
        QApplication::processEvents();
    }
    state.counters["hits"] = static_cast<double>(found.ranges.size());
}

} // namespace

BENCHMARK_CAPTURE(openDocument, source, Pane::Kind::Source)
    ->Arg(10'000)
    ->Arg(1'000'000)
    ->Arg(10'000'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(openDocument, formatted, Pane::Kind::Formatted)
    ->Arg(10'000)
    ->Arg(1'000'000)
    ->Arg(10'000'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(typeKey, source, Pane::Kind::Source)->Apply(sizesAndPlaces);
BENCHMARK_CAPTURE(typeKey, formatted, Pane::Kind::Formatted)->Apply(sizesAndPlaces);
BENCHMARK_CAPTURE(typeInSplitView, prose, document)->Apply(sizesAndPlaces);
BENCHMARK_CAPTURE(typeInSplitView, code, blockOfCode)
    ->Args({1'000'000, 50})
    ->Args({10'000'000, 50})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(typeFirstKey, at_once, FirstKey::AtOnce)
    ->Arg(1'000'000)
    ->Arg(10'000'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(typeFirstKey, after_a_moment, FirstKey::AfterAMoment)
    ->Arg(1'000'000)
    ->Arg(10'000'000)
    ->Iterations(2)
    ->Unit(benchmark::kMillisecond);

BENCHMARK(replaceAll)->Arg(1'000)->Arg(1'200'000)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
