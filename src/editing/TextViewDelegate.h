#pragma once

#include "foundation/TextRange.h"

#include <QtCore/QMimeData>
#include <QtCore/QPoint>

#include <memory>

namespace Tessaline {

/// What an editor decides in the place of its text view. Each of these may be left to the view.
class TextViewDelegate
{
public:
    virtual ~TextViewDelegate() = default;

    /// What goes to the clipboard, or with a drag, for a range of the text; never empty.
    virtual std::unique_ptr<QMimeData> makeTransfer(const TextRange &range) = 0;
    /// Puts what was pasted or dropped in place of a range; false if there is nothing in it to put in.
    virtual bool insertTransfer(const QMimeData &transfer, const TextRange &range) = 0;
    /// Whether `insertTransfer` would find something.
    virtual bool canInsert(const QMimeData &transfer) const = 0;

    /// Return was pressed; true if that is done with.
    virtual bool handleReturn() { return false; }
    /// The left button was pressed at a point of the viewport; true if that is done with.
    virtual bool handleClick(QPoint, Qt::KeyboardModifiers) { return false; }
    /// The pointer to show over a point of the viewport.
    virtual Qt::CursorShape cursorAt(QPoint, Qt::KeyboardModifiers) { return Qt::IBeamCursor; }
};

} // namespace Tessaline
