#pragma once

#include <string>
#include <string_view>

namespace Tessaline::Server {

/// Watches an answer for edits that the application would read otherwise than they are meant. A line of equals signs
/// inside the copied text ends that text too early: what the application would look for is only the part before it, and
/// it would put the rest of the copied text there as well. Such a block is recognised by what the document has, and its
/// last mark is changed so that it stays visible text and becomes no edit. Everything else passes as it comes, but for
/// the beginning of a line that may become that mark.
class EditGuard
{
public:
    /// `document` must outlive this object.
    explicit EditGuard(std::string_view document) : m_document(document) {}

    /// More of the answer; returns what may be passed on.
    std::string append(std::string_view token);
    /// No more comes; returns what has been held back.
    std::string finish();

private:
    std::string checkedMark() const;

    std::string_view m_document;
    bool m_isInBlock = false;
    std::string m_line;  // of the answer: the line that is being written
    std::string m_block; // the lines behind the first mark, with their ends
    std::string m_held;  // the end of m_line that has not been passed on
};

/// What is written in place of the last mark of a block that cannot be used.
inline constexpr std::string_view kUnusableMark = ">>>>>>> NOT USABLE: the text holds a line of equals signs";

} // namespace Tessaline::Server
