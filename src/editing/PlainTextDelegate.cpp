#include "editing/PlainTextDelegate.h"

#include "editing/EditableText.h"
#include "editing/TextTransfer.h"

namespace Tessaline {

std::unique_ptr<QMimeData> PlainTextDelegate::makeTransfer(const TextRange &range)
{
    return std::make_unique<TextTransfer>(m_text.text(), range);
}

bool PlainTextDelegate::insertTransfer(const QMimeData &transfer, const TextRange &range)
{
    const QString text = plainTextOf(transfer);
    if (text.isEmpty())
        return false;
    m_text.replace(range, text, EditKind::Other);
    return true;
}

bool PlainTextDelegate::canInsert(const QMimeData &transfer) const
{
    return hasPlainText(transfer);
}

} // namespace Tessaline
