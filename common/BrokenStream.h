// Streams that break while they are read: the system cannot give bytes that are there. Statuses tell
// nothing of it, or take it for damage.
#pragma once

#include <istream>

#include "trevolt/TransferReport.h"

namespace trevolt {

/// Notes it in the thread's transfer report when a stream has broken.
inline void NoteIfBroken(const std::istream& stream) {
    if (stream.bad())
        CTransferReport::NoteReadFailed();
}

} // namespace trevolt
