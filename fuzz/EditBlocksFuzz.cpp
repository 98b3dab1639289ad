// An answer of a model, as hostile as can be, against the invariants of its blocks.

#include "fuzz/Require.h"

#include "panels/EditBlocks.h"
#include "panels/EditSuggestions.h"

using namespace Tessaline;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString answer = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    qsizetype end = 0;
    for (const EditBlock &block : editBlocks(answer)) {
        REQUIRE(block.whole.location >= end);
        REQUIRE(block.original.location >= block.whole.location);
        REQUIRE(block.replacement.location > block.original.end());
        REQUIRE(block.whole.end() > block.replacement.end());
        end = block.whole.end();
    }
    REQUIRE(end <= answer.size());
    // What has arrived of an answer that goes on has the same blocks, as far as they are whole.
    const QList<EditBlock> all = editBlocks(answer);
    const QList<EditBlock> some = editBlocks(QStringView(answer).first(answer.size() / 2));
    REQUIRE(some.size() <= all.size() && all.first(some.size()) == some);
    const ChatMessage message{.id = QUuid(), .role = kAssistantRole.toString(), .content = answer};
    REQUIRE(displayText(message).size() <= answer.size());
    return 0;
}
