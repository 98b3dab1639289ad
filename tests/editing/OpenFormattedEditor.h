#pragma once

#include "editing/TextView.h"
#include "editing/WYSIWYGEditor.h"
#include "foundation/EventCenter.h"
#include "foundation_ui/Theme.h"

#include <QtCore/QVariantMap>

namespace Tessaline {

/// The formatted editor in a window that has the focus, with what it reports.
class OpenFormattedEditor
{
public:
    static constexpr int kWidth = 700; // of the window, in pixels
    static constexpr int kHeight = 500;

    explicit OpenFormattedEditor(const QString &markdown = QString());

    // By the program
    void setMarkdown(const QString &markdown); // of the same document
    void open(const QString &path, const QString &markdown);
    void editElsewhere(qsizetype location, qsizetype removed, const QString &text); // in another editor

    // By the person
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, int times = 1);
    void type(const QString &text); // one key for each character of QString
    void undo() { press(Qt::Key_Z, Qt::ControlModifier); }
    void redo() { press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier); }
    void compose(const QString &preedit);
    void commit(const QString &text, int replaceFrom = 0, int replaceLength = 0);
    void click(QPoint point, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void doubleClick(QPoint point);
    void drag(QPoint from, QPoint to); // with the left button
    void wheel(int angle, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void format(const QVariant &type); // by a button of the toolbar

    // What is there
    /// The Markdown as its owner has it, who follows the reported changes alone.
    QString markdown() const { return m_owner.toString(); }
    int editCount() const { return m_editCount; }
    QString shown() const { return editor.shownText().toString(); }
    AttributedText attributed();
    TextSelection selection() { return view().document().selection(); }
    TextView &view() { return *static_cast<TextView *>(editor.textView()); }
    /// Where some words begin in the shown text; they must be there.
    qsizetype positionOf(const QString &words) const;
    /// The middle of a character's left edge, in the viewport, and the rectangle of a character.
    QPoint pointAt(qsizetype position);
    QRect rectOf(qsizetype position);
    /// Paints what waits to be painted.
    void settle();

    void putCaret(qsizetype position) { select(position, position); }
    void putCaretBefore(const QString &words) { putCaret(positionOf(words)); }
    void putCaretBehind(const QString &words) { putCaret(positionOf(words) + words.size()); }
    void putCaretAtEnd() { putCaret(shown().size()); }
    void select(qsizetype anchor, qsizetype caret) { view().document().select({anchor, caret}); }
    void select(const QString &words) { select(positionOf(words), positionOf(words) + words.size()); }

    /// The posted selection events in order.
    QList<QVariantMap> takeSelectionEvents();
    /// The links that were opened.
    QStringList takeOpenedLinks();

private:
    ChunkedText m_owner;
    int m_editCount = 0;
    QList<QVariantMap> m_selectionEvents;
    QStringList m_openedLinks;

public:
    Theme theme;
    EventCenter events;
    WYSIWYGEditor editor{theme, events, [this](const QUrl &url) { m_openedLinks.append(url.toString()); }};
};

} // namespace Tessaline
