// CTextLines: the lines of a text coefficient file, one after the other, from a byte stream.
// Used by one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <string_view>
#include <vector>

namespace trevolt {

class CTextLines {
  public:
    /// The characters that a line may have without its end.
    static constexpr std::size_t kLongestLine = 2047;

    /// Lines of `stream` from its position on; the stream must outlive them.
    explicit CTextLines(std::istream& stream);

    /// Whether there is a further line to take. The one that meets the end of the file is the
    /// last: behind a final line feed that is an empty one. A line of more than 2047 characters is
    /// the last too.
    bool HasMore() const { return !m_ended; }

    /// The next line without its end, which is LF or CR LF; of an overlong one the first 2047
    /// characters. A CR elsewhere is an ordinary character, and so is NUL. Valid until the next
    /// call, and followed by a NUL in memory. Asked for only while `HasMore()`.
    std::string_view Next();

    /// The number of the line that was taken last, from 1.
    std::uint64_t Number() const { return m_number; }
    /// Whether the line that was taken last has more characters than those.
    bool IsOverlong() const { return m_overlong; }

  private:
    void Refill();

    std::istream& m_stream;
    std::vector<char> m_buffer; ///< one character longer than what is read, for the NUL
    std::size_t m_at = 0;
    std::size_t m_filled = 0;
    bool m_streamEnded = false;
    bool m_ended = false;
    bool m_overlong = false;
    std::uint64_t m_number = 0;
};

} // namespace trevolt
