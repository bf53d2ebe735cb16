// The coefficient files that are meant by files and folders of a command.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "trevolt/RotationRun.h"

namespace trevolt {

/// Whether the name tells a known kind.
bool IsCoefFileName(std::wstring_view name);

/// Why a file that is named as a source is none, to be told behind its name.
inline constexpr const char* kForeignSource =
    "is no coefficient file by its name: give one with one of the nine extensions";

/// That the system does not tell what stands at a source's path, by the `errno` value of the reason.
std::string DescribeHiddenSource(const std::wstring& path, int error);

inline constexpr wchar_t kFolderSlash = L'/'; ///< in names that are told, on every system

/// Why a file or folder of `SCoefFiles::unnamable` fails.
const char* DescribeUnnamable(std::string_view name);

struct SCoefFileSearch {
    /// Coefficient files, and folders of them, in any mixture.
    std::vector<std::wstring> sources;
    /// Also the folders in the source folders, but for links.
    bool recursive = false;
    /// A folder that outputs go into, or empty: it is no source, and is passed over below one.
    std::wstring targetFolder = {};
    /// Whether a file of this name is meant.
    bool (*takes)(std::wstring_view name) = IsCoefFileName;
};

struct SCoefFileName {
    /// With its separator, or empty; shared, since files may be many.
    std::shared_ptr<const std::wstring> folder;
    std::wstring name; ///< below the folder

    /// That opens the file.
    std::wstring Path() const { return *folder + name; }
};

struct SCoefFiles {
    std::vector<SCoefFileName> files; ///< source by source, each in sorted order
    std::vector<SPassedOver> passedOver;
    /// Files that are meant, and folders to be searched, but their names are not valid UTF-8: as they
    /// are shown, those of folders with a slash at the end.
    std::vector<std::string> unnamable;
    std::vector<std::string> obstacles; ///< why the sources cannot be taken, in plain words
    bool isListingBroken = false; ///< an obstacle is that a folder could not be listed to its end
};

/// Looks for the files whose names are taken, and opens none.
SCoefFiles FindCoefFiles(const SCoefFileSearch& request);

} // namespace trevolt
