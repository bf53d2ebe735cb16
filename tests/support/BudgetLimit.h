// Scarce memory for tests.
#pragma once

#include <cstdint>

#include "trevolt/MemoryBudget.h"

namespace trevolt::test {

/// Holds the process's memory budget at `limit`, until the holder goes.
class CBudgetLimit {
  public:
    explicit CBudgetLimit(std::uint64_t limit) : m_before(CMemoryBudget::Process().Limit()) {
        CMemoryBudget::Process().SetLimit(limit);
    }
    ~CBudgetLimit() { CMemoryBudget::Process().SetLimit(m_before); }
    CBudgetLimit(const CBudgetLimit&) = delete;
    CBudgetLimit& operator=(const CBudgetLimit&) = delete;

  private:
    std::uint64_t m_before;
};

} // namespace trevolt::test
