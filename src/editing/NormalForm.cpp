#include "editing/NormalForm.h"

#include "editing/MarkdownRendering.h"
#include "editing/Paragraphs.h"
#include "editing/TextDifference.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace Tessaline {

namespace {

/// The records of the paragraphs that a Markdown text shows, in order.
class RecordReader
{
public:
    /// Both must outlive the reader.
    RecordReader(QStringView markdown, const std::stop_token &stop) : m_reader(markdown), m_stop(stop) {}

    /// Absent at the end of the text, and when the reader is asked to stop.
    std::optional<ParagraphRecord> next()
    {
        while (m_records.size() - m_next < 2 && !m_reader.atEnd() && !m_stop.stop_requested())
            readConstruct();
        // The last block of a text has no line break behind it; if nothing is left of it, it is no paragraph.
        const bool isLast = m_next + 1 == m_records.size() && m_reader.atEnd();
        if (m_next == m_records.size() || (isLast && m_lastIsLineBreak))
            return std::nullopt;
        return std::move(m_records[m_next++]);
    }

private:
    void readConstruct()
    {
        m_records.remove(0, m_next);
        m_next = 0;
        m_blocks.clear();
        m_reader.readNext(m_blocks);
        for (const Block &block : std::as_const(m_blocks)) {
            AttributedText text = renderBlock(block);
            TextAttributes lineBreak;
            lineBreak.blockStyle = block.style;
            text.append(u"\n", lineBreak);
            for (const TextRange &paragraph : Paragraphs::in(text.text(), {0, text.size()})) {
                m_records.append(paragraphRecord(text, paragraph));
                m_lastIsLineBreak = paragraph.length == 1;
            }
        }
    }

    MarkdownBlockReader m_reader;
    const std::stop_token &m_stop;
    QList<Block> m_blocks;
    QList<ParagraphRecord> m_records; // read ahead; those before m_next were given
    qsizetype m_next = 0;
    bool m_lastIsLineBreak = false; // the last one read is nothing but the line break of its block
};

} // namespace

std::shared_ptr<NormalForm> normalFormOf(const ChunkedText &markdown, const std::stop_token &stop)
{
    auto form = std::make_shared<NormalForm>();
    QString normal;
    {
        const QString text = markdown.toString();
        RecordReader records(text, stop);
        normal = form->pieces.reset([&records] { return records.next(); });
    }
    if (stop.stop_requested())
        return nullptr;
    form->change = differenceBetween(markdown, ChunkedText(normal));
    form->markdown = markdown;
    form->markdown.replace(form->change.location, form->change.removed,
                           QStringView(normal).sliced(form->change.location, form->change.inserted));
    return form;
}

TextChange inOne(const TextChange &first, const TextChange &second)
{
    if (first.removed == 0 && first.inserted == 0)
        return second;
    if (second.removed == 0 && second.inserted == 0)
        return first;
    // Between the two changes the part from `start` to `end` holds all that either of them touches.
    const qsizetype start = std::min(first.location, second.location);
    const qsizetype end = std::max(first.location + first.inserted, second.location + second.removed);
    return {start, end - start - first.inserted + first.removed, end - start - second.removed + second.inserted};
}

} // namespace Tessaline
