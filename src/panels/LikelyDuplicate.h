#pragma once

#include "Services/ContextItem.h"

#include <QtCore/QList>
#include <QtCore/QStringList>

#include <optional>

namespace Tessaline {

/// The index of the first attached item that `name` may repeat: without regard to case and to white space at the ends,
/// one of the two names holds the other. A blank `name` repeats nothing. Only names are compared.
std::optional<qsizetype> findLikelyDuplicate(const QString &name, const QList<ContextItem> &attached);

/// The suggested topics that are worth showing, in order and spelled as they came: none that is blank, that repeats an
/// attached item, or that differs from an earlier one in case or white space at its ends only.
QStringList visibleSuggestions(const QStringList &suggested, const QList<ContextItem> &attached);

} // namespace Tessaline
