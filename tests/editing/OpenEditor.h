#pragma once

#include "editing/MarkdownEditor.h"
#include "editing/TextView.h"
#include "foundation/EventCenter.h"
#include "foundation_ui/Theme.h"

#include <QtCore/QVariantMap>

namespace Tessaline {

/// The source editor in a window that has the focus, with what it reports.
class OpenEditor
{
public:
    static constexpr int kWidth = 600; // of the window, in pixels
    static constexpr int kHeight = 400;

    explicit OpenEditor(const QString &text = QString());
    explicit OpenEditor(const ChunkedText &text);

    // By the program
    void setText(const QString &text); // of the same document
    void open(const QString &path, const QString &text);

    // By the person
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, int times = 1);
    void type(const QString &text); // one key for each character of QString
    void compose(const QString &preedit);
    void commit(const QString &text, int replaceFrom = 0, int replaceLength = 0);
    void click(QPoint point, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void doubleClick(QPoint point);
    void tripleClick(QPoint point);
    void drag(QPoint from, QPoint to); // with the left button
    void wheel(int angle, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    // What is there
    QString text() const { return editor.shownText().toString(); }
    TextSelection selection() { return view().document().selection(); }
    void select(qsizetype anchor, qsizetype caret) { view().document().select({anchor, caret}); }
    TextView &view() { return *static_cast<TextView *>(editor.textView()); }
    /// A point in the middle of a character's left edge.
    QPoint pointAt(qsizetype position);
    /// Whether the place of the caret is within the viewport, all of it.
    bool isInView(qsizetype position);
    /// Paints what waits to be painted.
    void settle();

    /// The posted selection events in order, without a repeat of the last.
    QList<QVariantMap> takeSelectionEvents();

    Theme theme;
    EventCenter events;
    MarkdownEditor editor{theme, events};
    QList<ChunkedText> editedTexts; // as reported, in order

private:
    QList<QVariantMap> m_selectionEvents;
};

} // namespace Tessaline
