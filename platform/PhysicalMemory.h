// How much memory this machine or container has, and large allocations that page in cheaply.
#pragma once

#include <cstddef>
#include <cstdint>

namespace trevolt {

/// Bytes of physical memory, or the container's limit where that is smaller.
std::uint64_t PhysicalMemoryBytes();

/// `bytes` (at least 1) of memory, not initialised, or null. All but small requests stand on huge
/// pages where the system has them, so that first use does not fault page by page.
void* AllocateLarge(std::size_t bytes);

/// Gives back the `bytes` that `AllocateLarge` gave; null is ignored.
void FreeLarge(void* memory, std::size_t bytes);

/// Lets a sanitizer report every access to these bytes, until they are unpoisoned. For memory that
/// somebody holds and nobody may use.
void PoisonMemory(const void* memory, std::size_t bytes);
void UnpoisonMemory(const void* memory, std::size_t bytes);

/// `bytes` of zeroed memory, or null. Pages that are never touched cost nothing.
void* AllocateZeroPages(std::size_t bytes);

/// Gives back the `bytes` that `AllocateZeroPages` gave; null is ignored.
void FreeZeroPages(void* memory, std::size_t bytes);

} // namespace trevolt
