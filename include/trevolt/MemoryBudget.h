// The one place that large buffers (grid blocks, calibration blocks) come from. It counts what is
// outstanding and refuses, as a failed allocation, what would pass the budget, so that a screen too
// large for the machine or a header that lies ends in a status and not in a killed process.
// May be used from any thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace trevolt {

class CMemoryBudget {
  public:
    /// The process's budget. Its limit starts at 90 % of the physical memory.
    static CMemoryBudget& Process();

    explicit CMemoryBudget(std::uint64_t limit) : m_limit(limit) {}

    /// Sets how many bytes may be outstanding. What is outstanding already stays.
    void SetLimit(std::uint64_t bytes) { m_limit = bytes; }
    std::uint64_t Limit() const { return m_limit; }

    /// Bytes given out and not yet given back.
    std::uint64_t Outstanding() const { return m_outstanding; }

    /// Whether `bytes` more would pass the limit: asked before a run of allocations, so that a
    /// hopeless one is refused at once.
    bool HasRoomFor(std::uint64_t bytes) const;

    /// `bytes` of uninitialised memory, or null when that passes the budget or the system refuses.
    void* Allocate(std::size_t bytes);

    /// Gives back `bytes` that `Allocate` gave; null is ignored.
    void Free(void* memory, std::size_t bytes);

  private:
    std::atomic<std::uint64_t> m_limit;
    std::atomic<std::uint64_t> m_outstanding{0};
};

/// One block of the process's budget, owned: move-only, given back with the holder.
class CBudgetBlock {
  public:
    CBudgetBlock() = default;
    /// Empty when the budget refuses; then the refusal is noted in the thread's transfer report.
    explicit CBudgetBlock(std::size_t bytes);
    ~CBudgetBlock() { Release(); }
    CBudgetBlock(CBudgetBlock&& other) noexcept;
    CBudgetBlock& operator=(CBudgetBlock&& other) noexcept;

    explicit operator bool() const { return m_data != nullptr; }
    std::byte* Data() { return m_data; }
    const std::byte* Data() const { return m_data; }
    std::size_t Size() const { return m_size; }
    void Release();

  private:
    std::byte* m_data = nullptr;
    std::size_t m_size = 0;
};

} // namespace trevolt
