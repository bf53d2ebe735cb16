// Pictures of coefficient files: what the command preview does.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/inspection/MapPicture.h"
#include "app/rotation/CoefFileSearch.h"
#include "app/rotation/OutputFile.h"

namespace trevolt {

struct SPreviewGrid {
    int columns = 1;
    int rows = 1;
};

/// A larger grid has no place for its names, nor for much of its cabinets.
inline constexpr int kMostGridSide = 500;

struct SPreviewRequest {
    std::vector<SCoefFileName> files; ///< shown in the natural order of their paths; not empty
    std::string title;                ///< of several files
    SOutputFile output;
    SMapPictureStyle style;
    std::uint32_t turnCode = 0; ///< of a single file, 0 for none
    /// Of the wall that several files are; without one they make a grid that is about square.
    std::optional<SPreviewGrid> grid;
    std::size_t unnamable = 0; ///< further files of the wall, which cannot be opened by their names
};

/// What became of one file.
struct SPreviewedFile {
    std::string name;
    std::string path;                  ///< that opens it; empty where its name is not valid UTF-8
    std::string kind;                  ///< as "9fcoef", empty when its name tells none
    PixelSize size;                    ///< 0 × 0 when it tells none
    std::vector<std::string> problems; ///< none: the picture shows it
    std::vector<std::string> notes;
    std::optional<SValueRange> found; ///< smallest and largest value that the picture shows of it
    std::uint64_t notFinite = 0;      ///< pixels with an infinite value or no number
};

class CPreviewListener {
  public:
    virtual ~CPreviewListener() = default;
    /// A file was looked at; called in the order of the picture.
    virtual void OnFile(const SPreviewedFile& file) = 0;
};

enum class EPreviewEnd {
    Written,
    SomeFailed,
    Misused, ///< the files and what is wanted of them do not go together; nothing was done
    Interrupted
};

struct SPreviewOutcome {
    EPreviewEnd end = EPreviewEnd::Misused;
    std::vector<std::string> errors;      ///< beside those of files, in plain words
    std::optional<SPaintedValues> values; ///< that the picture shows; nothing when none was written
    PixelSize size;                       ///< of the picture
    SPreviewGrid grid;
    std::size_t shown = 0; ///< files in the picture
    std::size_t failed = 0;
};

/// Makes the picture. A single file that is damaged gives none; of several the others are shown, and
/// the damaged one's place is crossed out. One file is in memory at a time. Gives up between files
/// and before it writes once `interrupted`: there is no picture then. Throws std::bad_alloc.
SPreviewOutcome RunPreview(const SPreviewRequest& request, const std::atomic<bool>& interrupted,
                           CPreviewListener& listener);

} // namespace trevolt
