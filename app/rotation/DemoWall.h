// A small wall of made-up cabinets, for trying the program out.
#pragma once

#include <string>

#include "trevolt/StatusCodes.h"

namespace trevolt {

/// Writes one small cabinet of every file kind into an existing folder. The status of the first
/// writer that fails, those before it written; what that status hides is in the thread's transfer
/// report. The values are the same at every call: gains that drift over a cabinet, with pixel noise.
Status WriteDemoWall(const std::wstring& folder);

} // namespace trevolt
