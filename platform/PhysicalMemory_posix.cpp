#include "platform/PhysicalMemory.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <limits>

#include <sys/mman.h>
#include <unistd.h>

#ifdef TREVOLT_ADDRESS_SANITIZER
#include <sanitizer/lsan_interface.h>
#endif

namespace trevolt {
namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;

/// The number in a control-group file; the largest number when there is none ("max", no file).
std::uint64_t GroupLimit(const char* path) {
    std::ifstream file(path);
    std::uint64_t bytes = 0;
    return file >> bytes ? bytes : std::numeric_limits<std::uint64_t>::max();
}

} // namespace

std::uint64_t PhysicalMemoryBytes() {
    const auto pages = static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES));
    const auto pageBytes = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    return std::min({pages * pageBytes, GroupLimit("/sys/fs/cgroup/memory.max"),
                     GroupLimit("/sys/fs/cgroup/memory/memory.limit_in_bytes")});
}

void* AllocateLarge(std::size_t bytes) {
    if (bytes < kHugePage)
        return std::malloc(bytes);
    if (bytes > std::numeric_limits<std::size_t>::max() - kHugePage)
        return nullptr;
    const std::size_t whole = (bytes + kHugePage - 1) / kHugePage * kHugePage;
    void* memory = std::aligned_alloc(kHugePage, whole);
    if (memory != nullptr)
        madvise(memory, whole, MADV_HUGEPAGE); // advice only: without it pages are small
    return memory;
}

void FreeLarge(void* memory) { std::free(memory); }

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
