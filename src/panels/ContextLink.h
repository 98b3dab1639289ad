#pragma once

#include <QtCore/QString>

#include <optional>

namespace Tessaline {

/// What a link in an answer asks of this application.
struct ContextLink {
    bool isHandled = false;       // it is ours, whatever it asks; all others are for the system
    std::optional<QString> topic; // to be added to the context of the session
    friend bool operator==(const ContextLink &, const ContextLink &) = default;
};

/// Reads `tessaline://add-context?concept=<topic>`, the one form of link that stays inside. Scheme and host count to
/// the letter, case included. Of several topics the first that has a value is taken, which may be empty.
ContextLink contextLink(QStringView url);

} // namespace Tessaline
