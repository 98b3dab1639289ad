#pragma once

#include "Services/ContextStats.h"

#include <QtCore/QByteArrayView>
#include <QtCore/QString>

#include <variant>

namespace Tessaline {

/// The next piece of the answer; may be empty.
struct TokenEvent {
    QString token;
    friend bool operator==(const TokenEvent &, const TokenEvent &) = default;
};

/// What the server used of the request.
struct ContextStatsEvent {
    ContextStats context;
    friend bool operator==(const ContextStatsEvent &, const ContextStatsEvent &) = default;
};

/// A message for the user. It does not end the stream.
struct ErrorEvent {
    QString error;
    friend bool operator==(const ErrorEvent &, const ErrorEvent &) = default;
};

using StreamEvent = std::variant<TokenEvent, ContextStatsEvent, ErrorEvent>;

/// A line that means nothing here: a comment, an event's name, an empty line, JSON of another shape.
struct IgnoredLine {
    friend bool operator==(const IgnoredLine &, const IgnoredLine &) = default;
};

/// "[DONE]".
struct DoneLine {
    friend bool operator==(const DoneLine &, const DoneLine &) = default;
};

using StreamLine = std::variant<IgnoredLine, DoneLine, TokenEvent, ContextStatsEvent, ErrorEvent>;

/// Who reads the stream. The two differ in three things:
///
/// | | Chat | OneShot |
/// |---|---|---|
/// | a line counts if it begins with | "data:" | "data: ", with the blank |
/// | "[DONE]" | means nothing, the stream ends when the server closes it | ends the stream at once |
/// | events | all three | tokens only |
enum class StreamPath { Chat, OneShot };

/// What one line of the reply to a chat request means, given as UTF-8 without its line end. Behind the prefix blanks
/// and tabs are trimmed; an object that would do as several events is a token before stats before an error. An event
/// counts only if its required keys are there with the right types; unknown keys are passed over. Invalid UTF-8 is read
/// as U+FFFD. Safe from any thread.
StreamLine streamLine(QByteArrayView line, StreamPath path);

} // namespace Tessaline
