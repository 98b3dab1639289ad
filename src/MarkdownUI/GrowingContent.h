#pragma once

#include "MarkdownUI/MarkdownContent.h"

#include <QtCore/QString>

namespace MarkdownUI {

/// The blocks of a text that grows, as an answer does while it is written. Each update reads the last blocks anew and
/// takes over the ones that the new text can no longer change; the blocks are always those of parseBlocks on the whole
/// text. The work of an update depends on its last block and on what was added, but for one comparison of the texts.
///
/// A text with link definitions ("[label]: target") is read as a whole each time, for a definition changes links
/// anywhere before and after it. Its blocks are still compared, so that `update` tells which of them changed.
///
/// When the text becomes one that is costly to parse (see CostlyText.h), the blocks that were taken over stay as they
/// are; only what is read anew is shown as plain paragraphs.
class GrowingContent
{
public:
    /// Takes the text as it is now, however it differs from the last one. Returns the index of the first block that is
    /// not what it was at this index before; the number of blocks if all are the same. Blocks below the index share
    /// their memory with those of before.
    qsizetype update(const QString &markdown);

    const QString &markdown() const { return m_markdown; }
    const QList<BlockNode> &blocks() const { return m_blocks; }

private:
    qsizetype reusableBlocks(qsizetype sharedPrefix) const;

    QString m_markdown;
    QList<BlockNode> m_blocks;
    QList<qsizetype> m_locations; // one for each block, ascending
    bool m_hasDefinitions = false;
};

} // namespace MarkdownUI
