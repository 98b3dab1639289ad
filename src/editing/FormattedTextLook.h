#pragma once

#include "editing/AttributedDocument.h"
#include "editing/TextLook.h"

namespace Tessaline {

class Theme;
struct PresentedParagraph;
struct TextPresentation;

/// The look of formatted text: faces, colours and distances of what the attributes say.
class FormattedTextLook final : public TextLook
{
public:
    /// Both must outlive the look.
    FormattedTextLook(const AttributedDocument &document, const Theme &theme) : m_document(document), m_theme(theme) {}

    void setFontSize(double points) { m_fontSize = points; }
    double fontSize() const { return m_fontSize; }

    BlockLook lookOf(const LayoutBlock &block, bool beginsParagraph) const override;
    BlockMetrics metrics(int width) const override;
    QFont font() const override;

private:
    double spacingBehind(const LayoutBlock &block, const SharedText &style, double spacing) const;
    void setTabStops(BlockLook &look, const PresentedParagraph &paragraph, const AttributedText &text,
                     bool beginsParagraph) const;
    double itemStart(const PresentedParagraph &paragraph, const AttributedText &text) const;
    QTextCharFormat formatOf(const TextPresentation &presentation, bool isHeading) const;

    const AttributedDocument &m_document;
    const Theme &m_theme;
    double m_fontSize = 17;
};

} // namespace Tessaline
