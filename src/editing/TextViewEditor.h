#pragma once

#include "editing/DocumentEditor.h"
#include "editing/EditableText.h"
#include "editing/TextViewDelegate.h"

#include <QtCore/QVariantMap>

namespace Tessaline {

class EventCenter;
class TextLook;
class TextView;
class Theme;

/// What both editors are: an EditableText in a TextView. Posts EditorTextSelectionChanged with each change of the
/// selection, and without anything when it is empty or the view was scrolled; follows ClearEditorTextSelection, and
/// InsertMarkdownFormat while its text view has the focus of its window.
class TextViewEditor : public DocumentEditor
{
    Q_OBJECT
public:
    ChunkedText shownText() const override;
    TextRange selection() const override;
    void select(const TextRange &range) override;
    void replaceRanges(const QList<TextRange> &ranges, const QString &replacement) override;
    void setHighlights(const QList<TextRange> &ranges) override;
    QWidget *textView() override;

protected:
    /// `theme` and `events` must outlive the editor.
    TextViewEditor(const Theme &theme, EventCenter &events, QWidget *parent);

    /// Puts up the view; to be called once, in the constructor of the editor, which owns the look and the delegate.
    void makeView(const TextLook &look, TextViewDelegate &delegate, const QString &accessibleName);

    EditableText &editable() { return m_text; }
    const EditableText &editable() const { return m_text; }
    TextView &view() { return *m_view; }
    /// To be called in the editor's destructor: the view loses the focus when it goes, and then asks for its look once
    /// more.
    void deleteView();

    /// What EditorTextSelectionChanged says of a selection that is not empty, beside its rectangle.
    virtual QVariantMap describeSelection(const TextRange &selection) const = 0;
    virtual void applyFormat(const QString &type) = 0;

private:
    void addFormatKeys();
    void postSelection();

    const Theme &m_theme;
    EventCenter &m_events;
    EditableText m_text;
    TextView *m_view = nullptr;
};

} // namespace Tessaline
