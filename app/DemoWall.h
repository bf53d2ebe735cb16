// A small wall of made-up cabinets, for trying the program out.
#pragma once

#include <string>

#include "common/StatusCodes.h"

namespace trevolt {

/// Writes a few small cabinets of every file kind into an existing folder; E_COEF_OPENFAILED or
/// another writer's status when one cannot be written. The values are the same at every call:
/// gains that drift over a cabinet, with pixel noise.
Status WriteDemoWall(const std::wstring& folder);

} // namespace trevolt
