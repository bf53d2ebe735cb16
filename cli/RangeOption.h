// The option of a picture's scale, as the commands share it.
#pragma once

#include <optional>

#include "app/inspection/CellPainter.h"
#include "cli/OptionGroup.h"

namespace trevolt {

/// Adds --range, which it returns.
COption AddRange(COptionGroup& group, std::optional<SValueRange>& range);

} // namespace trevolt
