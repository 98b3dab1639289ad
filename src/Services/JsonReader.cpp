#include "Services/JsonReader.h"

#include "Services/PlainBytes.h"

#include <QtCore/QStringConverter>
#include <QtCore/QVarLengthArray>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

namespace Tessaline {

namespace {

/// The sign that a letter behind a backslash stands for; 0 for a letter that means nothing there, and for "u".
constexpr std::array<char16_t, 128> kEscapedSigns = [] {
    std::array<char16_t, 128> signs{};
    signs['"'] = u'"';
    signs['\\'] = u'\\';
    signs['/'] = u'/';
    signs['b'] = u'\b';
    signs['f'] = u'\f';
    signs['n'] = u'\n';
    signs['r'] = u'\r';
    signs['t'] = u'\t';
    return signs;
}();

/// How far a text simply runs on: to its end, an escape, or a control character, which may not stand in it.
qsizetype runLength(QByteArrayView bytes)
{
    return plainLength<'"', '\\'>(bytes);
}

bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

char16_t hexValue(QStringView digits)
{
    char16_t value = 0;
    for (const QChar digit : digits) {
        const char16_t unit = digit.unicode();
        value = static_cast<char16_t>(value * 16 + (unit <= u'9' ? unit - u'0' : (unit | 0x20) - u'a' + 10));
    }
    return value;
}

/// The text of sound bytes between two quotes.
QString unescaped(QByteArrayView bytes)
{
    // 1. All of it as it stands. No byte gives more than one unit.
    QString text(bytes.size(), Qt::Uninitialized);
    QChar *const begin = text.data();
    // NOTE: without this flag a text that begins with U+FEFF would lose it.
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::ConvertInitialBom);
    const QStringView raw(begin, decoder.appendToBuffer(begin, bytes));

    // 2. Escapes make room, and what stands between them moves up.
    QChar *end = begin;
    for (qsizetype at = 0; at < raw.size();) {
        const qsizetype backslash = raw.indexOf(u'\\', at);
        const qsizetype plain = (backslash < 0 ? raw.size() : backslash) - at;
        if (end != begin + at)
            std::memmove(static_cast<void *>(end), begin + at, static_cast<size_t>(plain) * sizeof(QChar));
        end += plain;
        at += plain;
        if (backslash < 0)
            break;
        const char16_t letter = raw.at(at + 1).unicode();
        *end++ = letter == u'u' ? QChar(hexValue(raw.sliced(at + 2, 4))) : QChar(kEscapedSigns[letter]);
        at += letter == u'u' ? 6 : 2;
    }
    text.truncate(end - begin);
    if (text.size() < text.capacity() / 2)
        text.squeeze();
    return text;
}

} // namespace

JsonReader::JsonReader(QByteArrayView utf8) : m_rest(utf8)
{
    constexpr QByteArrayView kByteOrderMark = "\xEF\xBB\xBF";
    if (m_rest.startsWith(kByteOrderMark))
        m_rest = m_rest.sliced(kByteOrderMark.size());
    if (!m_rest.isValidUtf8())
        fail();
}

void JsonReader::fail()
{
    m_isWellFormed = false;
    m_rest = {};
}

char JsonReader::peek()
{
    qsizetype blanks = 0;
    while (blanks < m_rest.size() && std::string_view(" \t\n\r").find(m_rest[blanks]) != std::string_view::npos)
        ++blanks;
    m_rest = m_rest.sliced(blanks);
    return m_rest.isEmpty() ? '\0' : m_rest.front();
}

bool JsonReader::take(char sign)
{
    if (peek() != sign || m_rest.isEmpty())
        return false;
    m_rest = m_rest.sliced(1);
    return true;
}

bool JsonReader::takeWord(QByteArrayView word)
{
    if (!m_rest.startsWith(word))
        return false;
    m_rest = m_rest.sliced(word.size());
    return true;
}

bool JsonReader::beginNested()
{
    m_rest = m_rest.sliced(1);
    if (++m_depth > kDeepest)
        fail();
    return m_isWellFormed;
}

bool JsonReader::finish()
{
    peek();
    return m_isWellFormed && m_rest.isEmpty();
}

// --- texts ---

std::optional<char16_t> JsonReader::takeHexDigits()
{
    constexpr qsizetype kDigits = 4;
    const QByteArrayView digits = m_rest.first(std::min(kDigits, m_rest.size()));
    const bool areDigits = digits.size() == kDigits && std::ranges::all_of(digits, [](char byte) {
                               return isDigit(byte) || (byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F');
                           });
    if (!areDigits)
        return std::nullopt;
    m_rest = m_rest.sliced(kDigits);
    return hexValue(QString::fromLatin1(digits));
}

bool JsonReader::takeEscape()
{
    if (m_rest.isEmpty())
        return false;
    const char letter = m_rest.front();
    m_rest = m_rest.sliced(1);
    if (letter != 'u')
        return static_cast<uchar>(letter) < kEscapedSigns.size() && kEscapedSigns[static_cast<uchar>(letter)] != 0;

    const std::optional<char16_t> unit = takeHexDigits();
    if (!unit || !QChar::isSurrogate(*unit))
        return unit.has_value();
    if (!QChar::isHighSurrogate(*unit) || !takeWord("\\u"))
        return false;
    const std::optional<char16_t> low = takeHexDigits();
    return low && QChar::isLowSurrogate(*low);
}

std::optional<JsonReader::RawText> JsonReader::rawText()
{
    if (!take('"')) {
        fail();
        return std::nullopt;
    }
    const char *const begin = m_rest.begin();
    RawText text;
    while (true) {
        m_rest = m_rest.sliced(runLength(m_rest));
        if (m_rest.isEmpty())
            break;
        const char sign = m_rest.front();
        if (sign == '"') {
            text.bytes = QByteArrayView(begin, m_rest.begin());
            m_rest = m_rest.sliced(1);
            return text;
        }
        m_rest = m_rest.sliced(1);
        text.hasEscapes = true;
        if (sign != '\\' || !takeEscape())
            break;
    }
    fail();
    return std::nullopt;
}

std::optional<QString> JsonReader::text()
{
    if (peek() != '"') {
        skip();
        return std::nullopt;
    }
    const std::optional<RawText> text = rawText();
    if (!text)
        return std::nullopt;
    return unescaped(text->bytes);
}

QByteArrayView JsonReader::key()
{
    const std::optional<RawText> text = rawText();
    if (!text || !take(':')) {
        fail();
        return {};
    }
    if (!text->hasEscapes)
        return text->bytes;
    m_key = unescaped(text->bytes).toUtf8();
    return m_key;
}

// --- other values ---

/// The digits and signs of a number, which are next. Empty if there is none.
QByteArrayView JsonReader::number()
{
    const QByteArrayView from = m_rest;
    qsizetype at = 0;
    const auto isNext = [&](std::string_view signs) {
        return at < from.size() && signs.find(from[at]) != std::string_view::npos;
    };
    const auto takeDigits = [&] {
        const qsizetype first = at;
        while (at < from.size() && isDigit(from[at]))
            ++at;
        return at > first;
    };

    if (isNext("-"))
        ++at;
    bool isSound = true;
    if (isNext("0"))
        ++at;
    else
        isSound = takeDigits();
    if (isSound && isNext(".")) {
        ++at;
        isSound = takeDigits();
    }
    if (isSound && isNext("eE")) {
        ++at;
        if (isNext("+-"))
            ++at;
        isSound = takeDigits();
    }
    if (!isSound) {
        fail();
        return {};
    }
    m_rest = from.sliced(at);
    return from.first(at);
}

std::optional<qint64> JsonReader::integer()
{
    if (const char next = peek(); next != '-' && !isDigit(next)) {
        skip();
        return std::nullopt;
    }
    const QByteArrayView digits = number();
    qint64 value = 0;
    const auto read = std::from_chars(digits.begin(), digits.end(), value);
    if (digits.isEmpty() || read.ec != std::errc())
        return std::nullopt;
    if (read.ptr == digits.end())
        return value;

    // 12.0 is an integer as well.
    double number = 0;
    const auto readNumber = std::from_chars(digits.begin(), digits.end(), number);
    const bool fits = readNumber.ec == std::errc() && number >= -0x1p63 && number < 0x1p63;
    if (!fits || std::trunc(number) != number)
        return std::nullopt;
    return static_cast<qint64>(number);
}

bool JsonReader::null()
{
    return peek() == 'n' && takeWord("null");
}

void JsonReader::skip()
{
    QVarLengthArray<char, 32> closers; // what ends each list and object that has been begun here
    do {
        // 1. A value, or the start of one.
        const char next = peek();
        if (next == '{' || next == '[') {
            if (!beginNested())
                return;
            closers.append(next == '{' ? '}' : ']');
            if (!take(closers.back())) {
                if (next == '{')
                    key();
                continue;
            }
            closers.removeLast();
            --m_depth;
        } else if (next == '"') {
            rawText();
        } else if (!takeWord("true") && !takeWord("false") && !takeWord("null")) {
            number();
        }

        // 2. What it was the last of.
        while (!closers.isEmpty() && m_isWellFormed) {
            if (take(',')) {
                if (closers.back() == '}')
                    key();
                break;
            }
            if (!take(closers.back())) {
                fail();
                break;
            }
            closers.removeLast();
            --m_depth;
        }
    } while (!closers.isEmpty() && m_isWellFormed);
}

} // namespace Tessaline
