#include "platform/PhysicalMemory.h"

#include <cstdlib>

#include <windows.h>

namespace trevolt {

std::uint64_t PhysicalMemoryBytes() {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    return GlobalMemoryStatusEx(&status) != 0 ? status.ullTotalPhys : 0;
}

void* AllocateLarge(std::size_t bytes) { return std::malloc(bytes); }

void FreeLarge(void* memory, std::size_t /*bytes*/) { std::free(memory); }

void PoisonMemory(const void* /*memory*/, std::size_t /*bytes*/) {}

void UnpoisonMemory(const void* /*memory*/, std::size_t /*bytes*/) {}

void* AllocateZeroPages(std::size_t bytes) {
    return VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void FreeZeroPages(void* memory, std::size_t /*bytes*/) {
    if (memory != nullptr)
        VirtualFree(memory, 0, MEM_RELEASE);
}

} // namespace trevolt
