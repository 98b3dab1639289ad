#include "server/EditGuard.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Tessaline::Server {

namespace {

constexpr std::string_view kFirstMark = "<<<<<<< SEARCH";
constexpr std::string_view kMiddleMark = "=======";
constexpr std::string_view kLastMark = ">>>>>>> REPLACE";

std::string_view withoutReturn(std::string_view line)
{
    return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
}

/// A text as far as the application tells texts apart when it looks for one: without case, typographic quotes, long
/// dashes and carriage returns.
std::string comparable(std::string_view text)
{
    constexpr char kFirstByte = '\xE2'; // of each of these
    constexpr std::pair<std::string_view, char> kSigns[] = {
        {"“", '"'}, {"”", '"'}, {"‘", '\''}, {"’", '\''}, {"—", '-'}};
    std::string result;
    result.reserve(text.size());
    for (size_t at = 0; at < text.size();) {
        if (text[at] == kFirstByte) {
            const auto *const sign =
                std::find_if(std::begin(kSigns), std::end(kSigns),
                             [rest = text.substr(at)](const auto &pair) { return rest.starts_with(pair.first); });
            if (sign != std::end(kSigns)) {
                result += sign->second;
                at += sign->first.size();
                continue;
            }
        }
        const char byte = text[at++];
        if (byte != '\r')
            result += byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
    }
    return result;
}

/// The lines of equals signs.
struct MiddleMarks {
    size_t count = 0;
    size_t begin = 0; // of the first
    size_t end = 0;   // of the first, behind its line end
};

MiddleMarks middleMarksIn(std::string_view text)
{
    MiddleMarks marks;
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = std::min(text.find('\n', begin), text.size());
        if (withoutReturn(text.substr(begin, end - begin)) == kMiddleMark && ++marks.count == 1) {
            marks.begin = begin;
            marks.end = end + 1;
        }
        begin = end + 1;
    }
    return marks;
}

/// Those of which the application takes the first for the end of the copied text: in the first line there is none.
MiddleMarks middleMarksOfEdit(std::string_view edit)
{
    const size_t second = std::min(edit.find('\n'), edit.size() - 1) + 1;
    MiddleMarks marks = middleMarksIn(edit.substr(second));
    marks.begin += second;
    marks.end += second;
    return marks;
}

/// Whether the copied text may have been meant to go on behind its end, since the document does.
bool isDoubtful(std::string_view edit, const std::string &document)
{
    const MiddleMarks marks = middleMarksOfEdit(edit);
    if (marks.count == 0)
        return true;
    std::string copied = comparable(edit.substr(0, marks.begin));
    copied.erase(0, std::min(copied.find_first_not_of(" \t\n"), copied.size()));
    copied += kMiddleMark;
    copied += '\n';
    if (marks.count == 1) // then it takes all of the edit
        copied += comparable(edit.substr(marks.end)) + comparable(kLastMark);
    return document.find(copied) != std::string::npos;
}

} // namespace

EditGuard::EditGuard(std::string_view document)
    : m_document(middleMarksIn(document).count > 0 ? comparable(document) + '\n' : std::string())
{}

std::string EditGuard::append(std::string_view token)
{
    std::string passed;
    for (const char sign : token) {
        m_held += sign;
        if (sign == '\n')
            endLine();
        else {
            m_line += sign;
            if (m_place == Place::Replacing && m_line == kLastMark)
                completeMark();
        }
        keepBounds();
        const size_t most = m_held.size() - heldLength();
        passed.append(m_held, 0, most);
        m_held.erase(0, most);
    }
    return passed;
}

std::string EditGuard::finish()
{
    return std::exchange(m_held, {});
}

/// Does an edit begin here, or the second part of one?
void EditGuard::endLine()
{
    const std::string_view line = withoutReturn(m_line);
    if (m_place == Place::Outside) {
        if (line.ends_with(kFirstMark)) {
            m_place = Place::Copied;
            m_isFirstLine = true;
            m_edit.clear();
            m_firstMark = m_held.size() - std::min(m_held.size(), m_line.size() - line.size() + kFirstMark.size() + 1);
        }
    } else {
        const bool isMiddle = m_place == Place::Copied && line == kMiddleMark;
        if (isMiddle && m_isFirstLine && m_document.empty()) {
            m_held.insert(m_held.size() - 1 - m_line.size(), 1, '\n'); // nothing is copied
            m_edit += '\n';
        }
        m_edit += m_line + '\n';
        m_isFirstLine = isMiddle;
        if (isMiddle)
            m_place = Place::Replacing;
    }
    m_line.clear();
}

/// The edit is whole.
void EditGuard::completeMark()
{
    if (const MiddleMarks marks = middleMarksOfEdit(m_edit); marks.count > 0 && marks.end == m_edit.size())
        m_held.insert(m_held.size() - kLastMark.size(), 1, '\n'); // nothing is put there
    if (!m_document.empty() && isDoubtful(m_edit, m_document))
        spoilEdit();
    m_place = Place::Outside;
}

/// Makes visible text of the edit that is held back; also of a first mark in what is copied, where one would begin.
void EditGuard::spoilEdit()
{
    for (size_t mark = m_firstMark; mark != std::string::npos; mark = m_held.find(kFirstMark, mark))
        m_held.replace(mark, kFirstMark.size(), kUnusableMark);
}

/// An answer may go on for ever.
void EditGuard::keepBounds()
{
    constexpr size_t kKept = 1024; // bytes of a line outside of an edit: what tells whether it ends in a mark
    if (m_place != Place::Outside && m_edit.size() + m_line.size() > kLongestEdit) {
        if (!m_document.empty())
            spoilEdit();
        m_edit.clear();
        m_place = Place::Outside;
    }
    if (m_place == Place::Outside && m_line.size() > 2 * kKept)
        m_line.erase(0, m_line.size() - kKept);
}

/// How much of the end of m_held may have to be changed yet.
size_t EditGuard::heldLength() const
{
    const auto mayBecome = [this](std::string_view mark) {
        return mark.starts_with(withoutReturn(m_line)) && !m_line.empty();
    };
    switch (m_place) {
    case Place::Outside: {
        if (m_document.empty())
            return 0;
        const std::string_view line = withoutReturn(m_line);
        for (size_t length = std::min(line.size(), kFirstMark.size()); length > 0; --length)
            if (line.ends_with(kFirstMark.substr(0, length)) &&
                (length == kFirstMark.size() || line.size() == m_line.size()))
                return length + m_line.size() - line.size();
        return 0;
    }
    case Place::Copied:
        if (!m_document.empty())
            return m_held.size();
        return m_isFirstLine && mayBecome(kMiddleMark) ? m_line.size() : 0;
    case Place::Replacing:
        if (!m_document.empty())
            return m_held.size();
        return m_isFirstLine && mayBecome(kLastMark) ? m_line.size() : 0;
    }
    return 0;
}

} // namespace Tessaline::Server
