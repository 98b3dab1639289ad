#include "MarkdownUI/InlineWriting.h"

#include <algorithm>
#include <utility>

namespace MarkdownUI {

using namespace Qt::StringLiterals;
using Tessaline::TextRange;

namespace {

constexpr QStringView kAlwaysEscaped = u"\\`*_[]<~";

/// Whether the character begins a block or a character reference where it stands.
bool needsEscape(QStringView text, qsizetype at, bool isAtStart, WrittenPlace place)
{
    const QChar character = text.at(at);
    if (kAlwaysEscaped.contains(character))
        return true;
    const QChar next = at + 1 < text.size() ? text.at(at + 1) : QChar(u' ');
    if (character == u'|')
        return place == WrittenPlace::TableCell;
    if (character == u'&')
        return next.isLetterOrNumber() || next == u'#';
    if (!isAtStart || place == WrittenPlace::TableCell)
        return false;
    if (character == u'#' || character == u'>' || character == u'=')
        return true;
    return (character == u'-' || character == u'+') && (next.isSpace() || next == character);
}

/// The writer of one text.
class Writer
{
public:
    Writer(const AttributedString &text, WrittenPlace place) : m_text(text), m_place(place) {}

    QString write(const TextRange &range)
    {
        for (const AttributedString::Run &run : m_text.runs()) {
            const qsizetype from = std::max(run.location, range.location);
            const qsizetype to = std::min(run.location + run.length, range.end());
            if (from < to)
                writeRun(run, QStringView(m_text.text()).sliced(from, to - from));
        }
        changeTo({});
        return std::move(m_out);
    }

private:
    struct Style {
        InlineStyle style = InlineStyle::Strong;
        QString link; // where a link leads
        friend bool operator==(const Style &, const Style &) = default;
    };

    static QString marker(const Style &style)
    {
        switch (style.style) {
        case InlineStyle::Emphasis:
            return u"*"_s;
        case InlineStyle::Strong:
            return u"**"_s;
        case InlineStyle::Strikethrough:
            return u"~~"_s;
        case InlineStyle::Code:
        case InlineStyle::Link:
            break;
        }
        return {};
    }

    void writeRun(const AttributedString::Run &run, QStringView text)
    {
        // 1. The styles that surround the run. Code is a thing of its own, and the same style twice is once.
        QList<Style> styles;
        bool isCode = false;
        for (const InlineStyle style : m_text.stylesOf(run)) {
            if (style == InlineStyle::Code) {
                isCode = true;
                continue;
            }
            const Style entry{style, style == InlineStyle::Link ? run.attributes.link.value_or(QString()) : QString()};
            if (!styles.contains(entry) && (style != InlineStyle::Link || run.attributes.link))
                styles.append(entry);
        }

        // 2. Blanks at the edges stay outside.
        if (!isCode && !run.image) {
            qsizetype blanks = 0;
            while (blanks < text.size() && text.at(blanks).isSpace())
                ++blanks;
            if (blanks > 0) {
                if (m_open != styles)
                    changeTo(common(styles));
                writeText(text.first(blanks));
                text = text.sliced(blanks);
            }
            if (text.isEmpty())
                return;
        }
        changeTo(styles);

        // 3. What stands inside.
        if (run.image)
            m_out.append(u"![%1](%2)"_s.arg(run.image->alt, target(run.image->source)));
        else if (isCode)
            m_out.append(codeSpan(text));
        else
            writeText(text);
    }

    QList<Style> common(const QList<Style> &styles) const
    {
        const auto [open, wanted] = std::mismatch(m_open.begin(), m_open.end(), styles.begin(), styles.end());
        return QList<Style>(m_open.begin(), open);
    }

    void changeTo(const QList<Style> &styles)
    {
        const qsizetype kept = common(styles).size();
        if (m_open.size() > kept) {
            qsizetype end = m_out.size();
            while (end > 0 && m_out.at(end - 1).isSpace())
                --end;
            const QString blanks = m_out.sliced(end);
            m_out.truncate(end);
            while (m_open.size() > kept) {
                const Style style = m_open.takeLast();
                m_out.append(style.style == InlineStyle::Link ? u"](%1)"_s.arg(target(style.link)) : marker(style));
            }
            m_out.append(blanks);
        }
        for (qsizetype i = kept; i < styles.size(); ++i) {
            m_out.append(styles.at(i).style == InlineStyle::Link ? u"["_s : marker(styles.at(i)));
            m_open.append(styles.at(i));
        }
    }

    static QString target(const QString &url)
    {
        const bool isPlain = !url.isEmpty() && std::none_of(url.begin(), url.end(), [](QChar character) {
            return character.isSpace() || character == u'(' || character == u')' || character == u'<';
        });
        return isPlain ? url : u"<%1>"_s.arg(url);
    }

    void writeText(QStringView text)
    {
        for (qsizetype i = 0; i < text.size(); ++i) {
            const QChar character = text.at(i);
            if (character == u'\n') {
                m_out.append(m_place == WrittenPlace::Paragraph ? u"\\\n"_s : u"<br>"_s);
                continue;
            }
            const bool isAtStart = m_out.isEmpty() || m_out.endsWith(u'\n');
            if (needsEscape(text, i, isAtStart, m_place))
                m_out.append(u'\\');
            // "1." at the start of a line would begin a list.
            const bool endsNumber = (character == u'.' || character == u')') && isNumberSinceStart();
            if (endsNumber)
                m_out.append(u'\\');
            m_out.append(character);
        }
    }

    bool isNumberSinceStart() const
    {
        constexpr qsizetype kMostDigits = 9;
        qsizetype digits = 0;
        while (digits < m_out.size() && digits <= kMostDigits && m_out.at(m_out.size() - 1 - digits).isDigit())
            ++digits;
        return digits > 0 && digits <= kMostDigits &&
               (digits == m_out.size() || m_out.at(m_out.size() - 1 - digits) == u'\n');
    }

    const AttributedString &m_text;
    WrittenPlace m_place;
    QString m_out;
    QList<Style> m_open;
};

} // namespace

QString codeSpan(QStringView code)
{
    qsizetype longest = 0;
    qsizetype length = 0;
    for (const QChar character : code) {
        length = character == u'`' ? length + 1 : 0;
        longest = std::max(longest, length);
    }
    const QString fence(longest + 1, u'`');
    const bool needsBlank = code.startsWith(u'`') || code.endsWith(u'`');
    const QString blank = needsBlank ? u" "_s : QString();
    return fence + blank + code.toString() + blank + fence;
}

QString inlineMarkdown(const AttributedString &text, const TextRange &range, WrittenPlace place)
{
    return Writer(text, place).write(range);
}

} // namespace MarkdownUI
