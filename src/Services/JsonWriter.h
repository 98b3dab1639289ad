#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QStringView>

#include <string_view>
#include <utility>

namespace Tessaline {

/// How JSON is laid out. Indented: two blanks for each level, a blank on both sides of the colon, and a line break
/// inside of empty lists and objects too.
enum class JsonLayout { Compact, Indented };

/// Writes JSON in UTF-8, value by value. The caller sees to it that keys stand in objects only and that everything
/// begun is ended.
class JsonWriter
{
public:
    explicit JsonWriter(JsonLayout layout) : m_layout(layout) {}

    /// Makes room for about so many bytes, so that a large text does not move as it grows.
    void reserve(qsizetype bytes) { m_json.reserve(bytes); }

    void beginObject() { begin('{'); }
    void endObject() { end('}'); }
    void beginList() { begin('['); }
    void endList() { end(']'); }
    /// Of ASCII letters, digits and underscores. One value follows.
    void key(std::string_view key);
    /// `"`, `\`, `/` and control characters are escaped, everything else stands as it is. Half a surrogate pair becomes
    /// U+FFFD.
    void text(QStringView text);
    /// In the fewest digits that read back as the same value: 0.7, 1, 1e+20. It must be finite.
    void number(double number);

    QByteArray take() { return std::move(m_json); }

private:
    void begin(char bracket);
    void end(char bracket);
    void beginValue(); // the comma and the new line before an element or a key
    void newLine();
    void appendEscaped(QByteArrayView utf8);

    JsonLayout m_layout;
    QByteArray m_json;
    int m_depth = 0;
    bool m_isFirst = true; // of its object or list
    bool m_isAfterKey = false;
};

} // namespace Tessaline
