#pragma once

#include "editing/EditableText.h"

class QKeyEvent;

namespace Tessaline {

class TextView;

/// What the keyboard does to a text view: the desktop's usual keys for moving, selecting, deleting and the standard
/// commands; everything else that has a text types it. Belongs to its view.
class TextViewKeys
{
public:
    explicit TextViewKeys(TextView &view) : m_view(view) {}

    /// Whether a key is for the text view even where a menu has it as a shortcut: typing and plain motions are.
    static bool isOurs(const QKeyEvent &event);

    /// Handles a key press; false leaves it to others.
    bool handle(QKeyEvent *event);

private:
    bool move(QKeyEvent *event);
    bool edit(QKeyEvent *event);
    void moveTo(qsizetype position, EditableText::AnchorMode mode);
    void moveByRows(int rows, EditableText::AnchorMode mode);
    void moveByPage(int direction, EditableText::AnchorMode mode);
    qsizetype stepTarget(bool isForward, bool byWord, EditableText::AnchorMode mode) const;
    qsizetype paragraphStartTarget() const;

    TextView &m_view;
    qreal m_desiredX = 0;        // where moving by rows wants to stay
    qsizetype m_desiredFor = -1; // the caret for which that holds
};

} // namespace Tessaline
