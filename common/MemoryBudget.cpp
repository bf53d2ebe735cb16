#include "trevolt/MemoryBudget.h"

#include <utility>

#include "platform/PhysicalMemory.h"
#include "trevolt/TransferReport.h"

namespace trevolt {

CMemoryBudget& CMemoryBudget::Process() {
    static CMemoryBudget budget(PhysicalMemoryBytes() / 10 * 9);
    return budget;
}

bool CMemoryBudget::HasRoomFor(std::uint64_t bytes) const {
    const std::uint64_t limit = m_limit;
    const std::uint64_t outstanding = m_outstanding;
    return outstanding <= limit && bytes <= limit - outstanding;
}

void* CMemoryBudget::Allocate(std::size_t bytes) {
    std::uint64_t before = m_outstanding;
    do {
        if (before > m_limit || bytes > m_limit - before)
            return nullptr;
    } while (!m_outstanding.compare_exchange_weak(before, before + bytes));
    void* memory = AllocateLarge(bytes == 0 ? 1 : bytes);
    if (memory == nullptr)
        m_outstanding -= bytes;
    return memory;
}

void CMemoryBudget::Free(void* memory, std::size_t bytes) {
    if (memory == nullptr)
        return;
    FreeLarge(memory);
    m_outstanding -= bytes;
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
    CMemoryBudget::Process().Free(std::exchange(m_data, nullptr), std::exchange(m_size, 0));
}

} // namespace trevolt
