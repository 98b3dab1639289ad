// Does what a person can do to a text, in any order, and holds the blocks, the selection and the history against plain
// forms of them after every step.

#include "fuzz/Require.h"

#include "editing/BlockIndex.h"
#include "editing/EditableText.h"
#include "editing/TextBoundaries.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>

using namespace Tessaline;

namespace {

constexpr qsizetype kLargest = 30'000; // UTF-16 units; enough for ten blocks of one paragraph

/// Texts of a few bytes that mean much: line ends that meet, characters of several units, right-to-left text.
const char *const kPieces[] = {"a",
                               " ",
                               "word ",
                               "\n",
                               "\r",
                               "\r\n",
                               "\u2029",
                               "\u2028",
                               "e\u0301",
                               "\u0301",
                               "\u200D",
                               "\U0001F468",
                               "\U0001F469\u200D",
                               "\U0001F1EB",
                               "\u05D0",
                               "\u0924\u0947",
                               "\u0E01\u0E33",
                               "\u1112",
                               "\u1161",
                               "\uFEFF",
                               "\uFFFC",
                               "\t"};

QString someText(FuzzedDataProvider &input, qsizetype size)
{
    QString text;
    for (int i = input.ConsumeIntegralInRange<int>(1, 6); i > 0; --i) {
        if (input.ConsumeIntegralInRange(0, 7) == 0)
            text.append(QChar(input.ConsumeIntegral<char16_t>())); // half a surrogate pair, too
        else
            text.append(QString::fromUtf8(input.PickValueInArray(kPieces)));
    }
    if (input.ConsumeIntegralInRange(0, 7) == 0 && size < kLargest)
        text = text.repeated(input.ConsumeIntegralInRange(1, 1500));
    return text;
}

void act(FuzzedDataProvider &input, EditableText &text)
{
    const qsizetype size = text.text().size();
    const auto position = [&] { return input.ConsumeIntegralInRange<qsizetype>(-2, size + 2); };
    const auto range = [&] {
        const auto location = input.ConsumeIntegralInRange<qsizetype>(0, size);
        return TextRange{location, input.ConsumeIntegralInRange<qsizetype>(0, size - location)};
    };
    switch (input.ConsumeIntegralInRange(0, 15)) {
    case 0:
        return text.insert(someText(input, size), EditKind::Typing);
    case 1:
        return text.insert(someText(input, size), EditKind::Other);
    case 2:
        return text.insertLineEnd();
    case 3:
        return text.deleteBackward();
    case 4:
        return text.deleteForward();
    case 5:
        return text.deleteWordBackward();
    case 6:
        return text.deleteWordForward();
    case 7:
        return text.moveCaret(position(), EditableText::AnchorMode::MoveAnchor);
    case 8:
        return text.moveCaret(position(), EditableText::AnchorMode::KeepAnchor);
    case 9:
        return text.moveSelectionTo(input.ConsumeIntegralInRange<qsizetype>(0, size));
    case 10:
        return text.undo();
    case 11:
        return text.redo();
    case 12:
        return text.replace(range(), someText(input, size), EditKind::Typing);
    case 13: {
        const TextRange first = range();
        const qsizetype behind = std::min(first.end() + 1, size);
        return text.replaceAll({first, {behind, std::min<qsizetype>(1, size - behind)}}, someText(input, size));
    }
    case 14: {
        const TextRange changed = range();
        ChunkedText fresh = text.text();
        fresh.replace(changed.location, changed.length, someText(input, size));
        return text.replaceFromOutside(ChunkedText(fresh.toString())); // what is read is valid
    }
    default:
        return text.select({position(), position()});
    }
}

void requireBetweenCharacters(const ChunkedText &text, qsizetype position)
{
    REQUIRE(position >= 0 && position <= text.size());
    if (TextBoundaries::isCharacterBoundary(text, position))
        return;
    // A character of more units than are looked at is taken in pieces, but never cut inside a surrogate pair.
    constexpr qsizetype kLookedAt = 512;
    REQUIRE(TextBoundaries::nextCharacter(text, position) - TextBoundaries::previousCharacter(text, position) >=
            kLookedAt);
    REQUIRE(!(text.at(position - 1).isHighSurrogate() && text.at(position).isLowSurrogate()));
}

bool isLineEnd(QChar unit)
{
    return unit == u'\n' || unit == u'\r' || unit == QChar(QChar::ParagraphSeparator);
}

void requireSoundBlocks(const BlockIndex &index, const QString &text)
{
    qsizetype position = 0;
    int top = 0;
    for (qsizetype i = 0; i < index.count(); ++i) {
        const LayoutBlock block = index.blockAt(position);
        const bool isLast = i + 1 == index.count();
        REQUIRE(block.range.location == position);
        REQUIRE(block.top == top);
        REQUIRE(block.range.length <= BlockIndex::kLongestBlock);
        REQUIRE(isLast || !block.range.isEmpty());
        REQUIRE(!isLast || !block.endsParagraph);
        position = block.range.end();
        top = block.bottom();
        REQUIRE(position <= text.size());
        if (isLast)
            continue;
        const QChar before = text.at(position - 1);
        const QChar after = position < text.size() ? text.at(position) : QChar();
        REQUIRE(!(before.isHighSurrogate() && after.isLowSurrogate()));
        REQUIRE(!(before == u'\r' && after == u'\n'));
        REQUIRE(block.endsParagraph == isLineEnd(before));
        // No line end stands inside of a block.
        const QStringView content = QStringView(text).sliced(block.range.location, block.range.length);
        const auto inside = std::find_if(content.begin(), content.end(), isLineEnd) - content.begin();
        const bool endsWithPair = content.endsWith(u"\r\n");
        REQUIRE(inside == content.size() - (endsWithPair ? 2 : block.endsParagraph ? 1 : 0));
    }
    REQUIRE(position == text.size());
    REQUIRE(top == index.height());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzedDataProvider input(data, size);

    EditableText text;
    text.reset(ChunkedText(someText(input, 0)));
    const ChunkedText first = text.text();
    BlockIndex index;
    index.reset(first);
    ChunkedText follower = first;
    QObject::connect(&text, &EditableText::changed, [&](const TextChange &change) {
        follower.replace(change.location, change.removed, text.text().sliced(change.location, change.inserted));
        index.apply(text.text(), change);
    });

    while (input.remaining_bytes() > 0) {
        act(input, text);

        REQUIRE(follower == text.text());
        requireSoundBlocks(index, text.text().toString());
        requireBetweenCharacters(text.text(), text.selection().anchor);
        requireBetweenCharacters(text.text(), text.selection().caret);
        REQUIRE(text.text() == ChunkedText(text.text().toString())); // no half of a surrogate pair
    }

    while (text.canRedo())
        text.redo();
    const ChunkedText last = text.text();
    while (text.canUndo())
        text.undo();
    REQUIRE(text.text() == first);
    while (text.canRedo())
        text.redo();
    REQUIRE(text.text() == last);
    requireSoundBlocks(index, last.toString());
    return 0;
}
