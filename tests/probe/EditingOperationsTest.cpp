#include "tests/probe/OperationCase.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

const OperationCase kCases[] = {
    {"Blocks", R"("op":"parseBlocks","text":"- a\n\n---")",
     R"([{"content":"a","style":"bullet","marker":"•\t","parsesInlineMarkdown":true},
         {"content":"────────────────","style":"horizontalRule","marker":null,"parsesInlineMarkdown":false}])"},
    {"InlineRuns", R"j("op":"parseInlineMarkdown","text":"a **b** [c](u)")j",
     R"([{"text":"a ","attributes":{}},{"text":"b","attributes":{"TessalineBold":true}},{"text":" ","attributes":{}},
         {"text":"c","attributes":{"TessalineLinkDestination":"u"}}])"},
    {"RenderedRuns", R"j("op":"renderMarkdown","text":"- ![a](s)")j",
     R"([{"text":"•\t","attributes":{"TessalineBlockStyle":"bullet","TessalineGeneratedMarker":true}},
         {"text":"🖼 a","attributes":{"TessalineBlockStyle":"bullet","TessalineImageSource":"s","TessalineImageAlt":"a"}}])"},
    {"WrittenRuns",
     R"("op":"serializeMarkdown","runs":[
         {"text":"a","attributes":{"TessalineBlockStyle":"quote","TessalineItalic":true}},
         {"text":"b","attributes":{"TessalineBlockStyle":"quote","TessalineInlineCode":true}}])",
     R"("> *a*`b`")"},
    {"EqualNeighboursAreOneRun",
     R"("op":"serializeMarkdown","runs":[{"text":"a","attributes":{"TessalineBold":true}},
         {"text":"b","attributes":{"TessalineBold":1}}])",
     R"("**ab**")"},
    {"ALinkThatIsNoTextIsNone",
     R"("op":"serializeMarkdown","runs":[{"text":"a","attributes":{"TessalineLinkDestination":true}}])", R"("a")"},
    {"RoundTrip", R"("op":"roundTrip","text":"* a\n\n\n1) b")", R"("- a\n\n1) b")"},
    {"Selection",
     R"("op":"serializeSelection","runs":[{"text":"•\t","attributes":{"TessalineGeneratedMarker":true}},
         {"text":"a*\nb","attributes":{"TessalineBlockStyle":"bullet"}}])",
     R"("a\\*\nb")"},
    {"Presentation", R"("op":"presentation","attributes":{"TessalineBlockStyle":"task:1"},"fontSize":16)",
     R"({"font":{"face":"body","size":16,"bold":false,"semibold":false,"italic":false},
         "foreground":"secondaryLabel","background":null,"underline":false,"strikethrough":true,"link":null,
         "paragraph":{"lineSpacing":4,"paragraphSpacing":2,"paragraphSpacingBefore":0,"firstLineHeadIndent":2,
                      "headIndent":30,"defaultTabInterval":30,"tabStops":[30]}})"},
    {"AnImageWithoutATextAsItsSourceLooksLikeOne",
     R"("op":"presentation","attributes":{"TessalineImageSource":true,"TessalineInlineCode":true},"fontSize":10.5)",
     R"({"font":{"face":"monospaced","size":10,"bold":false,"semibold":false,"italic":false},
         "foreground":"secondaryLabel","background":"controlBackground","underline":false,"strikethrough":false,
         "link":null,
         "paragraph":{"lineSpacing":8,"paragraphSpacing":10,"paragraphSpacingBefore":0,"firstLineHeadIndent":0,
                      "headIndent":0,"defaultTabInterval":null,"tabStops":null}})"},
    {"TypingAttributes",
     R"("op":"typingAttributes","attributes":{"TessalineBlockStyle":"bullet","TessalineBold":true,
         "TessalineGeneratedMarker":true,"TessalineImageSource":"s","TessalineImageAlt":"a",
         "TessalineLinkDestination":"u"})",
     R"({"TessalineBlockStyle":"bullet","TessalineBold":true,"TessalineLinkDestination":"u"})"},
    {"AToggledTask", R"("op":"toggleTaskMarker","text":"- [ ] a","index":1)",
     R"({"toggled":true,"runs":[
         {"text":"☑\t","attributes":{"TessalineBlockStyle":"task:1","TessalineGeneratedMarker":true}},
         {"text":"a","attributes":{"TessalineBlockStyle":"task:1"}}]})"},
    {"NoTaskToToggle", R"("op":"toggleTaskMarker","text":"a","index":-1)",
     R"({"toggled":false,"runs":[{"text":"a","attributes":{"TessalineBlockStyle":"paragraph"}}]})"},
    {"TheNextListItem", R"("op":"nextListItem","style":"numbered:9")", R"({"marker":"10.\t","style":"numbered:10"})"},
    {"NoNextListItem", R"("op":"nextListItem","style":"quote")", "null"},
    {"SourceFormat", R"("op":"sourceFormat","type":"link","selection":"a")",
     R"j({"replacement":"[a](url)","caretOffset":8})j"},
    {"AnUnknownSourceFormat", R"("op":"sourceFormat","type":"h4","selection":"a")", "null"},
    {"AFormatCommand",
     R"("op":"applyFormat","runs":[{"text":"ab","attributes":{"TessalineBlockStyle":"paragraph"}}],
         "location":1,"length":9,"type":"bold")",
     R"({"runs":[{"text":"a","attributes":{"TessalineBlockStyle":"paragraph"}},
                 {"text":"b","attributes":{"TessalineBlockStyle":"paragraph","TessalineBold":true}}],
         "location":1,"length":1})"},
    {"AnUnknownFormatCommand", R"("op":"applyFormat","runs":[],"location":0,"length":0,"type":"h4")", "null"},
};

class EditingOperations : public testing::TestWithParam<OperationCase>
{};

} // namespace

TEST_P(EditingOperations, Answers)
{
    ProbeProcess probe;
    expectResult(probe, GetParam());
}

INSTANTIATE_TEST_SUITE_P(All, EditingOperations, testing::ValuesIn(kCases), nameOfCase);

TEST(EditingOperationsErrors, WrongArgumentsAreNamed)
{
    const std::pair<const char *, const char *> cases[] = {
        {R"({"op":"serializeMarkdown","runs":{}})", R"("runs" is not a list.)"},
        {R"({"op":"serializeMarkdown","runs":[1]})", "A run is not an object."},
        {R"({"op":"serializeMarkdown","runs":[{"text":"a"}]})", R"("attributes" is missing.)"},
        {R"({"op":"serializeMarkdown","runs":[{"text":"a","attributes":[]}]})", R"("attributes" is not an object.)"},
        {R"({"op":"presentation","attributes":{},"fontSize":"16"})", R"("fontSize" is not a number.)"},
        {R"({"op":"toggleTaskMarker","text":"","index":1.5})", R"("index" is not an integer of 64 bits.)"},
        {R"({"op":"toggleTaskMarker","text":"","index":18446744073709551615})",
         R"("index" is not an integer of 64 bits.)"},
    };
    ProbeProcess probe;

    for (const auto &[request, error] : cases)
        expectError(probe, request, error);
}

} // namespace Tessaline
