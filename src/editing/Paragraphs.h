#pragma once

#include "foundation/TextRange.h"

#include <QtCore/QList>
#include <QtCore/QStringView>

/// The paragraphs of a text. One ends with LF, CR, CR LF or U+2029, which belongs to it; a line separator (U+2028) ends
/// none, and neither do the other vertical controls.
namespace Tessaline::Paragraphs {

/// Where the next paragraph begins behind `position`: behind the first end of one that stands there or later.
qsizetype endOf(QStringView text, qsizetype position);

/// The whole paragraphs that `range` touches. An empty range touches the one that it stands in, and a range that ends
/// just behind a paragraph's end does not touch the next.
TextRange around(QStringView text, TextRange range);

/// Each paragraph of a range that `around` gave.
QList<TextRange> in(QStringView text, TextRange range);

/// The paragraph without the LF and CR at its end. NOTE: U+2029 stays, it is written like any character.
TextRange contentOf(QStringView text, TextRange paragraph);

} // namespace Tessaline::Paragraphs
