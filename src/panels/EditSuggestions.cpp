#include "panels/EditSuggestions.h"

#include "panels/EditBlocks.h"

#include <utility>

namespace Tessaline {

QList<EditSuggestion> editSuggestions(const ChatMessage &message)
{
    return editSuggestions(message.id.toString(QUuid::WithoutBraces).toUpper(), message.content);
}

QList<EditSuggestion> editSuggestions(const QString &messageId, const QString &answer)
{
    QList<EditSuggestion> suggestions;
    for (const EditBlock &block : editBlocks(answer))
        suggestions.append({.id = messageId + u'_' + QString::number(suggestions.size()),
                            .originalText = answer.mid(block.original.location, block.original.length),
                            .replacementText = answer.mid(block.replacement.location, block.replacement.length)});
    return suggestions;
}

QString displayText(const ChatMessage &message)
{
    QString text;
    qsizetype from = 0;
    for (const EditBlock &block : editBlocks(message.content)) {
        text += QStringView(message.content).sliced(from, block.whole.location - from);
        from = block.whole.end();
    }
    text += QStringView(message.content).sliced(from);
    return std::move(text).trimmed();
}

} // namespace Tessaline
