// A stream of which no more than a known number of bytes is taken.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>

namespace trevolt {

class CBoundedSource {
  public:
    CBoundedSource(std::istream& stream, std::uint64_t byteCount)
        : m_stream(stream), m_left(byteCount) {}

    /// Bytes that may still be taken.
    std::uint64_t Left() const { return m_left; }

    /// Takes the next `count` bytes; false when not as many may be taken or the stream does not give
    /// them.
    bool Take(void* to, std::size_t count) {
        if (count > m_left)
            return false;
        m_left -= count;
        return static_cast<bool>(
            m_stream.read(static_cast<char*>(to), static_cast<std::streamsize>(count)));
    }

  private:
    std::istream& m_stream;
    std::uint64_t m_left;
};

} // namespace trevolt
