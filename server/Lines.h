#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace Tessaline::Server {

/// Cuts bytes that arrive in pieces into lines that end with LF or CR LF, so that a character which arrived in two
/// pieces is whole in its line. What stands behind the last line end is kept until its end comes.
class Lines
{
public:
    static constexpr size_t kLongest = 4 * 1024 * 1024; // bytes; no engine writes longer ones

    /// Calls `line` for each whole line, without its end, until it answers false. False if it did, or if a line is too
    /// long.
    bool append(std::string_view bytes, const std::function<bool(std::string_view line)> &line)
    {
        m_bytes += bytes;
        size_t begin = 0;
        for (size_t end = m_bytes.find('\n', m_searched); end != std::string::npos; end = m_bytes.find('\n', begin)) {
            std::string_view text = std::string_view(m_bytes).substr(begin, end - begin);
            if (text.ends_with('\r'))
                text.remove_suffix(1);
            begin = end + 1;
            if (!line(text))
                return false;
        }
        m_bytes.erase(0, begin);
        m_searched = m_bytes.size();
        return m_bytes.size() <= kLongest;
    }

    /// What has come without a line end.
    const std::string &rest() const { return m_bytes; }

private:
    std::string m_bytes;
    size_t m_searched = 0; // in m_bytes: up to here there is no line end
};

} // namespace Tessaline::Server
