// What a conversion is going to do, as far as names tell.
#pragma once

#include <string>
#include <vector>

#include "app/inspection/ConversionRun.h"

namespace trevolt {

struct SPlannedConversion {
    std::wstring path;       ///< opens the source
    std::wstring name;       ///< as the run tells it
    std::wstring outputName; ///< below the target folder, or the output as given
    SConversionTarget target;
};

struct SConversionPlan {
    std::vector<SPlannedConversion> files;
    std::vector<std::string>
        unnamable; ///< files that are meant, but their names are not valid UTF-8
    std::vector<std::string> obstacles; ///< why nothing can be done, in plain words
    bool isListingBroken = false; ///< an obstacle is that a folder could not be listed to its end
};

/// Looks at sources and target and writes nothing.
SConversionPlan PlanConversion(const SConversionRequest& request);

} // namespace trevolt
