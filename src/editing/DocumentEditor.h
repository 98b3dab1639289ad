#pragma once

#include "editing/SearchTarget.h"
#include "foundation/FileURL.h"

#include <QtWidgets/QWidget>

#include <optional>

namespace Tessaline {

/// What the editor area asks of an editor, whichever way it shows the document. The owner of the text hands it in; the
/// editor reports what the user changes and nothing else. Main thread only.
class DocumentEditor : public QWidget, public SearchTarget
{
    Q_OBJECT
public:
    using QWidget::QWidget;

    /// Shows this text of this document. The same document with an equal text leaves everything alone; otherwise the
    /// selection is kept by its numbers, clamped to the new length.
    virtual void setDocument(const std::optional<FileURL> &url, const ChunkedText &text) = 0;
    /// Follows an edit that another editor made to the same text: `text` is the whole after `change`. The selection and
    /// the scroll position stay with the text they stood at.
    virtual void followEdit(const ChunkedText &text, const TextChange &change) = 0;
    virtual void setFontSize(double points) = 0;

    /// The widget that takes the keys. It has the slots undo, redo, cut, copy, paste and selectAll.
    virtual QWidget *textView() = 0;

Q_SIGNALS:
    /// The user changed the text: `text` is the whole after `change`.
    void edited(const Tessaline::ChunkedText &text, const Tessaline::TextChange &change);
    /// The shown text changed, in whichever way.
    void shownTextChanged();
    /// The selection in the shown text changed.
    void shownSelectionChanged();
};

} // namespace Tessaline
