#pragma once

#include "Services/ChatMessage.h"
#include "Services/EditSuggestion.h"

#include <QtCore/QList>

namespace Tessaline {

/// The changes that the message proposes, in order. Their ids are the message's id, an underscore and the number of the
/// block in the message, from 0: while an answer grows, no id ever moves to another block.
QList<EditSuggestion> editSuggestions(const ChatMessage &message);

/// The same for an answer that is no record: `messageId` is the text that the ids begin with.
QList<EditSuggestion> editSuggestions(const QString &messageId, const QString &answer);

/// What is shown of an answer beside the cards of its proposals: the text without its complete blocks, and without
/// white space at its ends. Empty if there is nothing but blocks.
QString displayText(const ChatMessage &message);

} // namespace Tessaline
