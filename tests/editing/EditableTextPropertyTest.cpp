#include "editing/EditableText.h"
#include "editing/TextBoundaries.h"

#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/GeneratedText.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Tessaline {

namespace {

using AnchorMode = EditableText::AnchorMode;
using TextBoundaries::isCharacterBoundary;

/// Does one thing that a person can do.
void act(EditableText &text, GeneratedText &random)
{
    const auto anywhere = [&] { return random.below(text.text().size() + 1); };
    switch (random.below(16)) {
    case 0:
    case 1:
    case 2:
    case 3:
        return text.insert(random.piece(), EditKind::Typing);
    case 4:
        return text.insertLineEnd();
    case 5:
        return text.deleteBackward();
    case 6:
        return text.deleteForward();
    case 7:
        return text.deleteWordBackward();
    case 8:
        return text.deleteWordForward();
    case 9:
    case 10:
        return text.moveCaret(anywhere(), random.oneIn(2) ? AnchorMode::MoveAnchor : AnchorMode::KeepAnchor);
    case 11:
        return text.insert(random.text(20), EditKind::Other);
    case 12:
        return text.moveSelectionTo(anywhere());
    case 13:
        return text.select({anywhere(), anywhere()});
    case 14:
        if (random.oneIn(2))
            return text.undo();
        return text.redo();
    default:
        return text.replace({text.selection().range()}, random.text(3), EditKind::Other);
    }
}

class GeneratedActions : public testing::TestWithParam<unsigned>
{};

} // namespace

TEST_P(GeneratedActions, AreUndoneToTheFirstTextAndRedoneToTheLast)
{
    GeneratedText random(GetParam());
    EditableText text;
    const QString first = random.text(80);
    text.reset(ChunkedText(first));
    // Everything that is reported, put together, gives the same text: this is how others follow.
    ChunkedText follower = text.text();
    QObject::connect(&text, &EditableText::changed, [&text, &follower](const TextChange &change) {
        follower.replace(change.location, change.removed, text.text().sliced(change.location, change.inserted));
    });

    for (int i = 0; i < 300; ++i) {
        act(text, random);
        ASSERT_EQ(follower, text.text()) << "action " << i;
        ASSERT_TRUE(isCharacterBoundary(text.text(), text.selection().anchor)) << "action " << i;
        ASSERT_TRUE(isCharacterBoundary(text.text(), text.selection().caret)) << "action " << i;
    }
    const QString last = text.text().toString();
    int redoable = 0;
    while (text.canRedo()) { // the last actions may have been undone
        text.redo();
        ++redoable;
    }
    const QString longest = text.text().toString();
    for (int i = 0; i < redoable; ++i)
        text.undo();
    EXPECT_EQ(text.text().toString(), last);

    while (text.canUndo())
        text.undo();
    EXPECT_EQ(text.text().toString(), first);
    while (text.canRedo())
        text.redo();
    EXPECT_EQ(text.text().toString(), longest);
    EXPECT_EQ(follower, text.text());
}

TEST_P(GeneratedActions, ReplaceFromOutsideMakesAnyTextIntoAnyOther)
{
    GeneratedText random(GetParam());
    EditableText text;
    QString current = random.text(200);
    text.reset(ChunkedText(current));

    for (int i = 0; i < 40; ++i) {
        const QString before = current;
        if (random.oneIn(4)) {
            current = random.text(200);
        } else { // alike at both ends
            const qsizetype location = random.below(current.size() + 1);
            current.replace(location, random.below(current.size() - location + 1), random.text(random.below(4)));
            current = ChunkedText(current).toString(); // no halves of surrogate pairs
        }
        if (current == before)
            continue;
        text.replaceFromOutside(ChunkedText(current));

        ASSERT_EQ(text.text().toString(), current);
        text.undo();
        ASSERT_EQ(text.text().toString(), before);
        text.redo();
        ASSERT_EQ(text.text().toString(), current);
    }
}

TEST_P(GeneratedActions, AFollowerHasTheSameTextAndTakesItBackStepByStep)
{
    GeneratedText random(GetParam());
    EditableText person;
    EditableText follower;
    const ChunkedText first(random.text(60));
    person.reset(first);
    follower.reset(first);
    QObject::connect(&person, &EditableText::edited,
                     [&](const TextChange &change) { follower.followEdit(person.text(), change); });

    for (int i = 0; i < 200; ++i) {
        act(person, random);
        ASSERT_EQ(follower.text(), person.text()) << "action " << i;
        ASSERT_TRUE(isCharacterBoundary(follower.text(), follower.selection().caret)) << "action " << i;
    }
    while (follower.canUndo())
        follower.undo();
    EXPECT_EQ(follower.text(), first);
}

TEST_P(GeneratedActions, ReplaceAllEqualsReplacingFromTheLastToTheFirst)
{
    GeneratedText random(GetParam());
    AttributedText text;
    for (qsizetype runs = 2 + random.below(20); runs > 0; --runs) {
        TextAttributes attributes;
        attributes.bold = random.oneIn(2);
        attributes.generatedMarker = random.oneIn(3);
        text.append(QString(1 + random.below(6), QChar(u'a' + static_cast<char16_t>(random.below(26)))), attributes);
    }
    QList<TextRange> ranges;
    for (qsizetype start = random.below(4); start < text.size(); start += random.below(5)) {
        const qsizetype length = random.below(std::min<qsizetype>(text.size() - start, 8) + 1);
        ranges.append({start, length});
        start += std::max<qsizetype>(length, 1);
    }
    const QString replacement(random.below(4), u'-');
    AttributedText expected = text;
    for (auto range = ranges.crbegin(); range != ranges.crend(); ++range) {
        AttributedText fresh;
        fresh.append(replacement,
                     range->isEmpty() ? TextAttributes() : typingAttributes(text.attributesAt(range->location)));
        expected.replace(*range, fresh);
    }

    AttributedDocument document;
    document.reset(text);
    EditableText editable;
    editable.reset(document);
    editable.replaceAll(ranges, replacement);

    EXPECT_EQ(editable.document().sliced({0, editable.text().size()}), expected);
    editable.undo();
    EXPECT_EQ(editable.document().sliced({0, editable.text().size()}), text);
}

INSTANTIATE_TEST_SUITE_P(EditableText, GeneratedActions, testing::Range(1u, 31u));

} // namespace Tessaline
