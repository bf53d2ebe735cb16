// The files that a command is given.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "app/rotation/CoefFileSearch.h"

namespace trevolt {

/// The paths that the words of a place stand for, wildcards replaced where that is the program's to do.
/// Throws CLI::ValidationError, which names the place.
std::vector<std::wstring> ParseSources(const std::string& place,
                                       const std::vector<std::string>& words);

struct SCommandFiles {
    std::vector<SCoefFileName> files; ///< in the order of `rotate`
    int exitStatus = 0; ///< that the search alone gives; none is taken unless it is 0 or 1
};

/// Looks for the coefficient files of files and folders, and complains of what stands in the way.
SCommandFiles FindCommandFiles(const std::vector<std::wstring>& sources, bool recursive);

/// One a processor; 1 where their number is not known.
std::size_t DefaultThreads();

} // namespace trevolt
