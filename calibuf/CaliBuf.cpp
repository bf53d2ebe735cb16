#include "calibuf/CaliBuf.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "calibuf/PlaneCodec.h"
#include "calibuf/StoreDigest.h"
#include "calibuf/WordElementKind.h"
#include "platform/PhysicalMemory.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

constexpr std::uint32_t kBlockBookkeeping = 24; // bytes counted for a block besides its data

/// Whether `rect`, in pixels of the grid, lies inside the block.
bool IsInsideBlock(const BlockRecord& block, const SPixelRect& rect) {
    const std::int64_t left = std::int64_t{rect.left} - block.nX;
    const std::int64_t top = std::int64_t{rect.top} - block.nY;
    return left >= 0 && top >= 0 && rect.Width() >= 0 && rect.Height() >= 0 &&
           left + rect.Width() <= kBlockWidth && top + rect.Height() <= kBlockHeight;
}

/// Offset of the rectangle's corner among the block's elements.
std::size_t CornerPlace(const BlockRecord& block, const SPixelRect& rect) {
    return (static_cast<std::size_t>(rect.top) - block.nY) * kBlockWidth +
           (static_cast<std::size_t>(rect.left) - block.nX);
}

} // namespace

// Thousands of stores are made and dropped while folders are turned, most of them with a few
// blocks: their tables come as zero pages, and only the entries in use are ever touched. The
// constructor must leave the table as it comes.
void* CCaliBuf::operator new(std::size_t bytes) {
    void* memory = AllocateZeroPages(bytes);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void CCaliBuf::operator delete(void* memory, std::size_t bytes) { FreeZeroPages(memory, bytes); }

CCaliBuf::CCaliBuf() : m_pUsedBlocks(new (std::nothrow) std::vector<std::uint32_t>()) {
    asm("" : "+m"(m_apBlocks)); // for the compiler, the table has a value from here on
}

CCaliBuf::~CCaliBuf() { Clear(); }

std::unique_ptr<CCaliBuf> CCaliBuf::Create() { return std::unique_ptr<CCaliBuf>(new CCaliBuf()); }

void CCaliBuf::SetElement(std::uint16_t elemSize, std::uint32_t planeCount) {
    Clear();
    m_nElemSize = elemSize;
    m_nPlaneCount = std::min<std::uint32_t>(planeCount, kMaxWords);
}

bool CCaliBuf::HasRoomFor(std::uint32_t width, std::uint32_t height) const {
    if (width > kGridWidth || height > kGridHeight)
        return false;
    const SBlockSpan covering{0, 0, BlocksCovering(width, kBlockWidth),
                              BlocksCovering(height, kBlockHeight)};
    return CMemoryBudget::Process().HasRoomFor(covering.Count() * BlockBytes());
}

Status CCaliBuf::Allocate(std::uint32_t width, std::uint32_t height) {
    if (width > kGridWidth || height > kGridHeight)
        return E_COEF_INVALIDARG;
    Clear();
    m_nWidth = width;
    m_nHeight = height;
    const auto rows = static_cast<std::uint32_t>(BlocksCovering(height, kBlockHeight));
    const auto columns = static_cast<std::uint32_t>(BlocksCovering(width, kBlockWidth));
    const std::uint64_t blockBytes = BlockBytes() + kBlockBookkeeping;
    for (std::uint32_t row = 0; row < rows; ++row) {
        for (std::uint32_t column = 0; column < columns; ++column) {
            if (m_nBytesInUse + blockBytes > m_nSizeLimit)
                return E_COEF_SIZELIMIT;
            const std::uint32_t index = BlockIndexAt(column, row);
            Status status = AllocateBlock(index, column * kBlockWidth, row * kBlockHeight);
            if (!Failed(status))
                status = FillBlockDefault(index);
            if (Failed(status))
                return status;
        }
    }
    return S_OK;
}

void CCaliBuf::Clear() {
    for (const std::uint32_t index : UsedBlocks()) {
        delete m_apBlocks[index];
        m_apBlocks[index] = nullptr;
    }
    if (m_pUsedBlocks)
        m_pUsedBlocks->clear();
    m_nBytesInUse = 0;
}

Status CCaliBuf::AllocateBlock(std::uint32_t index, std::uint32_t x, std::uint32_t y) {
    if (index >= kGridBlocks || m_apBlocks[index] != nullptr)
        return E_COEF_INVALIDARG;
    if (x > kGridWidth - kBlockWidth || y > kGridHeight - kBlockHeight)
        return E_COEF_INVALIDARG;
    if (!m_pUsedBlocks) {
        CTransferReport::NoteMemoryRefused();
        return E_FAIL;
    }
    std::unique_ptr<BlockRecord> block(new (std::nothrow) BlockRecord());
    if (!block) {
        CTransferReport::NoteMemoryRefused();
        return S_OK; // callers see a missing block
    }
    const std::size_t bytes = BlockBytes();
    block->memory = CBudgetBlock(bytes);
    if (!block->memory)
        return E_FAIL;
    block->nIndex = index;
    block->nX = x;
    block->nY = y;
    block->nBytes = static_cast<std::uint32_t>(bytes);
    block->pData = block->memory.Data();
    m_pUsedBlocks->push_back(index);
    m_nBytesInUse += block->nBytes + kBlockBookkeeping;
    m_apBlocks[index] = block.release();
    return S_OK;
}

Status CCaliBuf::FillBlockDefault(std::uint32_t index) {
    const BlockRecord* const block = BlockWithData(index);
    if (block == nullptr)
        return E_COEF_NOBUFFER;
    const WordElementKind* const kind = FindWordElementKind(m_nElemSize);
    if (kind == nullptr)
        return E_FAIL;
    const std::size_t rowBytes = std::size_t{kBlockWidth} * m_nElemSize;
    for (std::size_t at = 0; at < rowBytes; at += m_nElemSize)
        std::memcpy(block->pData + at, kind->defaultWords.data(), m_nElemSize);
    for (std::uint32_t row = 1; row < kBlockHeight; ++row)
        std::memcpy(block->pData + row * rowBytes, block->pData, rowBytes);
    return S_OK;
}

Status CCaliBuf::CopyRectIn(std::uint32_t index, const std::byte* source, const SPixelRect& piece,
                            std::uint32_t sourceStart, std::uint32_t sourceStride) {
    const BlockRecord* const block = BlockWithData(index);
    if (source == nullptr || block == nullptr)
        return E_COEF_NOBUFFER;
    if (piece.Height() <= 0)
        return S_OK;
    if (!IsInsideBlock(*block, piece))
        return E_COEF_INVALIDARG;
    const std::size_t rowBytes = static_cast<std::size_t>(piece.Width()) * m_nElemSize;
    const std::byte* from = source + std::size_t{sourceStart} * m_nElemSize;
    std::byte* to = block->pData + CornerPlace(*block, piece) * m_nElemSize;
    for (std::int64_t row = 0; row < piece.Height(); ++row) {
        std::memcpy(to, from, rowBytes);
        from += std::size_t{sourceStride} * m_nElemSize;
        to += std::size_t{kBlockWidth} * m_nElemSize;
    }
    return S_OK;
}

void CCaliBuf::CopyRectOut(std::uint32_t index, const SPixelRect& rect,
                           std::byte* destination) const {
    const BlockRecord* const block = BlockWithData(index);
    if (destination == nullptr || block == nullptr)
        return;
    if (rect.Width() <= 0 || rect.Height() <= 0 || !IsInsideBlock(*block, rect))
        return;
    const std::size_t rowBytes = static_cast<std::size_t>(rect.Width()) * m_nElemSize;
    const std::byte* from = block->pData + CornerPlace(*block, rect) * m_nElemSize;
    for (std::int64_t row = 0; row < rect.Height(); ++row) {
        std::memcpy(destination, from, rowBytes);
        destination += rowBytes;
        from += std::size_t{kBlockWidth} * m_nElemSize;
    }
}

Status CCaliBuf::CompressPlanes(std::byte* destination, std::uint32_t& total,
                                const std::byte* source, std::uint32_t* planeSizes,
                                std::uint16_t width, std::uint16_t height) const {
    total = 0;
    if (destination == nullptr || source == nullptr || planeSizes == nullptr)
        return E_COEF_NOBUFFER;
    const std::uint32_t count = std::uint32_t{width} * height;
    if (count > kBlockElements)
        return E_COEF_INVALIDARG;
    CPlaneCodec codec(m_nElemSize, count);
    if (!codec.IsReady())
        return E_COEF_NOBUFFER;
    return codec.Compress(destination, total, source, planeSizes, count);
}

Status CCaliBuf::DecompressPlanes(const SChunkRecord& record, const std::byte* compressed,
                                  std::byte* destination, std::uint32_t& total) const {
    total = 0;
    if (compressed == nullptr || destination == nullptr)
        return E_COEF_NOBUFFER;
    if (!IsPossibleChunk(record, m_nElemSize))
        return E_FAIL;
    CPlaneCodec codec(m_nElemSize, record.Elements());
    if (!codec.IsReady())
        return E_COEF_NOBUFFER;
    const Status status = codec.Decode(record, compressed);
    total = codec.Scatter(destination);
    return status;
}

bool CCaliBuf::ComputeMD5(std::wstring& text) const {
    CStoreDigest digest;
    for (const std::uint32_t index : UsedBlocks()) {
        const BlockRecord* const block = BlockWithData(index);
        if (block == nullptr || !digest.AddBlock(block->pData, block->nBytes))
            return false;
    }
    return digest.Finish(text);
}

} // namespace trevolt
