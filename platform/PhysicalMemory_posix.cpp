#include "platform/PhysicalMemory.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <limits>

#include <sys/mman.h>
#include <unistd.h>

#include "platform/ControlGroup.h"

#ifdef TREVOLT_ADDRESS_SANITIZER
#include <sanitizer/lsan_interface.h>
#endif

namespace trevolt {
namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;

} // namespace

std::uint64_t PhysicalMemoryBytes() {
    const auto pages = static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES));
    const auto pageBytes = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    std::ifstream membership("/proc/self/cgroup");
    return std::min(pages * pageBytes, ControlGroupLimit(membership, "/sys/fs/cgroup"));
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
