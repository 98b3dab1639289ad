#pragma once

#include "editing/AttributedDocument.h"
#include "editing/UndoHistory.h"

#include <QtCore/QObject>

namespace Tessaline {

/// A text under edit, plain or with attributes: the text, the selection and the history, with everything a person can
/// do to them. The view draws it and forwards keys; nothing here knows of pixels. Positions never fall inside a
/// character. Main thread only.
class EditableText final : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    const ChunkedText &text() const { return m_document.text(); }
    const AttributedDocument &document() const { return m_document; }
    const TextSelection &selection() const { return m_selection; }
    QString selectedText() const;
    bool canUndo() const { return m_history.canUndo(); }
    bool canRedo() const { return m_history.canRedo(); }

    /// What plain text gets that the person puts in; nothing at first.
    const TextAttributes &typingAttributes() const { return m_typingAttributes; }
    void setTypingAttributes(const TextAttributes &attributes) { m_typingAttributes = attributes; }

    // By the program: `edited` is not sent.
    /// Another document: the history begins anew; the selection keeps its numbers, clamped to the new length.
    void reset(const ChunkedText &text) { reset(AttributedDocument(text)); }
    void reset(AttributedDocument document);
    /// The same document changed elsewhere as a whole. Only the part that differs is exchanged, as one step of undo.
    void replaceFromOutside(const ChunkedText &text);
    /// The same document changed elsewhere by `change`; a step of undo like typing here. The selection stays with its
    /// text.
    void followEdit(const ChunkedText &text, const TextChange &change);
    void followEdit(const TextRange &range, const AttributedText &text);

    // By the person
    /// Moves the caret; with KeepAnchor the selection reaches from where it began.
    enum class AnchorMode { MoveAnchor, KeepAnchor };
    void moveCaret(qsizetype position, AnchorMode mode);
    void select(const TextSelection &selection);
    void selectAll();

    /// Replaces a range, puts the caret behind the new text, and joins a run of its kind in the history. A range that
    /// cuts a surrogate pair takes all of it.
    void replace(const TextRange &range, QStringView text, EditKind kind);
    /// The same with the caret `caretOffset` units behind the range's start.
    void replace(const TextRange &range, QStringView text, qsizetype caretOffset);
    /// Replaces a range by text with attributes of its own, as one step, and selects `after`.
    void replace(const TextRange &range, const AttributedText &text, const TextSelection &after);
    void insert(QStringView text, EditKind kind) { replace(m_selection.range(), text, kind); }
    void insertLineEnd();
    /// Delete the selection, or if there is none the character, word or paragraph part on that side.
    void deleteBackward();
    void deleteForward();
    void deleteWordBackward();
    void deleteWordForward();
    /// Moves the selected text to `position`, which lies outside the selection, as one step; it stays selected.
    void moveSelectionTo(qsizetype position);
    /// Replaces all ranges (ascending, apart) by `replacement` as one step.
    void replaceAll(const QList<TextRange> &ranges, const QString &replacement);
    void undo();
    void redo();

Q_SIGNALS:
    /// The text is about to change, and still is as it was.
    void willChange(const Tessaline::TextChange &change);
    /// The text changed, whoever did it. Sent before `selectionChanged` and `edited`, so that a view can follow.
    void changed(const Tessaline::TextChange &change);
    /// The text is another one altogether.
    void wasReset();
    void selectionChanged();
    /// The person changed the text.
    void edited(const Tessaline::TextChange &change);

private:
    enum class Author { Person, Program };
    void apply(UndoStep step, Author author);
    void exchange(const TextRange &range, const AttributedText &inserted, const TextSelection &selection,
                  Author author);
    void replaceByPerson(const TextRange &range, QStringView text, qsizetype caretOffset, EditKind kind);
    void deleteRange(const TextRange &range, EditKind kind);
    qsizetype clamped(qsizetype position) const;       // before a character that the position would cut
    qsizetype clampedBehind(qsizetype position) const; // behind it
    void setSelection(const TextSelection &selection);

    AttributedDocument m_document;
    TextAttributes m_typingAttributes;
    TextSelection m_selection;
    UndoHistory m_history;
};

} // namespace Tessaline
