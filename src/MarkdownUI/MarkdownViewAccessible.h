#pragma once

#include "MarkdownUI/DisplayText.h"

#include <QtWidgets/QAccessibleWidget>

#include <optional>
#include <vector>

namespace MarkdownUI {

class MarkdownView;

/// A Markdown view as assistive technology sees it: one text, with a line for each block, its selection, and as
/// children the links and buttons in it. Offsets are UTF-16 units.
class MarkdownViewAccessible final : public QAccessibleWidget, public QAccessibleTextInterface
{
public:
    explicit MarkdownViewAccessible(MarkdownView &view);
    ~MarkdownViewAccessible() override;

    /// Makes the toolkit use this class for every MarkdownView. May be called often.
    static void install();

    void *interface_cast(QAccessible::InterfaceType type) override;
    QAccessible::State state() const override;
    QString text(QAccessible::Text kind) const override;
    int childCount() const override;
    QAccessibleInterface *child(int index) const override;
    int indexOfChild(const QAccessibleInterface *child) const override;
    QAccessibleInterface *childAt(int x, int y) const override;
    QAccessibleInterface *focusChild() const override;

    // QAccessibleTextInterface
    void selection(int selectionIndex, int *startOffset, int *endOffset) const override;
    int selectionCount() const override;
    void addSelection(int startOffset, int endOffset) override;
    void removeSelection(int selectionIndex) override;
    void setSelection(int selectionIndex, int startOffset, int endOffset) override;
    int cursorPosition() const override;
    void setCursorPosition(int position) override;
    QString text(int startOffset, int endOffset) const override;
    int characterCount() const override;
    QRect characterRect(int offset) const override;
    int offsetAtPoint(const QPoint &point) const override;
    void scrollToSubstring(int startIndex, int endIndex) override;
    QString attributes(int offset, int *startOffset, int *endOffset) const override;

private:
    void forget() const;
    void refresh() const; // forgets what was made from an older text
    const DisplayText &displayText() const;
    const std::vector<TargetPlace> &places() const;

    MarkdownView &m_view;
    mutable int m_revision = -1; // of the display, that the following were made from
    mutable std::optional<DisplayText> m_text;
    mutable std::optional<std::vector<TargetPlace>> m_places;
    mutable std::vector<QAccessible::Id> m_children; // registered with the toolkit; one for each place
};

/// Tells assistive technology, while there is any, what changes in a Markdown view. Belongs to its view.
class MarkdownViewAnnouncer final : public QObject
{
    Q_OBJECT
public:
    explicit MarkdownViewAnnouncer(MarkdownView &view);

private:
    void announceText();
    void announceSelection();

    MarkdownView &m_view;
    QString m_known; // the text that was told last
};

} // namespace MarkdownUI
