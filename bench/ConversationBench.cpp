#include "documents/AppPreferences.h"
#include "documents/DocumentStore.h"
#include "documents/EditorArea.h"
#include "documents/Workspace.h"
#include "foundation/EventCenter.h"
#include "foundation/Preferences.h"
#include "foundation_ui/TessalineStyle.h"
#include "panels/AssistantPanels.h"
#include "panels/ChatMessagesList.h"
#include "panels/ChatSection.h"
#include "panels/SessionView.h"
#include "Services/LocalAIService.h"

#include <QtCore/QTemporaryDir>
#include <QtWidgets/QApplication>
#include <QtWidgets/QScrollBar>

#include <benchmark/benchmark.h>

using namespace Tessaline;

namespace {

using namespace Qt::StringLiterals;

/// Questions and long answers with a table, code and a proposed edit each, about 2.5 kB.
QList<ChatMessage> conversation(int count)
{
    static const QString kAnswer =
        u"## Before the spring tide\n\nThe harbour office still prints its tables on *yellow* card. Two columns are "
        "enough for **most days**, and judgement is what the [harbour log](https://harbour.example) is for.\n\n"
        "- Copy the table for **March** into the log\n- Ask about the new gauge\n\n> The sea keeps better books.\n\n"
        "```python\ndef height(hour, k=0.18):\n    return mean + k * cos(2 * pi * hour / 12.42)\n```\n\n"
        "| Day | On the card | As it came |\n| --- | --- | ---: |\n| Monday | 4.12 m | 4.20 m |\n\n"_s.repeated(4);
    static const QString kEdit = u"<<<<<<< SEARCH\nWords %1.\n=======\nOther words.\n>>>>>>> REPLACE\n"_s;
    QList<ChatMessage> messages;
    for (int i = 0; i < count; ++i) {
        ChatMessage message;
        message.id = QUuid::createUuid();
        message.role = i % 2 ? u"assistant"_s : u"user"_s;
        message.content = i % 2 ? kAnswer + kEdit.arg(i) : u"What of the tide, and of the harbour? "_s.repeated(4);
        messages.append(message);
    }
    return messages;
}

/// Of the application; the toolkit's style uses it to the end.
Theme &theme()
{
    static Theme theme;
    return theme;
}

/// The column of the assistant, painted into a window that nobody sees.
class Column
{
public:
    Column()
    {
        m_view.resize(380, 900);
        m_view.setAttribute(Qt::WA_DontShowOnScreen);
        m_view.show();
        paint();
    }

    void setMessages(const QList<ChatMessage> &messages) { m_ai.setChatMessages(messages); }
    QScrollBar &bar() { return *m_view.chat().messages().verticalScrollBar(); }
    void paint() { m_view.grab(); }

private:
    QTemporaryDir m_folder;
    Preferences m_stored{FileURL(m_folder.filePath(u"preferences.json"_s))};
    AppPreferences m_preferences{m_stored};
    EventCenter m_events;
    DiskAccess m_disk;
    DocumentStore m_documents{m_events, m_disk};
    Workspace m_workspace{m_stored};
    EditorArea m_area{{m_workspace, m_preferences, m_documents, m_events, m_disk,
                       [](const FileURL &) { return std::optional<FileURL>(); }}};
    LocalAIService m_ai{{.server = {.preferences = m_stored,
                                    .checkHealth = {},
                                    .cancelRequests = {},
                                    .dataFolder = std::nullopt,
                                    .candidates = {},
                                    .environment = {}},
                         .documents = m_documents,
                         .wire = {}}};
    AssistantPanels m_panels{{m_ai, m_documents, m_area, m_workspace, m_events, m_disk, [](const QString &) {}}};
    SessionView m_view{{.ai = m_ai,
                        .composer = m_panels.composer,
                        .suggestions = m_panels.suggestions,
                        .context = m_panels.context,
                        .workspace = m_workspace,
                        .area = m_area,
                        .events = m_events,
                        .theme = theme(),
                        .askForFiles = [] { return QList<FileURL>(); },
                        .openOutside = [](const QUrl &) {},
                        .imageLoader = nullptr}};
};

/// From the messages to their last screen.
void openConversation(benchmark::State &state)
{
    Column column;
    const QList<ChatMessage> messages = conversation(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        column.setMessages(messages);
        column.paint();
        state.PauseTiming();
        if (column.bar().maximum() == 0)
            state.SkipWithError("nothing is shown");
        column.setMessages({});
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        state.ResumeTiming();
    }
}

/// Three lines up at a time, as the wheel goes, through messages that nobody has looked at yet.
void scrollConversation(benchmark::State &state)
{
    Column column;
    column.setMessages(conversation(static_cast<int>(state.range(0))));
    column.paint();
    for (auto _ : state) {
        QScrollBar &bar = column.bar();
        bar.setValue(bar.value() > 1000 ? bar.value() - 3 * bar.singleStep() : bar.maximum());
        column.paint();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

BENCHMARK(openConversation)->Arg(10)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(scrollConversation)->Arg(1000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    dressApplication(theme());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
