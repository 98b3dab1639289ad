#pragma once

#include "MarkdownUI/BlockBox.h"
#include "MarkdownUI/BlockOutline.h"

#include <memory>

namespace MarkdownUI {

class PictureStore;

/// The box that shows a leaf. Pictures that it needs are asked for here, for a block `width` wide.
std::unique_ptr<BlockBox> makeBox(const LeafContent &content, const DisplayEnvironment &environment,
                                  PictureStore &pictures, int width);

/// The text of a paragraph or heading as its box has it.
AttributedString renderedText(const TextLeaf &leaf, const DisplayEnvironment &environment, PictureStore &pictures);

/// About how high a leaf is, without laying it out.
int estimatedHeight(const LeafContent &content, const DisplayEnvironment &environment, int width);

/// Whether pictures that are loaded later can change the leaf.
bool hasPictures(const LeafContent &content);
/// False only if the leaf surely has nothing to click.
bool mayHaveTargets(const LeafContent &content);

} // namespace MarkdownUI
