// Reads bytes as Markdown, holds what comes of it against the codec's plainest form, and edits it in every way, with
// the Markdown kept by pieces.

#include "fuzz/Require.h"

#include "editing/FormatCommands.h"
#include "editing/InlineWriting.h"
#include "editing/MarkdownPieces.h"
#include "editing/MarkdownRendering.h"
#include "editing/Paragraphs.h"
#include "editing/TaskMarkers.h"
#include "editing/TextPresentation.h"
#include "tests/editing/PlainCodec.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>

using namespace Tessaline;

namespace {

constexpr size_t kLongest = 500; // bytes; the plain form is slow
constexpr size_t kMostEdits = 6;

constexpr std::array<QStringView, 15> kCommands{u"bold", u"italic", u"codeInline", u"h1",     u"h2",
                                                u"h3",   u"quote",  u"codeBlock",  u"bullet", u"numbered",
                                                u"task", u"link",   u"image",      u"hr",     u"table"};
constexpr std::array<QStringView, 10> kTyped{u"", u"x", u"\n", u"\r", u"\t", u"*", u"|", u"```", u"\u0301", u"\u2028"};

void requireMaximalRuns(const AttributedText &text)
{
    qsizetype end = 0;
    for (qsizetype i = 0; i < text.runs().size(); ++i) {
        const AttributeRun &run = text.runs().at(i);
        REQUIRE(run.range.location == end && run.range.length > 0);
        REQUIRE(i == 0 || run.attributes != text.runs().at(i - 1).attributes);
        end = run.range.end();
    }
    REQUIRE(end == text.size());
}

QList<ParagraphRecord> recordsOf(const AttributedText &text)
{
    QList<ParagraphRecord> records;
    for (const TextRange &paragraph : Paragraphs::in(text.text(), {0, text.size()}))
        records.append(paragraphRecord(text, paragraph));
    return records;
}

/// A text under edit, whose Markdown is kept by pieces.
class Editing
{
public:
    explicit Editing(const AttributedText &text) : m_text(text), m_records(recordsOf(text))
    {
        m_markdown = m_pieces.reset(m_records.size(), [this](qsizetype i) { return m_records.at(i); });
        requireSound();
    }

    const AttributedText &text() const { return m_text; }

    /// Takes another text, which may differ anywhere; the paragraphs that do are found by comparing.
    void become(const AttributedText &text)
    {
        const QList<ParagraphRecord> records = recordsOf(text);
        const auto [old, fresh] = std::ranges::mismatch(m_records, records);
        const qsizetype first = old - m_records.begin();
        qsizetype last = 0; // records that are alike at the end
        while (last < std::min(m_records.size(), records.size()) - first &&
               m_records.at(m_records.size() - 1 - last) == records.at(records.size() - 1 - last))
            ++last;
        const qsizetype removed = m_records.size() - last - first;
        m_text = text;
        m_records = records;
        const MarkdownChange change =
            m_pieces.replace(first, removed, records.sliced(first, records.size() - last - first),
                             [this](qsizetype i) { return m_records.at(i); });
        m_markdown.replace(change.location, change.removed, change.inserted);
        requireSound();
    }

private:
    void requireSound() const
    {
        requireMaximalRuns(m_text);
        REQUIRE(m_markdown == serializeMarkdown(m_text));
        REQUIRE(m_markdown == PlainCodec::serializeMarkdown(m_text));
        REQUIRE(m_pieces.length() == m_markdown.size());
        REQUIRE(serializeInline(m_text, {0, m_text.size()}) == PlainCodec::serializeSelection(m_text));
    }

    AttributedText m_text;
    QList<ParagraphRecord> m_records;
    MarkdownPieces m_pieces;
    QString m_markdown;
};

AttributedText readSoundly(const QString &markdown)
{
    REQUIRE(parseBlocks(markdown) == PlainCodec::parseBlocks(markdown));
    const AttributedText text = renderMarkdown(markdown);
    REQUIRE(text == PlainCodec::renderMarkdown(markdown));
    requireMaximalRuns(text);
    for (const AttributeRun &run : text.runs())
        REQUIRE(presentation(run.attributes, 16).font.size >= 10);
    return text;
}

struct Edit {
    uint8_t kind;
    uint16_t location;
    uint16_t length;
    uint8_t choice;
};

void apply(const Edit &edit, Editing &editing)
{
    const AttributedText &text = editing.text();
    const qsizetype location = edit.location % (text.size() + 1);
    const TextRange range{location, edit.length % (text.size() - location + 1)};
    AttributedText result = text;
    switch (edit.kind % 4) {
    case 0: {
        const auto formatted = applyFormat({text, range}, kCommands[edit.choice % kCommands.size()]);
        REQUIRE(formatted.has_value());
        REQUIRE(formatted->selection.location >= 0 && formatted->selection.length >= 0);
        REQUIRE(formatted->selection.end() <= formatted->text.size());
        result = formatted->text;
        break;
    }
    case 1: {
        const bool isToggled = toggleTaskMarker(location, result);
        REQUIRE(result.size() == text.size());
        REQUIRE(isToggled || result == text);
        break;
    }
    case 2:
        if (const auto continuation = listContinuation(text, location))
            result.replace({location, 0}, *continuation);
        break;
    default: {
        const TextAttributes attributes =
            text.isEmpty() ? TextAttributes() : text.attributesAt(std::min(location, text.size() - 1));
        result.replace(range, AttributedText(kTyped[edit.choice % kTyped.size()], typingAttributes(attributes)));
        break;
    }
    }
    editing.become(result);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // The numbers are taken from the end, so that an input is a readable document.
    FuzzedDataProvider input(data, std::min(size, kLongest));
    std::vector<Edit> edits(input.ConsumeIntegralInRange<size_t>(0, kMostEdits));
    for (Edit &edit : edits)
        edit = {input.ConsumeIntegral<uint8_t>(), input.ConsumeIntegral<uint16_t>(), input.ConsumeIntegral<uint16_t>(),
                input.ConsumeIntegral<uint8_t>()};
    const QString markdown = QString::fromStdString(input.ConsumeRemainingBytesAsString());

    Editing editing(readSoundly(markdown));
    readSoundly(serializeMarkdown(editing.text()));
    for (const Edit &edit : edits)
        apply(edit, editing);
    return 0;
}
