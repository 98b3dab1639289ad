#pragma once

#include <QtCore/QMetaType>
#include <QtCore/QString>

namespace Tessaline {

/// One edit that the assistant proposes in a message.
struct EditSuggestion {
    QString id;              // tells the edits of all messages apart
    QString originalText;    // what is to be found in the document
    QString replacementText; // what is to stand there instead; may be empty
    friend bool operator==(const EditSuggestion &, const EditSuggestion &) = default;
};

} // namespace Tessaline

Q_DECLARE_METATYPE(Tessaline::EditSuggestion)
