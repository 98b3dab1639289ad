#include "documents/EditorAreaView.h"

#include "documents/EditorControlToolbar.h"
#include "documents/EditorHost.h"
#include "documents/StatusView.h"
#include "documents/Workspace.h"
#include "editing/DocumentEditor.h"
#include "editing/FindBar.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/Hairline.h"
#include "foundation_ui/TabOrder.h"

#include <QtGui/QHideEvent>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

#include <utility>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

// A file is mostly there at once; the words that say it is being opened would only flash.
constexpr std::chrono::milliseconds kOpeningDelay{120}; // Source: chosen here; shorter than what is felt as waiting.

Status emptyStatus()
{
    Status status;
    status.symbol = u"square.and.pencil"_s;
    status.text = u"Select a file from the sidebar or start a new document."_s;
    status.button = u"New Document…"_s;
    status.buttonKind = TextButton::Kind::Prominent;
    status.spacing = 16;
    return status;
}

Status openingStatus(const FileURL &url)
{
    Status status;
    status.isBusy = true;
    status.text = u"Opening %1…"_s.arg(url.lastPathComponent());
    return status;
}

Status failureStatus(const FileURL &url, const QString &message)
{
    Status status;
    status.symbol = u"exclamationmark.triangle"_s;
    status.title = u"Couldn’t Open %1"_s.arg(url.lastPathComponent());
    status.text = message;
    status.button = u"Try Again"_s;
    return status;
}

} // namespace

EditorAreaView::EditorAreaView(EditorAreaViewParts parts, QWidget *parent)
    : Ground(parts.theme, ColorRole::EditorBackground, parent), m_parts(std::move(parts)),
      m_toolbar(new EditorControlToolbar(m_parts.preferences, m_parts.theme, this)),
      m_toolbarLine(new Hairline(m_parts.theme, Qt::Horizontal, this)), m_formatToolbarPlace(new QWidget(this)),
      m_findBar(new FindBar(m_parts.theme, this)), m_status(new StatusView(m_parts.theme, this)),
      m_layout(new QVBoxLayout(this))
{
    setAccessibleName(u"Editor Area"_s);
    setAttribute(Qt::WA_InputMethodEnabled);
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);
    m_layout->addWidget(m_toolbar);
    m_layout->addWidget(m_toolbarLine);
    m_layout->addWidget(m_formatToolbarPlace);
    m_layout->addWidget(m_findBar);
    m_layout->addWidget(m_status, 1);
    auto *formatLayout = new QVBoxLayout(m_formatToolbarPlace);
    formatLayout->setContentsMargins(0, 0, 0, 0);
    formatLayout->setSpacing(0);
    m_formatToolbarPlace->hide();
    m_findBar->hide();
    m_openingTimer.setSingleShot(true);
    m_openingTimer.setInterval(kOpeningDelay);

    EditorArea &area = m_parts.area;
    connect(&area, &EditorArea::presentationChanged, this, &EditorAreaView::present);
    connect(&area, &EditorArea::saveErrorMessageChanged, this, &EditorAreaView::presentSaveError);
    connect(m_toolbar, &EditorControlToolbar::viewModeChosen, this, &EditorAreaView::chooseMode);
    connect(m_status, &StatusView::buttonClicked, this, &EditorAreaView::useStatusButton);
    connect(&m_openingTimer, &QTimer::timeout, this, &EditorAreaView::presentOpening);
    present();
    presentSaveError();
}

EditorAreaView::~EditorAreaView() = default;

DocumentEditor *EditorAreaView::currentEditor() const
{
    return m_host ? m_host->current() : nullptr;
}

void EditorAreaView::present()
{
    const EditorAreaState state = m_parts.area.state();
    const std::optional<FileURL> active = m_parts.workspace.activeFileURL();
    const bool isMarkdown = m_parts.area.activeDocumentType() == DocumentType::Markdown;

    if (active != std::exchange(m_presentedFile, active))
        m_heldInput.forget();

    // 1. The rows above the document.
    if (active) {
        m_toolbar->setFile(*active, m_parts.area.activeProject());
        m_toolbar->setViewModes(m_parts.area.availableViewModes(), m_parts.area.viewMode());
    }
    m_toolbar->setVisible(active.has_value());
    m_toolbarLine->setVisible(active.has_value());
    m_formatToolbarPlace->setVisible(active && isMarkdown && m_formatToolbarPlace->layout()->count() > 0);

    // 2. Editors of another file or mode make room first.
    const bool isReady = state == EditorAreaState::Ready;
    const ViewMode mode = m_parts.area.viewMode();
    if (m_host && (!isReady || !m_host->isFor(*active, mode)))
        dropEditors();

    // 3. What stands in for editors. It makes room before there are some.
    m_openingTimer.stop();
    const bool isStatusNeeded = state == EditorAreaState::None || state == EditorAreaState::Failed;
    if (!isStatusNeeded)
        inheritFocus(*m_status);
    m_status->setVisible(isStatusNeeded);
    if (state == EditorAreaState::None)
        m_status->setStatus(emptyStatus());
    else if (state == EditorAreaState::Failed)
        m_status->setStatus(failureStatus(*active, m_parts.area.loadErrorMessage()));
    else if (state == EditorAreaState::Loading)
        m_openingTimer.start();

    // 4. The editors of the file and the mode.
    if (isReady && !m_host)
        makeEditors(*active, mode);

    // 5. What was typed for a file goes to it or, if the file did not come, nowhere.
    if (isReady && !m_heldInput.isEmpty())
        m_heldInput.release(*currentEditor()->textView());
    else if (state != EditorAreaState::Loading)
        m_heldInput.forget();
}

void EditorAreaView::presentOpening()
{
    const std::optional<FileURL> active = m_parts.workspace.activeFileURL();
    if (m_parts.area.state() != EditorAreaState::Loading || !active)
        return;
    m_status->setStatus(openingStatus(*active));
    m_status->show();
}

void EditorAreaView::makeEditors(const FileURL &url, ViewMode mode)
{
    m_host = new EditorHost(url, mode, m_parts, this);
    m_layout->addWidget(m_host, 1);
    QWidget *before = m_status; // Tab goes on from the bars above
    for (DocumentEditor *editor : m_host->editors()) {
        placeInTabOrder(before, editor->textView());
        before = editor->textView();
    }
    connect(m_host, &EditorHost::currentChanged, this, &EditorAreaView::takeCurrentEditor);
    m_host->show();
    m_layout->activate(); // within the first show of this view, as a quick read may end, the toolkit would do it later
    takeCurrentEditor();
    takePendingFocus();
}

void EditorAreaView::dropEditors()
{
    inheritFocus(*m_host);
    inheritFocus(*m_findBar);
    m_findBar->setTarget(nullptr);
    EditorHost *host = m_host;
    m_host = nullptr;
    m_layout->removeWidget(host);
    host->hide();
    host->deleteLater(); // it may be the one that asked for another mode
    Q_EMIT currentEditorChanged();
}

/// The next editor goes on where a part that is about to go has been used.
void EditorAreaView::inheritFocus(const QWidget &leaving)
{
    const QWidget *focus = window()->focusWidget();
    if (!focus || !leaving.isAncestorOf(focus))
        return;
    m_wantsFocus = true;
    setFocus(Qt::OtherFocusReason);
}

void EditorAreaView::takeCurrentEditor()
{
    m_findBar->setTarget(currentEditor());
    Q_EMIT currentEditorChanged();
}

void EditorAreaView::chooseMode(ViewMode mode)
{
    // Whoever walks through the modes by keyboard stays in the toolbar; a click is followed by writing.
    const QWidget *focus = window()->focusWidget();
    if (!focus || !m_toolbar->isAncestorOf(focus))
        focusEditor();
    m_parts.area.setViewMode(mode);
}

void EditorAreaView::useStatusButton()
{
    if (m_parts.area.state() == EditorAreaState::None) {
        focusEditor();
        m_parts.area.createNewDocument();
    } else if (const std::optional<FileURL> active = m_parts.workspace.activeFileURL()) {
        focusEditor();
        m_parts.area.loadFile(*active, EditorArea::LoadPolicy::Force);
    }
}

void EditorAreaView::focusEditor()
{
    m_wantsFocus = true;
    m_focusAtRequest = window()->focusWidget();
    if (m_parts.area.state() == EditorAreaState::Loading)
        setFocus(Qt::OtherFocusReason);
    takePendingFocus();
}

void EditorAreaView::takePendingFocus()
{
    DocumentEditor *editor = currentEditor();
    if (!m_wantsFocus || !editor)
        return;
    m_wantsFocus = false;
    QWidget *now = window()->focusWidget();
    const bool isHere = !now || now == this || isAncestorOf(now);
    if (isHere || now == m_focusAtRequest)
        editor->textView()->setFocus(Qt::OtherFocusReason);
}

void EditorAreaView::setFormatToolbar(QWidget *toolbar)
{
    m_formatToolbarPlace->layout()->addWidget(toolbar);
    m_formatToolbarPlace->layout()->addWidget(new Hairline(m_parts.theme, Qt::Horizontal, m_formatToolbarPlace));
    // Tab comes here from the control row. Whatever joins a window later would otherwise be the last in it.
    QWidget *before = m_formatToolbarPlace;
    for (QWidget *control : toolbar->findChildren<QWidget *>()) {
        placeInTabOrder(before, control);
        before = control;
    }
    present();
}

void EditorAreaView::presentSaveError()
{
    const std::optional<QString> message = m_parts.area.saveErrorMessage();
    if (!message) {
        if (m_saveAlert)
            m_saveAlert->done(QMessageBox::Cancel);
        return;
    }
    const QString text = message->isEmpty() ? u"The document could not be saved."_s : *message;
    if (m_saveAlert) {
        m_saveAlert->setInformativeText(text); // a later failure takes the place of the earlier
        return;
    }
    m_saveAlert = new QMessageBox(this);
    m_saveAlert->setAttribute(Qt::WA_DeleteOnClose);
    m_saveAlert->setWindowTitle(u"Couldn’t Save Document"_s);
    m_saveAlert->setText(u"Couldn’t Save Document"_s);
    m_saveAlert->setTextFormat(Qt::PlainText);
    m_saveAlert->setInformativeText(text);
    // Made with the text; its own format would take the name of a file for markup.
    if (auto *body = m_saveAlert->findChild<QLabel *>(u"qt_msgbox_informativelabel"_s))
        body->setTextFormat(Qt::PlainText);
    QPushButton *ok = m_saveAlert->addButton(u"OK"_s, QMessageBox::RejectRole);
    m_saveAlert->setDefaultButton(ok);
    m_saveAlert->setEscapeButton(ok);
    if (auto *title = m_saveAlert->findChild<QLabel *>(u"qt_msgbox_label"_s))
        title->setFont(Fonts::interface(Fonts::kInterfaceSize, QFont::DemiBold));
    connect(m_saveAlert, &QDialog::finished, this, [this] {
        m_saveAlert = nullptr;
        m_parts.area.dismissSaveError();
    });
    m_saveAlert->open();
}

bool EditorAreaView::holdsInput() const
{
    return hasFocus() && m_parts.area.state() == EditorAreaState::Loading;
}

bool EditorAreaView::event(QEvent *event)
{
    // Tab, which would lead on to the next control, is a character of the document.
    if (event->type() == QEvent::KeyPress && holdsInput() && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Tab) {
        keyPressEvent(static_cast<QKeyEvent *>(event));
        return true;
    }
    return Ground::event(event);
}

void EditorAreaView::inputMethodEvent(QInputMethodEvent *event)
{
    if (holdsInput())
        m_heldInput.hold(*event);
    event->accept();
}

void EditorAreaView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && m_findBar->isVisible())
        m_findBar->close();
    else if (holdsInput())
        m_heldInput.hold(*event);
    else
        Ground::keyPressEvent(event);
}

void EditorAreaView::showEvent(QShowEvent *event)
{
    Ground::showEvent(event);
    if (m_appeared)
        return;
    m_appeared = true;
    // Until there is an editor the focus waits here, not on the first control that Tab would reach.
    if (m_wantsFocus && !window()->focusWidget())
        setFocus(Qt::OtherFocusReason);
    m_parts.area.appear();
}

void EditorAreaView::hideEvent(QHideEvent *event)
{
    Ground::hideEvent(event);
    if (event->spontaneous())
        return; // the window was only minimised
    m_appeared = false;
    m_parts.area.disappear();
}

} // namespace Tessaline
