#pragma once

#include <QtCore/QString>

#include <optional>

/// Questions about the characters of a text. A character is what a person takes for one: an extended grapheme cluster
/// of any number of UTF-16 units. So an asterisk with an accent on it is no asterisk, and whoever looks for a sign asks
/// here.
namespace Tessaline::Characters {

/// Whether what begins at `position` sticks to what stands before it: a combining mark, a joiner, a variation selector.
/// False at the end. Line breaks, tabs and other controls before it do not count: nothing sticks to them.
bool extendsPrevious(QStringView text, qsizetype position);
/// Whether what ends at `position` draws the next sign into its own character, as the Arabic number sign does.
bool drawsInNext(QStringView text, qsizetype position);

/// Whether the `length` units at `position`, all signs of ASCII, are as many characters of their own.
inline bool standAlone(QStringView text, qsizetype position, qsizetype length = 1)
{
    return !extendsPrevious(text, position + length) && !drawsInNext(text, position);
}

/// Whether the text begins with the signs of `prefix` (ASCII), the last of which nothing extends.
bool startsWith(QStringView text, QStringView prefix);

/// Where the next `sign` (ASCII, no control) stands at or behind `from`, as a character of its own; -1 if nowhere.
qsizetype indexOf(QStringView text, char16_t sign, qsizetype from = 0);

/// The text without the horizontal spaces (Zs and tab) at both ends. Line breaks stay, and so does a space that carries
/// a mark.
QStringView trimmed(QStringView text);

/// An integer in decimal digits of ASCII, with or without a sign, if it fits 64 bits.
std::optional<qint64> integer(QStringView text);

} // namespace Tessaline::Characters
