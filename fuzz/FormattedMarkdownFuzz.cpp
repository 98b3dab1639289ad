// Edits a Markdown document from both sides, in its formatted text and in its source, and holds what each side makes of
// it against reading and writing the whole.

#include "fuzz/Require.h"

#include "editing/FormattedEditing.h"
#include "editing/FormattedMarkdown.h"
#include "editing/MarkdownRendering.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>

using namespace Tessaline;

namespace {

constexpr size_t kLongest = 2000; // bytes
constexpr size_t kMostEdits = 24;

constexpr std::array<QStringView, 12> kTyped{u"",   u"x", u"\n", u"\r",    u"\t",     u"*",
                                             u"> ", u"|", u"- ", u"```\n", u"\u2029", u"\n\n"};
constexpr std::array<const char16_t *, 8> kCommands{u"bold",     u"h1",   u"codeBlock", u"bullet",
                                                    u"numbered", u"task", u"hr",        u"table"};

struct Edit {
    uint8_t kind;
    uint16_t location;
    uint8_t length;
    uint8_t choice;
};

/// A document whose owner follows what is reported, and nothing else.
class Document
{
public:
    explicit Document(const QString &markdown) : m_owner(markdown)
    {
        QObject::connect(&m_formatted, &FormattedMarkdown::edited, &m_formatted,
                         [this](const ChunkedText &whole, const TextChange &change) {
                             m_owner.replace(change.location, change.removed,
                                             whole.sliced(change.location, change.inserted));
                             requireWritten();
                         });
        m_formatted.open(m_owner);
        requireRead();
    }

    void apply(const Edit &edit)
    {
        const QStringView typed = kTyped[edit.choice % kTyped.size()];
        const TextRange range = rangeIn(edit.kind % 8 < 3 ? m_owner : m_text.text(), edit);
        switch (edit.kind % 8) {
        case 0:
        case 1:
        case 2: {
            const TextChange change = m_owner.replace(range.location, range.length, typed);
            m_formatted.followEdit(m_owner, change);
            requireRead();
            return;
        }
        case 3:
            m_text.select({range.location, range.end()});
            m_editing.applyFormat(QString::fromUtf16(kCommands[edit.choice % kCommands.size()]));
            return;
        case 4:
            m_text.select({range.location, range.location});
            m_editing.continueList();
            return;
        case 5:
            m_editing.toggleTask(range.location);
            return;
        case 6:
            m_text.undo();
            return;
        default:
            m_text.select({range.location, range.end()});
            m_text.insert(typed, EditKind::Typing);
        }
    }

private:
    /// Cuts no surrogate pair: the owner of a text never does.
    static TextRange rangeIn(const ChunkedText &text, const Edit &edit)
    {
        const auto whole = [&text](qsizetype at) {
            return at > 0 && at < text.size() && text.at(at).isLowSurrogate() ? at + 1 : at;
        };
        const qsizetype location = whole(edit.location % (text.size() + 1));
        return {location, whole(std::min<qsizetype>(location + edit.length, text.size())) - location};
    }

    AttributedText shown() const { return m_text.document().sliced({0, m_text.document().size()}); }
    void requireRead() const
    {
        REQUIRE(m_formatted.markdown() == m_owner);
        REQUIRE(shown() == renderMarkdown(m_owner.toString()));
    }
    void requireWritten() const
    {
        REQUIRE(m_formatted.markdown() == m_owner);
        REQUIRE(m_owner == ChunkedText(serializeMarkdown(shown())));
    }

    ChunkedText m_owner;
    EditableText m_text;
    FormattedMarkdown m_formatted{m_text};
    FormattedEditing m_editing{m_text};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // The numbers are taken from the end, so that an input is a readable document.
    FuzzedDataProvider input(data, std::min(size, kLongest));
    std::vector<Edit> edits(input.ConsumeIntegralInRange<size_t>(0, kMostEdits));
    for (Edit &edit : edits)
        edit = {input.ConsumeIntegral<uint8_t>(), input.ConsumeIntegral<uint16_t>(), input.ConsumeIntegral<uint8_t>(),
                input.ConsumeIntegral<uint8_t>()};

    Document document(QString::fromStdString(input.ConsumeRemainingBytesAsString()));
    for (const Edit &edit : edits)
        document.apply(edit);
    return 0;
}
