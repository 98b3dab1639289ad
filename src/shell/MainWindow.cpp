#include "shell/MainWindow.h"

#include "documents/Workspace.h"
#include "editing/DocumentEditor.h"
#include "editing/FindBar.h"
#include "editing/FormatToolbarView.h"
#include "panels/AssistantPanels.h"
#include "panels/SelectionToolsView.h"
#include "shell/AboutDialog.h"
#include "shell/AppearanceSwitch.h"
#include "shell/EditCommands.h"
#include "shell/SettingsWindow.h"
#include "shell/ShortcutsDialog.h"

#include <QtGui/QAction>
#include <QtGui/QCloseEvent>
#include <QtGui/QScreen>
#include <QtWidgets/QApplication>
#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

} // namespace

MainWindow::MainWindow(MainWindowParts parts) : FramelessWindow(parts.theme), m_parts(std::move(parts))
{
    setWindowTitle(u"Tessaline"_s);
    setMinimumSize(kMinimumSize);

    m_menu = new MainMenu({m_parts.events, m_parts.workspace, m_parts.updates, *new EditCommands(this)});
    m_content = new ContentView({m_parts.workspace, m_parts.projects, m_parts.area, m_parts.preferences, m_parts.events,
                                 m_parts.assistant, m_parts.theme, m_parts.makeEditor, *this, m_menu,
                                 m_parts.askForFiles, m_parts.openOutside, m_parts.imageLoader});
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_content);

    addFormatToolbar();
    connectMenu();
    addKeys();
}

MainWindow::~MainWindow() = default;

void MainWindow::addFormatToolbar()
{
    EditorAreaView &area = m_content->editorArea();
    auto *formats = new FormatToolbarView(m_parts.theme, m_parts.events);
    m_tools = std::make_unique<SelectionToolsView>(m_parts.assistant.tools, m_parts.theme, formats);
    for (QWidget *tool : m_tools->buttons())
        formats->addTool(tool);
    area.setFormatToolbar(formats);
    const auto follow = [&area, formats] {
        DocumentEditor *editor = area.currentEditor();
        formats->setTarget(editor ? editor->textView() : nullptr);
    };
    connect(&area, &EditorAreaView::currentEditorChanged, formats, follow);
    follow();
}

void MainWindow::connectMenu()
{
    EditorAreaView &area = m_content->editorArea();
    connect(m_menu, &MainMenu::findRequested, this, [&area] { area.findBar().openFind(); });
    connect(m_menu, &MainMenu::replaceRequested, this, [&area] { area.findBar().openReplace(); });
    connect(&area, &EditorAreaView::currentEditorChanged, this,
            [this, &area] { m_menu->setCanFind(area.currentEditor() != nullptr); });

    connect(m_menu, &MainMenu::quitRequested, this, &MainWindow::closeRequested);
    connect(m_menu, &MainMenu::settingsRequested, this, [this] {
        showDialog(m_settings, [this] { return new SettingsWindow(m_parts.theme, m_parts.assistantSettings, this); });
    });
    connect(m_menu, &MainMenu::shortcutsRequested, this, [this] {
        showDialog(m_shortcuts,
                   [this] { return new ShortcutsDialog(m_parts.theme, shortcutGroups(*m_menu, *this), this); });
    });
    connect(m_menu, &MainMenu::aboutRequested, this,
            [this] { showDialog(m_about, [this] { return new AboutDialog(m_parts.theme, this); }); });
}

/// Keys that no menu shows. They are actions all the same, so that the list of shortcuts finds them.
void MainWindow::addKeys()
{
    const auto add = [this](const QString &text, QKeySequence keys, auto handler) {
        auto *key = new QAction(text, this);
        key->setShortcut(keys);
        connect(key, &QAction::triggered, this, handler);
        addAction(key);
    };
    FindBar &findBar = m_content->editorArea().findBar();
    add(tr("Find Next"), Qt::Key_F3, [&findBar] { findBar.findNext(); });
    add(tr("Find Previous"), Qt::SHIFT | Qt::Key_F3, [&findBar] { findBar.findPrevious(); });
    add(tr("Next Column"), Qt::Key_F6, [this] { m_content->focusColumn(1); });
    add(tr("Previous Column"), Qt::SHIFT | Qt::Key_F6, [this] { m_content->focusColumn(-1); });
}

void MainWindow::showDialog(QPointer<QDialog> &dialog, const std::function<QDialog *()> &make)
{
    if (!dialog) {
        dialog = make();
        dialog->setAttribute(Qt::WA_DeleteOnClose);
    }
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

void MainWindow::open()
{
    m_parts.workspace.restoreWorkspace();
    m_parts.appearance.apply();

    const QSize room = screen()->availableGeometry().size();
    resize(kGoodSize.boundedTo(room).expandedTo(kMinimumSize));
    if (room.width() < kGoodSize.width() || room.height() < kGoodSize.height())
        setWindowState(windowState() | Qt::WindowMaximized);
    show();
}

void MainWindow::comeToFront()
{
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
    QApplication::alert(this); // where the desktop does not let a window come by itself; nothing if it came
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    event->ignore();
    Q_EMIT closeRequested();
}

} // namespace Tessaline
