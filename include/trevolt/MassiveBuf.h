// CMassiveBuf: a buffer in blocks of one fixed size, so that millions of elements never need one
// contiguous allocation. Its memory comes from the process's memory budget. It writes itself as
// exactly one standard LZ4 frame and reads such a frame back. Streams are in binary mode; what fails
// of one stays in its state too.
//
// A buffer is used by one thread at a time; different buffers by any threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <ostream>
#include <vector>

#include "trevolt/MemoryBudget.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

class CMassiveBuf {
  public:
    /// An empty buffer whose blocks hold `blockBytes` (at least 1).
    explicit CMassiveBuf(std::uint32_t blockBytes);
    virtual ~CMassiveBuf() = default;
    /// A buffer that was moved from is empty.
    CMassiveBuf(CMassiveBuf&& other) noexcept;
    CMassiveBuf& operator=(CMassiveBuf&& other) noexcept;

    /// Releases the content and allocates `byteCount` bytes, not initialised; the last block only
    /// as large as it must be. False, and empty, when memory is refused. 0 bytes succeed.
    bool Allocate(std::uint64_t byteCount);

    /// Frees every block; the buffer is empty afterwards. Whatever replaces the content comes here
    /// first, so that a derived class forgets what it knew of the old one.
    virtual void Release();

    /// Repeats the pattern over the whole content. Blocks begin with the pattern's first byte, so
    /// the block size must be a multiple of `patternBytes`.
    void FillWith(const void* pattern, std::size_t patternBytes);

    /// Becomes a copy of `other`'s content. False, and empty, when memory is refused.
    bool CopyFrom(const CMassiveBuf& other);

    /// Total allocated bytes.
    std::uint64_t ByteCount() const { return m_byteCount; }
    std::uint32_t BlockBytes() const { return m_blockBytes; }
    std::size_t BlockCount() const { return m_blocks.size(); }
    /// Block `index`'s memory, owned by the buffer.
    std::byte* Block(std::size_t index) { return m_blocks[index].Data(); }
    const std::byte* Block(std::size_t index) const { return m_blocks[index].Data(); }
    std::size_t BlockSize(std::size_t index) const { return m_blocks[index].Size(); }

    /// Writes the content at the stream's position as one LZ4 frame with content size and content
    /// checksum (an empty buffer as an empty frame), and leaves the position behind it. Nothing is
    /// sought or flushed. E_FAIL when the stream fails, or when the memory for a piece of the frame
    /// is refused; the frame is not whole then.
    Status CompressToFile(std::ostream& stream) const;

    /// Reads exactly `byteCount` bytes, which must be one LZ4 frame, and replaces the content with
    /// what they hold. Where its blocks are independent and its content's size is declared, up to
    /// `threads` threads decode it; the answer does not depend on their number. Nothing is sought.
    /// E_FAIL when they are not a whole frame or hold more than one, when the frame is skippable or
    /// names a dictionary, when a checksum or the declared size is wrong, or when the declared size
    /// is more than such bytes can hold; E_OUTOFMEMORY when the memory is refused. After a failure
    /// the buffer is empty.
    Status UncompressFromFile(std::istream& stream, std::uint64_t byteCount,
                              std::size_t threads = 1);

    /// Reads a raw image: a uint64 byte count, then the bytes, and leaves the position behind them.
    /// E_FAIL when the stream does not hold as many, or cannot be sought and so not tell;
    /// E_OUTOFMEMORY when the memory is refused. After a failure the buffer is empty.
    Status ReadFromFile(std::istream& stream);

  private:
    bool AppendBlock(std::uint64_t bytes);

    std::uint32_t m_blockBytes;
    std::uint64_t m_byteCount = 0;
    std::vector<CBudgetBlock> m_blocks;

    friend class CFrameReader;
};

} // namespace trevolt
