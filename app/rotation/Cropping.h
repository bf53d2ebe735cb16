// Pieces of a map written as files of their own: one rectangle, or all cabinets of a screen.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/rotation/Composition.h"
#include "trevolt/PixelRect.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

struct SCropPiece {
    std::wstring name; ///< below the target folder, which tells the piece's kind
    SPixelRect rect;
    std::uint32_t code = 0; ///< of `kAngles`, by which it is turned, or 0 for no turn
    std::string origin{};   ///< the table and its line, before what forbids it; may be empty
};

/// The pieces of a screen that files were or would be put into, each turned back.
struct SScreenPieces {
    std::vector<SCropPiece> pieces;
    std::vector<std::string> problems; ///< of files without a size, in plain words
};

/// With the sizes of the files themselves, which are looked at, or with `cabinet` for each of them.
SScreenPieces PiecesOfScreen(const std::vector<SPlacedFile>& files,
                             const std::optional<PixelSize>& cabinet);

struct SCropRequest {
    std::wstring input;
    std::wstring targetFolder; ///< empty for the current one
    /// Whether the target folder, and folders in names of pieces, are made where they are missing.
    bool makesFolders = false;
    std::vector<SCropPiece> pieces;
    /// Files that stay as they are beside the input, whatever `replaces` says.
    std::vector<std::wstring> kept;
    bool lenient = false;  ///< of a damaged input what could be read is taken
    bool replaces = false; ///< files of the pieces' names; else a piece whose name is taken fails
    bool sync = true;      ///< what is told as written has reached the disk
};

struct SPieceOutcome {
    std::string name; ///< UTF-8, as it is told
    PixelSize size;   ///< of the file, after the turn
    bool isWritten = false;
    std::vector<std::string> losses; ///< of the piece, which its kind does not hold
    std::string problem;             ///< why it is not written, in plain words
};

struct SCropping {
    ECompositionEnd end = ECompositionEnd::Done;
    std::string input;                 ///< UTF-8, as it is told
    PixelSize size;                    ///< of the input, 0 × 0 when not known
    std::vector<std::string> problems; ///< of the input, in plain words
    std::vector<std::string> notes;    ///< what is unusual of it and no problem
    std::vector<std::string> losses;   ///< what it holds and the pieces lack
    std::vector<SPieceOutcome> pieces; ///< those of the request, in its order
    std::vector<std::string> errors;   ///< what forbids it besides
    bool isMemoryRefused = false;      ///< for the pieces that are not written; the others stand
};

/// Reads a file of any kind and writes pieces of it, each of the kind that its name tells. Nothing is
/// written when a piece does not lie in the map, or when the input is damaged, unless the request
/// allows that. Gives up the pieces that are not written once `interrupted`. Throws std::bad_alloc before
/// it writes; memory that is refused while it does ends it.
SCropping CropFile(const SCropRequest& request, const std::atomic<bool>& interrupted);

} // namespace trevolt
