#pragma once

#include <QtCore/QVariant>

class QInputMethodEvent;

namespace Tessaline {

class TextView;

/// What an input method does to a text view, and what it asks. Text that is being composed is shown at the caret but is
/// no part of the document until it is committed. Belongs to its view.
class TextViewInputMethod
{
public:
    explicit TextViewInputMethod(TextView &view) : m_view(view) {}

    void handle(QInputMethodEvent *event);
    /// Invalid for what the text view has no answer of its own to.
    QVariant answer(Qt::InputMethodQuery query) const;

private:
    void commit(const QInputMethodEvent &event);
    void compose(const QInputMethodEvent &event);
    QVariant answerAboutSurroundings(Qt::InputMethodQuery query) const;

    TextView &m_view;
};

} // namespace Tessaline
