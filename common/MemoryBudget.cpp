#include "trevolt/MemoryBudget.h"

#include <algorithm>
#include <bit>
#include <span>
#include <utility>

#include "platform/PhysicalMemory.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

/// Smaller blocks go to the heap and back; it keeps them well enough.
constexpr std::size_t kSmallestKept = std::size_t{16} << 10;
constexpr std::size_t kStepsPerDoubling = 8;

/// The bytes that a block of `bytes` takes: larger ones in steps of at most an eighth, so that a
/// kept block fits the next file's, which may be a little larger or smaller.
std::size_t CapacityFor(std::size_t bytes) {
    if (bytes < kSmallestKept)
        return std::max<std::size_t>(bytes, 1);
    const std::size_t step = std::bit_floor(bytes) / kStepsPerDoubling;
    return bytes > SIZE_MAX - step ? bytes : (bytes + step - 1) & ~(step - 1);
}

} // namespace

CMemoryBudget& CMemoryBudget::Process() {
    // Never destroyed: static objects may give their blocks back later than that would be.
    static CMemoryBudget& budget = *new CMemoryBudget(PhysicalMemoryBytes() / 10 * 9);
    return budget;
}

void CMemoryBudget::SetLimit(std::uint64_t bytes) {
    const std::lock_guard lock(m_mutex);
    m_limit = bytes;
    TrimKept(RoomLeft(), m_keptBlocks.size());
}

std::uint64_t CMemoryBudget::RoomLeft() const {
    const std::uint64_t limit = m_limit;
    const std::uint64_t outstanding = m_outstanding;
    return limit - std::min(limit, outstanding);
}

bool CMemoryBudget::HasRoomFor(std::uint64_t bytes) const {
    return m_outstanding <= m_limit && bytes <= RoomLeft();
}

void* CMemoryBudget::Allocate(std::size_t bytes) {
    const std::size_t capacity = CapacityFor(bytes);
    {
        const std::lock_guard lock(m_mutex);
        if (!HasRoomFor(bytes))
            return nullptr;
        m_outstanding += bytes;
        if (void* const kept = TakeKept(capacity)) {
            UnpoisonMemory(kept, bytes);
            return kept;
        }
        TrimKept(RoomLeft(), m_keptBlocks.size());
    }
    void* memory = AllocateLarge(capacity);
    if (memory == nullptr) {
        GiveBackKept();
        memory = AllocateLarge(capacity);
    }
    if (memory == nullptr)
        m_outstanding -= bytes;
    else
        PoisonMemory(static_cast<std::byte*>(memory) + bytes, capacity - bytes);
    return memory;
}

void CMemoryBudget::Free(void* memory, std::size_t bytes) {
    if (memory == nullptr)
        return;
    const std::size_t capacity = CapacityFor(bytes);
    const std::lock_guard lock(m_mutex);
    m_outstanding -= bytes;
    if (const std::uint64_t room = std::min(m_keptLimit, RoomLeft());
        capacity >= kSmallestKept && capacity <= room) {
        TrimKept(room - capacity, m_keptBlocks.size() - 1);
        Keep({memory, capacity});
        return;
    }
    UnpoisonMemory(memory, capacity);
    FreeLarge(memory, capacity);
}

void CMemoryBudget::GiveBackKept() {
    const std::lock_guard lock(m_mutex);
    TrimKept(0, 0);
}

/// The block of that capacity that was freed last: what it holds may still be in the cache.
void* CMemoryBudget::TakeKept(std::size_t capacity) {
    for (std::size_t i = m_keptCount; i-- > 0;) {
        if (m_keptBlocks[i].capacity != capacity)
            continue;
        void* const memory = m_keptBlocks[i].memory;
        const auto at = m_keptBlocks.begin() + static_cast<std::ptrdiff_t>(i);
        std::copy(at + 1, m_keptBlocks.begin() + static_cast<std::ptrdiff_t>(m_keptCount), at);
        --m_keptCount;
        m_kept -= capacity;
        return memory;
    }
    return nullptr;
}

void CMemoryBudget::Keep(const SKeptBlock& block) {
    PoisonMemory(block.memory, block.capacity);
    m_keptBlocks[m_keptCount++] = block;
    m_kept += block.capacity;
}

/// Gives back what was kept longest, until at most `bytes` in `count` blocks are left.
void CMemoryBudget::TrimKept(std::uint64_t bytes, std::size_t count) {
    std::size_t gone = 0;
    for (; m_kept > bytes || m_keptCount - gone > count; ++gone) {
        const SKeptBlock& block = m_keptBlocks[gone];
        m_kept -= block.capacity;
        UnpoisonMemory(block.memory, block.capacity);
        FreeLarge(block.memory, block.capacity);
    }
    if (gone == 0)
        return;
    const auto blocks = std::span(m_keptBlocks).first(m_keptCount);
    std::copy(blocks.begin() + static_cast<std::ptrdiff_t>(gone), blocks.end(), blocks.begin());
    m_keptCount -= gone;
}

CBudgetBlock::CBudgetBlock(std::size_t bytes)
    : m_data(static_cast<std::byte*>(CMemoryBudget::Process().Allocate(bytes))),
      m_size(m_data == nullptr ? 0 : bytes) {
    if (m_data == nullptr)
        CTransferReport::NoteMemoryRefused();
}

CBudgetBlock::CBudgetBlock(CBudgetBlock&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)), m_size(std::exchange(other.m_size, 0)) {}

CBudgetBlock& CBudgetBlock::operator=(CBudgetBlock&& other) noexcept {
    if (this != &other) {
        Release();
        m_data = std::exchange(other.m_data, nullptr);
        m_size = std::exchange(other.m_size, 0);
    }
    return *this;
}

void CBudgetBlock::Release() {
    if (m_data == nullptr) // the budget may not be there, and to make it may throw
        return;
    CMemoryBudget::Process().Free(std::exchange(m_data, nullptr), std::exchange(m_size, 0));
}

} // namespace trevolt
