#include "common/FrameWriter.h"

#include <algorithm>
#include <array>

#include <lz4.h>
#include <xxhash/xxhash.h>

#include "common/FrameLayout.h"
#include "common/HeldExceptions.h"
#include "common/LittleEndian.h"
#include "common/OrderedJobs.h"
#include "common/SequencedStep.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

constexpr int kAcceleration = 1;

struct SFramePiece {
    const std::byte* content = nullptr; ///< null when it got no memory
    std::size_t contentBytes = 0;
    CBudgetBlock scratch; ///< what `content` lies in, if not in place
    CBudgetBlock packed;
    std::size_t packedBytes = 0; ///< 0 when the content does not shrink
};

/// Compresses a piece, unless it does not shrink; false when the memory is refused.
bool Pack(SFramePiece& piece) {
    piece.packed = CBudgetBlock(piece.contentBytes);
    if (!piece.packed)
        return false;
    const auto bytes = static_cast<int>(piece.contentBytes);
    piece.packedBytes = static_cast<std::size_t>(LZ4_compress_fast(
        reinterpret_cast<const char*>(piece.content), reinterpret_cast<char*>(piece.packed.Data()),
        bytes, bytes - 1, kAcceleration));
    return true;
}

/// Makes pieces and writes them on any threads, a piece on one.
class CFrameWriter {
  public:
    CFrameWriter(std::ostream& stream, std::uint64_t byteCount, const FramePieceSource& source)
        : m_stream(stream), m_byteCount(byteCount), m_source(source) {
        XXH32_reset(&m_checksum, 0);
    }

    Status Write(std::size_t threads) {
        WriteHeader();
        const auto pieces =
            static_cast<std::size_t>((m_byteCount + kLargestBlockBytes - 1) / kLargestBlockBytes);
        ShareOut(pieces, threads, [this](std::size_t index) { return TakePiece(index); });
        if (m_isMemoryRefused) {
            CTransferReport::NoteMemoryRefused(); // a piece's thread has no report
            return E_FAIL;
        }
        WriteField(0); // the end mark
        WriteField(XXH32_digest(&m_checksum));
        return m_stream.good() ? S_OK : E_FAIL;
    }

  private:
    /// Makes a piece and writes it behind those before it; false when that fails, or they did. Who has
    /// made it writes it, from that processor's cache, while others make theirs: one more thread for the
    /// writing would take turns with them on the processors.
    bool TakePiece(std::size_t index) {
        const SFramePiece piece = MakePiece(index);
        m_counting.Do(index, [&] {
            if (piece.content != nullptr)
                XXH32_update(&m_checksum, piece.content, piece.contentBytes);
            return true;
        });
        return m_writing.Do(index, [&] { return WritePiece(piece); });
    }

    SFramePiece MakePiece(std::size_t index) {
        SFramePiece piece;
        const std::uint64_t offset = std::uint64_t{index} * kLargestBlockBytes;
        piece.contentBytes = static_cast<std::size_t>(
            std::min<std::uint64_t>(m_byteCount - offset, kLargestBlockBytes));
        piece.content = m_source(offset, piece.contentBytes, piece.scratch);
        if (piece.content != nullptr && !Pack(piece))
            piece.content = nullptr;
        return piece;
    }

    bool WritePiece(const SFramePiece& piece) {
        if (piece.content == nullptr) {
            m_isMemoryRefused = true;
            return false;
        }
        if (piece.packedBytes == 0) {
            WriteField(static_cast<std::uint32_t>(piece.contentBytes) | kStoredAsIsBit);
            WriteBytes(piece.content, piece.contentBytes);
        } else {
            WriteField(static_cast<std::uint32_t>(piece.packedBytes));
            WriteBytes(piece.packed.Data(), piece.packedBytes);
        }
        return m_stream.good();
    }

    void WriteHeader() {
        std::array<std::byte, kLongestHeaderBytes> header{};
        const unsigned sizeFlag = m_byteCount == 0 ? 0 : kContentSizeFlag;
        StoreLittle<std::uint32_t>(header.data(), kFrameMagic);
        std::byte* const flags = &header[kFrameFlagsOffset];
        flags[0] = static_cast<std::byte>(kFrameVersionFlags | kIndependentBlocksFlag | sizeFlag |
                                          kContentChecksumFlag);
        flags[1] = static_cast<std::byte>(kLargestBlocksCode);
        std::byte* end = flags + 2;
        if (sizeFlag != 0) {
            StoreLittle<std::uint64_t>(end, m_byteCount);
            end += sizeof m_byteCount;
        }
        const XXH32_hash_t checksum = XXH32(flags, static_cast<std::size_t>(end - flags), 0);
        *end++ = static_cast<std::byte>(checksum >> 8 & 0xFF);
        WriteBytes(header.data(), static_cast<std::size_t>(end - header.data()));
    }

    void WriteField(std::uint32_t value) {
        std::array<std::byte, kFrameFieldBytes> field{};
        StoreLittle<std::uint32_t>(field.data(), value);
        WriteBytes(field.data(), field.size());
    }

    void WriteBytes(const std::byte* bytes, std::size_t count) {
        m_stream.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(count));
    }

    std::ostream& m_stream;
    std::uint64_t m_byteCount;
    const FramePieceSource& m_source;
    CSequencedStep m_counting;
    XXH32_state_t m_checksum{}; ///< of the thread whose turn it is
    CSequencedStep m_writing;
    bool m_isMemoryRefused = false; ///< of the thread that writes
};

} // namespace

Status WriteFrame(std::ostream& stream, std::uint64_t byteCount, std::size_t threads,
                  const FramePieceSource& source) {
    return HoldingExceptions(
        stream, [&] { return CFrameWriter(stream, byteCount, source).Write(threads); });
}

} // namespace trevolt
