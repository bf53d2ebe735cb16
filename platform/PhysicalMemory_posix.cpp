#include "platform/PhysicalMemory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <mutex>
#include <new>

#include <sys/mman.h>
#include <unistd.h>

#include "platform/ControlGroup.h"

#ifdef TREVOLT_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#include <sanitizer/lsan_interface.h>
#endif

namespace trevolt {
namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;
constexpr std::size_t kRegionBytes = std::size_t{256} << 20;
constexpr std::size_t kLargestInRegion = kRegionBytes / 8;
constexpr std::size_t kPlaceStep = 4096;

#ifdef TREVOLT_ADDRESS_SANITIZER
constexpr std::size_t kSmallestInRegion = std::numeric_limits<std::size_t>::max(); // heap, guarded
#else
constexpr std::size_t kSmallestInRegion = std::size_t{16} << 10;
#endif

std::size_t RoundUp(std::size_t value, std::size_t step) {
    return (value + step - 1) / step * step;
}

std::size_t PageBytes() {
    static const auto bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return bytes;
}

std::uintptr_t AddressOf(const void* memory) { return reinterpret_cast<std::uintptr_t>(memory); }

/// Address space for `bytes`, whole pages, that starts where a huge page may. Null when refused.
std::byte* MapHuge(std::size_t bytes) {
    const std::size_t reach = bytes + kHugePage;
    void* const mapped = mmap(nullptr, reach, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapped == MAP_FAILED)
        return nullptr;
    auto* const end = static_cast<std::byte*>(mapped) + reach;
    const std::size_t before = RoundUp(AddressOf(mapped), kHugePage) - AddressOf(mapped);
    auto* const start = static_cast<std::byte*>(mapped) + before;
    if (before > 0)
        munmap(mapped, before);
    munmap(start + bytes, static_cast<std::size_t>(end - start) - bytes);
    madvise(start, bytes, MADV_HUGEPAGE); // advice only: without it pages are small
    return start;
}

/// Gives the pages that lie wholly in these bytes back, and keeps the address space.
void DropPages(void* memory, std::size_t bytes) {
    const std::uintptr_t end = (AddressOf(memory) + bytes) / PageBytes() * PageBytes();
    const std::size_t before = RoundUp(AddressOf(memory), PageBytes()) - AddressOf(memory);
    auto* const start = static_cast<std::byte*>(memory) + before;
    if (AddressOf(start) < end)
        madvise(start, end - AddressOf(start), MADV_DONTNEED);
}

/// Blocks side by side in regions of address space, so that those smaller than a huge page, and the
/// ends of others, stand on huge pages too. A place is given out once: a freed block's pages go back
/// to the system at once, its address space does with the last block of its region.
class CHugeRegions {
  public:
    static CHugeRegions& Process() {
        static CHugeRegions regions;
        return regions;
    }

    void* Allocate(std::size_t bytes) {
        const std::size_t place = RoundUp(bytes, kPlaceStep);
        const std::lock_guard lock(m_mutex);
        if (m_newest == nullptr || place > kRegionBytes - m_newest->used) {
            auto* const start = MapHuge(kRegionBytes);
            if (start == nullptr)
                return std::malloc(bytes); // where address space is scarce
            m_newest = new (start) SRegion{m_newest, kPlaceStep, 0};
        }
        void* const memory = reinterpret_cast<std::byte*>(m_newest) + m_newest->used;
        m_newest->used += place;
        ++m_newest->blocks;
        return memory;
    }

    void Free(void* memory, std::size_t bytes) {
        const std::lock_guard lock(m_mutex);
        SRegion** link = &m_newest;
        while (*link != nullptr && AddressOf(memory) - AddressOf(*link) >= kRegionBytes)
            link = &(*link)->next;
        SRegion* const region = *link;
        if (region == nullptr)
            return std::free(memory);
        if (--region->blocks > 0) {
            DropPages(memory, bytes);
            return;
        }
        *link = region->next;
        munmap(region, kRegionBytes);
    }

  private:
    /// Stands at a region's start.
    struct SRegion {
        SRegion* next; ///< an older one
        std::size_t used;
        std::size_t blocks;
    };

    std::mutex m_mutex;
    SRegion* m_newest = nullptr;
};

} // namespace

std::uint64_t PhysicalMemoryBytes() {
    const auto pages = static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES));
    const auto pageBytes = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    std::ifstream membership("/proc/self/cgroup");
    return std::min(pages * pageBytes, ControlGroupLimit(membership, "/sys/fs/cgroup"));
}

void* AllocateLarge(std::size_t bytes) {
    if (bytes > std::numeric_limits<std::size_t>::max() / 2)
        return nullptr;
    if (bytes < kSmallestInRegion)
        return std::malloc(bytes);
    if (bytes <= kLargestInRegion)
        return CHugeRegions::Process().Allocate(bytes);
    return MapHuge(RoundUp(bytes, PageBytes()));
}

void FreeLarge(void* memory, std::size_t bytes) {
    if (bytes < kSmallestInRegion)
        std::free(memory);
    else if (bytes <= kLargestInRegion && memory != nullptr)
        CHugeRegions::Process().Free(memory, bytes);
    else if (memory != nullptr)
        munmap(memory, RoundUp(bytes, PageBytes()));
}

void PoisonMemory([[maybe_unused]] const void* memory, [[maybe_unused]] std::size_t bytes) {
#ifdef TREVOLT_ADDRESS_SANITIZER
    __asan_poison_memory_region(memory, bytes);
#endif
}

void UnpoisonMemory([[maybe_unused]] const void* memory, [[maybe_unused]] std::size_t bytes) {
#ifdef TREVOLT_ADDRESS_SANITIZER
    __asan_unpoison_memory_region(memory, bytes);
#endif
}

void* AllocateZeroPages(std::size_t bytes) {
    void* memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return nullptr;
    madvise(memory, bytes, MADV_NOHUGEPAGE); // a huge page would be zeroed whole
#ifdef TREVOLT_ADDRESS_SANITIZER
    __lsan_register_root_region(memory, bytes); // what these pages point at has not leaked
#endif
    return memory;
}

void FreeZeroPages(void* memory, std::size_t bytes) {
    if (memory == nullptr)
        return;
#ifdef TREVOLT_ADDRESS_SANITIZER
    __lsan_unregister_root_region(memory, bytes);
#endif
    munmap(memory, bytes);
}

} // namespace trevolt
