#include "trevolt/MassiveBuf.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "common/BufferRuns.h"
#include "common/FrameReader.h"
#include "common/FrameWriter.h"
#include "common/HeldExceptions.h"
#include "common/LittleEndian.h"
#include "platform/FileStream.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

constexpr std::size_t kFillRun = std::size_t{1} << 14;

} // namespace

CMassiveBuf::CMassiveBuf(std::uint32_t blockBytes) : m_blockBytes(blockBytes) {}

CMassiveBuf::CMassiveBuf(CMassiveBuf&& other) noexcept
    : m_blockBytes(other.m_blockBytes),
      m_byteCount(std::exchange(other.m_byteCount, 0)),
      m_blocks(std::exchange(other.m_blocks, {})) {}

CMassiveBuf& CMassiveBuf::operator=(CMassiveBuf&& other) noexcept {
    if (this == &other)
        return *this;
    m_blockBytes = other.m_blockBytes;
    m_byteCount = std::exchange(other.m_byteCount, 0);
    m_blocks = std::exchange(other.m_blocks, {});
    return *this;
}

bool CMassiveBuf::Allocate(std::uint64_t byteCount) {
    Release();
    if (!CMemoryBudget::Process().HasRoomFor(byteCount)) {
        CTransferReport::NoteMemoryRefused();
        return false;
    }
    m_blocks.reserve(static_cast<std::size_t>(byteCount / m_blockBytes + 1));
    for (std::uint64_t left = byteCount; left > 0; left -= m_blocks.back().Size()) {
        if (!AppendBlock(left)) {
            Release();
            return false;
        }
    }
    m_byteCount = byteCount;
    return true;
}

void CMassiveBuf::Release() {
    m_blocks.clear();
    m_byteCount = 0;
}

bool CMassiveBuf::AppendBlock(std::uint64_t bytes) {
    CBudgetBlock block(static_cast<std::size_t>(std::min<std::uint64_t>(bytes, m_blockBytes)));
    if (!block)
        return false;
    m_blocks.push_back(std::move(block));
    return true;
}

void CMassiveBuf::FillWith(const void* pattern, std::size_t patternBytes) {
    // What is filled is copied on, in runs that stay in the cache and are whole patterns.
    const std::size_t longestRun = std::max(patternBytes, kFillRun / patternBytes * patternBytes);
    for (CBudgetBlock& block : m_blocks) {
        std::size_t filled = std::min(patternBytes, block.Size());
        std::memcpy(block.Data(), pattern, filled);
        while (filled < block.Size()) {
            const std::size_t run = std::min({filled, longestRun, block.Size() - filled});
            std::memcpy(block.Data() + filled, block.Data(), run);
            filled += run;
        }
    }
}

bool CMassiveBuf::CopyFrom(const CMassiveBuf& other) {
    if (&other == this)
        return true;
    if (!Allocate(other.m_byteCount))
        return false;
    std::uint64_t done = 0;
    while (done < m_byteCount) {
        const std::uint64_t toOffset = done % m_blockBytes;
        const std::uint64_t fromOffset = done % other.m_blockBytes;
        const std::uint64_t count = std::min(
            {m_blockBytes - toOffset, other.m_blockBytes - fromOffset, m_byteCount - done});
        std::memcpy(Block(static_cast<std::size_t>(done / m_blockBytes)) + toOffset,
                    other.Block(static_cast<std::size_t>(done / other.m_blockBytes)) + fromOffset,
                    static_cast<std::size_t>(count));
        done += count;
    }
    return true;
}

Status CMassiveBuf::CompressToFile(std::ostream& stream) const {
    return WriteFrame(stream, m_byteCount, 1,
                      [this](std::uint64_t offset, std::size_t count, CBudgetBlock& scratch) {
                          return InOneRun(*this, offset, count, scratch);
                      });
}

Status CMassiveBuf::UncompressFromFile(std::istream& stream, std::uint64_t byteCount,
                                       std::size_t threads) {
    Release();
    return HoldingExceptions(stream, [&] {
        const Status status = CFrameReader(stream, byteCount, *this).Read(threads);
        if (Failed(status))
            Release();
        return status;
    });
}

Status CMassiveBuf::ReadFromFile(std::istream& stream) {
    Release();
    std::array<std::byte, 8> field{};
    if (!stream.read(reinterpret_cast<char*>(field.data()), field.size()))
        return E_FAIL;
    const auto byteCount = LoadLittle<std::uint64_t>(field.data());
    const auto stored = BytesToEnd(stream);
    if (!stored || byteCount > *stored)
        return E_FAIL;
    if (!Allocate(byteCount))
        return E_OUTOFMEMORY;
    for (CBudgetBlock& block : m_blocks)
        stream.read(reinterpret_cast<char*>(block.Data()),
                    static_cast<std::streamsize>(block.Size()));
    if (stream)
        return S_OK;
    Release();
    return E_FAIL;
}

} // namespace trevolt
