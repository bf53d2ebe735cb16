// Reads one LZ4 frame of a known stored size into a buffer's blocks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <memory>

#include <lz4frame.h>

#include "common/BoundedSource.h"
#include "trevolt/MassiveBuf.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// Blocks that are independent of each other and whose content's size is declared are decoded here,
/// by several threads; of every other frame LZ4 makes the content from front to end.
class CFrameReader {
  public:
    CFrameReader(std::istream& stream, std::uint64_t byteCount, CMassiveBuf& target)
        : m_source(stream, byteCount), m_target(target) {}

    /// As `CMassiveBuf::UncompressFromFile`, but after a failure the target may hold something.
    Status Read(std::size_t threads);

  private:
    struct DecompressionFree {
        void operator()(LZ4F_dctx* context) const { LZ4F_freeDecompressionContext(context); }
    };

    bool MakeContext();
    bool TakeHeader();
    Status ReserveDeclared();
    Status DecodeThrough();
    Status EndOfFrame();
    std::byte* OutputPosition(std::size_t& room);
    bool Refill();

    CBoundedSource m_source;
    CMassiveBuf& m_target;
    std::unique_ptr<LZ4F_dctx, DecompressionFree> m_context;
    LZ4F_frameInfo_t m_info{};
    bool m_isSizeDeclared = false;
    std::uint64_t m_bound = 0; ///< no more than this can come out

    CBudgetBlock m_in;
    std::size_t m_inSize = 0;
    std::size_t m_inDone = 0;
    std::uint64_t m_made = 0;
    bool m_outOfMemory = false;
};

} // namespace trevolt
