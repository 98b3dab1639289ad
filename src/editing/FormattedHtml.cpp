#include "editing/FormattedHtml.h"

#include "editing/BlockStyle.h"
#include "editing/Paragraphs.h"

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using BlockStyle::Kind;

/// The element around neighbouring paragraphs of one kind; empty for none.
QString groupOf(Kind kind)
{
    switch (kind) {
    case Kind::Bullet:
    case Kind::Task:
        return u"ul"_s;
    case Kind::Numbered:
        return u"ol"_s;
    case Kind::Quote:
        return u"blockquote"_s;
    case Kind::Code:
        return u"pre"_s;
    case Kind::TableHeader:
    case Kind::TableRow:
        return u"table"_s;
    default:
        return {};
    }
}

QString escaped(QStringView text)
{
    return text.toString().toHtmlEscaped().replace(QChar(QChar::LineSeparator), u"<br>"_s);
}

QString htmlOfRun(QStringView characters, const TextAttributes &attributes)
{
    QString html = escaped(characters);
    if (attributes.inlineCode)
        html = u"<code>"_s + html + u"</code>"_s;
    if (attributes.italic)
        html = u"<em>"_s + html + u"</em>"_s;
    if (attributes.bold)
        html = u"<strong>"_s + html + u"</strong>"_s;
    if (attributes.linkDestination.isPresent())
        html = u"<a href=\"%1\">"_s.arg(attributes.linkDestination.toString().toHtmlEscaped()) + html + u"</a>"_s;
    return html;
}

QString htmlOfImage(const TextAttributes &attributes)
{
    return u"<img src=\"%1\" alt=\"%2\">"_s.arg(attributes.imageSource.toString().toHtmlEscaped(),
                                                attributes.imageAlt.toString().toHtmlEscaped());
}

QString htmlOfContent(const AttributedText &text, const TextRange &content)
{
    QString html;
    for (qsizetype at = content.location; at < content.end();) {
        const AttributeRun &run = text.runs().at(text.runAt(at));
        qsizetype end = std::min(run.range.end(), content.end());
        if (run.attributes.imageSource.isPresent()) {
            html.append(htmlOfImage(run.attributes)); // once for the whole of its text
            end = text.effectiveRange(at, &TextAttributes::imageSource, content).end();
        } else if (!run.attributes.generatedMarker) {
            html.append(htmlOfRun(QStringView(text.text()).sliced(at, end - at), run.attributes));
        }
        at = end;
    }
    return html;
}

QString element(const QString &name, const QString &inner)
{
    return u"<"_s + name + u">"_s + inner + u"</"_s + name + u">"_s;
}

QString htmlOfRow(const AttributedText &text, const TextRange &content, const QString &cell)
{
    QString row;
    for (qsizetype at = content.location;;) {
        const qsizetype tab = text.text().indexOf(u'\t', at);
        const qsizetype end = tab < 0 ? content.end() : std::min(tab, content.end());
        row.append(element(cell, htmlOfContent(text, {at, end - at})));
        if (end == content.end())
            return element(u"tr"_s, row);
        at = end + 1;
    }
}

QString htmlOfParagraph(const AttributedText &text, const TextRange &content, const BlockStyle::Tag &tag)
{
    if (tag.kind == Kind::TableHeader || tag.kind == Kind::TableRow)
        return htmlOfRow(text, content, tag.kind == Kind::TableHeader ? u"th"_s : u"td"_s);
    const QString html = htmlOfContent(text, content);
    switch (tag.kind) {
    case Kind::Heading:
        return element(u"h%1"_s.arg(std::clamp<qint64>(BlockStyle::headingLevel(tag.argument), 1, 6)), html);
    case Kind::Bullet:
        return element(u"li"_s, html);
    case Kind::Numbered:
        return u"<li value=\"%1\">%2</li>"_s.arg(tag.argument.toString().toHtmlEscaped(), html);
    case Kind::Task:
        return element(u"li"_s, (tag.argument == u"1" ? u"\u2611 "_s : u"\u2610 "_s) + html);
    case Kind::Code:
        return html + u"\n"_s;
    case Kind::HorizontalRule:
        return u"<hr>"_s;
    default:
        return element(u"p"_s, html);
    }
}

} // namespace

QString htmlOf(const AttributedText &text)
{
    QString html;
    QString group;
    SharedText styleBefore;
    for (const TextRange &paragraph : Paragraphs::in(text.text(), {0, text.size()})) {
        const SharedText style = text.attributesAt(paragraph.location).blockStyle;
        const BlockStyle::Tag tag = BlockStyle::read(style.view());
        // Code of another language and the header of another table begin anew.
        const bool beginsAnew = tag.kind == Kind::TableHeader || (tag.kind == Kind::Code && style != styleBefore);
        if (const QString next = groupOf(tag.kind); next != group || beginsAnew) {
            if (!group.isEmpty())
                html.append(u"</"_s + group + u">"_s);
            if (!next.isEmpty())
                html.append(u"<"_s + next + u">"_s);
            group = next;
        }
        html.append(htmlOfParagraph(text, Paragraphs::contentOf(text.text(), paragraph), tag));
        styleBefore = style;
    }
    if (!group.isEmpty())
        html.append(u"</"_s + group + u">"_s);
    return html;
}

} // namespace Tessaline
