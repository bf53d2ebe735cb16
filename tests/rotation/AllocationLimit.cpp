#include "tests/rotation/AllocationLimit.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

std::atomic<std::size_t> g_refusedBytes{SIZE_MAX};
std::atomic<std::size_t> g_eventBytes{SIZE_MAX};
std::function<void()> g_event;

/// Whether this allocation is the one that the event waits for.
bool TakeEvent(std::size_t bytes) {
    std::size_t waitsFor = g_eventBytes;
    return bytes >= waitsFor && g_eventBytes.compare_exchange_strong(waitsFor, SIZE_MAX);
}

} // namespace

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    if (TakeEvent(bytes))
        g_event();
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

CAllocationEvent::CAllocationEvent(std::size_t bytes, std::function<void()> event) {
    g_event = std::move(event);
    g_eventBytes = bytes;
}

CAllocationEvent::~CAllocationEvent() {
    g_eventBytes = SIZE_MAX;
    g_event = nullptr;
}

bool CAllocationEvent::IsOver() const { return g_eventBytes == SIZE_MAX; }

} // namespace trevolt::test
