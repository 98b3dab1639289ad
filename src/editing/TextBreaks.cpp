#include "editing/TextBreaks.h"

#include <unicode/ubrk.h>

#include <memory>

namespace Tessaline::TextBreaks {

namespace {

struct Close {
    void operator()(UBreakIterator *iterator) const { ubrk_close(iterator); }
};
using Iterator = std::unique_ptr<UBreakIterator, Close>;

Iterator open(UBreakIteratorType type)
{
    UErrorCode status = U_ZERO_ERROR;
    Iterator iterator(ubrk_open(type, "", nullptr, 0, &status));
    if (U_FAILURE(status))
        qFatal("The rules for breaking text are missing from the ICU library.");
    return iterator;
}

/// The thread's iterator of this kind, set to the text until the next call.
UBreakIterator *iteratorOver(Kind kind, QStringView text)
{
    thread_local const Iterator kCharacters = open(UBRK_CHARACTER);
    thread_local const Iterator kWords = open(UBRK_WORD);
    UBreakIterator *const iterator = kind == Kind::Character ? kCharacters.get() : kWords.get();
    UErrorCode status = U_ZERO_ERROR;
    ubrk_setText(iterator, reinterpret_cast<const UChar *>(text.utf16()), static_cast<int32_t>(text.size()), &status);
    Q_ASSERT(U_SUCCESS(status));
    return iterator;
}

} // namespace

qsizetype following(Kind kind, QStringView text, qsizetype position)
{
    const int32_t found = ubrk_following(iteratorOver(kind, text), static_cast<int32_t>(position));
    return found == UBRK_DONE ? text.size() : found;
}

qsizetype preceding(Kind kind, QStringView text, qsizetype position)
{
    const int32_t found = ubrk_preceding(iteratorOver(kind, text), static_cast<int32_t>(position));
    return found == UBRK_DONE ? 0 : found;
}

bool isBreak(Kind kind, QStringView text, qsizetype position)
{
    return position <= 0 || position >= text.size() ||
           ubrk_isBoundary(iteratorOver(kind, text), static_cast<int32_t>(position));
}

} // namespace Tessaline::TextBreaks
