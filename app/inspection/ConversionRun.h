// The conversion of files and of folders of them, one after the other, with memory for one map.
#pragma once

#include <atomic>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "app/inspection/CoefConversion.h"
#include "trevolt/FileKinds.h"
#include "trevolt/RotationRun.h"

namespace trevolt {

/// What an output is by the name of its kind.
struct SFormName {
    const SFileKind* kind = nullptr; ///< null for .npy
};

/// The form of "9fcoef", ".9fcoef" or "npy", in any case; nothing for another word.
std::optional<SFormName> FindFormName(std::wstring_view word);

struct SConversionRequest {
    /// Coefficient files, .npy files, and folders of them, in any mixture.
    std::vector<std::wstring> sources;
    /// The output of one file; with `to` the folder of the outputs, made when missing.
    std::wstring output;
    /// What all files become; without it the output's name tells.
    std::optional<SFormName> to;
    /// Arrays of the values that the sources store.
    bool ownElements = false;
    /// Also the folders in the source folders; the target folder gets the same ones.
    bool recursive = false;
    bool replaces = false; ///< outputs that exist; else their files fail
    bool sync = true;      ///< what is told as written has reached the disk
};

/// What became of one file.
struct SConvertedFile {
    std::string name; ///< UTF-8, below its source folder
    std::string path; ///< that opens it; empty where its name is not valid UTF-8
    std::string
        outputName; ///< below the target folder, or the output as given; of a failed file, too
    bool isArray = false; ///< the output is a .npy file
    SConversion conversion;

    bool HasFailed() const { return !conversion.problems.empty(); }
};

struct SConversionOutcome {
    ERotationEnd end = ERotationEnd::AllDone;
    std::vector<std::string> errors; ///< why nothing could be done, or what ended the run
    std::size_t written = 0;
    std::size_t failed = 0;
};

/// Hears of the run on the thread that started it.
class CConversionListener {
  public:
    virtual ~CConversionListener() = default;
    /// The next file is done, or has failed.
    virtual void OnFile(const SConvertedFile& file) = 0;
};

/// Converts what is asked for; the end is that of a turn (`ERotationEnd`). Nothing is written when the
/// request has an obstacle: sources that do not exist, names that tell no kind or another one when
/// they are read than when they are written, two files that would give one output, an output that is a
/// source. The file in work is finished when `interrupted` becomes true, and no other begun. Throws
/// what the listener throws, and std::bad_alloc.
SConversionOutcome RunConversion(const SConversionRequest& request,
                                 const std::atomic<bool>& interrupted,
                                 CConversionListener& listener);

} // namespace trevolt
