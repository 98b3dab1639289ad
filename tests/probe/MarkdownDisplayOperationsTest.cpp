#include "tests/probe/ProbeProcess.h"

#include <gtest/gtest.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

struct Case {
    const char *request; // without the braces
    const char *result;  // as JSON
};

/// Any value of JSON.
QJsonValue read(const QByteArray &json)
{
    return QJsonDocument::fromJson('[' + json + ']').array().at(0);
}

const Case kCases[] = {
    {R"("op":"parseContent","markdown":"")", "[]"},
    {R"("op":"parseContent","markdown":"# a *b*\n\nc  \nd\ne `f` <g>\n")",
     R"([{"type":"heading","level":1,"content":[{"type":"text","text":"a "},
            {"type":"emphasis","children":[{"type":"text","text":"b"}]}]},
         {"type":"paragraph","content":[{"type":"text","text":"c"},{"type":"lineBreak"},{"type":"text","text":"d"},
            {"type":"softBreak"},{"type":"text","text":"e "},{"type":"code","text":"f"},{"type":"text","text":" "},
            {"type":"html","text":"<g>"}]}])"},
    {R"j("op":"parseContent","markdown":"**a**~~b~~[c](d)![e](f)")j",
     R"([{"type":"paragraph","content":[{"type":"strong","children":[{"type":"text","text":"a"}]},
            {"type":"strikethrough","children":[{"type":"text","text":"b"}]},
            {"type":"link","destination":"d","children":[{"type":"text","text":"c"}]},
            {"type":"image","source":"f","children":[{"type":"text","text":"e"}]}]}])"},
    {R"("op":"parseContent","markdown":"> - a\n>   1. b\n\n---\n\n- [ ] c\n- [x] d\n\n- e\n\n```x\nf\n```\n    g\n")",
     R"([{"type":"blockquote","children":[{"type":"bulletedList","isTight":true,"items":[{"children":[
            {"type":"paragraph","content":[{"type":"text","text":"a"}]},
            {"type":"numberedList","isTight":true,"start":1,"items":[{"children":[
                {"type":"paragraph","content":[{"type":"text","text":"b"}]}]}]}]}]}]},
         {"type":"thematicBreak"},
         {"type":"taskList","isTight":false,"items":[
            {"isCompleted":false,"children":[{"type":"paragraph","content":[{"type":"text","text":"c"}]}]},
            {"isCompleted":true,"children":[{"type":"paragraph","content":[{"type":"text","text":"d"}]}]},
            {"isCompleted":false,"children":[{"type":"paragraph","content":[{"type":"text","text":"e"}]}]}]},
         {"type":"codeBlock","fenceInfo":"x","content":"f\n"},
         {"type":"codeBlock","fenceInfo":null,"content":"g\n"}])"},
    {R"("op":"parseContent","markdown":"|a|b|c|d|\n|-|:-|:-:|-:|\n\n<div>\n")",
     R"([{"type":"table","columnAlignments":["none","left","center","right"],"rows":[{"cells":[
            {"content":[{"type":"text","text":"a"}]},{"content":[{"type":"text","text":"b"}]},
            {"content":[{"type":"text","text":"c"}]},{"content":[{"type":"text","text":"d"}]}]}]},
         {"type":"htmlBlock","content":"<div>\n"}])"},
    {R"j("op":"renderInlines","markdown":"# x\n\na\nb **c *d*** [e](/f) [g](<h i>)<br>  j","softBreakMode":"space")j",
     R"([{"text":"a b ","styles":[],"link":null},{"text":"c ","styles":["strong"],"link":null},
         {"text":"d","styles":["strong","emphasis"],"link":null},{"text":" ","styles":[],"link":null},
         {"text":"e","styles":["link"],"link":"/f"},{"text":" ","styles":[],"link":null},
         {"text":"g","styles":["link"],"link":null},{"text":"\nj","styles":[],"link":null}])"},
    {R"("op":"renderInlines","markdown":"a\nb `c`~~d~~","softBreakMode":"lineBreak")",
     R"([{"text":"a\nb ","styles":[],"link":null},{"text":"c","styles":["code"],"link":null},
         {"text":"d","styles":["strikethrough"],"link":null}])"},
    {R"("op":"renderInlines","markdown":"# x","softBreakMode":"space")", "[]"},
    {R"("op":"visibleInScheme","url":"a#gh-dark-mode-only","scheme":"light")", "false"},
    {R"("op":"visibleInScheme","url":"a#GH-dark-mode-only","scheme":"dark")", "true"},
    {R"("op":"visibleInScheme","url":"a#gh-light-mode-only","scheme":"dark")", "false"},
    {R"("op":"visibleInScheme","url":"a#gh-light-mode-only","scheme":"sepia")", "true"},
    {R"("op":"blockSpacing","margins":[{"top":24,"bottom":16},{"top":0,"bottom":16},{"top":null,"bottom":null},
            {"top":null,"bottom":1}],"tight":false)",
     "[0,16,16,null]"},
    {R"("op":"blockSpacing","margins":[{"top":24,"bottom":16},{"top":4,"bottom":16}],"tight":true)", "[0,4]"},
    {R"("op":"relativeSize","value":0.25,"unit":"em","size":13,"scale":0.85)", "3"},
    {R"("op":"relativeSize","value":0.25,"unit":"rem","size":16,"scale":0.85)", "4"},
    {R"("op":"flowLayout","width":100,"horizontalSpacing":4,"verticalSpacing":3,"items":[
            {"width":30,"height":10,"priority":0},{"width":0,"height":0,"priority":-1},
            {"width":20,"height":20,"priority":0}])",
     R"({"width":100,"height":33,"frames":[{"x":0,"y":0,"width":30,"height":10},{"x":34,"y":10,"width":66,"height":0},
            {"x":0,"y":13,"width":20,"height":20}]})"},
    {R"("op":"flowLayout","width":null,"horizontalSpacing":4,"verticalSpacing":3,"items":[
            {"width":300,"height":10,"priority":0},{"width":5,"height":0,"priority":-1}])",
     R"({"width":309,"height":10,"frames":[{"x":0,"y":0,"width":300,"height":10},{"x":304,"y":10,"width":5,"height":0}]})"},
    {R"j("op":"imageFlow","markdown":"![a](b)  \n[![c](d)](e)")j",
     R"([{"kind":"image","source":"b","alt":"a","destination":null},{"kind":"lineBreak"},
         {"kind":"image","source":"d","alt":"c","destination":"e"}])"},
    {R"j("op":"imageFlow","markdown":"![a](b) c")j", "null"},
};

} // namespace

TEST(MarkdownDisplayOperations, Answer)
{
    ProbeProcess probe;

    for (const Case &row : kCases) {
        const QByteArray request = QByteArray('{' + QByteArray(row.request) + '}').replace('\n', ' ');
        const QByteArray answer = probe.answerTo(request);
        const QJsonObject expected{{u"ok"_s, true}, {u"result"_s, read(row.result)}};
        EXPECT_EQ(QJsonDocument::fromJson(answer).object(), expected) << row.request << "\n" << answer.constData();
    }
}

TEST(MarkdownDisplayOperations, WrongArgumentsAreNamed)
{
    const std::pair<const char *, const char *> cases[] = {
        {R"({"op":"parseContent"})", R"("markdown" is missing.)"},
        {R"({"op":"renderInlines","markdown":"a","softBreakMode":"x"})",
         R"(The soft break mode is neither "space" nor "lineBreak".)"},
        {R"({"op":"relativeSize","value":1,"unit":"px","size":1,"scale":1})", R"(The unit is neither "em" nor "rem".)"},
        {R"({"op":"blockSpacing","margins":[{"top":"1","bottom":1}],"tight":true})", R"("top" is not a number.)"},
        {R"({"op":"blockSpacing","margins":[1],"tight":true})", "An element of the list is not an object."},
        {R"({"op":"flowLayout","horizontalSpacing":1,"verticalSpacing":1,"items":[]})", R"("width" is missing.)"},
    };
    ProbeProcess probe;

    for (const auto &[request, error] : cases) {
        const QJsonObject answer = QJsonDocument::fromJson(probe.answerTo(request)).object();
        EXPECT_EQ(answer.value(u"ok"_s), QJsonValue(false)) << request;
        EXPECT_EQ(answer.value(u"error"_s).toString().toStdString(), error) << request;
    }
}

TEST(MarkdownDisplayOperations, ADeepTextNeedsNoStack)
{
    ProbeProcess probe;

    const QByteArray quotes =
        probe.answerTo(R"({"op":"parseContent","markdown":")" + QByteArray(20000, '>') + R"(a"})");
    EXPECT_TRUE(quotes.startsWith(R"({"ok":true)")) << quotes.left(200).constData();
    EXPECT_EQ(quotes.count("blockquote"), 20000);
    const QByteArray strong = QByteArray(10000, '*');
    const QByteArray emphasis =
        probe.answerTo(R"({"op":"parseContent","markdown":")" + strong + 'a' + strong + R"("})");
    EXPECT_EQ(emphasis.count("strong"), 5000);
}

} // namespace Tessaline
