#include "common/FrameBlocks.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include <lz4.h>
#include <xxhash/xxhash.h>

#include "common/BufferRuns.h"
#include "common/FrameLayout.h"
#include "common/LittleEndian.h"
#include "common/OrderedJobs.h"
#include "common/SequencedStep.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

/// What is handed to a sink at a time of a block that is stored as it is: it fits a processor's own
/// cache.
constexpr std::size_t kHandedBytes = std::size_t{512} << 10;

constexpr std::uint64_t kNoBlock = std::numeric_limits<std::uint64_t>::max();

std::optional<std::uint32_t> TakeField(CBoundedSource& source) {
    std::array<std::byte, kFrameFieldBytes> field{};
    if (!source.Take(field.data(), field.size()))
        return std::nullopt;
    return LoadLittle<std::uint32_t>(field.data());
}

/// One block on its way into the target.
struct SBlock {
    std::uint64_t number = 0;
    bool isStoredAsIs = false;
    bool isTakenIntoPlace = false; ///< and so never stands in the memory of a thread
    std::size_t storedBytes = 0;
    std::uint32_t checksum = 0;          ///< of the stored bytes, if blocks have one
    std::optional<std::uint64_t> offset; ///< in the target, once all before it are decoded
    std::size_t bytes = 0;               ///< decoded
    const std::byte* content = nullptr;  ///< decoded; null when they are in a buffer's place
};

/// What a thread keeps from block to block.
struct SBlockMemory {
    CBudgetBlock stored;
    CBudgetBlock decoded;
};

/// Memory of at least `bytes`, `most` of them when it is taken now; false when it is refused.
bool Reserve(CBudgetBlock& memory, std::size_t bytes, std::size_t most) {
    if (memory && memory.Size() >= bytes)
        return true;
    memory.Release();
    memory = CBudgetBlock(std::max(bytes, most));
    return static_cast<bool>(memory);
}

/// The blocks come one after the other from the stream and are decoded at once. Where one goes is
/// known when those before it are decoded: blocks may hold less than their most. They are counted
/// into the checksum in their order.
class CBlockReader {
  public:
    CBlockReader(CBoundedSource& source, const SFrameBlocks& blocks, const SFrameTarget& target)
        : m_source(source), m_blocks(blocks), m_target(target) {
        XXH32_reset(&m_checksum, 0);
    }

    Status Read(std::size_t threads) {
        CMemoryBudget::Process(); // made here, where somebody catches what that throws
        const std::uint64_t most = m_target.bytes / m_blocks.largestBytes + 1;
        const auto workers = static_cast<std::size_t>(std::min<std::uint64_t>(threads, most));
        {
            const auto takeAll = [this] { ReadBlocks(); };
            const auto others = StartThreads<std::jthread>(workers < 2 ? 0 : workers - 1, takeAll);
            takeAll();
        }
        if (m_failedBlock == kNoBlock)
            return TakeEnd();
        if (m_status == E_OUTOFMEMORY)
            CTransferReport::NoteMemoryRefused(); // a block's thread has no report
        return m_status;
    }

  private:
    void ReadBlocks() {
        SBlockMemory memory;
        for (SBlock block; TakeBlock(memory, block); block = {}) {
            if (const Status status = FinishBlock(memory, block); status != S_OK)
                return Fail(block.number, status);
        }
    }

    /// Takes the next block from the stream: into its place, when that is known and it is stored as
    /// it is. False when there is none, or the frame has failed.
    bool TakeBlock(SBlockMemory& memory, SBlock& block) {
        const std::lock_guard lock(m_reading);
        if (m_ended || HasFailed())
            return false;
        block.number = m_taken;
        const auto field = NextField();
        if (field == 0U) {
            m_ended = true;
            return false;
        }
        ++m_taken;
        const Status status = field ? TakeStored(*field, memory, block) : E_FAIL;
        if (status != S_OK)
            Fail(block.number, status);
        return status == S_OK;
    }

    /// That of the next block, or of what is left of one that comes in pieces.
    std::optional<std::uint32_t> NextField() {
        const std::uint32_t left = std::exchange(m_leftInPieces, 0);
        return left == 0 ? TakeField(m_source) : left | kStoredAsIsBit;
    }

    Status TakeStored(std::uint32_t field, SBlockMemory& memory, SBlock& block) {
        block.isStoredAsIs = (field & kStoredAsIsBit) != 0;
        block.storedBytes = field & ~kStoredAsIsBit;
        if (block.storedBytes > m_blocks.largestBytes || block.storedBytes > m_source.Left())
            return E_FAIL;
        if (ComesInPieces(block))
            CutToPiece(block);
        if (block.isStoredAsIs)
            block.bytes = block.storedBytes;
        if (!FindPlace(block))
            return E_FAIL;
        if (!block.isTakenIntoPlace &&
            !Reserve(memory.stored, block.storedBytes, MostStored(block)))
            return E_OUTOFMEMORY;
        if (!TakeBytes(memory, block))
            return E_FAIL;
        if (!m_blocks.haveChecksums)
            return S_OK;
        const auto checksum = TakeField(m_source);
        block.checksum = checksum.value_or(0);
        return checksum ? S_OK : E_FAIL;
    }

    /// Nothing is to be known of such a block but its bytes.
    bool ComesInPieces(const SBlock& block) const {
        return block.isStoredAsIs && m_target.sink != nullptr && !m_blocks.haveChecksums;
    }

    void CutToPiece(SBlock& block) {
        const std::size_t piece = std::min(block.storedBytes, kHandedBytes);
        m_leftInPieces = static_cast<std::uint32_t>(block.storedBytes - piece);
        block.storedBytes = piece;
    }

    /// Of what is still to be taken, what may be needed at a time.
    std::size_t MostStored(const SBlock& block) const {
        const std::size_t most = ComesInPieces(block)
                                     ? std::min(kHandedBytes, m_blocks.largestBytes)
                                     : m_blocks.largestBytes;
        return static_cast<std::size_t>(std::min<std::uint64_t>(most, m_source.Left()));
    }

    bool TakeBytes(SBlockMemory& memory, SBlock& block) {
        if (!block.isTakenIntoPlace)
            return m_source.Take(memory.stored.Data(), block.storedBytes);
        return EachRun(
            *m_target.buffer, *block.offset, block.bytes,
            [this](std::byte* to, std::size_t count) { return m_source.Take(to, count); });
    }

    /// Sets the block's place when all before it are decoded; a block that is stored as it is tells
    /// that of the next one too. False when the content does not hold it.
    bool FindPlace(SBlock& block) {
        if (!m_placing.IsNext(block.number))
            return true;
        block.offset = m_made;
        block.isTakenIntoPlace = block.isStoredAsIs && m_target.buffer != nullptr;
        return !block.isTakenIntoPlace || CountIn(block);
    }

    /// Of a block whose bytes are known; false when they are more than there is room, or when one
    /// before it has failed.
    bool CountIn(SBlock& block) {
        return m_placing.Do(block.number, [&] {
            block.offset = m_made;
            m_made += block.bytes;
            return m_made <= m_target.bytes;
        });
    }

    Status FinishBlock(SBlockMemory& memory, SBlock& block) {
        if (m_blocks.haveChecksums && StoredChecksum(memory, block) != block.checksum)
            return E_FAIL;
        if (!block.isTakenIntoPlace) {
            if (const Status status = Decode(memory, block); status != S_OK)
                return status;
            if (!Place(block))
                return E_FAIL;
        }
        if (m_blocks.hasContentChecksum && !CountIntoChecksum(block))
            return E_FAIL;
        return m_target.sink == nullptr || HandOver(block) ? S_OK : E_FAIL;
    }

    std::uint32_t StoredChecksum(const SBlockMemory& memory, const SBlock& block) const {
        if (!block.isTakenIntoPlace)
            return XXH32(memory.stored.Data(), block.storedBytes, 0);
        XXH32_state_t checksum;
        XXH32_reset(&checksum, 0);
        AddContent(checksum, block);
        return XXH32_digest(&checksum);
    }

    void AddContent(XXH32_state_t& checksum, const SBlock& block) const {
        const auto add = [&](const std::byte* bytes, std::size_t count) {
            return XXH32_update(&checksum, bytes, count) == XXH_OK;
        };
        if (m_target.buffer == nullptr)
            add(block.content, block.bytes);
        else
            EachRun(*m_target.buffer, *block.offset, block.bytes, add);
    }

    Status Decode(SBlockMemory& memory, SBlock& block) const {
        if (block.isStoredAsIs) {
            block.content = memory.stored.Data();
            return S_OK;
        }
        if (DecodeIntoPlace(memory.stored, block))
            return S_OK;
        // A frame's blocks are decoded with as much room as a block may fill.
        if (!Reserve(memory.decoded, m_blocks.largestBytes, m_blocks.largestBytes))
            return E_OUTOFMEMORY;
        block.content = memory.decoded.Data();
        return DecodeInto(memory.decoded.Data(), m_blocks.largestBytes, memory.stored, block)
                   ? S_OK
                   : E_FAIL;
    }

    /// Decodes a block whose place is known and has room for it in one run.
    bool DecodeIntoPlace(const CBudgetBlock& stored, SBlock& block) const {
        if (m_target.buffer == nullptr || !block.offset)
            return false;
        const auto most = static_cast<std::size_t>(
            std::min<std::uint64_t>(m_target.bytes - *block.offset, m_blocks.largestBytes));
        bool isDecoded = false;
        EachRun(*m_target.buffer, *block.offset, most, [&](std::byte* to, std::size_t count) {
            isDecoded = count == most && DecodeInto(to, count, stored, block);
            return false; // the first run is the only one
        });
        return isDecoded;
    }

    static bool DecodeInto(std::byte* to, std::size_t room, const CBudgetBlock& stored,
                           SBlock& block) {
        const int bytes = LZ4_decompress_safe(
            reinterpret_cast<const char*>(stored.Data()), reinterpret_cast<char*>(to),
            static_cast<int>(block.storedBytes), static_cast<int>(room));
        block.bytes = static_cast<std::size_t>(std::max(bytes, 0));
        return bytes >= 0;
    }

    /// Puts the block behind those before it; false when that fails, or they did.
    bool Place(SBlock& block) {
        if (!CountIn(block))
            return false;
        if (block.content == nullptr || m_target.buffer == nullptr)
            return true;
        const std::byte* from = block.content;
        return EachRun(*m_target.buffer, *block.offset, block.bytes,
                       [&](std::byte* to, std::size_t count) {
                           std::memcpy(to, from, count);
                           from += count;
                           return true;
                       });
    }

    bool CountIntoChecksum(const SBlock& block) {
        return m_counting.Do(block.number, [&] {
            AddContent(m_checksum, block);
            return true;
        });
    }

    bool HandOver(const SBlock& block) {
        return m_handing.Do(block.number, [&] {
            m_target.sink->Take(block.content, block.bytes);
            return true;
        });
    }

    bool HasFailed() {
        const std::lock_guard lock(m_mutex);
        return m_failedBlock != kNoBlock;
    }

    /// The first block that failed tells the status.
    void Fail(std::uint64_t number, Status status) {
        const std::lock_guard lock(m_mutex);
        if (number >= m_failedBlock)
            return;
        m_failedBlock = number;
        m_status = status;
        for (CSequencedStep* step : {&m_placing, &m_counting, &m_handing})
            step->StopAt(number);
    }

    /// Behind the end mark.
    Status TakeEnd() {
        if (m_blocks.hasContentChecksum && TakeField(m_source) != XXH32_digest(&m_checksum))
            return E_FAIL;
        return m_source.Left() == 0 && m_made == m_target.bytes ? S_OK : E_FAIL;
    }

    std::mutex m_reading; ///< guards the stream, and the two behind it
    CBoundedSource& m_source;
    std::uint64_t m_taken = 0;        ///< blocks
    std::uint32_t m_leftInPieces = 0; ///< bytes of the block that was cut last
    bool m_ended = false;

    const SFrameBlocks& m_blocks;
    const SFrameTarget& m_target;
    CSequencedStep m_placing;
    std::uint64_t m_made = 0; ///< bytes of the blocks that are placed
    CSequencedStep m_counting;
    XXH32_state_t m_checksum{}; ///< of the one whose turn it is
    CSequencedStep m_handing;

    std::mutex m_mutex; ///< guards what is behind it
    std::uint64_t m_failedBlock = kNoBlock;
    Status m_status{};
};

} // namespace

Status ReadFrameBlocks(CBoundedSource& source, const SFrameBlocks& blocks, std::size_t threads,
                       const SFrameTarget& target) {
    return CBlockReader(source, blocks, target).Read(threads);
}

} // namespace trevolt
