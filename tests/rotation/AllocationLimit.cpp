#include "tests/rotation/AllocationLimit.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> g_refusedBytes{SIZE_MAX};

} // namespace

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return bytes < g_refusedBytes ? std::malloc(bytes == 0 ? 1 : bytes) : nullptr;
}
void* operator new(std::size_t bytes) {
    void* const memory = ::operator new(bytes, std::nothrow);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
// Those of arrays too: a sanitizer's own do not come here.
void* operator new[](std::size_t bytes) { return ::operator new(bytes); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace trevolt::test {

CAllocationLimit::CAllocationLimit(std::size_t refusedBytes) { g_refusedBytes = refusedBytes; }

CAllocationLimit::~CAllocationLimit() { g_refusedBytes = SIZE_MAX; }

} // namespace trevolt::test
