#pragma once

#include <QtCore/QMetaType>
#include <QtCore/QString>
#include <QtCore/QUuid>

namespace Tessaline {

/// The two roles of a message, as they stand on the wire and on the disk.
inline constexpr QStringView kUserRole = u"user";
inline constexpr QStringView kAssistantRole = u"assistant";

/// One turn of a conversation.
struct ChatMessage {
    QUuid id;        // its identity; never changes
    QString role;    // kUserRole or kAssistantRole; whatever is not the user's counts as the assistant's
    QString content; // all that changes in the life of a message
    friend bool operator==(const ChatMessage &, const ChatMessage &) = default;

    bool isFromUser() const { return role == kUserRole; }
};

} // namespace Tessaline

Q_DECLARE_METATYPE(Tessaline::ChatMessage)
