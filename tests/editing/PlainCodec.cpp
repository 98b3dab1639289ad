#include "tests/editing/PlainCodec.h"

#include <unicode/brkiter.h>
#include <unicode/unistr.h>

#include <memory>
#include <optional>

namespace Tessaline::PlainCodec {

namespace {

using namespace Qt::StringLiterals;

QString joined(const QStringList &characters, qsizetype from, qsizetype to)
{
    return characters.mid(from, to - from).join(QString());
}

QString joined(const QStringList &characters, qsizetype from = 0)
{
    return joined(characters, from, characters.size());
}

bool hasAt(const QStringList &text, qsizetype at, const QString &ascii)
{
    for (qsizetype i = 0; i < ascii.size(); ++i) {
        if (at + i >= text.size() || text.at(at + i) != ascii.at(i))
            return false;
    }
    return true;
}

bool startsWith(const QString &text, const QString &ascii)
{
    return hasAt(characters(text), 0, ascii);
}

QString withoutFirst(const QString &text, qsizetype count)
{
    return joined(characters(text), count);
}

qsizetype search(const QStringList &text, qsizetype from, const QString &ascii)
{
    for (qsizetype i = from; i < text.size(); ++i) {
        if (hasAt(text, i, ascii))
            return i;
    }
    return -1;
}

QString replaced(const QString &text, QChar sign, const QString &by)
{
    QString result;
    for (const QString &character : characters(text))
        result += character == sign ? by : character;
    return result;
}

QStringList splitAt(const QString &text, QChar sign)
{
    QStringList pieces{QString()};
    for (const QString &character : characters(text)) {
        if (character == sign)
            pieces.append(QString());
        else
            pieces.last() += character;
    }
    return pieces;
}

std::optional<qint64> integer(const QString &text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isSign = i == 0 && (text.at(i) == u'+' || text.at(i) == u'-');
        if (!isSign && (text.at(i) < u'0' || text.at(i) > u'9'))
            return std::nullopt;
    }
    bool ok = false;
    const qint64 number = text.toLongLong(&ok, 10);
    return ok ? std::optional(number) : std::nullopt;
}

// --- lines ---

struct Heading {
    int level;
    QString content;
};

std::optional<Heading> parseHeadingLine(const QString &line)
{
    const QStringList text = characters(line);
    int level = 0;
    while (level < text.size() && text.at(level) == u"#"_s)
        ++level;
    if (level < 1 || level > 6 || level >= text.size() || text.at(level) != u" "_s)
        return std::nullopt;
    return Heading{level, joined(text, level + 1)};
}

struct Task {
    bool isDone;
    QString content;
};

std::optional<Task> parseTaskLine(const QString &line)
{
    for (const QString &open : {u"- [ ] "_s, u"* [ ] "_s, u"+ [ ] "_s}) {
        if (startsWith(line, open))
            return Task{false, withoutFirst(line, 6)};
    }
    for (const QString &done : {u"- [x] "_s, u"- [X] "_s, u"* [x] "_s, u"* [X] "_s, u"+ [x] "_s, u"+ [X] "_s}) {
        if (startsWith(line, done))
            return Task{true, withoutFirst(line, 6)};
    }
    return std::nullopt;
}

struct Numbered {
    qint64 number;
    QString content;
};

std::optional<Numbered> parseNumberedLine(const QString &line)
{
    const QStringList text = characters(line);
    const qsizetype dot = search(text, 0, u"."_s);
    if (dot < 0 || dot == text.size() - 1 || text.at(dot + 1) != u" "_s)
        return std::nullopt;
    const std::optional<qint64> number = integer(joined(text, 0, dot));
    if (!number)
        return std::nullopt;
    return Numbered{*number, joined(text, dot + 2)};
}

bool isHorizontalRuleLine(const QString &trimmedLine)
{
    QStringList text = characters(trimmedLine);
    text.removeAll(u" "_s);
    if (text.size() < 3 || text.count(text.first()) != text.size())
        return false;
    return text.first() == u"-"_s || text.first() == u"*"_s || text.first() == u"_"_s;
}

QStringList splitTableCells(const QString &line)
{
    QStringList text = characters(trimmed(line));
    if (!text.isEmpty() && text.first() == u"|"_s)
        text.removeFirst();
    if (!text.isEmpty() && text.last() == u"|"_s)
        text.removeLast();
    QStringList cells;
    for (const QString &cell : splitAt(joined(text), u'|'))
        cells.append(trimmed(cell));
    return cells;
}

bool isTableDelimiterRow(const QString &line)
{
    for (const QString &cell : splitTableCells(line)) {
        QStringList text = characters(cell);
        text.removeAll(u":"_s);
        if (text.size() < 3 || text.count(u"-"_s) != text.size())
            return false;
    }
    return true;
}

bool opensTable(const QStringList &lines, qsizetype i)
{
    return i + 1 < lines.size() && characters(lines.at(i)).contains(u"|"_s) &&
           splitTableCells(lines.at(i)).size() >= 2 && isTableDelimiterRow(lines.at(i + 1));
}

bool isBullet(const QString &line)
{
    return startsWith(line, u"- "_s) || startsWith(line, u"* "_s) || startsWith(line, u"+ "_s);
}

bool startsNewBlock(const QStringList &lines, qsizetype k)
{
    if (k >= lines.size())
        return false;
    const QString &line = lines.at(k);
    return startsWith(trimmed(line), u"```"_s) || parseHeadingLine(line) || parseTaskLine(line) ||
           parseNumberedLine(line) || isBullet(line) || startsWith(line, u"> "_s) ||
           isHorizontalRuleLine(trimmed(line)) || opensTable(lines, k);
}

// --- inline ---

AttributedText withAttributes(AttributedText text, const TextAttributes &added)
{
    const TextRange all{0, text.size()};
    if (added.bold)
        text.set(all, &TextAttributes::bold, true);
    if (added.italic)
        text.set(all, &TextAttributes::italic, true);
    if (added.linkDestination.isPresent())
        text.set(all, &TextAttributes::linkDestination, added.linkDestination);
    if (added.blockStyle.isPresent())
        text.set(all, &TextAttributes::blockStyle, added.blockStyle);
    return text;
}

TextAttributes emphasis(bool bold, bool italic)
{
    TextAttributes attributes;
    attributes.bold = bold;
    attributes.italic = italic;
    return attributes;
}

// --- writing ---

struct Record {
    QString tag;
    QString content; // inline Markdown
    QString plain;
};

struct Segment {
    QString text;
    QString kind;
};

void serializeInlineRun(const AttributedText &text, TextRange range, TextRange limits, QString &result)
{
    const TextAttributes attributes = text.attributesAt(range.location);
    if (attributes.generatedMarker)
        return;
    if (attributes.imageSource.isPresent()) {
        if (text.effectiveRange(range.location, &TextAttributes::imageSource, limits).location != range.location)
            return;
        const QString alt = attributes.imageAlt.isPresent() ? attributes.imageAlt.toString() : u"Image"_s;
        result += u"!["_s + replaced(alt, u']', u"\\]"_s) + u"]("_s + attributes.imageSource.toString() + u")"_s;
        return;
    }
    QString run = text.text().mid(range.location, range.length);
    run = replaced(run, QChar(0x2028), u"  \n"_s);
    if (attributes.inlineCode) {
        run = u"`"_s + replaced(run, u'`', u"\\`"_s) + u"`"_s;
    } else {
        for (const QChar sign : u"\\*`[]"_s)
            run = replaced(run, sign, u"\\"_s + sign);
    }
    if (attributes.linkDestination.isPresent())
        run = u"["_s + run + u"]("_s + attributes.linkDestination.toString() + u")"_s;
    if (attributes.bold && attributes.italic)
        run = u"***"_s + run + u"***"_s;
    else if (attributes.italic)
        run = u"*"_s + run + u"*"_s;
    else if (attributes.bold)
        run = u"**"_s + run + u"**"_s;
    result += run;
}

template <class Each>
void forEachRun(const AttributedText &text, TextRange limits, Each each)
{
    for (const AttributeRun &run : text.runs()) {
        const qsizetype begin = std::max(run.range.location, limits.location);
        const qsizetype end = std::min(run.range.end(), limits.end());
        if (begin < end)
            each(TextRange{begin, end - begin});
    }
}

QList<Record> recordsOf(const AttributedText &text)
{
    QList<Record> records;
    for (qsizetype begin = 0; begin < text.size();) {
        qsizetype end = begin;
        while (end < text.size() && !u"\n\r\u2029"_s.contains(text.text().at(end)))
            ++end;
        if (end < text.size())
            end += text.text().mid(end, 2) == u"\r\n"_s ? 2 : 1;
        qsizetype contentEnd = end;
        while (contentEnd > begin && u"\n\r"_s.contains(text.text().at(contentEnd - 1)))
            --contentEnd;
        const SharedText &tag = text.attributesAt(begin).blockStyle;
        Record record{tag.isPresent() ? tag.toString() : u"paragraph"_s, {}, {}};
        const TextRange content{begin, contentEnd - begin};
        forEachRun(text, content, [&](TextRange run) {
            serializeInlineRun(text, run, content, record.content);
            if (!text.attributesAt(run.location).generatedMarker)
                record.plain += text.text().mid(run.location, run.length);
        });
        records.append(record);
        begin = end;
    }
    return records;
}

QString formatTableRow(const QStringList &cells)
{
    QStringList written;
    for (const QString &cell : cells)
        written.append(replaced(cell, u'|', u"\\|"_s));
    return u"| "_s + written.join(u" | "_s) + u" |"_s;
}

QString family(const QString &kind)
{
    if (kind == u"bullet"_s || startsWith(kind, u"numbered:"_s) || startsWith(kind, u"task:"_s))
        return u"list"_s;
    return kind == u"quote"_s ? kind : QString();
}

QList<Segment> segmentsOf(const QList<Record> &records)
{
    QList<Segment> segments;
    for (qsizetype i = 0; i < records.size();) {
        const Record &record = records.at(i++);
        const QString &tag = record.tag;
        if (startsWith(tag, u"code:"_s)) {
            QStringList lines{u"```"_s + tag.mid(5), record.plain};
            for (; i < records.size() && records.at(i).tag == tag; ++i)
                lines.append(records.at(i).plain);
            lines.append(u"```"_s);
            segments.append({lines.join(u'\n'), u"code"_s});
        } else if (tag == u"tableHeader"_s) {
            const QStringList cells = record.content.split(u'\t');
            QStringList lines{formatTableRow(cells), formatTableRow(QStringList(cells.size(), u"---"_s))};
            for (; i < records.size() && records.at(i).tag == u"tableRow"_s; ++i)
                lines.append(formatTableRow(records.at(i).content.split(u'\t')));
            segments.append({lines.join(u'\n'), u"table"_s});
        } else if (startsWith(tag, u"heading:"_s)) {
            const qint64 level = std::clamp<qint64>(integer(tag.mid(8)).value_or(1), 1, 6);
            segments.append({QString(level, u'#') + u" "_s + record.content, tag});
        } else if (tag == u"quote"_s) {
            segments.append({u"> "_s + record.content, tag});
        } else if (tag == u"bullet"_s) {
            segments.append({u"- "_s + record.content, tag});
        } else if (startsWith(tag, u"numbered:"_s)) {
            segments.append({tag.mid(9) + u". "_s + record.content, tag});
        } else if (tag == u"task:1"_s) {
            segments.append({u"- [x] "_s + record.content, tag});
        } else if (tag == u"task:0"_s) {
            segments.append({u"- [ ] "_s + record.content, tag});
        } else if (tag == u"horizontalRule"_s) {
            segments.append({u"---"_s, tag});
        } else {
            segments.append({record.content, tag});
        }
    }
    return segments;
}

} // namespace

QStringList characters(const QString &text)
{
    UErrorCode error = U_ZERO_ERROR;
    static const std::unique_ptr<icu::BreakIterator> kIterator(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), error));
    const icu::UnicodeString units(reinterpret_cast<const UChar *>(text.utf16()), static_cast<int32_t>(text.size()));
    kIterator->setText(units);
    QStringList characters;
    for (int32_t begin = 0, end; (end = kIterator->next()) != icu::BreakIterator::DONE; begin = end)
        characters.append(text.mid(begin, end - begin));
    return characters;
}

QString trimmed(const QString &text)
{
    static const QString kSpaces = u"\t \u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009\u200A"
                                   u"\u202F\u205F\u3000"_s;
    QStringList list = characters(text);
    while (!list.isEmpty() && list.first().size() == 1 && kSpaces.contains(list.first()))
        list.removeFirst();
    while (!list.isEmpty() && list.last().size() == 1 && kSpaces.contains(list.last()))
        list.removeLast();
    return joined(list);
}

QList<Block> parseBlocks(QString text)
{
    const QStringList lines = text.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n').split(u'\n');
    QList<Block> blocks;
    const auto append = [&blocks](const QString &content, const QString &style, const QString &marker = {},
                                  bool parses = true) {
        blocks.append({content, SharedText(style), marker.isEmpty() ? SharedText() : SharedText(marker), parses});
    };
    for (qsizetype i = 0; i < lines.size();) {
        const QString &line = lines.at(i);
        const QString t = trimmed(line);
        if (t.isEmpty()) {
            ++i;
        } else if (startsWith(t, u"```"_s)) {
            const QString style = u"code:"_s + trimmed(withoutFirst(t, 3));
            QStringList body;
            for (++i; i < lines.size(); ++i) {
                if (startsWith(trimmed(lines.at(i)), u"```"_s)) {
                    ++i;
                    break;
                }
                body.append(lines.at(i));
            }
            if (body.isEmpty())
                body.append(QString());
            for (const QString &code : body)
                append(code, style, {}, false);
        } else if (opensTable(lines, i)) {
            append(splitTableCells(line).join(u'\t'), u"tableHeader"_s);
            for (i += 2; i < lines.size() && characters(lines.at(i)).contains(u"|"_s) &&
                         splitTableCells(lines.at(i)).size() >= 2;
                 ++i)
                append(splitTableCells(lines.at(i)).join(u'\t'), u"tableRow"_s);
        } else if (const auto heading = parseHeadingLine(line)) {
            append(heading->content, u"heading:"_s + QString::number(heading->level));
            ++i;
        } else if (isHorizontalRuleLine(t)) {
            append(QString(16, QChar(0x2500)), u"horizontalRule"_s, {}, false);
            ++i;
        } else if (const auto task = parseTaskLine(line)) {
            append(task->content, task->isDone ? u"task:1"_s : u"task:0"_s, task->isDone ? u"☑\t"_s : u"☐\t"_s);
            ++i;
        } else if (const auto item = parseNumberedLine(line)) {
            const QString number = QString::number(item->number);
            append(item->content, u"numbered:"_s + number, number + u".\t"_s);
            ++i;
        } else if (isBullet(line)) {
            append(withoutFirst(line, 2), u"bullet"_s, u"•\t"_s);
            ++i;
        } else if (startsWith(line, u"> "_s)) {
            append(withoutFirst(line, 2), u"quote"_s);
            ++i;
        } else {
            QString p = line;
            qsizetype k = i + 1;
            for (; k < lines.size() && !trimmed(lines.at(k)).isEmpty() && !startsNewBlock(lines, k); ++k) {
                const QStringList text_ = characters(p);
                if (text_.size() >= 2 && text_.last() == u" "_s && text_.at(text_.size() - 2) == u" "_s)
                    p = joined(text_, 0, text_.size() - 2) + QChar(0x2028) + lines.at(k);
                else
                    p += u" "_s + trimmed(lines.at(k));
            }
            append(p, u"paragraph"_s);
            i = k;
        }
    }
    return blocks;
}

AttributedText parseInlineMarkdown(const QString &text)
{
    const QStringList list = characters(text);
    AttributedText result;
    for (qsizetype i = 0; i < list.size();) {
        if (list.at(i) == u"\\"_s && i + 1 < list.size()) {
            result.append(list.at(i + 1), {});
            i += 2;
            continue;
        }
        if (hasAt(list, i, u"!["_s)) {
            const qsizetype middle = search(list, i + 2, u"]("_s);
            const qsizetype closing = middle < 0 ? -1 : search(list, middle + 2, u")"_s);
            if (closing >= 0) {
                TextAttributes image;
                image.imageAlt = SharedText(joined(list, i + 2, middle));
                image.imageSource = SharedText(joined(list, middle + 2, closing));
                result.append(u"\U0001F5BC "_s + image.imageAlt.toString(), image);
                i = closing + 1;
                continue;
            }
        }
        if (list.at(i) == u"["_s) {
            const qsizetype middle = search(list, i + 1, u"]("_s);
            const qsizetype closing = middle < 0 ? -1 : search(list, middle + 2, u")"_s);
            if (closing >= 0) {
                TextAttributes link;
                link.linkDestination = SharedText(joined(list, middle + 2, closing));
                result.append(withAttributes(parseInlineMarkdown(joined(list, i + 1, middle)), link));
                i = closing + 1;
                continue;
            }
        }
        bool isEmphasis = false;
        for (const qsizetype width : {3, 2, 1}) {
            const QString delimiter(width, u'*');
            const qsizetype closing = hasAt(list, i, delimiter) ? search(list, i + width, delimiter) : -1;
            if (closing >= 0) {
                result.append(withAttributes(parseInlineMarkdown(joined(list, i + width, closing)),
                                             emphasis(width >= 2, width != 2)));
                i = closing + width;
                isEmphasis = true;
                break;
            }
        }
        if (isEmphasis)
            continue;
        if (list.at(i) == u"`"_s) {
            const qsizetype closing = search(list, i + 1, u"`"_s);
            if (closing >= 0) {
                TextAttributes code;
                code.inlineCode = true;
                result.append(joined(list, i + 1, closing), code);
                i = closing + 1;
                continue;
            }
        }
        result.append(list.at(i), {});
        ++i;
    }
    return result;
}

AttributedText renderMarkdown(const QString &text)
{
    AttributedText result;
    const QList<Block> blocks = parseBlocks(text);
    for (qsizetype i = 0; i < blocks.size(); ++i) {
        const Block &block = blocks.at(i);
        AttributedText paragraph;
        TextAttributes marker;
        marker.generatedMarker = true;
        paragraph.append(block.marker.view(), marker);
        if (block.parsesInlineMarkdown)
            paragraph.append(parseInlineMarkdown(block.content));
        else
            paragraph.append(block.content, {});
        if (i + 1 < blocks.size())
            paragraph.append(u"\n", {});
        TextAttributes style;
        style.blockStyle = block.style;
        result.append(withAttributes(paragraph, style));
    }
    return result;
}

QString serializeMarkdown(const AttributedText &text)
{
    QString result;
    const QList<Segment> segments = segmentsOf(recordsOf(text));
    for (qsizetype i = 0; i < segments.size(); ++i) {
        if (i > 0) {
            const QString own = family(segments.at(i).kind);
            result += !own.isEmpty() && own == family(segments.at(i - 1).kind) ? u"\n"_s : u"\n\n"_s;
        }
        result += segments.at(i).text;
    }
    return result;
}

QString serializeSelection(const AttributedText &text)
{
    QString result;
    const TextRange all{0, text.size()};
    forEachRun(text, all, [&](TextRange run) { serializeInlineRun(text, run, all, result); });
    return result;
}

} // namespace Tessaline::PlainCodec
