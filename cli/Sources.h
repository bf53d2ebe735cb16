// The files that a command is given.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "app/rotation/CoefFileSearch.h"
#include "trevolt/RotationRun.h"

namespace trevolt {

/// The paths that the words of a place stand for, wildcards replaced where that is the program's to do.
/// Throws CUsageError, which names the place.
std::vector<std::wstring> ParseSources(const std::string& place,
                                       const std::vector<std::string>& words);

struct SCommandFiles {
    std::vector<SCoefFileName> files; ///< in the order of `rotate`
    /// Names, as they are shown, of files that fail: they are not valid UTF-8.
    std::vector<std::string> unnamable;
    std::vector<std::string> errors;          ///< why nothing can be done; then there are no files
    ERotationEnd end = ERotationEnd::AllDone; ///< that the search alone gives
};

/// Looks for the coefficient files of files and folders.
SCommandFiles FindCommandFiles(const std::vector<std::wstring>& sources, bool recursive);

/// One a processor; 1 where their number is not known.
std::size_t DefaultThreads();

} // namespace trevolt
