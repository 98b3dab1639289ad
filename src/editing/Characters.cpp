#include "editing/Characters.h"

#include <QtCore/QtNumeric>

#include <unicode/uchar.h>

namespace Tessaline::Characters {

namespace {

// Below these no code point extends another, or draws one in.
constexpr char16_t kFirstExtending = 0x0300;
constexpr char16_t kFirstDrawing = 0x0600;

int clusterBreak(char32_t codePoint)
{
    return u_getIntPropertyValue(static_cast<UChar32>(codePoint), UCHAR_GRAPHEME_CLUSTER_BREAK);
}

bool isHorizontalSpace(QChar unit)
{
    return unit == u' ' || unit == u'\t' || (unit.unicode() >= 0xA0 && unit.category() == QChar::Separator_Space);
}

} // namespace

bool extendsPrevious(QStringView text, qsizetype position)
{
    if (position >= text.size() || text[position].unicode() < kFirstExtending)
        return false;
    char32_t codePoint = text[position].unicode();
    if (text[position].isHighSurrogate() && position + 1 < text.size() && text[position + 1].isLowSurrogate())
        codePoint = QChar::surrogateToUcs4(text[position], text[position + 1]);
    const int kind = clusterBreak(codePoint);
    return kind == U_GCB_EXTEND || kind == U_GCB_ZWJ || kind == U_GCB_SPACING_MARK;
}

bool drawsInNext(QStringView text, qsizetype position)
{
    if (position <= 0 || text[position - 1].unicode() < kFirstDrawing)
        return false;
    char32_t codePoint = text[position - 1].unicode();
    if (text[position - 1].isLowSurrogate() && position > 1 && text[position - 2].isHighSurrogate())
        codePoint = QChar::surrogateToUcs4(text[position - 2], text[position - 1]);
    return clusterBreak(codePoint) == U_GCB_PREPEND;
}

bool startsWith(QStringView text, QStringView prefix)
{
    return text.startsWith(prefix) && !extendsPrevious(text, prefix.size());
}

qsizetype indexOf(QStringView text, char16_t sign, qsizetype from)
{
    qsizetype found = text.indexOf(QChar(sign), from);
    while (found >= 0 && !standAlone(text, found))
        found = text.indexOf(QChar(sign), found + 1);
    return found;
}

QStringView trimmed(QStringView text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    // Nothing sticks to a tab, for it is a control.
    while (begin < end && isHorizontalSpace(text[begin]) && (text[begin] == u'\t' || !extendsPrevious(text, begin + 1)))
        ++begin;
    while (end > begin && isHorizontalSpace(text[end - 1]) && (text[end - 1] == u'\t' || !drawsInNext(text, end - 1)))
        --end;
    return text.sliced(begin, end - begin);
}

std::optional<qint64> integer(QStringView text)
{
    const bool isNegative = text.startsWith(u'-');
    if (isNegative || text.startsWith(u'+'))
        text = text.sliced(1);
    if (text.isEmpty())
        return std::nullopt;
    qint64 value = 0;
    for (const QChar unit : text) {
        if (unit < u'0' || unit > u'9')
            return std::nullopt;
        // Downwards for negative numbers, since the lowest has no positive counterpart.
        const qint64 digit = isNegative ? u'0' - unit.unicode() : unit.unicode() - u'0';
        if (qMulOverflow(value, qint64(10), &value) || qAddOverflow(value, digit, &value))
            return std::nullopt;
    }
    return value;
}

} // namespace Tessaline::Characters
