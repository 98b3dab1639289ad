#include "editing/TaskMarkers.h"

#include "editing/BlockStyle.h"
#include "editing/ListMarkers.h"
#include "editing/Paragraphs.h"

namespace Tessaline {

bool toggleTaskMarker(qsizetype index, AttributedText &text)
{
    if (index < 0 || index >= text.size())
        return false;
    const TextAttributes attributes = text.attributesAt(index);
    if (!attributes.generatedMarker || BlockStyle::read(attributes.blockStyle.view()).kind != BlockStyle::Kind::Task)
        return false;

    const TextRange marker = text.effectiveRange(index, &TextAttributes::generatedMarker, {0, text.size()});
    const bool isDone = !BlockStyle::isDoneTask(attributes.blockStyle.view());
    TextAttributes ofBox;
    ofBox.generatedMarker = true;
    ofBox.blockStyle = BlockStyle::task(isDone);
    const TextRange box{marker.location, 1};
    text.set(Paragraphs::around(text.text(), box), &TextAttributes::blockStyle, ofBox.blockStyle);
    text.replace(box, AttributedText(ListMarker::task(isDone).view().first(1), ofBox));
    return true;
}

} // namespace Tessaline
