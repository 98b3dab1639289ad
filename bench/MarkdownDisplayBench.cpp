#include "MarkdownUI/DisplayPainting.h"
#include "MarkdownUI/MarkdownView.h"

#include <QtGui/QPainter>
#include <QtWidgets/QApplication>

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <functional>

using namespace MarkdownUI;

namespace {

using namespace Qt::StringLiterals;

constexpr int kWidth = 360; // of a bubble in the right column
constexpr int kHeight = 900;

/// An answer as assistants write it, of about `size` bytes.
QString answer(qsizetype size)
{
    static const QString kPiece =
        u"## Before the spring tide\n\n"
        "The harbour office still prints its tables on *yellow* card. Two columns are enough for **most days**: the "
        "hour "
        "of high water, and how far it will stand above the mark that somebody cut into the third step in `1911`. "
        "Everything else is judgement, and judgement is what the [harbour log](https://harbour.example) is for.\n\n"
        "- Copy the table for **March** into the log\n- Ask at the lifeboat station about the new gauge\n"
        "  1. the old one\n  2. the new one\n\n"
        "> The sea keeps better books than we do.\n\n"
        "```python\ndef height(hour, k=0.18):\n    return mean + k * cos(2 * pi * hour / 12.42)\n```\n\n"
        "| Day | On the card | As it came |\n| --- | --- | ---: |\n| Monday | 4.12 m | 4.20 m |\n| Tuesday | 4.31 m | "
        "4.25 m |\n\n"_s;
    QString text;
    text.reserve(size + kPiece.size());
    while (text.size() < size)
        text.append(kPiece);
    return text;
}

QString table(int columns, int rows)
{
    QString text = u"|"_s + u" head |"_s.repeated(columns) + u"\n|"_s + u"---|"_s.repeated(columns) + u'\n';
    for (int row = 0; row < rows; ++row) {
        text.append(u'|');
        for (int column = 0; column < columns; ++column)
            text.append(u"%1,%2|"_s.arg(row).arg(column));
        text.append(u'\n');
    }
    return text;
}

/// A screen that a display is painted on.
class Screen
{
public:
    void paint(MarkdownDisplay &display, int top)
    {
        QPainter painter(&m_image);
        paintDisplay(painter, display, QPointF(0, -top), QRectF(0, 0, kWidth, kHeight), {});
    }

private:
    QImage m_image{kWidth, kHeight, QImage::Format_ARGB32_Premultiplied};
};

/// From the text to the first screen.
void firstLayout(benchmark::State &state, const std::function<QString(qsizetype)> &make)
{
    const QString text = make(state.range(0));
    Screen screen;
    for (auto _ : state) {
        MarkdownDisplay display;
        display.setWidth(kWidth);
        display.setMarkdown(text);
        screen.paint(display, 0);
    }
}

/// The same with every block laid out, as for a picture of the whole.
void layOutAll(benchmark::State &state)
{
    const QString text = answer(state.range(0));
    for (auto _ : state) {
        MarkdownDisplay display;
        display.setWidth(kWidth);
        display.setMarkdown(text);
        display.layOutAll();
    }
}

/// A few letters more at the end of an answer, and its last screen.
void grow(benchmark::State &state, QStringView begin, QStringView token)
{
    const QString start = answer(state.range(0)) + begin.toString();
    constexpr int kTokens = 200; // then it begins anew, not counted
    MarkdownDisplay display;
    display.setWidth(kWidth);
    Screen screen;
    QString text;
    int tokens = kTokens;
    for (auto _ : state) {
        if (++tokens > kTokens) {
            state.PauseTiming();
            text = start;
            tokens = 0;
            display.setMarkdown(text);
            display.prepareEnd(kHeight);
            state.ResumeTiming();
        }
        text.append(token);
        display.setMarkdown(text);
        display.prepareEnd(kHeight);
        screen.paint(display, display.height() - kHeight);
    }
}

void resize(benchmark::State &state)
{
    MarkdownDisplay display;
    display.setMarkdown(answer(state.range(0)));
    Screen screen;
    int width = kWidth;
    for (auto _ : state) {
        width = width == kWidth ? kWidth - 40 : kWidth;
        const MarkdownDisplay::Anchor anchor = display.anchorAt(display.height() / 2);
        display.setWidth(width);
        screen.paint(display, display.yOf(anchor));
    }
}

/// Three rows further down, again and again.
void scroll(benchmark::State &state)
{
    MarkdownDisplay display;
    display.setWidth(kWidth);
    display.setMarkdown(answer(state.range(0)));
    Screen screen;
    MarkdownDisplay::Anchor top;
    for (auto _ : state) {
        top = display.moved(top, 72);
        if (display.yOf(top) > display.height() - kHeight)
            top = {};
        screen.paint(display, display.yOf(top));
        display.keepOnly(display.yOf(top) - kHeight, display.yOf(top) + 2 * kHeight);
    }
}

/// The bytes that a display takes for each byte of its text once all of it was seen; the time is of no interest.
void memory(benchmark::State &state)
{
    const QString text = answer(state.range(0));
    double bytes = 0;
    for (auto _ : state) {
        const size_t before = mallinfo2().uordblks;
        MarkdownDisplay display;
        display.setWidth(kWidth);
        display.setMarkdown(text);
        for (int y = 0; y < display.height(); y += kHeight) {
            display.prepare(y, y + kHeight);
            display.keepOnly(y - kHeight, y + 2 * kHeight);
        }
        bytes = static_cast<double>(mallinfo2().uordblks - before);
    }
    state.counters["bytes_per_byte"] = bytes / static_cast<double>(text.toUtf8().size());
}

QString table200(qsizetype rows)
{
    return table(200, static_cast<int>(rows));
}

BENCHMARK_CAPTURE(firstLayout, answer, answer)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(layOutAll)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(grow, paragraph, u"The harbour", u" office")
    ->Arg(1000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(grow, code, u"```\nfirst line\n", u"x = 1\n")->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(grow, list, u"", u"- one more item\n")->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(grow, table, u"| a | b |\n|---|---|\n", u"| one | more |\n")
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(resize)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(scroll)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(memory)->Arg(100000)->Unit(benchmark::kMillisecond);

// Texts made to be slow: linear, and the window stays responsive
BENCHMARK_CAPTURE(firstLayout, table_200_columns, table200)->Arg(2000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(firstLayout, one_line, [](qsizetype size) { return u"word "_s.repeated(size / 5); })
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(firstLayout, asterisks, [](qsizetype size) { return u"*"_s.repeated(size); })
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(firstLayout, nested_emphasis, [](qsizetype size) { return u"*a **b "_s.repeated(size / 7); })
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(firstLayout, nested_quotes, [](qsizetype size) { return u">"_s.repeated(size) + u"x"_s; })
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(firstLayout, nested_lists, [](qsizetype size) { return u"- "_s.repeated(size) + u"x"_s; })
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(firstLayout, one_line_of_code, [](qsizetype size) { return u"    "_s + u"x"_s.repeated(size); })
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(firstLayout, items, [](qsizetype size) { return u"- a\n"_s.repeated(size / 4); })
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
