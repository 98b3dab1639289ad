#include "Services/JsonReader.h"

#include <QtCore/QStringConverter>
#include <QtCore/QVarLengthArray>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

namespace Tessaline {

namespace {

constexpr std::string_view kEscapeLetters = "\"\\/bfnrt";
constexpr std::u16string_view kEscapedSigns = u"\"\\/\b\f\n\r\t";

/// What a text cannot simply run on through: its end, an escape, and control characters, which may not stand in it.
constexpr std::array<bool, 256> kInterruptsText = [] {
    std::array<bool, 256> interrupts{};
    for (size_t byte = 0; byte < 0x20; ++byte)
        interrupts[byte] = true;
    interrupts['"'] = interrupts['\\'] = true;
    return interrupts;
}();

qsizetype plainLength(QByteArrayView bytes)
{
    return std::ranges::find_if(bytes, [](char byte) { return kInterruptsText[static_cast<uchar>(byte)]; }) -
           bytes.begin();
}

bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

char16_t hexValue(QByteArrayView digits)
{
    unsigned value = 0;
    std::from_chars(digits.begin(), digits.end(), value, 16);
    return static_cast<char16_t>(value);
}

/// The text of sound bytes between two quotes.
QString unescaped(QByteArrayView bytes)
{
    QString text(bytes.size(), Qt::Uninitialized); // no byte gives more than one unit
    QChar *end = text.data();
    // NOTE: without this flag a text that begins with U+FEFF would lose it.
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::ConvertInitialBom);
    while (!bytes.isEmpty()) {
        const qsizetype plain = plainLength(bytes);
        end = decoder.appendToBuffer(end, bytes.first(plain));
        bytes = bytes.sliced(plain);
        if (bytes.isEmpty())
            break;
        const char letter = bytes.at(1);
        if (letter == 'u') {
            *end++ = QChar(hexValue(bytes.sliced(2, 4)));
            bytes = bytes.sliced(6);
        } else {
            *end++ = QChar(kEscapedSigns[kEscapeLetters.find(letter)]);
            bytes = bytes.sliced(2);
        }
    }
    text.truncate(end - text.constData());
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
    return hexValue(digits);
}

bool JsonReader::takeEscape()
{
    if (m_rest.isEmpty())
        return false;
    const char letter = m_rest.front();
    m_rest = m_rest.sliced(1);
    if (letter != 'u')
        return kEscapeLetters.find(letter) != std::string_view::npos;

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
        m_rest = m_rest.sliced(plainLength(m_rest));
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
