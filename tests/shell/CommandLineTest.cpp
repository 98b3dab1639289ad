#include "shell/CommandLine.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;
using Action = CommandLine::Action;

CommandLine read(const QStringList &arguments)
{
    return readCommandLine(arguments, u"1.2.3"_s);
}

TEST(CommandLine, NoArgumentsRunTheProgram)
{
    EXPECT_EQ(read({}), CommandLine{});
}

TEST(CommandLine, TheVersionIsOneLine)
{
    for (const QString &option : {u"--version"_s, u"-v"_s}) {
        EXPECT_EQ(read({option}).action, Action::Print);
        EXPECT_EQ(read({option}).text, u"tessaline 1.2.3\n"_s);
    }
}

TEST(CommandLine, HelpNamesEveryOption)
{
    for (const QString &option : {u"--help"_s, u"-h"_s}) {
        const CommandLine line = read({option});
        EXPECT_EQ(line.action, Action::Print);
        for (const QString &named : {u"--help"_s, u"--version"_s, u"-platform"_s, u"-display"_s, u"-session"_s})
            EXPECT_TRUE(line.text.contains(named)) << named.toStdString();
    }
}

TEST(CommandLine, AnUnknownOptionIsRefusedInOneSentenceThatNamesIt)
{
    const CommandLine line = read({u"--bogus"_s});
    EXPECT_EQ(line.action, Action::Refuse);
    EXPECT_EQ(line.text, u"tessaline: There is no option “--bogus”; “tessaline --help” lists those there are.\n"_s);
}

TEST(CommandLine, AFileIsRefusedWithTheWayToOpenIt)
{
    const CommandLine line = read({u"notes.md"_s});
    EXPECT_EQ(line.action, Action::Refuse);
    EXPECT_EQ(line.text,
              u"tessaline: Could not open “notes.md” from the command line: files are opened in the window.\n"_s);
}

TEST(CommandLine, TheFirstArgumentThatIsNotUnderstoodIsNamed)
{
    EXPECT_TRUE(read({u"--first"_s, u"--second"_s}).text.contains(u"--first"_s));
}

TEST(CommandLine, HelpAndVersionAnswerBesideAnythingElse)
{
    EXPECT_EQ(read({u"--bogus"_s, u"--version"_s}).action, Action::Print);
    EXPECT_EQ(read({u"a.md"_s, u"-h"_s}).action, Action::Print);
}

TEST(CommandLine, ToolkitOptionsAreLeftToTheToolkit)
{
    for (const QStringList &arguments :
         {QStringList{u"-session"_s, u"abc_123"_s}, QStringList{u"--session"_s, u"abc"_s},
          QStringList{u"-session=abc"_s}, QStringList{u"-style"_s, u"fusion"_s}, QStringList{u"-reverse"_s}})
        EXPECT_EQ(read(arguments), CommandLine{}) << arguments.join(u' ').toStdString();
}

TEST(CommandLine, APlatformOrADisplayThatIsNamedIsKnown)
{
    EXPECT_EQ(read({u"-platform"_s, u"offscreen"_s}).platform, u"offscreen"_s);
    EXPECT_EQ(read({u"--platform=offscreen"_s}).platform, u"offscreen"_s);
    EXPECT_TRUE(read({u"-display"_s, u":5"_s}).namesDisplay);
    EXPECT_FALSE(read({}).namesDisplay);
}

TEST(CommandLine, AToolkitOptionWithoutItsValueIsRefused)
{
    EXPECT_EQ(read({u"-platform"_s}).action, Action::Refuse);
}

} // namespace
} // namespace Tessaline
