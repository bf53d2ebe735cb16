// Text coefficient files (".cccoef"): a tag line, in the newest dialect the map's size, then one
// line per pixel that differs from the default element. docs/formats/text.md tells their grammar.
//
// On a stream, which is in binary mode on every system and stays the caller's:
// - A reader takes the bytes from the stream's position to its end as the file, and seeks nothing. It
//   reads ahead, 2^18 bytes at a time: where the stream stands afterwards is left open, and as a rule
//   it is at its end with its fail bit set. A piece that cannot be read whole for another reason ends
//   the file before it, and the stream's bad bit and the thread's transfer report tell.
// - The writer puts the file at the stream's position, seeks nothing and stops behind it. It answers
//   0 whatever becomes of the bytes: what fails stays in the stream's state, and the thread's
//   transfer report does not hear of it. Flushing and closing are the caller's.
//
// Different maps, files and streams may be used by different threads at once.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// Writes `map` in the newest dialect: "[T9COEF20]", its size, and the pixels, row by row, whose
/// element is not byte for byte the map's default. The pixels come from `preparedGrid` when it is
/// not null; it must hold as many `SMatrixCoef` in width and height as the map has pixels. A map
/// without pixels or without storage gives the three header lines.
/// E_COEF_INVALIDARG for a null path or a prepared grid of another shape, E_COEF_OPENFAILED when
/// the file does not open, else 0; a file's failed write is noted in the thread's transfer report.
Status WriteTextCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                         const CMassiveGrid* preparedGrid);
Status WriteTextCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                         const CMassiveGrid* preparedGrid);

/// Reads any dialect into `map`, which keeps its size: every pixel becomes the default, then the
/// pixels that the file names are stored, cleaned by `SanitizeMatrix`, at their coordinates plus
/// the offsets. Pixels outside the map are ignored. With `diagonalOnly` the values off the diagonal
/// are stored as 0.
/// `width` and `height` are set from the size lines of "[T9COEF20]"; in the older dialects they are
/// raised to the largest x + 1 and y + 1, without the offsets, so a caller sets them to 0 first.
/// E_COEF_INVALIDARG for a null path or a negative offset, E_COEF_OPENFAILED, E_COEF_BADTEXT for an
/// empty first line or an unknown tag: map and sizes are then as they were. Lines that are no data
/// are no failure: what does not convert keeps the previous line's values. The thread's transfer
/// report hears of them and of the other lines that are not what their dialect says, and how many
/// pixels the cleaning changed; meanwhile a bit is held for each pixel of the map.
Status ReadTextCoefFile(CChromaCorrectCoef& map, const wchar_t* path, std::int32_t xOffset,
                        std::int32_t yOffset, std::uint32_t& width, std::uint32_t& height,
                        bool diagonalOnly);
Status ReadTextCoefFile(CChromaCorrectCoef& map, std::istream& stream, std::int32_t xOffset,
                        std::int32_t yOffset, std::uint32_t& width, std::uint32_t& height,
                        bool diagonalOnly);

/// Sets or raises `width` and `height` as `ReadTextCoefFile` does, with the same statuses, and
/// stores nothing.
Status ProbeTextCoefFileSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height);
Status ProbeTextCoefFileSize(std::istream& stream, std::uint32_t& width, std::uint32_t& height);

/// The extent of a file of data lines without a tag, up to its first empty line: `largestY` becomes
/// the largest second field and `largestX` the largest first field, neither with 1 added, at least
/// 0. The crossed order is the interface's own. A line that does not convert counts as the one
/// before it. E_COEF_INVALIDARG for a null path, E_COEF_OPENFAILED, with the outputs as they were.
Status ProbeCoefDataExtent(const wchar_t* path, std::uint32_t& largestY, std::uint32_t& largestX);
Status ProbeCoefDataExtent(std::istream& stream, std::uint32_t& largestY, std::uint32_t& largestX);

} // namespace trevolt
