#pragma once

#include <string>
#include <string_view>

namespace Tessaline::Server {

/// Watches an answer for edits that the application would read otherwise than they are meant:
///
/// - A line of equals signs inside the copied text ends that text too early: what the application would look for is
///   only the part before it, and it would put the rest of the copied text there as well. Where the document has such a
///   line, each edit is held back until it is whole. If the document goes on behind what would be looked for as the
///   edit does, or the edit grows longer than `kLongestEdit`, its first mark is changed: then it is visible text, and
///   no other edit swallows it.
/// - An edit that deletes, or that copies nothing, may lack the empty line that has to stand between two marks, and
///   would reach into the next edit. It gets one.
///
/// Everything else passes as it comes, but for the beginning of a line that may become a mark.
class EditGuard
{
public:
    static constexpr size_t kLongestEdit = 1024UL * 1024; // bytes; a longer one is not waited for

    explicit EditGuard(std::string_view document);

    /// More of the answer; returns what may be passed on.
    std::string append(std::string_view token);
    /// No more comes; returns what has been held back.
    std::string finish();

private:
    enum class Place { Outside, Copied, Replacing };

    void endLine();
    void completeMark();
    void spoilEdit();
    void keepBounds();
    size_t heldLength() const;

    const std::string m_document; // as texts are compared here; empty if it has no line of equals signs
    Place m_place = Place::Outside;
    bool m_isFirstLine = false; // behind a mark
    std::string m_line;         // of the answer: the line that is being written
    std::string m_edit;         // the lines behind the first mark, with their ends
    std::string m_held;         // the end of the answer that has not been passed on
    size_t m_firstMark = 0;     // where in m_held that begins, while an edit is held back
};

/// What is written in place of the first mark of an edit that cannot be used.
inline constexpr std::string_view kUnusableMark = "<<<<<<< NOT USABLE, since the text holds a line of equals signs";

} // namespace Tessaline::Server
