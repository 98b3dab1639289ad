#include "editing/Paragraphs.h"

#include <algorithm>

namespace Tessaline::Paragraphs {

namespace {

bool isEnd(QChar unit)
{
    return unit == u'\n' || unit == u'\r' || unit == QChar(QChar::ParagraphSeparator);
}

} // namespace

qsizetype endOf(QStringView text, qsizetype position)
{
    // Between CR and LF the position is inside the paragraph that they end.
    const auto end = std::find_if(text.begin() + position, text.end(), isEnd);
    if (end == text.end())
        return text.size();
    const bool isPair = *end == u'\r' && end + 1 != text.end() && *(end + 1) == u'\n';
    return end - text.begin() + (isPair ? 2 : 1);
}

TextRange around(QStringView text, TextRange range)
{
    qsizetype begin = range.location;
    if (begin > 0 && begin < text.size() && text[begin] == u'\n' && text[begin - 1] == u'\r')
        --begin;
    while (begin > 0 && !isEnd(text[begin - 1]))
        --begin;
    // The last unit of the range decides where the search for the end begins, so that an end inside the range counts.
    const qsizetype end = endOf(text, range.isEmpty() ? range.location : range.end() - 1);
    return {begin, end - begin};
}

QList<TextRange> in(QStringView text, TextRange range)
{
    QList<TextRange> paragraphs;
    for (qsizetype begin = range.location; begin < range.end();) {
        const qsizetype end = endOf(text, begin);
        paragraphs.append({begin, end - begin});
        begin = end;
    }
    return paragraphs;
}

TextRange contentOf(QStringView text, TextRange paragraph)
{
    while (!paragraph.isEmpty() && (text[paragraph.end() - 1] == u'\n' || text[paragraph.end() - 1] == u'\r'))
        --paragraph.length;
    return paragraph;
}

} // namespace Tessaline::Paragraphs
