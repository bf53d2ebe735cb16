// How much memory this machine or container has, and large allocations that page in cheaply.
#pragma once

#include <cstddef>
#include <cstdint>

namespace trevolt {

/// Bytes of physical memory, or the container's limit where that is smaller.
std::uint64_t PhysicalMemoryBytes();

/// `bytes` of memory, not initialised, or null. Large requests are aligned to and advised for huge
/// pages, so that first use does not fault page by page.
void* AllocateLarge(std::size_t bytes);

/// Gives back what `AllocateLarge` gave; null is ignored.
void FreeLarge(void* memory);

/// `bytes` of zeroed memory, or null. Pages that are never touched cost nothing.
void* AllocateZeroPages(std::size_t bytes);

/// Gives back the `bytes` that `AllocateZeroPages` gave; null is ignored.
void FreeZeroPages(void* memory, std::size_t bytes);

} // namespace trevolt
