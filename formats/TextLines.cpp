#include "formats/TextLines.h"

#include <algorithm>
#include <cstring>

namespace trevolt {
namespace {

constexpr std::size_t kReadBytes = std::size_t{1} << 18;
constexpr std::size_t kLookAhead = CTextLines::kLongestLine + 2; // the longest line and CR LF

} // namespace

CTextLines::CTextLines(std::istream& stream) : m_stream(stream), m_buffer(kReadBytes + 1) {}

std::string_view CTextLines::Next() {
    if (m_filled - m_at < kLookAhead && !m_streamEnded)
        Refill();
    char* line = m_buffer.data() + m_at;
    const std::size_t window = std::min(kLookAhead, m_filled - m_at);
    const void* feed = std::memchr(line, '\n', window);
    m_ended = feed == nullptr;
    std::size_t length =
        m_ended ? window : static_cast<std::size_t>(static_cast<const char*>(feed) - line);
    m_at += m_ended ? length : length + 1;
    if (!m_ended && length > 0 && line[length - 1] == '\r')
        --length;
    m_overlong = length > kLongestLine;
    if (m_overlong) {
        length = kLongestLine;
        m_ended = true;
    }
    ++m_number;
    line[length] = '\0';
    return {line, length};
}

void CTextLines::Refill() {
    const std::size_t left = m_filled - m_at;
    std::memmove(m_buffer.data(), m_buffer.data() + m_at, left);
    m_at = 0;
    m_stream.read(m_buffer.data() + left, static_cast<std::streamsize>(kReadBytes - left));
    m_filled = left + static_cast<std::size_t>(m_stream.gcount());
    m_streamEnded = m_filled < kReadBytes;
}

} // namespace trevolt
