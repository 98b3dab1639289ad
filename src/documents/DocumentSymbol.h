#pragma once

#include "documents/DocumentType.h"

#include <QtCore/QString>

namespace Tessaline {

/// The name of the symbol that stands for a document of this type in the sidebar.
inline QString documentSymbol(std::optional<DocumentType> type)
{
    if (!type)
        return QStringLiteral("doc");
    return *type == DocumentType::Markdown ? QStringLiteral("text.document") : QStringLiteral("doc.plaintext");
}

} // namespace Tessaline
