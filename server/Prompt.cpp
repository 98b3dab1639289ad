#include "server/Prompt.h"

#include "server/SystemText.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace Tessaline::Server {

namespace {

constexpr size_t kBytesOfTurn = 16; // what a turn costs beside its text

bool isInsideCharacter(std::string_view text, size_t position)
{
    return position < text.size() && (static_cast<unsigned char>(text[position]) & 0xC0) == 0x80;
}

/// The beginning of a text, in whole characters.
std::string_view beginningOf(std::string_view text, size_t mostBytes)
{
    size_t end = std::min(text.size(), mostBytes);
    while (end > 0 && isInsideCharacter(text, end))
        --end;
    return text.substr(0, end);
}

long long charactersIn(std::string_view text)
{
    return std::count_if(text.begin(), text.end(),
                         [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; });
}

/// Calls `word` for each word of three bytes or more, in lower case as far as ASCII goes.
template <class Word>
void forEachWord(std::string_view text, Word word)
{
    constexpr size_t kShortest = 3;
    std::string current;
    const auto end = [&] {
        if (current.size() >= kShortest)
            word(current);
        current.clear();
    };
    for (const char sign : text) {
        if ((sign >= 'a' && sign <= 'z') || (sign >= '0' && sign <= '9') || static_cast<unsigned char>(sign) >= 0x80)
            current += sign;
        else if (sign >= 'A' && sign <= 'Z')
            current += static_cast<char>(sign - 'A' + 'a');
        else
            end();
    }
    end();
}

template <class Line>
void forEachLine(std::string_view text, Line line)
{
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
        line(begin, text.substr(begin, end - begin));
        begin = end;
    }
}

/// Where the line begins that the question is about.
size_t lineAbout(std::string_view document, std::string_view question)
{
    // 1. In how many lines each word of the question stands.
    std::unordered_map<std::string, double> lineCounts;
    forEachWord(question, [&lineCounts](const std::string &word) { lineCounts.emplace(word, 0); });
    std::unordered_set<std::string> found;
    const auto findWords = [&](std::string_view line) {
        found.clear();
        forEachWord(line, [&](const std::string &word) {
            if (lineCounts.contains(word))
                found.insert(word);
        });
    };
    forEachLine(document, [&](size_t, std::string_view line) {
        findWords(line);
        for (const std::string &word : found)
            ++lineCounts[word];
    });

    // 2. The line with the most of them, the rare ones counting for more.
    size_t best = 0;
    double bestScore = 0;
    forEachLine(document, [&](size_t begin, std::string_view line) {
        findWords(line);
        double score = 0;
        for (const std::string &word : found)
            score += 1 / lineCounts[word];
        if (score > bestScore) {
            bestScore = score;
            best = begin;
        }
    });
    return best;
}

/// The line that the question is about, looked for once and only if it is needed: that takes a while in a long
/// document.
class LineAbout
{
public:
    LineAbout(std::string_view document, std::string_view question) : m_document(document), m_question(question) {}

    size_t begin()
    {
        if (!m_begin)
            m_begin = lineAbout(m_document, m_question);
        return *m_begin;
    }

private:
    std::string_view m_document;
    std::string_view m_question;
    std::optional<size_t> m_begin;
};

Stretch stretchAround(std::string_view document, LineAbout &about, size_t mostBytes)
{
    if (document.size() <= mostBytes)
        return {0, document.size()};
    if (mostBytes == 0)
        return {};
    const size_t line = about.begin();
    const size_t lineEnd = std::min(document.find('\n', line), document.size() - 1) + 1;
    const size_t middle = line + (lineEnd - line) / 2;
    Stretch stretch;
    stretch.begin = std::min({line, middle - std::min(middle, mostBytes / 2), document.size() - mostBytes});
    stretch.end = stretch.begin + mostBytes;

    // Whole lines, unless the line itself is longer than what there is room for.
    if (stretch.begin > 0 && document[stretch.begin - 1] != '\n')
        if (const size_t next = document.find('\n', stretch.begin); next < line)
            stretch.begin = next + 1;
    if (stretch.end < document.size())
        if (const size_t last = document.rfind('\n', stretch.end - 1);
            last != std::string_view::npos && last >= line && last > stretch.begin)
            stretch.end = last + 1;
    while (stretch.begin < stretch.end && isInsideCharacter(document, stretch.begin))
        ++stretch.begin;
    while (stretch.end > stretch.begin && isInsideCharacter(document, stretch.end))
        --stretch.end;
    return stretch;
}

std::string_view documentOf(const ChatRequest &request)
{
    return request.document ? std::string_view(*request.document) : std::string_view();
}

std::string fenced(std::string_view title, std::string_view text, const std::string &fence)
{
    std::string piece = "BEGIN " + fence + " " + std::string(title) + "\n";
    piece += text;
    return piece + (text.ends_with('\n') ? "" : "\n") + "END " + fence + "\n";
}

/// A title stands in one line, whatever a file is called.
std::string titleOf(const char *kind, const Card &card)
{
    std::string title = std::string(kind) + " “" + card.name + "”";
    if (!card.subtitle.empty())
        title += " (" + card.subtitle + ")";
    std::replace_if(
        title.begin(), title.end(), [](char sign) { return sign == '\n' || sign == '\r'; }, ' ');
    return title;
}

std::string wholeCard(const char *kind, const Card &card, const std::string &fence)
{
    return fenced(titleOf(kind, card), card.content, fence);
}

std::string shortCard(const Card &card, const std::string &fence)
{
    constexpr size_t kBeginning = 400; // bytes
    if (!card.digest.empty())
        return fenced(titleOf("SUMMARY OF CARD", card), card.digest, fence);
    return fenced(titleOf("BEGINNING OF CARD", card), beginningOf(card.content, kBeginning), fence);
}

std::string documentPiece(std::string_view document, const Stretch &stretch, const std::string &fence)
{
    if (stretch.begin == stretch.end && !document.empty())
        return "The document is too long to be shown.\n";
    const std::string_view part = document.substr(stretch.begin, stretch.end - stretch.begin);
    if (part.size() == document.size())
        return fenced("DOCUMENT", part, fence);
    const auto linesIn = [](std::string_view text) { return std::count(text.begin(), text.end(), '\n'); };
    const auto first = linesIn(document.substr(0, stretch.begin)) + 1;
    const auto last = first + linesIn(part.substr(0, part.size() - 1));
    const auto all = linesIn(document.substr(0, document.size() - 1)) + 1;
    return "The document is too long to be shown whole: only lines " + std::to_string(first) + " to " +
           std::to_string(last) + " of " + std::to_string(all) + " follow. Propose edits in these lines only.\n" +
           fenced("PART OF THE DOCUMENT", part, fence);
}

std::string leftOut(size_t turns, size_t excerpts, size_t cards)
{
    std::string text;
    const auto add = [&text](size_t count, const char *what) {
        if (count > 0)
            text +=
                (text.empty() ? "For want of room these are left out: " : ", ") + std::to_string(count) + " " + what;
    };
    add(turns, "earlier messages");
    add(excerpts, "excerpts of the project");
    add(cards, "cards");
    return text.empty() ? text : text + ".\n";
}

Prompt assembled(const ChatRequest &request, LineAbout &line, size_t mostBytes)
{
    constexpr size_t kRoomForRemarks = 300; // bytes: what is said about what was left out
    const std::string_view document = documentOf(request);
    const std::string instructions = systemText(markerLinesIn(document));

    // 1. All pieces, whole.
    std::vector<std::string_view> texts{document};
    for (const std::vector<Card> *const cards : {&request.cards, &request.excerpts})
        for (const Card &card : *cards)
            texts.insert(texts.end(), {card.name, card.subtitle, card.content, card.digest});
    const std::string fence = fenceFor(texts);
    std::vector<std::string> cards;
    std::vector<std::string> excerpts;
    size_t total = instructions.size() + request.prompt.size() + 2 * kBytesOfTurn + kRoomForRemarks;
    for (const Card &card : request.cards)
        total += cards.emplace_back(wholeCard("CARD", card, fence)).size();
    for (const Card &card : request.excerpts)
        total += excerpts.emplace_back(wholeCard("EXCERPT OF THE PROJECT", card, fence)).size();
    std::vector<Turn> history;
    for (const Turn &turn : request.history)
        if (!turn.content.empty()) // what an answer that never came has left
            total += history.emplace_back(turn).content.size() + kBytesOfTurn;
    total += document.size() + (request.document ? 2 * fence.size() + 40 : 0);

    // 2. What does not fit goes, in the order of the header.
    size_t firstTurn = 0;
    for (; total > mostBytes && firstTurn < history.size(); ++firstTurn)
        total -= history[firstTurn].content.size() + kBytesOfTurn;
    for (; total > mostBytes && !excerpts.empty(); excerpts.pop_back())
        total -= excerpts.back().size();
    for (size_t index = cards.size(); total > mostBytes && index > 0; --index) {
        std::string shorter = shortCard(request.cards[index - 1], fence);
        if (shorter.size() >= cards[index - 1].size())
            continue;
        total -= cards[index - 1].size() - shorter.size();
        cards[index - 1] = std::move(shorter);
    }
    Stretch stretch{0, document.size()};
    if (total > mostBytes) {
        const size_t excess = total - mostBytes;
        stretch = stretchAround(document, line, document.size() - std::min(document.size(), excess));
        total -= document.size() - (stretch.end - stretch.begin);
    }
    for (; total > mostBytes && !cards.empty(); cards.pop_back())
        total -= cards.back().size();
    std::string question = request.prompt;
    if (total > mostBytes) {
        constexpr size_t kShortest = 200; // bytes of a question that are always kept
        const size_t room = question.size() - std::min(question.size(), total - mostBytes);
        question = std::string(beginningOf(question, std::max(kShortest, room)));
        if (question.size() < request.prompt.size())
            question += "\n\n(The rest of this message was too long and is left out.)";
    }

    // 3. What is left, in the order in which it is read.
    std::string system = instructions + "\n";
    system += leftOut(firstTurn, request.excerpts.size() - excerpts.size(), request.cards.size() - cards.size());
    for (const std::vector<std::string> *const pieces : {&cards, &excerpts})
        for (const std::string &piece : *pieces)
            system += piece + "\n";
    system += request.document ? documentPiece(document, stretch, fence) : "No document is open.\n";
    Prompt prompt;
    prompt.turns.push_back({"system", std::move(system)});
    prompt.turns.insert(prompt.turns.end(), history.begin() + static_cast<std::ptrdiff_t>(firstTurn), history.end());
    prompt.turns.push_back({"user", std::move(question)});
    for (const Turn &turn : prompt.turns)
        prompt.bytes += turn.content.size() + kBytesOfTurn;
    prompt.counts.documentCharacters = charactersIn(document.substr(stretch.begin, stretch.end - stretch.begin));
    prompt.counts.cards = static_cast<int>(cards.size());
    prompt.counts.excerpts = static_cast<int>(excerpts.size());
    prompt.counts.turns = static_cast<int>(history.size() - firstTurn);
    return prompt;
}

} // namespace

std::string fenceFor(const std::vector<std::string_view> &texts)
{
    // One more dash than any text has behind this word.
    constexpr std::string_view kWord = "TEXT";
    size_t longest = 0;
    for (const std::string_view text : texts)
        for (size_t at = text.find(kWord); at != std::string_view::npos; at = text.find(kWord, at + kWord.size())) {
            const size_t end = text.find_first_not_of('-', at + kWord.size());
            longest = std::max(longest, std::min(end, text.size()) - at - kWord.size());
        }
    return std::string(kWord) + std::string(longest + 1, '-');
}

Stretch stretchAbout(std::string_view document, std::string_view question, size_t mostBytes)
{
    LineAbout line(document, question);
    return stretchAround(document, line, mostBytes);
}

Prompt assemblePrompt(const ChatRequest &request, size_t mostBytes)
{
    LineAbout line(documentOf(request), request.prompt);
    return assembled(request, line, mostBytes);
}

int estimatedTokens(std::string_view text)
{
    constexpr size_t kBytesPerToken = 3;
    constexpr size_t kMost = 1'000'000'000;
    return static_cast<int>(std::min(kMost, (text.size() + kBytesPerToken - 1) / kBytesPerToken));
}

Prompt fitPrompt(const ChatRequest &request, int windowTokens, const TokenCounter &count)
{
    constexpr int kTokensOfTurn = 8;         // what an engine writes around a turn
    constexpr size_t kMostBytesPerToken = 8; // so that no tokenizer is given megabytes that cannot fit
    constexpr int kRounds = 8;
    constexpr double kMargin = 0.97;
    const int mostTokens = windowTokens - windowTokens / 4;
    size_t mostBytes = static_cast<size_t>(mostTokens) * kMostBytesPerToken;
    LineAbout line(documentOf(request), request.prompt);
    Prompt prompt;
    for (int round = 0; round < kRounds; ++round) {
        prompt = assembled(request, line, mostBytes);
        std::string text;
        for (const Turn &turn : prompt.turns)
            text += turn.content + "\n";
        prompt.counts.windowTokens = windowTokens;
        prompt.counts.inputTokens = count(text) + kTokensOfTurn * static_cast<int>(prompt.turns.size());
        if (prompt.counts.inputTokens <= mostTokens)
            break;
        const double share = static_cast<double>(mostTokens) / prompt.counts.inputTokens;
        mostBytes = static_cast<size_t>(kMargin * share * static_cast<double>(std::min(prompt.bytes, mostBytes)));
    }
    return prompt;
}

} // namespace Tessaline::Server
