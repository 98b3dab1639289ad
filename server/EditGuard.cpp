#include "server/EditGuard.h"

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

} // namespace

std::string EditGuard::append(std::string_view token)
{
    std::string passed;
    for (const char sign : token) {
        if (sign == '\n') {
            // 1. A whole line: does a block begin here, or is it one more of a block?
            passed += std::exchange(m_held, {}) + '\n';
            if (m_isInBlock)
                m_block += m_line + '\n';
            else if (withoutReturn(m_line).ends_with(kFirstMark)) {
                m_isInBlock = true;
                m_block.clear();
            }
            m_line.clear();
            continue;
        }

        // 2. A sign of a line. Only what may become the last mark of a block waits for its end.
        m_line += sign;
        m_held += sign;
        if (m_isInBlock && m_line.size() <= kLastMark.size() && kLastMark.starts_with(m_line)) {
            if (m_line.size() < kLastMark.size())
                continue;
            m_held = checkedMark();
            m_isInBlock = false;
        }
        passed += std::exchange(m_held, {});
    }
    return passed;
}

std::string EditGuard::finish()
{
    return std::exchange(m_held, {});
}

std::string EditGuard::checkedMark() const
{
    // The application takes what stands before the first middle mark for the copied text. If the document has the text
    // up to a later one as well, that was meant.
    int marks = 0;
    size_t begin = 0;
    for (size_t end = m_block.find('\n'); end != std::string::npos; end = m_block.find('\n', begin)) {
        if (withoutReturn(std::string_view(m_block).substr(begin, end - begin)) == kMiddleMark && ++marks > 1 &&
            begin > 0 && m_document.find(std::string_view(m_block).substr(0, begin - 1)) != std::string_view::npos)
            return std::string(kUnusableMark);
        begin = end + 1;
    }
    return std::string(kLastMark);
}

} // namespace Tessaline::Server
