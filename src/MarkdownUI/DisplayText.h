#pragma once

#include "MarkdownUI/MarkdownDisplay.h"

namespace MarkdownUI {

/// The text of a display in one piece, one line for each leaf: as assistive technology sees it. Made anew when the
/// display has changed.
class DisplayText
{
public:
    explicit DisplayText(const MarkdownDisplay &display);

    const QString &text() const { return m_text; }
    /// Between positions of the display and offsets of the text; what lies outside is moved to the nearest end.
    qsizetype offsetOf(const DisplayPosition &position) const;
    DisplayPosition positionOf(qsizetype offset) const;

private:
    QString m_text;
    std::vector<qsizetype> m_starts; // of the leaves
};

} // namespace MarkdownUI
