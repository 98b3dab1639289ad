#pragma once

#include <QtCore/QObject>
#include <QtCore/QPointer>

class QAction;
class QWidget;

namespace Tessaline {

/// What the Edit menu can do with a widget that holds text.
struct EditState {
    bool canUndo = false;
    bool canRedo = false;
    bool canCut = false;
    bool canCopy = false;
    bool canPaste = false; // text can be put in; whether the clipboard has any is another question
    bool canSelectAll = false;
    friend bool operator==(const EditState &, const EditState &) = default;
};

/// All false for null and for a widget without text.
EditState editState(QWidget *widget);

/// The commands Undo to Select All. Each goes, by the slot of its name, to the widget with the focus: the text view of
/// an editor or a field. Menus do not count as having it. The actions are enabled exactly while they would do
/// something.
class EditCommands final : public QObject
{
    Q_OBJECT
public:
    explicit EditCommands(QObject *parent = nullptr);

    QAction *undo;
    QAction *redo;
    QAction *cut;
    QAction *copy;
    QAction *paste;
    QAction *selectAll;

    void refresh();
    /// Looks at the clipboard too, which the other reasons to look leave out: it may belong to a program that is slow
    /// to answer.
    void refreshWithClipboard();

private:
    QAction *addCommand(const QString &text, const QList<QKeySequence> &keys, const char *slot);
    void followFocus(QWidget *focus);

    QPointer<QWidget> m_target;
};

} // namespace Tessaline
