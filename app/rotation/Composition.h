// A screen's map from the files of its cabinets, each turned as it is mounted.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/rotation/OutputFile.h"
#include "trevolt/PixelRect.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

/// A cabinet's file in a screen.
struct SPlacedFile {
    std::wstring path;
    std::wstring name;      ///< as it is told
    PixelPosition place;    ///< in the screen, of its left top after the turn
    std::uint32_t code = 0; ///< of `kAngles`, or 0 for no turn
    std::string origin{};   ///< the table and its line, to be told before its place; may be empty
};

/// The files of a layout table, in its order.
struct SLayoutFiles {
    std::vector<SPlacedFile> files;
    std::vector<std::string> problems; ///< of the table, in plain words and with their lines
};

/// Reads a layout table, whose names are below `folder`, or below its own folder where that is empty.
SLayoutFiles ReadLayoutFiles(const std::wstring& table, const std::wstring& folder);

struct SCompositionRequest {
    std::vector<SPlacedFile> files;
    /// Of the screen; without it the smallest that holds every file.
    std::optional<PixelSize> size = {};
    bool allowOverlap = false; ///< of several files' pixels the last one's stay
    bool allowOutside = false; ///< pixels outside the screen are cut
    /// Of a damaged file what could be read is taken, the rest stays default.
    bool lenient = false;
    /// Of the kind that its name tells.
    SOutputFile output;
};

/// What became of one file.
struct SPlacedOutcome {
    std::string name;  ///< UTF-8, as it is told
    PixelSize ownSize; ///< before its turn, 0 × 0 when not known
    SPixelRect rect;   ///< in the screen, also where that does not reach; empty when not known
    std::vector<std::string> problems; ///< in plain words; none: it is in the screen whole
    std::vector<std::string> notes;    ///< what is unusual and no problem
    std::vector<std::string> losses;   ///< what the screen lacks of it
    bool isOutside = false;            ///< none of its pixels is in the screen
    std::uint64_t cut = 0;             ///< its pixels outside the screen
    std::uint64_t overwritten = 0;     ///< its pixels in the screen that later files lie on
};

/// A file's size, which is looked at unless it is given as `size`, and its rectangle. A name that tells
/// no kind is a problem, too.
SPlacedOutcome MeasurePlaced(const SPlacedFile& file,
                             const std::optional<PixelSize>& size = std::nullopt);

enum class ECompositionEnd {
    Done,
    SomeFailed,  ///< a file is damaged, or the output cannot be written
    Refused,     ///< files that cannot lie so; nothing was read but their sizes
    Interrupted, ///< nothing was written
};

struct SComposition {
    ECompositionEnd end = ECompositionEnd::Done;
    std::string output;                ///< UTF-8, as it is told
    PixelSize size;                    ///< of the screen, 0 × 0 when not known
    std::uint64_t uncovered = 0;       ///< its pixels in no file, which are default
    std::vector<SPlacedOutcome> files; ///< those of the request, in its order
    std::vector<std::string> errors;   ///< what forbids it but the files' own problems
    std::vector<std::string> losses;   ///< of the screen, which its kind does not hold
    bool isWritten = false;            ///< also of a lenient run in which some failed
};

/// Puts files of any kinds into one map and writes it. Nothing is written when files overlap, reach
/// out of the screen, or are damaged, unless the request allows it. Memory is taken for the screen
/// and one file at a time. Given up once `interrupted`. Throws std::bad_alloc.
SComposition ComposeScreen(const SCompositionRequest& request,
                           const std::atomic<bool>& interrupted);

} // namespace trevolt
