#pragma once

#include "foundation/ChunkedText.h"
#include "foundation/TextRange.h"

#include <QtCore/QObject>
#include <QtWidgets/QAccessibleWidget>

namespace Tessaline {

class TextView;

/// A text view as assistive technology sees it: its text, caret, selection and places on the screen, and editing.
/// Offsets are UTF-16 units. Nothing here copies the whole text unless it is asked for the whole.
class TextViewAccessible final : public QAccessibleWidget,
                                 public QAccessibleTextInterface,
                                 public QAccessibleEditableTextInterface
{
public:
    explicit TextViewAccessible(TextView &view);

    /// Makes the toolkit use this class for every TextView. May be called often.
    static void install();

    void *interface_cast(QAccessible::InterfaceType type) override;
    QAccessible::State state() const override;
    QString text(QAccessible::Text kind) const override;

    // QAccessibleTextInterface
    void selection(int selectionIndex, int *startOffset, int *endOffset) const override;
    int selectionCount() const override;
    void addSelection(int startOffset, int endOffset) override;
    void removeSelection(int selectionIndex) override;
    void setSelection(int selectionIndex, int startOffset, int endOffset) override;
    int cursorPosition() const override;
    void setCursorPosition(int position) override;
    QString text(int startOffset, int endOffset) const override;
    QString textBeforeOffset(int offset, QAccessible::TextBoundaryType boundary, int *startOffset,
                             int *endOffset) const override;
    QString textAfterOffset(int offset, QAccessible::TextBoundaryType boundary, int *startOffset,
                            int *endOffset) const override;
    QString textAtOffset(int offset, QAccessible::TextBoundaryType boundary, int *startOffset,
                         int *endOffset) const override;
    int characterCount() const override;
    QRect characterRect(int offset) const override;
    int offsetAtPoint(const QPoint &point) const override;
    void scrollToSubstring(int startIndex, int endIndex) override;
    QString attributes(int offset, int *startOffset, int *endOffset) const override;

    // QAccessibleEditableTextInterface
    void deleteText(int startOffset, int endOffset) override;
    void insertText(int offset, const QString &text) override;
    void replaceText(int startOffset, int endOffset, const QString &text) override;

private:
    TextRange clamped(int startOffset, int endOffset) const;
    TextRange unitAt(qsizetype offset, QAccessible::TextBoundaryType boundary) const;
    QString textOf(const TextRange &range, int *startOffset, int *endOffset) const;

    TextView &m_view;
};

/// Tells assistive technology, while there is any, what changes in a text view. Belongs to its view.
class TextViewAnnouncer final : public QObject
{
    Q_OBJECT
public:
    explicit TextViewAnnouncer(TextView &view);

private:
    void announceChange(const TextChange &change);
    void announceSelection();

    TextView &m_view;
    QString m_removed; // what the change that is being made takes away
    bool m_hadSelection = false;
};

} // namespace Tessaline
