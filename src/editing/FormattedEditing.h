#pragma once

#include "editing/EditableText.h"

#include <QtCore/QObject>

namespace Tessaline {

/// What a person does in a formatted text beyond typing: list items that go on with Return, format commands, ticked
/// tasks; and what typed text takes over from the place where it is typed. Each is one step of undo. The cost of each
/// depends on the paragraphs that it touches.
class FormattedEditing final : public QObject
{
    Q_OBJECT
public:
    /// Follows the selection of `text`, which must outlive this object.
    explicit FormattedEditing(EditableText &text, QObject *parent = nullptr);

    /// Return at the caret: begins the next list item. False, and no change, where there is none or something is
    /// selected.
    bool continueList();
    /// A format command ("bold", "h1" ...); false, and no change, for an unknown type.
    bool applyFormat(const QString &type);
    /// Ticks or unticks the task whose box stands at `index`. False, and no change, where there is none. The selection
    /// stays.
    bool toggleTask(qsizetype index);

    /// Whether a range holds nothing but content: no part of a marker or of the text that stands for an image.
    bool isContent(const TextRange &range) const;
    /// The characters of a range that are content, and the range as inline Markdown.
    QString plainText(const TextRange &range) const;
    QString sourceText(const TextRange &range) const;

private:
    void refreshTypingAttributes();
    void exchange(const TextRange &range, const AttributedText &old, const AttributedText &fresh,
                  const TextSelection &selection);

    EditableText &m_text;
};

} // namespace Tessaline
