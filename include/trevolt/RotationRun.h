// The turn of files and of folders of them, as the command line does it: with the same table of kinds,
// readers, turn and writers as the dialog, but with memory for the files in work only, with every
// failure named, and without a half-written file under a final name.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
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

/// What to do where an output stands already.
enum class EExistingOutput {
    Refuse,  ///< the file fails
    Replace, ///< in one step, when the new one is whole
    Skip     ///< the file is not turned, and that is no failure
};

/// How one file of a wall is mounted.
struct SFileAngle {
    std::wstring name;      ///< as the run tells it; "*" stands for all files without a row
    std::uint32_t code = 0; ///< of `kAngles`, or 0 for a copy
    std::size_t line = 0;   ///< of the table that it is from, 0 without one
};

/// Part `number` (from 1) of `count` of a run that several machines share.
struct SShard {
    std::size_t number = 1;
    std::size_t count = 1;
};

/// A small picture of a map.
struct SThumbnail {
    std::string png; ///< the bytes of a PNG file; empty for none
    // How large it is to be shown, in pixels of the screen.
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::string range;  ///< the values that its colours reach over, in plain words
    std::string lack{}; ///< why there is none of a map with pixels, in plain words
};

struct SRotationRequest {
    /// Coefficient files, and folders of them, in any mixture.
    std::vector<std::wstring> sources;
    /// Also the folders in the source folders; the target folder gets the same ones.
    bool recursive = false;
    /// Made when missing.
    std::wstring targetFolder;
    SAngle angle = kAngles[0];
    /// In place of `angle`, when not empty: every file has a row, or the row "*" is there, and every
    /// other row has its file.
    std::vector<SFileAngle> angles;
    /// The table that they are from, as it is told; may be empty.
    std::wstring angleTable;
    /// Stands in names of outputs in place of the angle's text.
    std::optional<std::wstring> suffix;
    EExistingOutput existing = EExistingOutput::Refuse;
    /// The size of every map; without it each file is turned at its own.
    std::optional<PixelSize> size;
    /// Exactly one known file is expected, else nothing is written.
    bool wholeScreen = false;
    /// A file that does not load whole is still written from what its map holds, as the dialog does
    /// it.
    bool lenient = false;
    /// Outputs of word files get the extra words, the owner's name and flag, and the origin of their
    /// sources too. Without it they lack them, and the outcome says so.
    bool keepExtras = false;
    /// The size of the wall in whose pixels a kept origin is turned; without it the origin stays.
    std::optional<PixelSize> wall;
    /// Outputs get the time at which their sources were last written.
    bool keepTimes = false;
    /// Each output is read back from the disk and compared before it gets its name.
    bool verify = false;
    /// Files are read as they would be turned, and nothing is written.
    bool dryRun = false;
    /// Outcomes tell the SHA-256 sums of what was turned and of what was written. A file that changes
    /// while it is turned then fails, too.
    bool sums = false;
    /// The files of one part only, every `count`-th in the order of the run.
    SShard shard;
    /// Threads at most, at least 1: each turns a file, and where there are fewer files they share
    /// one. Files that would not fit the memory budget together are turned one after the other.
    /// What is written and told does not depend on it.
    std::size_t jobs = 1;
    /// A file that does not stand yet, for the SHA-256 sums of what was turned and of what was
    /// written; empty for none. A file that changes while it is turned then fails.
    std::wstring manifest;
    /// Makes the pictures that outcomes have, of the maps as they are read back from source and output;
    /// called on the threads of the run. Nothing fails where it throws std::bad_alloc.
    std::function<SThumbnail(const CChromaCorrectCoef& map)> thumbnail;
    /// The file of a report that the listener writes behind the run, empty for none: the run is refused
    /// where it could not stand. What stands there is replaced as outputs are.
    std::wstring report;
    /// A file past one of them fails before its pixels are read, in a lenient run too.
    SRotationLimits limits;
    /// What the listener hears of has reached the disk: each output before it gets its name, the
    /// target folder before its names are told. Without it a power cut soon after the run may leave
    /// empty files.
    bool sync = true;
};

/// A file that a run takes. Between folders both names have a slash on every system.
struct SPlannedTurn {
    /// With its separator, or empty; shared, since files may be many.
    std::shared_ptr<const std::wstring> sourceFolder;
    std::wstring name;       ///< as the run tells it: below its source folder
    std::wstring outputName; ///< below the target folder
    SAngle angle;            ///< code 0 is a copy
    bool isTaken = false;    ///< something stands under the output's name
    bool isSkipped = false;  ///< it is a file, which the request lets stand

    /// That opens the file.
    std::wstring Path() const { return *sourceFolder + name; }
};

/// What a source folder holds beside that.
struct SPassedOver {
    std::string name;   ///< UTF-8
    std::string reason; ///< in plain words
};

/// What a run is going to do.
struct SRotationPlan {
    std::vector<SPlannedTurn> turns; ///< source by source, each in sorted order
    std::vector<SPassedOver> passedOver;
    /// Files that are meant, and folders to be searched, but their names are not valid UTF-8: as they
    /// are shown, those of folders with a slash at the end.
    std::vector<std::string> unnamable;
    /// Why nothing can be done, each in plain words; empty when the run can begin.
    std::vector<std::string> obstacles;
    bool isListingBroken = false; ///< an obstacle is that a folder could not be listed to its end
};

/// What became of one file.
struct SFileOutcome {
    std::string name;                  ///< as planned, UTF-8
    std::string outputName;            ///< as planned; empty when nothing was written
    std::uint32_t angleCode = 0;       ///< of the turn, 0 for a copy and where none is known
    PixelSize ownSize;                 ///< that the file tells, 0 × 0 when not known
    PixelSize size;                    ///< before the turn, 0 × 0 when not known
    PixelSize turnedSize;              ///< after it
    std::vector<std::string> problems; ///< what went wrong, in plain words; none: all went well
    std::vector<std::string> losses; ///< what the written file lacks of the source, in plain words
    std::vector<std::string>
        notes;                 ///< what is unusual about the source, or was changed, and no problem
    bool skipped = false;      ///< its output stood already, which the request lets stand
    bool interrupted = false;  ///< given up because the run was interrupted
    std::string manifestLines; ///< of a file that was written, when a manifest is wanted
    /// SHA-256 in 64 hex digits, when sums or a manifest are wanted: of the source as far as it was
    /// read, and of what was written. Else empty.
    std::string sourceSum;
    std::string outputSum;
    SThumbnail sourcePicture; ///< where pictures are wanted and the map can be read
    SThumbnail outputPicture; ///< the same of what was written
    /// From the first look at the file until its output was written, waits for memory included.
    std::chrono::microseconds took{0};

    bool HasFailed() const { return !problems.empty(); }
};

enum class ERotationEnd { AllDone, SomeFailed, NothingToDo, Interrupted };

struct SRotationOutcome {
    ERotationEnd end = ERotationEnd::AllDone;
    /// In plain words: with NothingToDo why; with SomeFailed, where a listing broke off and nothing
    /// was turned, what ended it.
    std::vector<std::string> errors;
    std::string manifestError; ///< why the manifest that is wanted does not stand, in plain words
    std::string reportError;   ///< the same of the report, set by its writer
    std::size_t written = 0;
    std::size_t failed = 0;
    std::size_t skipped = 0;
};

/// Hears of the run on the thread that started it.
class CRotationListener {
  public:
    virtual ~CRotationListener() = default;
    /// The run begins to turn; not called when there is nothing to do.
    virtual void OnPlan(const SRotationPlan& plan) { static_cast<void>(plan); }
    /// The next file in the plan's order is finished.
    virtual void OnFile(const SFileOutcome& outcome, std::size_t done, std::size_t count) = 0;
};

/// Looks at sources and target and writes nothing. Refused before anything is written: sources or
/// places that do not exist, source and target the same by any name, two files that would give one
/// output, an output that is one of the sources, files without an angle, angles without a file.
SRotationPlan PlanRotation(const SRotationRequest& request);

/// Turns what is planned into the target folder, in the plan's order. Sources are never written to.
/// When `interrupted` becomes true the files in work are given up and their temporary files removed.
/// What earlier runs that were killed left under work in the target folder is removed. The manifest,
/// if one is wanted, lists each written file behind the one it was turned from, in the same order,
/// also of an interrupted run; where nothing was written there is none. When it cannot be written the
/// end is SomeFailed at best. Throws what the listener throws, and std::bad_alloc when memory is
/// refused for more than one file's work: temporary files are removed then, and what was told stays
/// true.
SRotationOutcome RunRotation(const SRotationRequest& request, const std::atomic<bool>& interrupted,
                             CRotationListener& listener);

} // namespace trevolt
