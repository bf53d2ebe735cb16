// The test program's own operator new, which refuses large allocations when a test asks for it, or
// lets something happen at one.
#pragma once

#include <cstddef>
#include <functional>

namespace trevolt::test {

/// While it lives, what is at least so large is refused, in every thread.
class CAllocationLimit {
  public:
    explicit CAllocationLimit(std::size_t refusedBytes);
    ~CAllocationLimit();
    CAllocationLimit(const CAllocationLimit&) = delete;
    CAllocationLimit& operator=(const CAllocationLimit&) = delete;
};

/// While it lives, `event` happens at the first allocation of at least that size, once.
class CAllocationEvent {
  public:
    CAllocationEvent(std::size_t bytes, std::function<void()> event);
    ~CAllocationEvent();
    CAllocationEvent(const CAllocationEvent&) = delete;
    CAllocationEvent& operator=(const CAllocationEvent&) = delete;

    /// Whether it has happened.
    bool IsOver() const;
};

} // namespace trevolt::test
