// The test program's own operator new, which refuses large allocations when a test asks for it.
#pragma once

#include <cstddef>

namespace trevolt::test {

/// While it lives, what is at least so large is refused, in every thread.
class CAllocationLimit {
  public:
    explicit CAllocationLimit(std::size_t refusedBytes);
    ~CAllocationLimit();
    CAllocationLimit(const CAllocationLimit&) = delete;
    CAllocationLimit& operator=(const CAllocationLimit&) = delete;
};

} // namespace trevolt::test
