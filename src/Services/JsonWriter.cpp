#include "Services/JsonWriter.h"

#include "Services/PlainBytes.h"

#include <QtCore/QStringConverter>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace Tessaline {

namespace {

void appendEscape(uchar byte, QByteArray &json)
{
    constexpr std::string_view kSigns = "\"\\/\b\f\n\r\t";
    constexpr std::string_view kLetters = "\"\\/bfnrt";
    json.append('\\');
    if (const size_t index = kSigns.find(static_cast<char>(byte)); index != std::string_view::npos) {
        json.append(kLetters[index]);
        return;
    }
    constexpr std::string_view kDigits = "0123456789abcdef";
    json.append("u00").append(kDigits[byte >> 4]).append(kDigits[byte & 0xF]);
}

} // namespace

void JsonWriter::begin(char bracket)
{
    beginValue();
    m_json.append(bracket);
    ++m_depth;
    m_isFirst = true;
}

void JsonWriter::end(char bracket)
{
    --m_depth;
    if (m_isFirst && m_layout == JsonLayout::Indented)
        m_json.append('\n');
    m_isFirst = false;
    newLine();
    m_json.append(bracket);
}

void JsonWriter::beginValue()
{
    if (!m_isAfterKey) {
        if (!m_isFirst)
            m_json.append(',');
        if (m_depth > 0)
            newLine();
    }
    m_isAfterKey = false;
    m_isFirst = false;
}

void JsonWriter::newLine()
{
    if (m_layout == JsonLayout::Compact)
        return;
    constexpr int kIndent = 2;
    m_json.append('\n').append(kIndent * m_depth, ' ');
}

void JsonWriter::key(std::string_view key)
{
    beginValue();
    m_json.append('"').append(QByteArrayView(key)).append(m_layout == JsonLayout::Compact ? "\":" : "\" : ");
    m_isAfterKey = true;
}

void JsonWriter::text(QStringView text)
{
    beginValue();
    m_json.append('"');
    // Piece by piece, so that the bytes are still in the processor's cache when they are looked at.
    constexpr qsizetype kPiece = 8192; // UTF-16 units
    QStringEncoder encoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    std::array<char, 3 * (kPiece + 1)> bytes; // of 3 for a unit; Qt asks for room for one more
    while (!text.isEmpty()) {
        qsizetype size = std::min(kPiece, text.size());
        if (size < text.size() && text[size - 1].isHighSurrogate())
            --size; // a pair stays together
        const char *const end = encoder.appendToBuffer(bytes.data(), text.first(size));
        appendEscaped({bytes.data(), end});
        text = text.sliced(size);
    }
    m_json.append('"');
}

void JsonWriter::appendEscaped(QByteArrayView utf8)
{
    while (true) {
        const qsizetype plain = plainLength<'"', '\\', '/'>(utf8);
        m_json.append(utf8.first(plain));
        if (plain == utf8.size())
            return;
        appendEscape(static_cast<uchar>(utf8[plain]), m_json);
        utf8 = utf8.sliced(plain + 1);
    }
}

void JsonWriter::number(double number)
{
    beginValue();
    Q_ASSERT(std::isfinite(number));
    // Digits without an exponent for what is neither tiny nor so large that not every integer can be told apart.
    const double size = std::abs(number);
    const bool isPlain = size == 0 || (size >= 1e-4 && size < 0x1p54);
    std::array<char, 64> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                   isPlain ? std::chars_format::fixed : std::chars_format::scientific);
    m_json.append(digits.data(), end.ptr - digits.data());
}

} // namespace Tessaline
