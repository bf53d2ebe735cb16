// Reads one LZ4 frame of a known stored size, into a buffer's blocks or piece by piece.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <memory>

#include <lz4frame.h>

#include "common/BoundedSource.h"
#include "common/ContentSink.h"
#include "trevolt/MassiveBuf.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// Reads exactly `byteCount` bytes, which must be one LZ4 frame, and hands what they hold to `sink`; no
/// more of it is held than two blocks for each of up to `threads` threads that decode it. Statuses of
/// `CMassiveBuf::UncompressFromFile`; after a failure the sink may have taken something.
Status ReadFrame(std::istream& stream, std::uint64_t byteCount, std::size_t threads,
                 CContentSink& sink);

/// Blocks that are independent of each other and whose content's size is declared are decoded here,
/// by several threads; of every other frame LZ4 makes the content from front to end.
class CFrameReader {
  public:
    CFrameReader(std::istream& stream, std::uint64_t byteCount, CMassiveBuf& target)
        : m_source(stream, byteCount), m_buffer(&target) {}
    CFrameReader(std::istream& stream, std::uint64_t byteCount, CContentSink& sink)
        : m_source(stream, byteCount), m_sink(&sink) {}

    /// As `CMassiveBuf::UncompressFromFile`, but after a failure the buffer may hold something, or the
    /// sink have taken it.
    Status Read(std::size_t threads);

  private:
    struct DecompressionFree {
        void operator()(LZ4F_dctx* context) const { LZ4F_freeDecompressionContext(context); }
    };

    bool MakeContext();
    bool TakeHeader();
    Status ReserveDeclared();
    Status DecodeThrough();
    bool MakePieces();
    Status EndOfFrame();
    std::byte* OutputPosition(std::size_t& room);
    std::byte* PlaceInBuffer(std::size_t& room);
    bool Refill();

    CBoundedSource m_source;
    CMassiveBuf* m_buffer = nullptr; ///< one of both
    CContentSink* m_sink = nullptr;
    std::unique_ptr<LZ4F_dctx, DecompressionFree> m_context;
    LZ4F_frameInfo_t m_info{};
    bool m_isSizeDeclared = false;
    std::uint64_t m_bound = 0; ///< no more than this can come out

    CBudgetBlock m_in;
    CBudgetBlock m_piece; ///< of the content, for the sink
    std::size_t m_inSize = 0;
    std::size_t m_inDone = 0;
    std::uint64_t m_made = 0;
    bool m_outOfMemory = false;
};

} // namespace trevolt
