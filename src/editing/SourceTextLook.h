#pragma once

#include "editing/TextLook.h"
#include "foundation/ChunkedText.h"

namespace Tessaline {

/// The look of source text: one face of fixed width, every character as it is.
class SourceTextLook final : public TextLook
{
public:
    /// `text` is the text that is shown; it must outlive the look.
    explicit SourceTextLook(const ChunkedText &text) : m_text(text) {}

    void setFontSize(double points);

    BlockLook lookOf(const LayoutBlock &block, bool beginsParagraph) const override;
    BlockMetrics metrics(int width) const override;
    QFont font() const override { return m_font; }

private:
    const ChunkedText &m_text;
    QFont m_font;
};

} // namespace Tessaline
