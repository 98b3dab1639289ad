#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

namespace Tessaline {

/// One approved local model.
struct AIModelOption {
    QString id; // the name the server knows it by
    QString displayName;
    QString parameterLabel;  // size and quantisation, for display only
    QString downloadSize;    // of the weights, for display only
    int minimumMemoryGB = 0; // the memory at which it is expected to run well
    int contextTokens = 0;   // the context window
    QString summary;         // one sentence
    friend bool operator==(const AIModelOption &, const AIModelOption &) = default;
};

size_t qHash(const AIModelOption &model, size_t seed = 0) noexcept;

/// The stored selection that leaves the choice to `recommendedModel`.
inline const QString kAutomaticModelSelection = QStringLiteral("automatic");

/// All models there are, from the smallest to the largest.
const QList<AIModelOption> &approvedModels();

/// The model for a machine with this much memory: the smallest below 16 GiB, the middle one below 48 GiB, the largest
/// from there on. That is more headroom than `minimumMemoryGB` asks for.
const AIModelOption &recommendedModel(quint64 physicalMemoryBytes);

/// The model that a stored selection means: the one of that `id`, whatever memory it asks for, and the recommended one
/// for "automatic", an `id` that is not in the table, and no selection.
const AIModelOption &resolveActiveModel(const std::optional<QString> &selection, quint64 physicalMemoryBytes);

} // namespace Tessaline
