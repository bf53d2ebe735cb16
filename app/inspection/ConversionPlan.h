// What a conversion is going to do, as far as names tell.
#pragma once

#include <string>
#include <vector>

#include "app/inspection/ConversionRun.h"

namespace trevolt {

struct SPlannedConversion {
    std::wstring path;       ///< opens the source
    std::wstring name;       ///< below its source folder
    std::wstring outputName; ///< below the target folder, or the output as given
    SConversionTarget target;
};

struct SConversionPlan {
    std::vector<SPlannedConversion> files;
    /// Files that are meant, but their names are not valid UTF-8: as they are shown.
    std::vector<std::string> unnamable;
    std::vector<std::string> obstacles; ///< why nothing can be done, in plain words
    bool isListingBroken = false; ///< an obstacle is that a folder could not be listed to its end
};

/// Looks at sources and target and writes nothing.
SConversionPlan PlanConversion(const SConversionRequest& request);

} // namespace trevolt
