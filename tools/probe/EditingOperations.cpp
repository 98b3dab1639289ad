#include "probe/Operations.h"

#include "editing/FormatCommands.h"
#include "editing/InlineMarkdown.h"
#include "editing/InlineWriting.h"
#include "editing/ListMarkers.h"
#include "editing/MarkdownRendering.h"
#include "editing/MarkdownWriting.h"
#include "editing/SourceFormat.h"
#include "editing/TaskMarkers.h"
#include "editing/TextPresentation.h"

#include <nlohmann/json.hpp>

namespace Tessaline::Probe {

namespace {

constexpr const char *kBlockStyle = "TessalineBlockStyle";
constexpr const char *kLinkDestination = "TessalineLinkDestination";
constexpr const char *kImageSource = "TessalineImageSource";
constexpr const char *kImageAlt = "TessalineImageAlt";

struct Flag {
    const char *key;
    bool TextAttributes::*member;
};

constexpr Flag kFlags[] = {
    {"TessalineBold", &TextAttributes::bold},
    {"TessalineItalic", &TextAttributes::italic},
    {"TessalineInlineCode", &TextAttributes::inlineCode},
    {"TessalineGeneratedMarker", &TextAttributes::generatedMarker},
};

struct TextKey {
    const char *key;
    SharedText TextAttributes::*member;
};

constexpr TextKey kTextKeys[] = {
    {kBlockStyle, &TextAttributes::blockStyle},
    {kLinkDestination, &TextAttributes::linkDestination},
    {kImageSource, &TextAttributes::imageSource},
    {kImageAlt, &TextAttributes::imageAlt},
};

// --- from JSON ---

/// Of a flag the presence counts, not the value. A text that is none counts as absent.
TextAttributes attributesFrom(const Json &object)
{
    if (!object.is_object())
        throw BadArgument("The attributes are not an object.");
    TextAttributes attributes;
    for (const Flag &flag : kFlags)
        attributes.*flag.member = object.contains(flag.key);
    for (const TextKey &text : kTextKeys) {
        const auto found = object.find(text.key);
        if (found != object.end() && found->is_string())
            attributes.*text.member = SharedText(QString::fromStdString(found->get_ref<const std::string &>()));
    }
    return attributes;
}

AttributedText runs(const Arguments &arguments)
{
    AttributedText text;
    for (const Json &run : arguments.list("runs")) {
        if (!run.is_object())
            throw BadArgument("A run is not an object.");
        const Arguments parts(run);
        text.append(parts.text("text"), attributesFrom(parts.object("attributes")));
    }
    return text;
}

// --- to JSON ---

Json jsonOf(const SharedText &text)
{
    return text.isPresent() ? jsonFrom(text.toString()) : Json();
}

Json jsonOf(const TextAttributes &attributes)
{
    Json object = Json::object();
    for (const TextKey &text : kTextKeys) {
        if ((attributes.*text.member).isPresent())
            object[text.key] = jsonOf(attributes.*text.member);
    }
    for (const Flag &flag : kFlags) {
        if (attributes.*flag.member)
            object[flag.key] = true;
    }
    return object;
}

Json jsonOf(const AttributedText &text)
{
    Json list = Json::array();
    for (const AttributeRun &run : text.runs()) {
        list.push_back({{"text", jsonFrom(text.text().sliced(run.range.location, run.range.length))},
                        {"attributes", jsonOf(run.attributes)}});
    }
    return list;
}

Json jsonOf(const QList<Block> &blocks)
{
    Json list = Json::array();
    for (const Block &block : blocks) {
        list.push_back({{"content", jsonFrom(block.content)},
                        {"style", jsonOf(block.style)},
                        {"marker", jsonOf(block.marker)},
                        {"parsesInlineMarkdown", block.parsesInlineMarkdown}});
    }
    return list;
}

const char *nameOf(PresentedFont::Face face)
{
    constexpr const char *kNames[] = {"body", "system", "monospaced"};
    return kNames[static_cast<int>(face)];
}

const char *nameOf(PresentedColor color)
{
    constexpr const char *kNames[] = {"text", "secondaryLabel",    "quaternaryLabel", "orange",
                                      "link", "controlBackground", "marker"};
    return kNames[static_cast<int>(color)];
}

Json jsonOf(const PresentedParagraph &paragraph)
{
    return {{"lineSpacing", paragraph.lineSpacing},
            {"paragraphSpacing", paragraph.paragraphSpacing},
            {"paragraphSpacingBefore", paragraph.paragraphSpacingBefore},
            {"firstLineHeadIndent", paragraph.firstLineHeadIndent},
            {"headIndent", paragraph.headIndent},
            {"defaultTabInterval", paragraph.defaultTabInterval ? Json(*paragraph.defaultTabInterval) : Json()},
            {"tabStops", paragraph.tabStops.isEmpty() ? Json() : Json(paragraph.tabStops)}};
}

Json jsonOf(const TextPresentation &presentation)
{
    const PresentedFont &font = presentation.font;
    return {{"font",
             {{"face", nameOf(font.face)},
              {"size", font.size},
              {"bold", font.bold},
              {"semibold", font.semibold},
              {"italic", font.italic}}},
            {"foreground", nameOf(presentation.foreground)},
            {"background", presentation.background ? Json(nameOf(*presentation.background)) : Json()},
            {"underline", presentation.underline},
            {"strikethrough", presentation.strikethrough},
            {"link", jsonOf(presentation.link)},
            {"paragraph", jsonOf(presentation.paragraph)}};
}

// --- operations ---

Json presentationOf(const Arguments &arguments)
{
    const Json &object = arguments.object("attributes");
    TextAttributes attributes = attributesFrom(object);
    // An image looks like one whatever its source is, even if it cannot be written.
    if (object.contains(kImageSource) && !attributes.imageSource.isPresent())
        attributes.imageSource = SharedText(QString());
    return jsonOf(presentation(attributes, arguments.number("fontSize")));
}

Json toggled(const Arguments &arguments)
{
    AttributedText text = renderMarkdown(arguments.text("text"));
    const bool isToggled = toggleTaskMarker(arguments.integer("index"), text);
    return {{"toggled", isToggled}, {"runs", jsonOf(text)}};
}

Json nextItem(const Arguments &arguments)
{
    const std::optional<ListItem> item = nextListItem(arguments.text("style"));
    return item ? Json{{"marker", jsonOf(item->marker)}, {"style", jsonOf(item->style)}} : Json();
}

Json sourceFormatted(const Arguments &arguments)
{
    const std::optional<SourceFormat> format = sourceFormat(arguments.text("type"), arguments.text("selection"));
    return format ? Json{{"replacement", jsonFrom(format->replacement)}, {"caretOffset", format->caretOffset}} : Json();
}

Json formatted(const Arguments &arguments)
{
    const TextRange selection{arguments.integer("location"), arguments.integer("length")};
    const std::optional<FormattedText> result = applyFormat({runs(arguments), selection}, arguments.text("type"));
    if (!result)
        return Json();
    return {
        {"runs", jsonOf(result->text)}, {"location", result->selection.location}, {"length", result->selection.length}};
}

constexpr Operation kOperations[] = {
    {"parseBlocks", [](const Arguments &arguments) { return jsonOf(parseBlocks(arguments.text("text"))); }},
    {"parseInlineMarkdown",
     [](const Arguments &arguments) { return jsonOf(parseInlineMarkdown(arguments.text("text"))); }},
    {"renderMarkdown", [](const Arguments &arguments) { return jsonOf(renderMarkdown(arguments.text("text"))); }},
    {"serializeMarkdown", [](const Arguments &arguments) { return jsonFrom(serializeMarkdown(runs(arguments))); }},
    {"roundTrip",
     [](const Arguments &arguments) { return jsonFrom(serializeMarkdown(renderMarkdown(arguments.text("text")))); }},
    {"serializeSelection",
     [](const Arguments &arguments) {
         const AttributedText text = runs(arguments);
         return jsonFrom(serializeInline(text, {0, text.size()}));
     }},
    {"presentation", presentationOf},
    {"typingAttributes",
     [](const Arguments &arguments) {
         return jsonOf(typingAttributes(attributesFrom(arguments.object("attributes"))));
     }},
    {"toggleTaskMarker", toggled},
    {"nextListItem", nextItem},
    {"sourceFormat", sourceFormatted},
    {"applyFormat", formatted},
};

} // namespace

std::span<const Operation> editingOperations()
{
    return kOperations;
}

} // namespace Tessaline::Probe
