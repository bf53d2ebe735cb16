// The turn of a folder file by file, as the command line does it: with the same table of kinds,
// readers, turn and writers as the dialog, but with memory for the files in work only, with every
// failure named, and without a half-written file under a final name.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/CoefRotation.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

/// What a file may have at most, beside what its kind and the memory budget allow.
struct SRotationLimits {
    /// Of a file's own size and of the size of its map, in pixels.
    PixelSize largestSize{kLargestMapSide, kLargestMapSide};
    std::uint64_t fileBytes = UINT64_MAX;
};

struct SRotationRequest {
    std::wstring sourceFolder;
    std::wstring targetFolder;
    SAngle angle = kAngles[0];
    /// The size of every map; without it each file is turned at its own.
    std::optional<PixelSize> size;
    /// Exactly one known file is expected, else nothing is written.
    bool wholeScreen = false;
    /// A file that does not load whole is still written from what its map holds, as the dialog does
    /// it.
    bool lenient = false;
    /// Threads at most, at least 1: each turns a file, and where there are fewer files they share
    /// one. Files that would not fit the memory budget together are turned one after the other.
    /// What is written and told does not depend on it.
    std::size_t jobs = 1;
    /// A file that does not stand yet, for the SHA-256 sums of what was turned and of what was
    /// written; empty for none. A file that changes while it is turned then fails.
    std::wstring manifest;
    /// A file past one of them fails before its pixels are read, in a lenient run too.
    SRotationLimits limits;
    /// What the listener hears of has reached the disk: each output before it gets its name, the
    /// target folder before its names are told. Without it a power cut soon after the run may leave
    /// empty files.
    bool sync = true;
};

/// What became of one file.
struct SFileOutcome {
    std::string name;                  ///< as found, UTF-8
    std::string outputName;            ///< empty when nothing was written
    PixelSize size;                    ///< before the turn, 0 × 0 when not known
    PixelSize turnedSize;              ///< after it
    std::vector<std::string> problems; ///< what went wrong, in plain words; none: all went well
    std::vector<std::string> losses; ///< what the written file lacks of the source, in plain words
    std::vector<std::string>
        notes;                 ///< what is unusual about the source, or was changed, and no problem
    bool interrupted = false;  ///< given up because the run was interrupted
    std::string manifestLines; ///< of a file that was written, when a manifest is wanted

    bool HasFailed() const { return !problems.empty(); }
};

enum class ERotationEnd { AllDone, SomeFailed, NothingToDo, Interrupted };

struct SRotationOutcome {
    ERotationEnd end = ERotationEnd::AllDone;
    /// In plain words: with NothingToDo why; with SomeFailed, where the listing of the source folder
    /// broke off and nothing was turned, what ended it.
    std::string error;
    std::string manifestError; ///< why the manifest that is wanted does not stand, in plain words
    std::size_t written = 0;
    std::size_t failed = 0;
};

/// Hears of the run on the thread that started it.
class CRotationListener {
  public:
    virtual ~CRotationListener() = default;
    /// The next file in sorted order is finished.
    virtual void OnFile(const SFileOutcome& outcome, std::size_t done, std::size_t count) = 0;
};

/// Turns every known file of the source folder into the target folder, in sorted order. The source
/// is never written to: both folders must exist and differ. When `interrupted` becomes true the
/// files in work are given up and their temporary files removed. What earlier runs that were killed
/// left under work in the target folder is removed. The manifest, if one is wanted, lists each written
/// file behind the one it was turned from, in the same order, also of an interrupted run; where
/// nothing was written there is none. When it cannot be written the end is SomeFailed at best. Throws
/// what the listener throws, and std::bad_alloc when memory is refused for more than one file's work:
/// temporary files are removed then, and what was told stays true.
SRotationOutcome RotateFolder(const SRotationRequest& request, const std::atomic<bool>& interrupted,
                              CRotationListener& listener);

} // namespace trevolt
