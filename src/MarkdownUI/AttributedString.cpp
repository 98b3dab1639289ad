#include "MarkdownUI/AttributedString.h"

#include <algorithm>

namespace MarkdownUI {

QList<InlineStyle> AttributedString::stylesOf(const Run &run) const
{
    QList<InlineStyle> styles;
    for (qsizetype number = run.styles; number >= 0; number = m_nestings.at(number).outer)
        styles.append(m_nestings.at(number).style);
    std::ranges::reverse(styles);
    return styles;
}

qsizetype AttributedString::nest(qsizetype outer, InlineStyle style)
{
    m_nestings.append({outer, style});
    return m_nestings.size() - 1;
}

void AttributedString::append(QStringView text, const MarkdownUIAttributes &attributes, qsizetype styles)
{
    if (text.isEmpty())
        return;
    if (!m_runs.isEmpty()) {
        Run &last = m_runs.last();
        if (!last.image && last.styles == styles && last.attributes == attributes) {
            m_text += text;
            last.length += text.size();
            return;
        }
    }
    m_runs.append({m_text.size(), text.size(), attributes, styles, std::nullopt});
    m_text += text;
}

void AttributedString::appendImage(const RawImageData &image, const MarkdownUIAttributes &attributes)
{
    m_runs.append({m_text.size(), 1, attributes, kNoStyles, image});
    m_text += QChar(QChar::ObjectReplacementCharacter);
}

} // namespace MarkdownUI
