#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QString>

#include <optional>

namespace Tessaline {

/// Reads JSON in UTF-8 value by value, without a tree of it in memory, at any depth up to `kDeepest`. It is strict:
/// what is not JSON by the letter, half a surrogate pair among the escapes too, is not well-formed. A byte order mark
/// at the start is passed over.
///
/// Each function below takes exactly one value. If that has another type than asked for, it is passed over and the
/// answer is absent or false. As soon as the bytes turn out not to be well-formed, all answers are. So a record is
/// decoded with plain statements, and `finish` tells at the end whether to believe them.
class JsonReader
{
public:
    static constexpr qsizetype kDeepest = 512; // lists and objects inside each other; beyond it is not well-formed

    /// The bytes must outlive this object.
    explicit JsonReader(QByteArrayView utf8);

    std::optional<QString> text();
    /// A number without a fraction that fits; 12.0 and 1e3 are such numbers.
    std::optional<qint64> integer();
    /// Takes the value only if it is `null`.
    bool null();
    /// Calls `member(key)` for each member in order; that takes the member's value. The key is valid until then.
    template <class Member>
    bool object(Member member);
    /// Calls `element()` for each element in order; that takes the element.
    template <class Element>
    bool list(Element element);
    /// Any value.
    void skip();

    /// Whether the bytes were well-formed and held nothing behind the value.
    bool finish();

private:
    struct RawText {
        QByteArrayView bytes; // between the quotes, sound
        bool hasEscapes = false;
    };

    char peek(); // the next byte that is no blank; 0 at the end
    bool take(char sign);
    bool takeWord(QByteArrayView word);
    std::optional<RawText> rawText(); // the quote is next
    bool takeEscape();                // behind the backslash
    std::optional<char16_t> takeHexDigits();
    QByteArrayView number();
    QByteArrayView key(); // with its colon
    bool beginNested();
    void fail();

    QByteArrayView m_rest;
    QByteArray m_key; // one that had to be unescaped
    qsizetype m_depth = 0;
    bool m_isWellFormed = true;
};

template <class Member>
bool JsonReader::object(Member member)
{
    if (peek() != '{') {
        skip();
        return false;
    }
    if (!beginNested())
        return false;
    if (!take('}')) {
        do {
            const QByteArrayView name = key();
            if (!m_isWellFormed)
                return false;
            member(name);
        } while (take(','));
        if (!take('}'))
            fail();
    }
    --m_depth;
    return m_isWellFormed;
}

template <class Element>
bool JsonReader::list(Element element)
{
    if (peek() != '[') {
        skip();
        return false;
    }
    if (!beginNested())
        return false;
    if (!take(']')) {
        do {
            element();
        } while (take(','));
        if (!take(']'))
            fail();
    }
    --m_depth;
    return m_isWellFormed;
}

} // namespace Tessaline
