#include "shell/EditCommands.h"

#include "editing/EditableText.h"
#include "editing/TextView.h"

#include <QtCore/QMimeData>
#include <QtGui/QAction>
#include <QtGui/QClipboard>
#include <QtGui/QTextCursor>
#include <QtGui/QTextDocument>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QTextEdit>

namespace Tessaline {

namespace {

EditState stateOf(const QLineEdit &field)
{
    const bool canWrite = !field.isReadOnly();
    const bool canCopy = field.hasSelectedText() && field.echoMode() == QLineEdit::Normal;
    return {.canUndo = canWrite && field.isUndoAvailable(),
            .canRedo = canWrite && field.isRedoAvailable(),
            .canCut = canWrite && canCopy,
            .canCopy = canCopy,
            .canPaste = canWrite,
            .canSelectAll = !field.text().isEmpty()};
}

template <class TextWidget>
EditState stateOfToolkitEditor(const TextWidget &editor)
{
    const bool canWrite = !editor.isReadOnly();
    const bool hasSelection = editor.textCursor().hasSelection();
    return {.canUndo = canWrite && editor.document()->isUndoAvailable(),
            .canRedo = canWrite && editor.document()->isRedoAvailable(),
            .canCut = canWrite && hasSelection,
            .canCopy = hasSelection,
            .canPaste = canWrite,
            .canSelectAll = !editor.document()->isEmpty()};
}

EditState stateOf(const EditableText &text)
{
    const bool hasSelection = !text.selection().range().isEmpty();
    return {.canUndo = text.canUndo(),
            .canRedo = text.canRedo(),
            .canCut = hasSelection,
            .canCopy = hasSelection,
            .canPaste = true,
            .canSelectAll = !text.text().isEmpty()};
}

} // namespace

EditState editState(QWidget *widget)
{
    if (!widget || !widget->isEnabled())
        return {};
    if (auto *view = qobject_cast<TextView *>(widget))
        return stateOf(view->document());
    if (const auto *field = qobject_cast<QLineEdit *>(widget))
        return stateOf(*field);
    if (const auto *editor = qobject_cast<QTextEdit *>(widget))
        return stateOfToolkitEditor(*editor);
    if (const auto *editor = qobject_cast<QPlainTextEdit *>(widget))
        return stateOfToolkitEditor(*editor);
    return {};
}

EditCommands::EditCommands(QObject *parent)
    : QObject(parent), undo(addCommand(tr("&Undo"), {QKeySequence(Qt::CTRL | Qt::Key_Z)}, "undo")),
      redo(addCommand(tr("&Redo"), {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), QKeySequence(Qt::CTRL | Qt::Key_Y)},
                      "redo")),
      cut(addCommand(tr("Cu&t"), {QKeySequence(Qt::CTRL | Qt::Key_X)}, "cut")),
      copy(addCommand(tr("&Copy"), {QKeySequence(Qt::CTRL | Qt::Key_C)}, "copy")),
      paste(addCommand(tr("&Paste"), {QKeySequence(Qt::CTRL | Qt::Key_V)}, "paste")),
      selectAll(addCommand(tr("Select &All"), {QKeySequence(Qt::CTRL | Qt::Key_A)}, "selectAll"))
{
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) { followFocus(now); });
    followFocus(QApplication::focusWidget());
}

QAction *EditCommands::addCommand(const QString &text, const QList<QKeySequence> &keys, const char *slot)
{
    auto *command = new QAction(text, this);
    command->setShortcuts(keys);
    connect(command, &QAction::triggered, this, [this, slot] {
        if (m_target)
            QMetaObject::invokeMethod(m_target, slot);
    });
    return command;
}

void EditCommands::followFocus(QWidget *focus)
{
    if (qobject_cast<QMenuBar *>(focus) || qobject_cast<QMenu *>(focus))
        return;
    if (m_target) {
        m_target->disconnect(this);
        if (auto *view = qobject_cast<TextView *>(m_target))
            view->document().disconnect(this);
    }
    m_target = focus;
    // What can be undone or copied changes under the hands of the person, and keys find only enabled actions.
    if (auto *view = qobject_cast<TextView *>(focus)) {
        connect(&view->document(), &EditableText::changed, this, &EditCommands::refresh);
        connect(&view->document(), &EditableText::selectionChanged, this, &EditCommands::refresh);
        connect(&view->document(), &EditableText::wasReset, this, &EditCommands::refresh);
    } else if (auto *field = qobject_cast<QLineEdit *>(focus)) {
        connect(field, &QLineEdit::textChanged, this, &EditCommands::refresh);
        connect(field, &QLineEdit::selectionChanged, this, &EditCommands::refresh);
    } else if (auto *rich = qobject_cast<QTextEdit *>(focus)) {
        connect(rich, &QTextEdit::textChanged, this, &EditCommands::refresh);
        connect(rich, &QTextEdit::selectionChanged, this, &EditCommands::refresh);
    } else if (auto *plain = qobject_cast<QPlainTextEdit *>(focus)) {
        connect(plain, &QPlainTextEdit::textChanged, this, &EditCommands::refresh);
        connect(plain, &QPlainTextEdit::selectionChanged, this, &EditCommands::refresh);
    }
    refresh();
}

void EditCommands::refresh()
{
    const EditState state = editState(m_target);
    undo->setEnabled(state.canUndo);
    redo->setEnabled(state.canRedo);
    cut->setEnabled(state.canCut);
    copy->setEnabled(state.canCopy);
    paste->setEnabled(state.canPaste);
    selectAll->setEnabled(state.canSelectAll);
}

void EditCommands::refreshWithClipboard()
{
    refresh();
    if (paste->isEnabled()) {
        const QMimeData *held = QGuiApplication::clipboard()->mimeData();
        paste->setEnabled(held && held->hasText());
    }
}

} // namespace Tessaline
