#include "common/FrameReader.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "common/CheckedArithmetic.h"
#include "common/FrameBlocks.h"
#include "common/FrameLayout.h"
#include "common/HeldExceptions.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

constexpr std::size_t kPieceBytes = std::size_t{1} << 20;
constexpr std::uint64_t kLargestRatio = 255; // no LZ4 stream holds more than 255 times its bytes

SFrameBlocks BlocksOf(const LZ4F_frameInfo_t& info) {
    constexpr std::size_t kSmallestBytes = std::size_t{1} << 16; // and each code's is four times it
    return {kSmallestBytes << (2 * (info.blockSizeID - LZ4F_max64KB)), info.blockChecksumFlag != 0,
            info.contentChecksumFlag != 0};
}

/// A decoder asks for its own buffers when it has seen a frame's header.
Status StatusOfFailure(std::size_t code) {
    if (std::string_view(LZ4F_getErrorName(code)) != "ERROR_allocation_failed")
        return E_FAIL;
    CTransferReport::NoteMemoryRefused();
    return E_OUTOFMEMORY;
}

} // namespace

Status CFrameReader::Read(std::size_t threads) {
    if (!MakeContext()) {
        CTransferReport::NoteMemoryRefused();
        return E_OUTOFMEMORY;
    }
    if (!TakeHeader())
        return E_FAIL;
    if (const Status status = ReserveDeclared(); Failed(status))
        return status;
    if (m_isSizeDeclared && m_info.blockMode == LZ4F_blockIndependent)
        return ReadFrameBlocks(m_source, BlocksOf(m_info), threads,
                               {m_info.contentSize, m_buffer, m_sink});
    return DecodeThrough();
}

/// Fails for want of memory alone.
bool CFrameReader::MakeContext() {
    LZ4F_dctx* context = nullptr;
    const std::size_t made = LZ4F_createDecompressionContext(&context, LZ4F_VERSION);
    m_context.reset(context);
    return LZ4F_isError(made) == 0U;
}

/// False when it is not one of a frame that is read here.
bool CFrameReader::TakeHeader() {
    m_bound = CheckedProduct<std::uint64_t>(m_source.Left(), kLargestRatio).value_or(UINT64_MAX);
    std::array<std::byte, kLongestHeaderBytes> header{};
    if (!m_source.Take(header.data(), kShortestHeaderBytes))
        return false;
    std::size_t size = LZ4F_headerSize(header.data(), kShortestHeaderBytes);
    if (LZ4F_isError(size) != 0U || size > header.size() ||
        !m_source.Take(&header[kShortestHeaderBytes], size - kShortestHeaderBytes))
        return false;
    const std::size_t hint = LZ4F_getFrameInfo(m_context.get(), &m_info, header.data(), &size);
    if (LZ4F_isError(hint) != 0U || m_info.frameType != LZ4F_frame || m_info.dictID != 0)
        return false;
    // The frame's information does not tell a declared 0 from no declaration.
    m_isSizeDeclared =
        (std::to_integer<unsigned>(header[kFrameFlagsOffset]) & kContentSizeFlag) != 0;
    return true;
}

/// Allocates a buffer of a declared size at once.
Status CFrameReader::ReserveDeclared() {
    if (m_info.contentSize > m_bound)
        return E_FAIL;
    if (m_buffer != nullptr && m_isSizeDeclared && !m_buffer->Allocate(m_info.contentSize))
        return E_OUTOFMEMORY;
    return S_OK;
}

Status CFrameReader::DecodeThrough() {
    if (!MakePieces())
        return E_OUTOFMEMORY;
    for (;;) {
        if (m_inDone == m_inSize && m_source.Left() > 0 && !Refill())
            return E_FAIL;
        std::byte spare{};
        std::size_t room = 0;
        std::byte* out = OutputPosition(room);
        if (out == nullptr && m_outOfMemory)
            return E_OUTOFMEMORY;
        std::size_t taken = m_inSize - m_inDone;
        std::size_t made = out == nullptr ? 0 : room;
        const std::size_t hint = LZ4F_decompress(m_context.get(), out == nullptr ? &spare : out,
                                                 &made, m_in.Data() + m_inDone, &taken, nullptr);
        if (LZ4F_isError(hint) != 0U)
            return StatusOfFailure(hint);
        m_inDone += taken;
        m_made += made;
        if (m_sink != nullptr && made > 0)
            m_sink->Take(out, made);
        if (hint == 0)
            return EndOfFrame();
        if (taken == 0 && made == 0)
            return E_FAIL; // the end mark is missing, or more comes out than was declared
    }
}

/// False when the memory for them is refused.
bool CFrameReader::MakePieces() {
    const auto pieceOf = [](std::uint64_t bytes) {
        return CBudgetBlock(static_cast<std::size_t>(std::min<std::uint64_t>(bytes, kPieceBytes)));
    };
    m_in = pieceOf(m_source.Left());
    if (m_sink != nullptr)
        m_piece = pieceOf(m_bound);
    return m_in && (m_sink == nullptr || m_piece);
}

/// Nothing may follow it, and all that was declared must be there.
Status CFrameReader::EndOfFrame() {
    if (m_source.Left() != 0 || m_inDone != m_inSize)
        return E_FAIL;
    if (m_isSizeDeclared && m_made != m_info.contentSize)
        return E_FAIL;
    if (m_buffer != nullptr)
        m_buffer->m_byteCount = m_made;
    return S_OK;
}

/// Where the next decoded byte goes and how many fit there. Null when all that may come is there, or
/// when there is no memory for another block of a buffer.
std::byte* CFrameReader::OutputPosition(std::size_t& room) {
    const std::uint64_t most = m_isSizeDeclared ? m_info.contentSize : m_bound;
    if (m_made >= most)
        return nullptr;
    if (m_buffer != nullptr)
        return PlaceInBuffer(room);
    room = m_piece.Size();
    return m_piece.Data();
}

/// Of content that is not yet whole; a buffer of undeclared size grows by a block.
std::byte* CFrameReader::PlaceInBuffer(std::size_t& room) {
    const std::uint64_t index = m_made / m_buffer->m_blockBytes;
    const std::uint64_t offset = m_made % m_buffer->m_blockBytes;
    if (index == m_buffer->m_blocks.size() && !m_buffer->AppendBlock(m_bound - m_made)) {
        m_outOfMemory = true;
        return nullptr;
    }
    CBudgetBlock& block = m_buffer->m_blocks[index];
    room = block.Size() - offset;
    return block.Data() + offset;
}

bool CFrameReader::Refill() {
    m_inSize = static_cast<std::size_t>(std::min<std::uint64_t>(m_source.Left(), m_in.Size()));
    m_inDone = 0;
    return m_inSize > 0 && m_source.Take(m_in.Data(), m_inSize);
}

Status ReadFrame(std::istream& stream, std::uint64_t byteCount, std::size_t threads,
                 CContentSink& sink) {
    return HoldingExceptions(stream,
                             [&] { return CFrameReader(stream, byteCount, sink).Read(threads); });
}

} // namespace trevolt
