#include "server/EditGuard.h"

#include "panels/EditSuggestions.h"
#include "panels/RobustMatch.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace Tessaline::Server {

namespace {

/// What the guard lets through when the answer comes in pieces of so many bytes.
std::string guarded(std::string_view document, const std::string &answer, size_t piece)
{
    EditGuard guard(document);
    std::string passed;
    for (size_t at = 0; at < answer.size(); at += piece)
        passed += guard.append(std::string_view(answer).substr(at, piece));
    return passed + guard.finish();
}

std::string edit(const std::string &copied, const std::string &replacement)
{
    return "<<<<<<< SEARCH\n" + copied + "\n=======\n" + replacement + ">>>>>>> REPLACE\n";
}

/// The document when the application has been told to accept all that it finds in an answer.
std::string accepted(const std::string &document, const std::string &answer)
{
    QString text = QString::fromStdString(document);
    for (const EditSuggestion &suggestion : editSuggestions(QStringLiteral("id"), QString::fromStdString(answer)))
        if (const auto range = robustMatchRange(suggestion.originalText, text))
            text.replace(range->location, range->length, suggestion.replacementText);
    return text.toStdString();
}

constexpr size_t kTooMuch = EditGuard::kLongestEdit + 1;

struct Case {
    const char *what;
    std::string document;
    std::string answer;
    std::string expected; // the document with all that the application may change
};

} // namespace

TEST(EditGuard, PassesSoundAnswersAsTheyAreWhereverTheyAreCut)
{
    for (const std::string document : {"Old\n\nTitle\n=======\nText\n", "Old\n\nTitle\n"})
        for (const std::string &answer :
             {std::string("Plain >>>>>>> REPLACE text\n=======\n>>>>>>> "),
              std::string("So:\n<<<<<<< SEARCH\nOld\n=======\nNew\n>>>>>>> REPLACE\nDone.\n>>>>>>> REPLACE"),
              std::string("<<<<<<< SEARCH\r\nOld\r\n=======\r\nNew\r\n>>>>>>> REPLACE\r\n"),
              std::string(
                  "A << B <<<<<<< SEARCH\nOld\n=======\nNew title\n=======\nmore\n>>>>>>> REPLACE <<<<<<< SEARCH"),
              std::string("<<<<<<< SEARCH\nOld\n=======\n>>>>>>> REP"),
              std::string("<<<<<<< SEARCH\nOld\n>>>>>>> REPLACE"),
              std::string("<<<<<<< SEARCH\n\n=======\nNew\n>>>>>>> REPLACE")})
            for (size_t piece = 1; piece <= answer.size(); ++piece)
                EXPECT_EQ(guarded(document, answer, piece), answer) << piece;
}

TEST(EditGuard, LetsTheApplicationReadEachEditAsItIsMeantOrNotAtAll)
{
    const std::string heading = "Before\nTitle\n=======\nText\nLast\n";
    const std::string other = edit("Last", "New\n");
    const std::vector<Case> cases{
        {"a copied heading, and an edit behind it", heading,
         edit("Title\n=======\nText", "Title\n=======\nBetter\n") + "And:\n" + other,
         "Before\nTitle\n=======\nText\nNew\n"},
        {"the same, copied with a mistake", heading, edit("Title\n=======\nTexd", "Better\n") + other,
         "Before\nTitle\n=======\nText\nNew\n"},
        {"the same, in other letters", "The “Title”\n=======\nText\n", edit("the \"title\"\n=======\ntext", "Better\n"),
         "The “Title”\n=======\nText\n"},
        {"the same, with other line ends", "Title\r\n=======\r\nText\r\n", edit("Title\n=======\nText", "Better\n"),
         "Title\r\n=======\r\nText\r\n"},
        {"the same, deleted", heading, edit("Title\n=======\nText", "") + other, "Before\nTitle\n=======\nText\nNew\n"},
        {"the words of the heading alone", heading, edit("Title", "Name\n"), "Before\nName\n=======\nText\nLast\n"},
        {"a copy that begins with the line", heading, edit("=======\nText", "=======\nBetter\n"),
         "Before\nTitle\n=======\nBetter\nLast\n"},
        {"a copy that begins with the line, deleted", heading, edit("=======\nText", "") + other,
         "Before\nTitle\n\nNew\n"},
        {"a line that is put in", heading, edit("Before", "First\n=======\nBefore\n"),
         "First\n=======\nBefore\nTitle\n=======\nText\nLast\n"},
        {"marks of an edit in the document", "See:\n" + edit("A", "B\n") + "End\n",
         edit("<<<<<<< SEARCH\nA\n=======\nB\n>>>>>>> REPLACE", "C\n") + edit("End", "Fin\n"),
         "See:\n" + edit("A", "B\n") + "Fin\n"},
        {"marks of an edit that were begun in the document", "See:\n<<<<<<< SEARCH\n=======\nEnd\n",
         edit("<<<<<<< SEARCH\n=======\nEnd", "Fin\n") + edit("See:", "Look:\n"),
         "Look:\n<<<<<<< SEARCH\n=======\nEnd\n"},
        {"a longer line of equals signs", "Title\n==========\nText\n", edit("Title\n==========", "Name\n==========\n"),
         "Name\n==========\nText\n"},
        {"a deletion without its empty line, and an edit behind it", "One\nTwo\nLast\n", edit("Two", "") + other,
         "One\n\nNew\n"},
        {"nothing copied, and an edit behind it", "One\nLast\n",
         "<<<<<<< SEARCH\n=======\nX\n>>>>>>> REPLACE\n" + other, "One\nNew\n"},
        {"nothing copied where there is such a line", heading, "<<<<<<< SEARCH\n=======\nX\n>>>>>>> REPLACE\n" + other,
         "Before\nTitle\n=======\nText\nNew\n"},
    };
    for (const Case &one : cases)
        for (size_t piece = 1; piece <= one.answer.size(); ++piece)
            EXPECT_EQ(accepted(one.document, guarded(one.document, one.answer, piece)), one.expected)
                << one.what << ", in pieces of " << piece;
}

TEST(EditGuard, SaysWhyAnEditCannotBeUsedAndKeepsItsText)
{
    const std::string copy = "\nTitle\n=======\nText\n=======\nTitle\n=======\nBetter\n>>>>>>> REPLACE\nDone.";

    EXPECT_EQ(guarded("Title\n=======\nText\n", "So: <<<<<<< SEARCH" + copy, 3),
              "So: " + std::string(kUnusableMark) + copy);
}

TEST(EditGuard, HoldsBackNoMoreThanWhatMayHaveToBeChanged)
{
    EditGuard guard("Old");
    EXPECT_EQ(guard.append("<<<<<<< SEARCH\nOld\n=======\n>"), "<<<<<<< SEARCH\nOld\n=======\n");
    EXPECT_EQ(guard.append("x"), ">x");
    EXPECT_EQ(guard.append("\n>>>>"), "\n>>>>");
    EXPECT_EQ(guard.append(">>> REPLACE"), ">>> REPLACE");
    EXPECT_EQ(guard.append(">"), ">") << "outside of an edit";

    EditGuard careful("Title\n=======\n");
    EXPECT_EQ(careful.append("1 < 2\na <<"), "1 < 2\na ");
    EXPECT_EQ(careful.append("<<<<< SEARCH"), "");
    EXPECT_EQ(careful.append("\nA\n=======\nB\n>>>>>>> REPLAC"), "");
    EXPECT_EQ(careful.append("E\nC"), "<<<<<<< SEARCH\nA\n=======\nB\n>>>>>>> REPLACE\nC");
}

TEST(EditGuard, WaitsForNoEditThatGoesOnForEver)
{
    const std::string sound = "\n<<<<<<< SEARCH\nOld\n=======\nNew\n>>>>>>> REPLACE\n";
    for (const std::string &line : {std::string(kTooMuch, 'x'), std::string(kTooMuch, '\n')}) {
        EditGuard guard("Old\n\nTitle\n=======\nText\n");

        const std::string passed = guard.append("<<<<<<< SEARCH\n" + line);
        EXPECT_TRUE(passed.starts_with(kUnusableMark));
        EXPECT_TRUE(passed.ends_with(line));
        EXPECT_EQ(guard.append(sound), sound);
    }
}

} // namespace Tessaline::Server
