#include "Services/SessionFiles.h"
#include "Services/SessionKey.h"

#include <benchmark/benchmark.h>

#include <QtCore/QTemporaryDir>

/// What the main thread does with a document's session: twice for each question, and at each change of the document.
namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kOneThousand = 1'000;
constexpr int kFiftyMegabytes = 50'000'000;

/// A conversation of `count` messages with `size` characters each, with the line ends and quotes of ordinary answers.
SessionContents conversation(qsizetype count, qsizetype size)
{
    const QString paragraph =
        u"A paragraph of an *ordinary* answer, with an Ümlaut, a \"quotation\", a path/to/something and a list:\n- one\n"_s;
    const QString content = paragraph.repeated(size / paragraph.size() + 1).first(size);
    SessionContents contents;
    for (qsizetype index = 0; index < count; ++index)
        contents.chatMessages.append({QUuid::createUuid(), index % 2 == 0 ? u"user"_s : u"assistant"_s, content});
    for (int index = 0; index < 10; ++index)
        contents.attachedContexts.append({u"Item %1"_s.arg(index), u"Local File"_s, content, std::nullopt});
    return contents;
}

void saveSession(benchmark::State &state)
{
    const QTemporaryDir folder;
    const SessionFiles files(FileURL(folder.filePath(u"data"_s)));
    const FileURL document(folder.filePath(u"draft.md"_s));
    const SessionContents contents = conversation(state.range(0), 1'000);
    for (auto _ : state)
        files.save(document, contents, std::chrono::system_clock::now());
}
BENCHMARK(saveSession)->Name("SaveSession/messages")->Arg(kOneThousand)->Unit(benchmark::kMillisecond)->UseRealTime();

void loadMessages(benchmark::State &state, qsizetype count, qsizetype size)
{
    const QTemporaryDir folder;
    const SessionFiles files(FileURL(folder.filePath(u"data"_s)));
    const FileURL document(folder.filePath(u"draft.md"_s));
    files.save(document, conversation(count, size), std::chrono::system_clock::now());
    for (auto _ : state)
        if (files.load(document).chatMessages.size() != count)
            return state.SkipWithError("The session cannot be read.");
}

void loadSession(benchmark::State &state)
{
    loadMessages(state, state.range(0), 1'000);
}
BENCHMARK(loadSession)->Name("LoadSession/messages")->Arg(kOneThousand)->Unit(benchmark::kMillisecond)->UseRealTime();

void loadLargeSession(benchmark::State &state)
{
    constexpr qsizetype kMessage = 10'000;
    loadMessages(state, state.range(0) / kMessage, kMessage);
}
BENCHMARK(loadLargeSession)
    ->Name("LoadSession/bytes")
    ->Arg(kFiftyMegabytes)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void keyOfSession(benchmark::State &state)
{
    const QString path = u"/home/somebody/Documents/Writing/A novel in three parts/Übung 12.md"_s;
    for (auto _ : state)
        benchmark::DoNotOptimize(sessionKey(path));
}
BENCHMARK(keyOfSession)->Name("SessionKey")->Unit(benchmark::kMicrosecond);

} // namespace

} // namespace Tessaline
