#pragma once

#include "documents/EditorArea.h"
#include "documents/HeldInput.h"
#include "foundation_ui/Ground.h"

#include <QtCore/QPointer>
#include <QtCore/QTimer>

#include <functional>
#include <memory>
#include <optional>

class QMessageBox;
class QVBoxLayout;

namespace Tessaline {

class DocumentEditor;
class EditorControlToolbar;
class EditorHost;
class FindBar;
class Hairline;
class StatusView;

enum class EditorKind { Source, Formatted };

struct EditorAreaViewParts {
    EditorArea &area;
    Workspace &workspace;
    AppPreferences &preferences;
    const Theme &theme;
    /// Makes an editor of this kind; never null.
    std::function<DocumentEditor *(EditorKind kind, QWidget *parent)> makeEditor;
};

/// The middle column: draws what EditorArea decides. From top to bottom: the control toolbar, a hairline, the place of
/// the format toolbar (Markdown files only), the bar for find and replace while it is open, and the editor or what
/// stands in for it. All parts outlive the view.
///
/// An editor belongs to one file in one mode: a change of either makes a new one, without the caret, the scroll
/// position and the undo history of the old. Opening asks the area to start at the first show.
class EditorAreaView final : public Ground
{
    Q_OBJECT
public:
    static constexpr int kToolbarHeight = 44;

    explicit EditorAreaView(EditorAreaViewParts parts, QWidget *parent = nullptr);
    ~EditorAreaView() override;

    /// The editor that has or last had the focus among those on screen; null if there is none.
    DocumentEditor *currentEditor() const;
    FindBar &findBar() { return *m_findBar; }

    /// Gives the focus to the editor: at once, or as soon as the file is there, unless the person has gone elsewhere by
    /// then. Until then the view has it and holds what is typed for the editor.
    void focusEditor();

    /// Puts the toolbar of format commands in its place and owns it. It is shown for Markdown files only.
    void setFormatToolbar(QWidget *toolbar);

Q_SIGNALS:
    void currentEditorChanged();

protected:
    bool event(QEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override; // Esc in the document closes the bar for find and replace
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void present();
    void presentOpening();
    void presentSaveError();
    void makeEditors(const FileURL &url, ViewMode mode);
    void dropEditors();
    void inheritFocus(const QWidget &leaving);
    void takeCurrentEditor();
    void chooseMode(ViewMode mode);
    void useStatusButton();
    void takePendingFocus();
    bool holdsInput() const;

    EditorAreaViewParts m_parts;
    EditorControlToolbar *m_toolbar;
    Hairline *m_toolbarLine;
    QWidget *m_formatToolbarPlace;
    FindBar *m_findBar;
    StatusView *m_status;
    QVBoxLayout *m_layout;
    EditorHost *m_host = nullptr; // the editors of the file and mode on screen
    QTimer m_openingTimer;        // one shot, while a file is being opened
    QPointer<QMessageBox> m_saveAlert;
    bool m_wantsFocus = true; // at the start the editor is where the person writes
    QPointer<QWidget> m_focusAtRequest;
    std::optional<FileURL> m_presentedFile;
    HeldInput m_heldInput; // typed while the presented file was being opened
    bool m_appeared = false;
};

} // namespace Tessaline
