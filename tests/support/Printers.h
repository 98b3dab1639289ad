#pragma once

#include "foundation/ChunkedText.h"
#include "foundation/FileURL.h"
#include "foundation/Result.h"

#include <optional>
#include <ostream>

/// How values look in a failed comparison. Every test of these types includes this header, so that they look the same
/// everywhere.
namespace Tessaline {

inline void PrintTo(const ChunkedText &text, std::ostream *out)
{
    constexpr qsizetype kShown = 200; // units
    *out << text.size() << " units in " << text.chunks().size() << " chunks: \""
         << text.sliced(0, std::min(kShown, text.size())).toStdString() << (text.size() > kShown ? "\"..." : "\"");
}

inline void PrintTo(FailureKind kind, std::ostream *out)
{
    constexpr const char *kNames[] = {"NotFound", "NotReadable", "NotWritable", "NoSpace", "Malformed", "Stopped"};
    *out << kNames[static_cast<int>(kind)];
}

inline void PrintTo(const Failure &failure, std::ostream *out)
{
    PrintTo(failure.kind, out);
    *out << " \"" << failure.text.toStdString() << '"';
}

template <class T>
void PrintTo(const Result<T> &result, std::ostream *out)
{
    if (result)
        *out << "success";
    else
        PrintTo(result.failure(), out);
}

inline void PrintTo(const TextChange &change, std::ostream *out)
{
    *out << change.removed << " units at " << change.location << " became " << change.inserted;
}

} // namespace Tessaline
