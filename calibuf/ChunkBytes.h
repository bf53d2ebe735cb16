// Where the chunks of a directory are taken from, one after the other. What is not there is null; the
// position then still moves on, so that later bytes are taken from the right place.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <istream>

#include "platform/FileStream.h"
#include "trevolt/MemoryBudget.h"

namespace trevolt {

/// The bytes of a stream from its position on.
class CStreamBytes {
  public:
    /// `largest` is the most that one `Take` asks for.
    CStreamBytes(std::istream& stream, std::size_t largest)
        : m_stream(stream),
          m_scratch(largest),
          m_at(static_cast<std::uint64_t>(std::max<std::streamoff>(stream.tellg(), 0))),
          m_end(m_at + BytesToEnd(stream).value_or(0)) {}

    bool IsReady() const { return static_cast<bool>(m_scratch); }

    const std::byte* Take(std::uint32_t count) {
        Settle();
        if (!Advance(count))
            return nullptr;
        m_stream.read(reinterpret_cast<char*>(m_scratch.Data()), count);
        return m_stream ? m_scratch.Data() : nullptr;
    }

    void Skip(std::uint32_t count) {
        Advance(count);
        m_mustSeek = true;
    }

    /// Goes behind what was taken and skipped; a stream that has failed stays where it is.
    void Settle() {
        if (m_mustSeek)
            m_stream.seekg(static_cast<std::streamoff>(m_at));
        m_mustSeek = false;
    }

  private:
    /// Moves on; false, told by the stream's state, too, when that passes the stream's end.
    bool Advance(std::uint32_t count) {
        m_at += count;
        if (m_at > m_end)
            m_stream.setstate(std::ios::failbit);
        return m_at <= m_end;
    }

    std::istream& m_stream;
    CBudgetBlock m_scratch;
    std::uint64_t m_at;
    std::uint64_t m_end;
    bool m_mustSeek = false;
};

/// Bytes in memory, as those of a memory image behind its directory.
class CMemoryBytes {
  public:
    CMemoryBytes(const std::byte* bytes, std::size_t count) : m_bytes(bytes), m_count(count) {}

    const std::byte* Take(std::uint32_t count) {
        const std::uint64_t from = m_at;
        m_at += count;
        return m_at > m_count ? nullptr : m_bytes + from;
    }

    void Skip(std::uint32_t count) { m_at += count; }

  private:
    const std::byte* m_bytes;
    std::uint64_t m_count;
    std::uint64_t m_at = 0;
};

} // namespace trevolt
