#pragma once

#include <QtCore/QStringView>

/// Where characters (extended grapheme clusters) and words end within a short stretch of text, by the rules of Unicode
/// and, for scripts without spaces, by dictionary. The ends of the stretch count as breaks. Safe from any thread.
///
/// WORKAROUND: Qt 6.4: QTextBoundaryFinder tailors Indic, Thai and Khmer text unit by unit and finds breaks between
/// the halves of a surrogate pair beside it.
namespace Tessaline::TextBreaks {

enum class Kind { Character, Word };

/// The first break behind `position` and the last one before it; the end and the start of the text if there is none.
qsizetype following(Kind kind, QStringView text, qsizetype position);
qsizetype preceding(Kind kind, QStringView text, qsizetype position);
bool isBreak(Kind kind, QStringView text, qsizetype position);

} // namespace Tessaline::TextBreaks
