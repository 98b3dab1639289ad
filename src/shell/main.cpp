#include "documents/AppPreferences.h"
#include "documents/DocumentStore.h"
#include "documents/EditorArea.h"
#include "documents/ProjectsList.h"
#include "documents/Workspace.h"
#include "editing/MarkdownEditor.h"
#include "editing/WYSIWYGEditor.h"
#include "foundation/AppFolders.h"
#include "foundation/EventCenter.h"
#include "foundation/Preferences.h"
#include "foundation/SystemMemory.h"
#include "foundation_ui/TessalineStyle.h"
#include "NetworkImage/DefaultNetworkImageLoader.h"
#include "panels/AssistantPanels.h"
#include "Services/AISettings.h"
#include "Services/LocalAIService.h"
#include "Services/ServerCandidates.h"
#include "shell/AppDelegate.h"
#include "shell/AppearanceSwitch.h"
#include "shell/ApplicationIcon.h"
#include "shell/ApplicationState.h"
#include "shell/CommandLine.h"
#include "shell/Console.h"
#include "shell/FilePanels.h"
#include "shell/FreedMemory.h"
#include "shell/MainWindow.h"
#include "shell/ProcessSetUp.h"
#include "shell/SessionBus.h"
#include "shell/SingleInstance.h"
#include "shell/SystemAppearance.h"
#include "shell/TerminationSignals.h"
#include "shell/UpdateManager.h"

#include <QtCore/QFutureWatcher>
#include <QtCore/QThread>
#include <QtCore/QTimer>
#include <QtGui/QClipboard>
#include <QtGui/QDesktopServices>
#include <QtGui/QSessionManager>
#include <QtWidgets/QApplication>

using namespace Qt::StringLiterals;
using namespace Tessaline;

namespace {

// The icon takes as long to draw as the whole window, so it comes when the first picture is there.
constexpr std::chrono::milliseconds kIconDelay{300}; // Source: chosen here; nobody looks at the task bar that early.

// A key that was pressed before a signal to end can be on its way still: a thread of its own reads what the display
// sends.
constexpr std::chrono::milliseconds kLastKeys{50}; // Source: chosen here; what a loaded machine needs to deliver a key.

// Without its bus a desktop offers no accessibility, so one that is merely slow is given a moment. A sound one answers
// at once. Source: chosen here.
constexpr std::chrono::milliseconds kBusPatience{250};

constexpr int kFailed = 1;  // exit status: could not run
constexpr int kRefused = 2; // exit status: the arguments are wrong

/// The assistant at the start and the end of the application.
class Assistant final : public AssistantLifecycle
{
public:
    explicit Assistant(LocalAIService &service) : m_service(service) {}

    void startServer() override { m_service.startServer(); }
    std::optional<FileURL> activeFileURL() const override { return m_service.activeFileURL(); }
    void saveSession(const FileURL &url) override { m_service.saveSession(url); }
    void stopServer() override { m_service.stopServer(); }

private:
    LocalAIService &m_service;
};

/// The server as it stands on this machine.
ServerSupervisorParts serverParts(const Preferences &stored, const FileURL &data)
{
    return {.preferences = stored,
            .checkHealth = {},
            .cancelRequests = {},
            .dataFolder = data,
            .candidates = serverCandidates(FileURL(QCoreApplication::applicationDirPath())),
            .environment = ownEnvironment(),
            .physicalMemoryBytes = physicalMemoryBytes(),
            .activeProcessorCount = QThread::idealThreadCount()};
}

/// Runs the event loop, without keys and clicks, until `future` has finished.
void waitFor(const QFuture<void> &future)
{
    QEventLoop loop;
    QFutureWatcher<void> watcher;
    QObject::connect(&watcher, &QFutureWatcher<void>::finished, &loop, &QEventLoop::quit);
    watcher.setFuture(future);
    if (!future.isFinished())
        loop.exec(QEventLoop::ExcludeUserInputEvents);
}

/// Builds everything, in the order in which it depends on each other, and runs it.
int run(QApplication &application, Theme &theme, DiskAccess &disk, const AppFolders &folders, SingleInstance &instance)
{
    // 1. The services.
    UpdateManager updates;
    Preferences stored(folders.configuration.appending(u"preferences.json"));
    AppPreferences preferences(stored);
    EventCenter events;
    DocumentStore store(events, disk);
    Workspace workspace(stored);
    FilePanels panels;
    EditorArea area({workspace, preferences, store, events, disk,
                     [&panels](const FileURL &folder) { return panels.askForNewDocument(folder); }});
    ProjectsList projects(workspace, events, [&panels] { return panels.askForProjectFolder(); });

    const ServerSupervisorParts server = serverParts(stored, folders.data);
    LocalAIService assistant({.server = server, .documents = store, .wire = {}});
    AISettings assistantSettings(assistant, preferences, server.physicalMemoryBytes);

    AssistantPanels assistantPanels({assistant, store, area, workspace, events, disk,
                                     [](const QString &text) { QGuiApplication::clipboard()->setText(text); }});

    const std::unique_ptr<NetworkImage::NetworkImageLoader> images = NetworkImage::makeSharedLoader(folders.cache);

    // 2. The appearance.
    SystemAppearance system(SystemAppearance::ofPalette(QGuiApplication::palette()));
    AppearanceSwitch appearance(preferences, system, theme);
    appearance.apply();
    dressApplication(theme);

    // 3. The window.
    const auto makeEditor = [&theme, &events](EditorKind kind, QWidget *parent) -> DocumentEditor * {
        if (kind == EditorKind::Source)
            return new MarkdownEditor(theme, events, parent);
        return new WYSIWYGEditor(
            theme, events, [](const QUrl &url) { QDesktopServices::openUrl(url); }, parent);
    };
    MainWindow window({workspace, projects, area, preferences, events, updates, appearance, assistantSettings,
                       assistantPanels, theme, makeEditor, [&panels] { return panels.askForFiles(); },
                       [](const QUrl &url) { QDesktopServices::openUrl(url); }, images.get()});
    panels.setWindow(&window);

    // 4. The start and the end.
    Assistant lifecycle(assistant);
    AppDelegate delegate({store, &lifecycle, [&appearance] { appearance.apply(); }});
    const auto terminate = [&] {
        window.hide();
        delegate.applicationShouldTerminate();
    };
    TerminationSignals signals;
    QObject::connect(&signals, &TerminationSignals::terminationRequested, &delegate,
                     [&] { QTimer::singleShot(kLastKeys, &delegate, terminate); });
    QObject::connect(&window, &MainWindow::closeRequested, &delegate, terminate);
    // From here on a new start waits for this process to end instead of being sent to it.
    QObject::connect(&signals, &TerminationSignals::terminationRequested, &instance, &SingleInstance::stopListening);
    QObject::connect(&window, &MainWindow::closeRequested, &instance, &SingleInstance::stopListening);
    QObject::connect(&delegate, &AppDelegate::terminationReady, &application, [] { QCoreApplication::exit(0); });
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &store, [&](QSessionManager &) {
        waitFor(store.flushAll()); // the desktop may end the process as soon as this returns
        stored.waitForWrites();
    });
    Console::setDisplayLossHandler([&] {
        store.flushAllAndWait();
        stored.waitForWrites();
    });
    QObject::connect(&instance, &SingleInstance::activationRequested, &window, [&](const QByteArray &token) {
        if (!token.isEmpty())
            qputenv("XDG_ACTIVATION_TOKEN", token); // where the toolkit looks for it
        window.comeToFront();
    });
    ApplicationState state;
    QObject::connect(&state, &ApplicationState::cameBack, &area, &EditorArea::applicationActivated);
    QObject::connect(&state, &ApplicationState::left, &area, &EditorArea::applicationDeactivated);

    FreedMemory freed;
    QObject::connect(&workspace, &Workspace::activeFileURLChanged, &freed, &FreedMemory::giveBackSoon);
    QObject::connect(&assistant, &LocalAIService::isServerRunningChanged, &freed, &FreedMemory::giveBackSoon);
    QObject::connect(&assistant, &LocalAIService::isGeneratingChanged, &freed, &FreedMemory::giveBackSoon);

    instance.listen();
    delegate.applicationDidFinishLaunching();
    window.open();
    QTimer::singleShot(kIconDelay, &window, [&window] { window.setWindowIcon(applicationIcon(128, 1)); });
    const int status = application.exec();

    Console::setDisplayLossHandler({});
    delegate.applicationWillTerminate();
    return status;
}

bool hasDisplay(const CommandLine &line)
{
    const bool isNamed = line.namesDisplay || !line.platform.isEmpty() || qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
    return isNamed || !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

} // namespace

int main(int argc, char **argv)
{
    setUpProcess();
    QStringList arguments;
    for (int index = 1; index < argc; ++index)
        arguments.append(QString::fromLocal8Bit(argv[index]));
    const CommandLine line = readCommandLine(arguments, QStringLiteral(TESSALINE_VERSION));
    if (line.action == CommandLine::Action::Print) {
        Console::print(line.text);
        return 0;
    }
    if (line.action == CommandLine::Action::Refuse) {
        Console::report(line.text);
        return kRefused;
    }

    Console::filterToolkitMessages();
    SessionBus bus(SessionBus::addressOfUser());
    const AppFolders folders = AppFolders::ofUser(u"com.orlenth.tessaline"_s);
    SingleInstance instance({folders.configuration});
    switch (instance.acquire(qgetenv("XDG_ACTIVATION_TOKEN"))) {
    case SingleInstance::Outcome::First:
        break;
    case SingleInstance::Outcome::HandedOver:
        return 0;
    case SingleInstance::Outcome::NoAnswer:
        Console::report(
            u"tessaline: Could not come to the front: Tessaline is running already, but does not answer.\n"_s);
        return kFailed;
    }
    if (!hasDisplay(line)) {
        Console::report(u"tessaline: Could not open a window: there is no display (neither DISPLAY nor WAYLAND_DISPLAY "
                        "is set).\n"_s);
        return kFailed;
    }

    if (!bus.answersWithin(kBusPatience))
        SessionBus::keepAway();
    QCoreApplication::setApplicationName(u"Tessaline"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(TESSALINE_VERSION));
    QGuiApplication::setDesktopFileName(u"com.orlenth.tessaline"_s);
    Theme theme;     // outlives the application, whose style goes on using it,
    DiskAccess disk; // and whose end waits for what the workers still write
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false); // the window asks for the end itself; see AppDelegate
    return run(application, theme, disk, folders, instance);
}
