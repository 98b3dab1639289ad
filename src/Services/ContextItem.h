#pragma once

#include <QtCore/QHashFunctions>
#include <QtCore/QList>
#include <QtCore/QMetaType>
#include <QtCore/QString>

#include <optional>

namespace Tessaline {

/// A piece of reference material that goes to the model with a request: an attached file, a concept, an excerpt of the
/// project. It has no identity of its own; two with equal fields are one.
struct ContextItem {
    QString name;                    // what the user sees: a file's name or path, or a topic
    std::optional<QString> subtitle; // the kind of source, "Local File" for instance
    QString content;                 // the text for the model
    std::optional<QString> digest;   // a summary made by the server; only kept and sent back, never read here
    friend bool operator==(const ContextItem &, const ContextItem &) = default;
};

inline size_t qHash(const ContextItem &item, size_t seed = 0)
{
    return qHashMulti(seed, item.name, item.subtitle.has_value(), item.subtitle.value_or(QString()), item.content,
                      item.digest.has_value(), item.digest.value_or(QString()));
}

} // namespace Tessaline

Q_DECLARE_METATYPE(Tessaline::ContextItem)
