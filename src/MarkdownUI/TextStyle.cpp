#include "MarkdownUI/TextStyle.h"

namespace MarkdownUI {

namespace {

/// Applies each kind to the attributes. Without a font there is none to change.
struct Applier {
    MarkdownUIAttributes &attributes;

    template <class Value>
    void setFont(Value FontProperties::*member, const Value &value) const
    {
        if (attributes.fontProperties)
            (*attributes.fontProperties).*member = value;
    }

    void operator()(const EmptyTextStyle &) const {}
    void operator()(const ForegroundColor &style) const { attributes.foregroundColor = style.color; }
    void operator()(const BackgroundColor &style) const { attributes.backgroundColor = style.color; }
    void operator()(const FontFamily &style) const { setFont(&FontProperties::family, style.family); }
    void operator()(const FontFamilyVariant &style) const { setFont(&FontProperties::familyVariant, style.variant); }
    void operator()(const FontCapsVariant &style) const { setFont(&FontProperties::capsVariant, style.variant); }
    void operator()(const FontDigitVariant &style) const { setFont(&FontProperties::digitVariant, style.variant); }
    void operator()(const FontSize &style) const
    {
        if (attributes.fontProperties)
            style.size.resize(*attributes.fontProperties);
    }
    void operator()(const FontStyle &style) const { setFont(&FontProperties::style, style.style); }
    void operator()(const FontWeight &style) const { setFont(&FontProperties::weight, style.weight); }
    void operator()(const FontWidth &style) const { setFont(&FontProperties::widthStorage, style.width); }
    void operator()(const StrikethroughStyle &style) const { attributes.strikethroughStyle = style.line; }
    void operator()(const UnderlineStyle &style) const { attributes.underlineStyle = style.line; }
    void operator()(const TextKerning &style) const { attributes.kerning = style.kerning; }
    void operator()(const TextTracking &style) const { attributes.tracking = style.tracking; }
};

} // namespace

void TextStyle::apply(MarkdownUIAttributes &attributes) const
{
    for (const TextStyleKind &kind : m_kinds)
        std::visit(Applier{attributes}, kind);
}

MarkdownUIAttributes TextStyle::applied(MarkdownUIAttributes attributes) const
{
    apply(attributes);
    return attributes;
}

TextStyle operator+(const TextStyle &first, const TextStyle &second)
{
    TextStyle both = first;
    both.m_kinds += second.m_kinds;
    return both;
}

} // namespace MarkdownUI
