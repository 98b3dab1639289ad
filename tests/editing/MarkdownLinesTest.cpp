#include "editing/MarkdownLines.h"

#include <gtest/gtest.h>

#include <QtCore/QStringList>

namespace Tessaline::MarkdownLines {

namespace {

using namespace Qt::StringLiterals;

/// "level|content", or "-".
QString heading(const QString &line)
{
    const auto found = parseHeadingLine(line);
    return found ? u"%1|%2"_s.arg(found->level).arg(found->content) : u"-"_s;
}

QString task(const QString &line)
{
    const auto found = parseTaskLine(line);
    return found ? u"%1|%2"_s.arg(found->isDone).arg(found->content) : u"-"_s;
}

QString numbered(const QString &line)
{
    const auto found = parseNumberedLine(line);
    return found ? u"%1|%2"_s.arg(found->number).arg(found->content) : u"-"_s;
}

QString cells(const QString &line)
{
    QStringList list;
    for (const QStringView cell : splitTableCells(line))
        list.append(cell.toString());
    return list.join(u'/');
}

struct Row {
    QString line;
    QString expected;
};

template <class Test>
void expectRows(Test test, const QList<Row> &rows)
{
    for (const Row &row : rows)
        EXPECT_EQ(test(row.line), row.expected) << '"' << row.line.toStdString() << '"';
}

} // namespace

TEST(MarkdownLines, Headings)
{
    expectRows(heading, {{u"# x"_s, u"1|x"_s},
                         {u"###### x"_s, u"6|x"_s},
                         {u"####### x"_s, u"-"_s},
                         {u"#x"_s, u"-"_s},
                         {u"#"_s, u"-"_s},
                         {u"# "_s, u"1|"_s},
                         {u"#  x"_s, u"1| x"_s},
                         {u"# x ##"_s, u"1|x ##"_s},
                         {u"# x  "_s, u"1|x  "_s},
                         {u" # x"_s, u"-"_s},
                         {u"#\tx"_s, u"-"_s},
                         {u"#\u00A0x"_s, u"-"_s},
                         {u"#\u0301 x"_s, u"-"_s},
                         {u"##\u0301 x"_s, u"-"_s},
                         {u"# \u0301x"_s, u"-"_s},
                         {u""_s, u"-"_s}});
}

TEST(MarkdownLines, Tasks)
{
    expectRows(task, {{u"- [ ] x"_s, u"0|x"_s},     {u"* [ ] x"_s, u"0|x"_s},     {u"+ [ ] x"_s, u"0|x"_s},
                      {u"- [x] x"_s, u"1|x"_s},     {u"- [X] x"_s, u"1|x"_s},     {u"* [x] x"_s, u"1|x"_s},
                      {u"* [X] x"_s, u"1|x"_s},     {u"+ [x] x"_s, u"1|x"_s},     {u"+ [X] x"_s, u"1|x"_s},
                      {u"- [ ] "_s, u"0|"_s},       {u"- [ ]  x "_s, u"0| x "_s}, {u"- [ ]"_s, u"-"_s},
                      {u"- [ ]x"_s, u"-"_s},        {u"- [  ] x"_s, u"-"_s},      {u"- [y] x"_s, u"-"_s},
                      {u"-  [ ] x"_s, u"-"_s},      {u" - [ ] x"_s, u"-"_s},      {u"1. [ ] x"_s, u"-"_s},
                      {u"- [x\u0301] x"_s, u"-"_s}, {u"- [ ] \u0301x"_s, u"-"_s}, {u""_s, u"-"_s}});
}

TEST(MarkdownLines, NumberedItems)
{
    expectRows(numbered, {{u"1. x"_s, u"1|x"_s},
                          {u"1.  x"_s, u"1| x"_s},
                          {u"1. "_s, u"1|"_s},
                          {u"007. x"_s, u"7|x"_s},
                          {u"-5. x"_s, u"-5|x"_s},
                          {u"+5. x"_s, u"5|x"_s},
                          {u"-0. x"_s, u"0|x"_s},
                          {u"9223372036854775807. x"_s, u"9223372036854775807|x"_s},
                          {u"-9223372036854775808. x"_s, u"-9223372036854775808|x"_s},
                          {u"9223372036854775808. x"_s, u"-"_s},
                          {u"1.5 apples"_s, u"-"_s},
                          {u"1.5. x"_s, u"-"_s},
                          {u"1."_s, u"-"_s},
                          {u"1.\tx"_s, u"-"_s},
                          {u"1) x"_s, u"-"_s},
                          {u". x"_s, u"-"_s},
                          {u"+. x"_s, u"-"_s},
                          {u"a. x"_s, u"-"_s},
                          {u"1a. x"_s, u"-"_s},
                          {u" 1. x"_s, u"-"_s},
                          {u"1 . x"_s, u"-"_s},
                          {u"٣. x"_s, u"-"_s},
                          {u"1\u0301. x"_s, u"-"_s},
                          {u"1.\u0301 x"_s, u"-"_s},
                          {u"1. \u0301x"_s, u"-"_s},
                          {u""_s, u"-"_s}});
}

TEST(MarkdownLines, Bullets)
{
    const auto bullet = [](const QString &line) {
        const auto content = parseBulletLine(line);
        return content ? u"|"_s + content->toString() : u"-"_s;
    };
    expectRows(bullet, {{u"- x"_s, u"|x"_s},
                        {u"* x"_s, u"|x"_s},
                        {u"+ x"_s, u"|x"_s},
                        {u"- "_s, u"|"_s},
                        {u"-  x "_s, u"| x "_s},
                        {u"- [ ]"_s, u"|[ ]"_s},
                        {u"-"_s, u"-"_s},
                        {u"-x"_s, u"-"_s},
                        {u"-\tx"_s, u"-"_s},
                        {u" - x"_s, u"-"_s},
                        {u"-\u0301 x"_s, u"-"_s},
                        {u"- \u0301x"_s, u"-"_s},
                        {u""_s, u"-"_s}});
}

TEST(MarkdownLines, Quotes)
{
    const auto quote = [](const QString &line) {
        const auto content = parseQuoteLine(line);
        return content ? u"|"_s + content->toString() : u"-"_s;
    };
    expectRows(quote, {{u"> x"_s, u"|x"_s},
                       {u"> "_s, u"|"_s},
                       {u">  x"_s, u"| x"_s},
                       {u">"_s, u"-"_s},
                       {u">x"_s, u"-"_s},
                       {u">> x"_s, u"-"_s},
                       {u" > x"_s, u"-"_s},
                       {u"> \u0301x"_s, u"-"_s}});
}

TEST(MarkdownLines, Rules)
{
    const auto rule = [](const QString &line) { return isHorizontalRuleLine(line) ? u"rule"_s : u"-"_s; };
    expectRows(rule, {{u"---"_s, u"rule"_s},
                      {u"***"_s, u"rule"_s},
                      {u"___"_s, u"rule"_s},
                      {u"- - -"_s, u"rule"_s},
                      {u"-     --"_s, u"rule"_s},
                      {u"----------"_s, u"rule"_s},
                      {u"--"_s, u"-"_s},
                      {u"- -"_s, u"-"_s},
                      {u"-*-"_s, u"-"_s},
                      {u"-\t-\t-"_s, u"-"_s},
                      {u"--- x"_s, u"-"_s},
                      {u"==="_s, u"-"_s},
                      {u"---\u0301"_s, u"-"_s},
                      {u"- \u0301--"_s, u"-"_s},
                      {u""_s, u"-"_s}});
}

TEST(MarkdownLines, Fences)
{
    const auto info = [](const QString &line) {
        return isFenceLine(line) ? u"|"_s + fenceInfo(line).toString() : u"-"_s;
    };
    expectRows(info, {{u"```"_s, u"|"_s},
                      {u"```js"_s, u"|js"_s},
                      {u"```js title"_s, u"|js title"_s},
                      {u"```  js\t "_s, u"|js"_s},
                      {u"````"_s, u"|`"_s},
                      {u"``` a`b"_s, u"|a`b"_s},
                      {u"``"_s, u"-"_s},
                      {u"~~~"_s, u"-"_s},
                      {u"```\u0301"_s, u"-"_s},
                      {u"``` \u0301"_s, u"| \u0301"_s}});
}

TEST(MarkdownLines, TableCells)
{
    expectRows(cells, {{u"a|b"_s, u"a/b"_s},
                       {u"| a | b |"_s, u"a/b"_s},
                       {u"  | a | b |  "_s, u"a/b"_s},
                       {u"a | b |"_s, u"a/b"_s},
                       {u"| a | b"_s, u"a/b"_s},
                       {u"| a |"_s, u"a"_s},
                       {u"a"_s, u"a"_s},
                       {u""_s, u""_s},
                       {u"|"_s, u""_s},
                       {u"||"_s, u""_s},
                       {u"|||"_s, u"/"_s},
                       {u"||a||"_s, u"/a/"_s},
                       {u"a||b"_s, u"a//b"_s},
                       {u"a\\|b"_s, u"a\\/b"_s},
                       {u"a|\u0301b"_s, u"a|\u0301b"_s},
                       {u"|\u0301a|b"_s, u"|\u0301a/b"_s},
                       {u"a|b\u0600|"_s, u"a/b\u0600|"_s},
                       {u"a|\u2003b\u00A0"_s, u"a/b"_s}});
}

TEST(MarkdownLines, TwoTableCells)
{
    for (const QString &line : {u"a|b"_s, u"|||"_s, u"a||"_s, u"| a | b | c |"_s})
        EXPECT_TRUE(hasTwoTableCells(line)) << line.toStdString();
    for (const QString &line : {u"a"_s, u"| a |"_s, u"||"_s, u""_s, u"a|\u0301b"_s})
        EXPECT_FALSE(hasTwoTableCells(line)) << line.toStdString();
}

TEST(MarkdownLines, TableDelimiterRows)
{
    for (const QString &line : {u"---"_s, u"| --- |"_s, u"---|---"_s, u"|:---|:---:|---:|"_s, u" | --- | ----- | "_s,
                                u"-:-:-"_s, u":-:--:"_s})
        EXPECT_TRUE(isTableDelimiterRow(line)) << line.toStdString();
    for (const QString &line : {u"--"_s, u"| -- | --- |"_s, u""_s, u"|"_s, u":::"_s, u"--- x"_s, u"- - -"_s,
                                u"---||---"_s, u"---\u0301"_s, u":\u0301---"_s, u"***"_s})
        EXPECT_FALSE(isTableDelimiterRow(line)) << line.toStdString();
}

} // namespace Tessaline::MarkdownLines
