// CProgressSink: who follows, and may stop, an operation on a map. The operation calls it from the
// thread that it runs on.
#pragma once

#include <cstdint>

#include "trevolt/StatusCodes.h"

namespace trevolt {

/// Two values by which a sink tells operations apart: passed through unchanged.
struct SOperationId {
    std::int32_t first = 0;
    std::int32_t second = 0;
    friend bool operator==(const SOperationId&, const SOperationId&) = default;
};

class CProgressSink {
  public:
    virtual void Begin(SOperationId id) = 0;
    /// `fraction` of the work that is done, from 0 towards 1.
    virtual void Report(SOperationId id, double fraction) = 0;
    /// The operation ends with `status`; nothing follows.
    virtual void End(SOperationId id, Status status) = 0;
    /// Whether the user asked to stop.
    virtual bool IsCancelled(SOperationId id) = 0;

  protected:
    ~CProgressSink() = default; // never owned through this interface
};

/// What a caller says of an operation that it starts.
struct SOperationRecord {
    CProgressSink* sink = nullptr; ///< not owned; null when nobody follows
    SOperationId id;
};

} // namespace trevolt
