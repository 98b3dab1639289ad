#include "editing/FormattedMarkdown.h"

#include "editing/BlockStyle.h"
#include "editing/Characters.h"
#include "editing/MarkdownLines.h"
#include "editing/MarkdownRendering.h"
#include "editing/Paragraphs.h"
#include "editing/TextDifference.h"
#include "foundation/BackgroundPool.h"

#include <QCoroFuture>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>
#include <utility>

namespace Tessaline {

namespace {

/// Where the next line begins behind `position`; -1 if that is the last one. Lines end with LF alone.
qsizetype nextLine(const ChunkedText &text, qsizetype position)
{
    while (position < text.size()) {
        const QStringView chunk = text.chunkFrom(position);
        const qsizetype lineFeed = chunk.indexOf(u'\n');
        if (lineFeed >= 0)
            return position + lineFeed + 1;
        position += chunk.size();
    }
    return -1;
}

/// Where the line begins that `position` stands in.
qsizetype lineStart(const ChunkedText &text, qsizetype position)
{
    while (position > 0) {
        const QStringView chunk = text.chunkUpTo(position);
        const qsizetype lineFeed = chunk.lastIndexOf(u'\n');
        position -= chunk.size();
        if (lineFeed >= 0)
            return position + lineFeed + 1;
    }
    return 0;
}

bool hasCarriageReturn(const ChunkedText &text)
{
    return std::ranges::any_of(text.chunks(), [](const QString &chunk) { return chunk.contains(u'\r'); });
}

bool hasFenceLine(QStringView lines)
{
    for (const QStringView line : lines.tokenize(u'\n')) {
        if (MarkdownLines::isFenceLine(Characters::trimmed(line)))
            return true;
    }
    return false;
}

bool isCode(const TextAttributes &attributes)
{
    return BlockStyle::read(attributes.blockStyle.view()).kind == BlockStyle::Kind::Code;
}

} // namespace

FormattedMarkdown::Sum &FormattedMarkdown::Sum::operator+=(const Sum &other)
{
    paragraphs += other.paragraphs;
    shown += other.shown;
    source += other.source;
    return *this;
}

FormattedMarkdown::Sum &FormattedMarkdown::Sum::operator-=(const Sum &other)
{
    paragraphs -= other.paragraphs;
    shown -= other.shown;
    source -= other.source;
    return *this;
}

/// What reading a part of a Markdown text gave.
struct FormattedMarkdown::Reading {
    AttributedText text;               // each block with a line break behind it
    std::vector<Paragraph> paragraphs; // of these blocks
    qsizetype end = 0;                 // where reading stopped in the Markdown
    bool meetsOld = false;             // from there on the paragraphs are those of before
};

FormattedMarkdown::FormattedMarkdown(EditableText &text, QObject *parent) : QObject(parent), m_text(text)
{
    connect(&m_text, &EditableText::changed, this, [this](const TextChange &change) {
        if (!m_isReading)
            followOwnChange(change);
    });
    connect(&m_text, &EditableText::edited, this, [this] { Q_EMIT edited(m_markdown, m_written); });
    m_rest.setSingleShot(true);
    connect(&m_rest, &QTimer::timeout, this, [this] { prepare(); });
}

FormattedMarkdown::~FormattedMarkdown()
{
    m_preparation.request_stop();
}

void FormattedMarkdown::open(const ChunkedText &markdown)
{
    m_markdown = markdown;
    m_isNormal = false;
    m_hasCarriageReturn = hasCarriageReturn(markdown);
    m_paragraphs.clear();
    // Part by part, so that what reading needs besides the text stays small.
    constexpr qsizetype kPart = 256 * 1024;
    AttributedDocument document;
    std::vector<Paragraph> paragraphs;
    Reading pending; // the last part that has a paragraph; its end may be the end of the text
    const auto take = [&] {
        document.replace({document.size(), 0}, pending.text);
        paragraphs.insert(paragraphs.end(), pending.paragraphs.begin(), pending.paragraphs.end());
    };
    qsizetype blank = 0; // units of parts that hold blank lines only; they count to what follows them
    for (qsizetype start = 0; start < markdown.size();) {
        const qsizetype length = std::min(kPart, markdown.size() - start);
        Reading part = read(markdown, start, {start, 0, length}, kPart);
        const qsizetype partStart = std::exchange(start, part.end);
        if (part.paragraphs.empty()) {
            blank += part.end - partStart;
            continue;
        }
        part.paragraphs.front().source += static_cast<quint32>(std::exchange(blank, 0));
        take();
        pending = std::move(part);
    }
    endText(pending);
    take();
    m_paragraphs.reset(paragraphs);
    markdownIsForeign(kRestOfOpening);
    m_isReading = true;
    m_text.reset(std::move(document));
    m_isReading = false;
}

/// The Markdown is another one now, which was not written here.
void FormattedMarkdown::markdownIsForeign(std::chrono::milliseconds rest)
{
    m_normalForm.reset();
    m_preparation.request_stop();
    if (m_markdown.size() >= kLeastPrepared)
        m_rest.start(rest);
    else
        m_rest.stop();
}

QCoro::Task<> FormattedMarkdown::prepare()
{
    m_preparation = std::stop_source();
    const std::stop_token stop = m_preparation.get_token();
    const std::shared_ptr<NormalForm> form =
        co_await QtConcurrent::run(&backgroundPool(), normalFormOf, m_markdown, stop);
    if (stop.stop_requested())
        co_return; // the Markdown has changed, or the object is gone
    m_normalForm = form;
}

/// Brings the Markdown into its normal form.
TextChange FormattedMarkdown::takeNormalForm()
{
    m_rest.stop();
    m_preparation.request_stop();
    if (!m_normalForm)
        m_normalForm = normalFormOf(m_markdown);
    m_pieces = std::move(m_normalForm->pieces);
    m_markdown = m_normalForm->markdown;
    m_isNormal = true;
    const TextChange change = m_normalForm->change;
    m_normalForm.reset();
    return change;
}

/// Reads `markdown`, which came about by `change`, from the start of a construct until what follows is as it was
/// before, or until the first construct that begins `most` units further on.
FormattedMarkdown::Reading FormattedMarkdown::read(const ChunkedText &markdown, qsizetype start,
                                                   const TextChange &change, qsizetype most) const
{
    const qsizetype growth = change.inserted - change.removed;
    const qsizetype changedEnd = change.location + change.inserted;
    constexpr qsizetype kLookAhead = 4096; // units behind the change that are read at first

    for (qsizetype window = changedEnd - start + kLookAhead;; window *= 4) {
        const bool isWhole = window >= markdown.size() - start;
        const QString text = markdown.sliced(start, isWhole ? markdown.size() - start : window);
        // What a construct becomes may depend on two lines behind it; those must be in the window as a whole.
        const qsizetype lastBreak = text.lastIndexOf(u'\n');
        const qsizetype surelyRead = lastBreak > 0 ? text.lastIndexOf(u'\n', lastBreak - 1) : -1;

        Reading reading;
        reading.text.reserve(text.size());
        MarkdownBlockReader reader(text);
        qsizetype constructStart = 0;
        QList<Block> blocks;
        const auto endConstruct = [&](qsizetype end) {
            if (!reading.paragraphs.empty()) {
                auto first = reading.paragraphs.end() - 1;
                while (first != reading.paragraphs.begin() && first->source == 0)
                    --first;
                first->source = static_cast<quint32>(end - constructStart);
            }
        };
        while (!reader.atEnd()) {
            const qsizetype position = reader.position();
            if (!isWhole && position > surelyRead)
                break;
            const qsizetype absolute = start + position;
            const bool meetsOld = absolute >= changedEnd && position > 0 && isConstructStart(absolute - growth);
            if (meetsOld || position >= most) {
                reading.end = absolute;
                reading.meetsOld = meetsOld;
                endConstruct(position);
                return reading;
            }
            blocks.clear();
            reader.readNext(blocks);
            if (blocks.isEmpty())
                continue;
            endConstruct(position);
            // Blank lines at the very start belong to what follows them.
            constructStart = reading.paragraphs.empty() ? 0 : position;
            // A source of 1 marks the construct's first paragraph until its end is known.
            quint32 source = 1;
            for (const Block &block : blocks) {
                const qsizetype before = reading.text.size();
                appendBlock(block, reading.text);
                TextAttributes lineBreak;
                lineBreak.blockStyle = block.style;
                reading.text.append(u"\n", lineBreak);
                // NOTE: a paragraph separator (U+2029) in a line ends no line of the Markdown, but a paragraph of the
                // text.
                const QStringView shown = QStringView(reading.text.text()).sliced(before);
                for (const TextRange &paragraph : Tessaline::Paragraphs::in(shown, {0, shown.size()})) {
                    reading.paragraphs.push_back({static_cast<quint32>(paragraph.length), source});
                    source = 0;
                }
            }
        }
        if (!isWhole)
            continue; // a construct may go on behind the window
        reading.end = markdown.size();
        endConstruct(text.size());
        return reading;
    }
}

bool FormattedMarkdown::isConstructStart(qsizetype source) const
{
    if (m_paragraphs.isEmpty() || source >= m_paragraphs.total().source)
        return false;
    const Paragraphs::Place place = m_paragraphs.find([source](const Sum &behind) { return behind.source > source; });
    return place.before.source == source && m_paragraphs.at(place).source > 0;
}

/// The first paragraph of the construct that the one at `place` belongs to.
FormattedMarkdown::Paragraphs::Place FormattedMarkdown::constructAt(Paragraphs::Place place) const
{
    while (m_paragraphs.at(place).source == 0 && m_paragraphs.retreat(place)) {
    }
    return place;
}

/// Where reading has to begin to see what a change in this construct means: one construct before, unless there is none,
/// or it is a block of code, which ends with a line of its own whatever follows.
FormattedMarkdown::Paragraphs::Place FormattedMarkdown::constructBefore(Paragraphs::Place place) const
{
    Paragraphs::Place before = constructAt(place);
    place = before;
    if (!m_paragraphs.retreat(before) || isCode(m_text.document().attributesAt(before.before.shown)))
        return place;
    return constructAt(before);
}

void FormattedMarkdown::replaceFromOutside(const ChunkedText &markdown)
{
    const TextChange change = differenceBetween(m_markdown, markdown);
    if (change.removed != 0 || change.inserted != 0)
        followEdit(markdown, change);
}

void FormattedMarkdown::followEdit(const ChunkedText &markdown, const TextChange &change)
{
    m_hasCarriageReturn = m_hasCarriageReturn || markdown.sliced(change.location, change.inserted).contains(u'\r');
    if (followEditOfCode(markdown, change)) {
        m_markdown = markdown;
        markdownIsForeign(kRestOfTyping);
        return;
    }
    m_markdown = markdown;
    markdownIsForeign(kRestOfTyping);
    // What was written does not always read as what was shown, so all of it is read again, once.
    if (m_isNormal || m_paragraphs.isEmpty()) {
        m_hasCarriageReturn = hasCarriageReturn(markdown);
        Reading reading = read(markdown, 0, {0, 0, markdown.size()});
        endText(reading);
        const AttributedText old = m_text.document().sliced({0, m_text.document().size()});
        m_paragraphs.reset(reading.paragraphs);
        m_isNormal = false;
        exchangeShown(0, old, reading.text);
        return;
    }

    // 1. Reading begins a construct before the one that was changed: a line may join the paragraph above it or make a
    // table of it.
    Paragraphs::Place first =
        constructBefore(m_paragraphs.find([&change](const Sum &behind) { return behind.source > change.location; }));
    Reading reading = read(markdown, first.before.source, change);
    // If nothing is left of the end of the text, the block of code before it is the last one now.
    if (!reading.meetsOld && reading.text.size() <= 1 && m_paragraphs.retreat(first)) {
        first = constructAt(first);
        reading = read(markdown, first.before.source, change);
    }

    // 2. What gives way: all up to where the old paragraphs are met again.
    const qsizetype growth = change.inserted - change.removed;
    const qsizetype sourceEnd = reading.meetsOld ? reading.end - growth : m_paragraphs.total().source;
    std::size_t count = 0;
    Paragraphs::Place behind = first;
    bool hasBehind = true;
    // Paragraphs without a source of their own belong to the construct before them.
    while (hasBehind &&
           (!reading.meetsOld || behind.before.source < sourceEnd || m_paragraphs.at(behind).source == 0)) {
        ++count;
        hasBehind = m_paragraphs.advance(behind);
    }
    const qsizetype shownStart = first.before.shown;
    const qsizetype shownEnd = hasBehind ? behind.before.shown : m_text.document().size();
    if (!hasBehind)
        endText(reading);

    // 3. Where the beginning of the text has become blank, its lines belong to what follows them.
    if (reading.paragraphs.empty() && hasBehind) {
        Paragraph next = m_paragraphs.at(behind);
        next.source += static_cast<quint32>(reading.end - first.before.source);
        reading.paragraphs.push_back(next);
        ++count;
    }
    const AttributedText old = m_text.document().sliced({shownStart, shownEnd - shownStart});
    m_paragraphs.replace(first, count, reading.paragraphs);
    exchangeShown(shownStart, old, reading.text);
}

/// FAST PATH: lines inside a block of code, of which any number may stand around them, are shown as they are, unit by
/// unit; so those that changed are exchanged alone. False, and nothing is done, where the change might be more than
/// that.
bool FormattedMarkdown::followEditOfCode(const ChunkedText &markdown, const TextChange &change)
{
    if (m_isNormal || m_hasCarriageReturn || m_paragraphs.isEmpty())
        return false;

    // 1. The block of code, and where its body begins in the Markdown: behind the first line that is not blank.
    const Paragraphs::Place code =
        m_paragraphs.find([&change](const Sum &behind) { return behind.source > change.location; });
    const Paragraph construct = m_paragraphs.at(code);
    const qsizetype shownStart = code.before.shown;
    const qsizetype sourceEnd = code.before.source + construct.source;
    if (change.location >= sourceEnd || !isCode(m_text.document().attributesAt(shownStart)))
        return false;
    qsizetype body = code.before.source;
    for (bool isBlank = true; isBlank && body >= 0;) {
        const qsizetype start = body;
        body = nextLine(m_markdown, start);
        isBlank = body >= 0 && Characters::trimmed(m_markdown.sliced(start, body - start - 1)).isEmpty();
    }

    // 2. The lines that changed. They must be lines of the body that end with a line break, before and after.
    const qsizetype start = lineStart(m_markdown, change.location);
    const qsizetype end = nextLine(m_markdown, change.location + change.removed);
    const bool isLast = sourceEnd == m_paragraphs.total().source;
    const qsizetype shownEnd =
        isLast ? m_text.document().size()
               : m_paragraphs.find([sourceEnd](const Sum &behind) { return behind.source > sourceEnd; }).before.shown;
    if (body < 0 || start < body || end < 0 || end - body > shownEnd - shownStart)
        return false;
    const qsizetype growth = change.inserted - change.removed;
    const QString lines = markdown.sliced(start, end + growth - start);
    if (hasFenceLine(lines))
        return false;

    // 3. They are exchanged, and the construct has grown.
    const qsizetype shown = shownStart + start - body;
    const TextRange range{shown, end - start};
    TextAttributes attributes;
    attributes.blockStyle = m_text.document().attributesAt(shownStart).blockStyle;
    std::vector<Paragraph> fresh;
    for (const TextRange &paragraph : Tessaline::Paragraphs::in(lines, {0, lines.size()}))
        fresh.push_back({static_cast<quint32>(paragraph.length), 0});
    Paragraph grown = construct;
    grown.source = static_cast<quint32>(construct.source + growth);
    m_paragraphs.set(code, grown);
    const Paragraphs::Place first = m_paragraphs.find([shown](const Sum &behind) { return behind.shown > shown; });
    fresh.front().source = m_paragraphs.at(first).source;
    std::size_t count = 0;
    Paragraphs::Place behind = first;
    do
        ++count;
    while (m_paragraphs.advance(behind) && behind.before.shown < range.end());
    m_paragraphs.replace(first, count, fresh);
    exchangeShown(shown, m_text.document().sliced(range), AttributedText(lines, attributes));
    return true;
}

/// The last block of a text has no line break. If nothing is left of it, it is no paragraph, and what it was read from
/// counts to the one before.
void FormattedMarkdown::endText(Reading &reading)
{
    if (reading.paragraphs.empty())
        return;
    reading.text.replace({reading.text.size() - 1, 1}, {});
    if (--reading.paragraphs.back().shown > 0)
        return;
    const quint32 source = reading.paragraphs.back().source;
    reading.paragraphs.pop_back();
    for (auto paragraph = reading.paragraphs.rbegin(); paragraph != reading.paragraphs.rend(); ++paragraph) {
        if (paragraph->source == 0)
            continue;
        paragraph->source += source;
        break;
    }
}

/// Exchanges what differs between the text from `start` on, which is `old`, and what was read.
void FormattedMarkdown::exchangeShown(qsizetype start, const AttributedText &old, const AttributedText &fresh)
{
    const TextChange change = differenceBetween(old, fresh);
    if (change.removed == 0 && change.inserted == 0)
        return;
    m_isReading = true;
    m_text.followEdit({start + change.location, change.removed}, fresh.sliced({change.location, change.inserted}));
    m_isReading = false;
}

/// Follows an edit of the person, which the text has taken already.
void FormattedMarkdown::followOwnChange(const TextChange &change)
{
    // 1. The paragraphs that it touched, with one unit more on each side: CR and LF may have met or come apart there.
    Paragraphs::Place first = m_paragraphs.end();
    std::size_t count = 0;
    qsizetype shownEnd = 0; // as it was before
    if (!m_paragraphs.isEmpty()) {
        const qsizetype location = std::max<qsizetype>(change.location - 1, 0);
        first = m_paragraphs.find([location](const Sum &behind) { return behind.shown > location; });
        Paragraphs::Place last = first;
        for (count = 1;; ++count) {
            shownEnd = last.before.shown + m_paragraphs.at(last).shown;
            if (shownEnd > change.location + change.removed || !m_paragraphs.advance(last))
                break;
        }
    }
    const qsizetype start = first.before.shown;
    const qsizetype end = shownEnd + change.inserted - change.removed;
    const AttributedText region = m_text.document().sliced({start, end - start});

    // 2. They are taken anew. Their sources are not needed as long as the Markdown is in its normal form.
    std::vector<Paragraph> fresh;
    QList<ParagraphRecord> records;
    for (const TextRange &paragraph : Tessaline::Paragraphs::in(region.text(), {0, region.size()})) {
        fresh.push_back({static_cast<quint32>(paragraph.length), 0});
        records.append(paragraphRecord(region, paragraph));
    }
    const qsizetype number = first.before.paragraphs;
    m_paragraphs.replace(first, count, fresh);

    // 3. The Markdown. The first edit comes on top of the normal form of what was there before it.
    const TextChange normalised = m_isNormal ? TextChange() : takeNormalForm();
    const MarkdownChange written = m_pieces.replace(number, static_cast<qsizetype>(count), records,
                                                    [this](qsizetype paragraph) { return recordOf(paragraph); });
    m_written = inOne(normalised, takeWritten(written));
}

/// Puts into the Markdown what of the written pieces differs from what stands there: a typed letter is a letter there,
/// too.
TextChange FormattedMarkdown::takeWritten(const MarkdownChange &written)
{
    const TextChange change = differenceBetween(ChunkedText(m_markdown.sliced(written.location, written.removed)),
                                                ChunkedText(written.inserted));
    return m_markdown.replace(written.location + change.location, change.removed,
                              QStringView(written.inserted).sliced(change.location, change.inserted));
}

TextRange FormattedMarkdown::shownRange(qsizetype paragraph) const
{
    const Paragraphs::Place place =
        m_paragraphs.find([paragraph](const Sum &behind) { return behind.paragraphs > paragraph; });
    return {place.before.shown, m_paragraphs.at(place).shown};
}

ParagraphRecord FormattedMarkdown::recordOf(qsizetype paragraph) const
{
    const AttributedText text = m_text.document().sliced(shownRange(paragraph));
    return paragraphRecord(text, {0, text.size()});
}

} // namespace Tessaline
