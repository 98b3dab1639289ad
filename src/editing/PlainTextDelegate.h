#pragma once

#include "editing/TextViewDelegate.h"

namespace Tessaline {

class EditableText;

/// Copies and pastes a text as its characters.
class PlainTextDelegate final : public TextViewDelegate
{
public:
    /// `text` must outlive the delegate.
    explicit PlainTextDelegate(EditableText &text) : m_text(text) {}

    std::unique_ptr<QMimeData> makeTransfer(const TextRange &range) override;
    bool insertTransfer(const QMimeData &transfer, const TextRange &range) override;
    bool canInsert(const QMimeData &transfer) const override;

private:
    EditableText &m_text;
};

} // namespace Tessaline
