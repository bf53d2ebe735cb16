// The one place that large buffers (grid blocks, calibration blocks) come from. It counts what is
// outstanding and refuses, as a failed allocation, what would pass the budget, so that a screen too
// large for the machine or a header that lies ends in a status and not in a killed process.
//
// What is freed is kept for the next file: a system's first touch of memory costs more than most
// work on it. What is outstanding and what is kept never pass the limit together, kept memory has a
// bound of its own, and it is given back before an allocation is refused for it.
//
// May be used from any thread.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace trevolt {

class CMemoryBudget {
  public:
    /// Bytes that are kept at most, unless told otherwise.
    static constexpr std::uint64_t kKeptLimit = std::uint64_t{1} << 30;

    /// The process's budget. Its limit starts at 90 % of the physical memory.
    static CMemoryBudget& Process();

    explicit CMemoryBudget(std::uint64_t limit, std::uint64_t keptLimit = kKeptLimit)
        : m_limit(limit), m_keptLimit(keptLimit) {}
    ~CMemoryBudget() { GiveBackKept(); }
    CMemoryBudget(const CMemoryBudget&) = delete;
    CMemoryBudget& operator=(const CMemoryBudget&) = delete;

    /// Sets how many bytes may be outstanding. What is outstanding already stays.
    void SetLimit(std::uint64_t bytes);
    std::uint64_t Limit() const { return m_limit; }

    /// Bytes given out and not yet given back, as they were asked for.
    std::uint64_t Outstanding() const { return m_outstanding; }

    /// Bytes of freed blocks that wait for the next allocation.
    std::uint64_t Kept() const { return m_kept; }

    /// Whether `bytes` more would pass the limit: asked before a run of allocations, so that a
    /// hopeless one is refused at once. What is kept counts as room.
    bool HasRoomFor(std::uint64_t bytes) const;

    /// `bytes` of uninitialised memory, or null when that passes the budget or the system refuses.
    void* Allocate(std::size_t bytes);

    /// Gives back `bytes` that `Allocate` gave; null is ignored.
    void Free(void* memory, std::size_t bytes);

    /// Gives what is kept back to the system: for the end of a run.
    void GiveBackKept();

  private:
    struct SKeptBlock {
        void* memory = nullptr;
        std::size_t capacity = 0;
    };

    std::uint64_t RoomLeft() const;
    void* TakeKept(std::size_t capacity);
    void Keep(const SKeptBlock& block);
    void TrimKept(std::uint64_t bytes, std::size_t count);

    std::atomic<std::uint64_t> m_limit;
    const std::uint64_t m_keptLimit;
    std::atomic<std::uint64_t> m_outstanding{0};
    std::atomic<std::uint64_t> m_kept{0};

    std::mutex m_mutex;                       ///< of everything above that changes, and of these
    std::array<SKeptBlock, 512> m_keptBlocks; ///< the one freed last stands last
    std::size_t m_keptCount = 0;
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
