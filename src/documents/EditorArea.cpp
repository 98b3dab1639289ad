#include "documents/EditorArea.h"

#include "documents/DocumentStore.h"
#include "documents/Workspace.h"
#include "foundation/AppEvents.h"
#include "foundation/BackgroundPool.h"
#include "foundation/ConsoleLine.h"
#include "foundation/EventCenter.h"

#include <QCoro/QCoroFuture>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// The value under `key`, if it is there and of exactly this type.
template <class Value>
std::optional<Value> valueOf(const QVariantMap &userInfo, const QString &key)
{
    const QVariant value = userInfo.value(key);
    return value.metaType() == QMetaType::fromType<Value>() ? std::optional(value.value<Value>()) : std::nullopt;
}

Result<void> writeEmptyFile(FileAccess *disk, const FileURL &url)
{
    return disk->writeText(url, ChunkedText());
}

QString messageAbout(const FileURL &url, const QString &message)
{
    return u"%1: %2"_s.arg(url.lastPathComponent(), message);
}

} // namespace

EditorArea::EditorArea(EditorAreaServices services, QObject *parent) : QObject(parent), m_services(std::move(services))
{
    connect(&m_services.workspace, &Workspace::activeFileURLChanged, this, &EditorArea::activeFileChanged);
    connect(&m_services.workspace, &Workspace::openFilesChanged, this, &EditorArea::presentationChanged);
    connect(&m_services.workspace, &Workspace::projectsChanged, this, &EditorArea::presentationChanged);
    connect(&m_services.preferences, &AppPreferences::viewModeChanged, this, &EditorArea::presentationChanged);
    observeEvents();
}

EditorArea::~EditorArea()
{
    m_load.request_stop();
    m_lifetime.request_stop();
}

void EditorArea::observeEvents()
{
    const auto observe = [this](QLatin1StringView name, auto handler) {
        m_services.events.observe(name, this, [this, handler](const QVariantMap &userInfo) {
            if (m_isShown)
                handler(userInfo);
        });
    };
    observe(AppEvents::kCreateNewDocument, [this](const QVariantMap &) { createNewDocument(); });
    observe(AppEvents::kZoomInFont, [this](const QVariantMap &) { m_services.preferences.increaseFontSize(); });
    observe(AppEvents::kZoomOutFont, [this](const QVariantMap &) { m_services.preferences.decreaseFontSize(); });
    observe(AppEvents::kFileDidUpdateExternally, [this](const QVariantMap &userInfo) {
        // Any other file is read again when it next becomes active.
        const auto url = valueOf<FileURL>(userInfo, AppEvents::kUrl);
        if (url && url == m_services.workspace.activeFileURL())
            loadFile(*url, LoadPolicy::Force);
    });
    observe(AppEvents::kDocumentSaveFailed, [this](const QVariantMap &userInfo) {
        const auto url = valueOf<FileURL>(userInfo, AppEvents::kUrl);
        const auto message = valueOf<QString>(userInfo, AppEvents::kMessage);
        if (url && message)
            setSaveErrorMessage(messageAbout(*url, *message));
    });
}

// What is shown

EditorAreaState EditorArea::state() const
{
    const std::optional<FileURL> &active = m_services.workspace.activeFileURL();
    if (!active)
        return EditorAreaState::None;
    if (m_fileContents.contains(*active))
        return EditorAreaState::Ready;
    return m_fileLoadErrors.contains(*active) ? EditorAreaState::Failed : EditorAreaState::Loading;
}

QString EditorArea::loadErrorMessage() const
{
    const std::optional<FileURL> &active = m_services.workspace.activeFileURL();
    return active ? m_fileLoadErrors.value(*active) : QString();
}

QList<ViewMode> EditorArea::availableViewModes() const
{
    return Tessaline::availableViewModes(m_activeDocumentType);
}

ViewMode EditorArea::viewMode() const
{
    return effectiveViewMode(m_services.preferences.viewMode(), availableViewModes());
}

void EditorArea::setViewMode(ViewMode mode)
{
    m_services.preferences.setViewMode(mode);
}

std::optional<DocumentType> EditorArea::activeDocumentType() const
{
    return m_activeDocumentType;
}

std::optional<ProjectReference> EditorArea::activeProject() const
{
    const std::optional<FileURL> &active = m_services.workspace.activeFileURL();
    const QList<OpenFileReference> &openFiles = m_services.workspace.openFiles();
    const auto entry = std::find_if(openFiles.begin(), openFiles.end(),
                                    [&active](const OpenFileReference &file) { return file.url == active; });
    if (entry != openFiles.end() && entry->project)
        return entry->project;
    return m_services.workspace.activeProject();
}

std::optional<QString> EditorArea::saveErrorMessage() const
{
    return m_saveErrorMessage;
}

void EditorArea::dismissSaveError()
{
    setSaveErrorMessage(std::nullopt);
}

void EditorArea::setSaveErrorMessage(std::optional<QString> message)
{
    if (message == m_saveErrorMessage)
        return;
    m_saveErrorMessage = std::move(message);
    Q_EMIT saveErrorMessageChanged();
}

// The text binding

void EditorArea::setText(const FileURL &url, const ChunkedText &text, const TextChange &change, const QObject *origin)
{
    FileContent &content = m_fileContents[url];
    content.text = text;
    ++content.editCount;
    m_services.store.scheduleSave(text, url);
    Q_EMIT textEdited(url, change, origin);
}

void EditorArea::takeWrittenText(const FileURL &url, const ChunkedText &text)
{
    if (hasText(url) && !m_services.store.hasUnsavedText(url))
        replaceText(url, text);
}

void EditorArea::replaceText(const FileURL &url, const ChunkedText &text)
{
    if (m_fileContents.contains(url) && m_fileContents.value(url).text == text)
        return; // the editors are not disturbed
    m_fileContents[url].text = text;
    Q_EMIT textReplaced(url);
}

// Operations

void EditorArea::appear()
{
    m_isShown = true;
    classifyActiveFile();
    Q_EMIT presentationChanged();
    if (const std::optional<FileURL> active = m_services.workspace.activeFileURL())
        loadFile(*active, LoadPolicy::Force);
}

void EditorArea::disappear()
{
    m_isShown = false;
    stopLoad();
    m_services.store.flushAll();
}

void EditorArea::applicationActivated()
{
    const std::optional<FileURL> active = m_services.workspace.activeFileURL();
    if (m_isShown && active)
        flushAndReload(*active);
}

void EditorArea::applicationDeactivated()
{
    m_services.store.flushAll();
}

void EditorArea::activeFileChanged(const std::optional<FileURL> &oldURL, const std::optional<FileURL> &newURL)
{
    classifyActiveFile();
    if (m_isShown) {
        // One file by two names is read once what was typed under the other name is in it; any other waits for nothing.
        const bool isOneFile = oldURL && newURL && m_services.store.hasUnsavedText(*oldURL) &&
                               m_services.disk.isSameFile(*oldURL, *newURL);
        stopLoad();
        if (isOneFile) {
            flushAndReload(*newURL);
        } else {
            if (oldURL)
                m_services.store.saveNow(*oldURL);
            if (newURL)
                loadFile(*newURL, LoadPolicy::Force);
        }
    }
    Q_EMIT presentationChanged();
}

void EditorArea::classifyActiveFile()
{
    const std::optional<FileURL> &active = m_services.workspace.activeFileURL();
    m_activeDocumentType = active ? documentType(*active) : std::nullopt;
}

void EditorArea::stopLoad()
{
    m_load.request_stop();
}

void EditorArea::loadFile(const FileURL &url, LoadPolicy policy)
{
    if (policy == LoadPolicy::KeepLoaded && m_fileContents.contains(url))
        return;
    stopLoad();
    m_load = std::stop_source();
    if (m_fileLoadErrors.remove(url)) // the old text, if any, stays on screen
        Q_EMIT presentationChanged();
    load(url);
}

QCoro::Task<> EditorArea::load(FileURL url)
{
    // The token says both that the load was stopped and that a newer one took its place: each load has one of its own.
    const std::stop_token stop = m_load.get_token();
    const quint64 editCount = m_fileContents.value(url).editCount;
    const Result<ChunkedText> text = co_await m_services.store.readDocument(url);
    if (stop.stop_requested())
        co_return;

    const EditorAreaState before = state();
    if (text) {
        if (!isNewerThanDisk(url, editCount))
            replaceText(url, text.value());
    } else {
        printConsoleLine(u"Failed to load file at %1: %2"_s.arg(url.path(), text.failure().text));
        m_fileLoadErrors.insert(url, text.failure().text);
    }
    if (state() != before)
        Q_EMIT presentationChanged();
}

/// Whether the text that is shown holds something that a read begun at `editCountBeforeReading` cannot have seen: an
/// edit made since, or one whose write has failed. Taking what was read would lose it.
bool EditorArea::isNewerThanDisk(const FileURL &url, quint64 editCountBeforeReading) const
{
    const auto content = m_fileContents.constFind(url);
    return content != m_fileContents.constEnd() &&
           (content->editCount != editCountBeforeReading || m_services.store.hasUnsavedText(url));
}

QCoro::Task<> EditorArea::flushAndReload(FileURL url)
{
    const std::stop_token stop = m_lifetime.get_token();
    co_await m_services.store.flushAll();
    if (stop.stop_requested())
        co_return;
    if (m_isShown && m_services.workspace.activeFileURL() == url)
        loadFile(url, LoadPolicy::Force);
}

void EditorArea::createNewDocument()
{
    const QList<ProjectReference> &projects = m_services.workspace.projects();
    const FileURL folder = projects.isEmpty() ? FileURL() : projects.constFirst().rootURL;
    if (const std::optional<FileURL> url = m_services.askForNewDocument(folder))
        writeNewDocument(*url);
}

QCoro::Task<> EditorArea::writeNewDocument(FileURL url)
{
    // 1. The empty file, past the store: nothing of the workspace changes before it exists.
    const std::stop_token stop = m_lifetime.get_token();
    const bool wasUnsaved = m_services.store.hasUnsavedText(url);
    const QFuture<Result<void>> writing = QtConcurrent::run(&backgroundPool(), writeEmptyFile, &m_services.disk, url);
    const Result<void> written = co_await writing;
    if (stop.stop_requested())
        co_return;
    if (!written) {
        setSaveErrorMessage(messageAbout(url, written.failure().text));
        co_return;
    }

    // 2. Its text. What the store still owed to a file of that name is no longer wanted, or has come after the empty
    // file.
    if (wasUnsaved || m_services.store.hasUnsavedText(url))
        m_services.store.scheduleSave(ChunkedText(), url);
    m_fileLoadErrors.remove(url);
    replaceText(url, ChunkedText());
    Q_EMIT presentationChanged();

    // 3. Its project: outside all projects its folder becomes one. Then its entry among the open files.
    Workspace &workspace = m_services.workspace;
    if (!projectForFile(url, workspace.projects()))
        workspace.addProject(url.deletingLastPathComponent());
    workspace.openFile(url);

    // 4. The sidebar shows the new file.
    m_services.events.post(AppEvents::kProjectFilesChanged);
}

} // namespace Tessaline
