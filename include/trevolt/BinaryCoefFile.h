// The four binary coefficient file kinds, read into and written from a coefficient map.
//
// A reader never resizes the map: what file and map both have is converted, the rest of the map
// keeps what it held. A failed read leaves the map as it was. Statuses of the readers: 0, or 1 from
// the `.9fcoef` one when it took the whole map; E_COEF_INVALIDARG for a null path;
// E_COEF_OPENFAILED; E_COEF_BADFORMAT for another magic, a version above 1 or a short header; E_FAIL
// for a damaged body or one that does not match the header; E_OUTOFMEMORY.
//
// A writer's statuses: 0; E_COEF_INVALIDARG for a null path or an empty map, no file is touched;
// E_COEF_OPENFAILED; E_FAIL when the body gets no memory or the stream fails. A failed write may
// leave a partial file.
//
// On a stream, which is in binary mode and stays the caller's:
// - A reader takes the bytes from the stream's position to its end as the file. A body is as long as
//   what follows the header, so the stream must be seekable: E_FAIL, where it cannot tell its end.
//   After a success it stands at its end; after a failure its position and state are left open. One
//   that had failed before reads as a file without bytes. A size query takes the header's 24 bytes
//   alone, seeks nothing and stops behind them.
// - A writer puts the file at the stream's position, seeks nothing and stops behind it, or, with
//   E_FAIL, at the first write that fails. What fails stays in the stream's state, and the thread's
//   transfer report does not hear of it. Flushing and closing, which may fail too, are the caller's.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// The matrix as 9 float32. A pixel's trailing values take the first three values of the stored
/// element that follows it in the body, and 0, 1, 0 where none follows in the same block of 2^18
/// elements. When file and map have the same size the result is 1, else 0.
Status Read9fCoefFile(CChromaCorrectCoef& map, const wchar_t* path);
Status Read9fCoefFile(CChromaCorrectCoef& map, std::istream& stream);

/// The matrix diagonal as 3 float32; the other six entries become 0, the trailing values stay.
Status Read3fCoefFile(CChromaCorrectCoef& map, const wchar_t* path);
Status Read3fCoefFile(CChromaCorrectCoef& map, std::istream& stream);

/// The matrix as 9 bytes, value ÷ 255; the trailing values stay.
Status Read9bCoefFile(CChromaCorrectCoef& map, const wchar_t* path);
Status Read9bCoefFile(CChromaCorrectCoef& map, std::istream& stream);

/// The matrix diagonal as 3 bytes, value ÷ 255; the other six entries become 0, the trailing values
/// stay.
Status Read3bCoefFile(CChromaCorrectCoef& map, const wchar_t* path);
Status Read3bCoefFile(CChromaCorrectCoef& map, std::istream& stream);

/// Writes m[0..8] bit for bit. `preparedGrid` may be null; else it holds 9-float elements in the
/// map's shape and is the body as it stands, and the result is 0 whatever became of it; of a stream
/// its state tells that. The map's own body is asked for all the same: E_FAIL when that gets no
/// memory.
Status Write9fCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                       const CMassiveGrid* preparedGrid);
Status Write9fCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                       const CMassiveGrid* preparedGrid);

/// Writes m[0], m[4], m[8]. `preparedGrid` (may be null) holds 9-float elements in the map's shape,
/// which are converted in place of the map's.
Status Write3fCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                       const CMassiveGrid* preparedGrid);
Status Write3fCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                       const CMassiveGrid* preparedGrid);

/// Writes the matrix as bytes, the low 8 bits of roundf(value × 255). `preparedGrid` as above. Also
/// E_FAIL for a map whose colour grid has no storage.
Status Write9bCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                       const CMassiveGrid* preparedGrid);
Status Write9bCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                       const CMassiveGrid* preparedGrid);

/// Writes the diagonal as bytes. `preparedGrid` as above.
Status Write3bCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                       const CMassiveGrid* preparedGrid);
Status Write3bCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                       const CMassiveGrid* preparedGrid);

/// A file's size in pixels from its header; E_COEF_INVALIDARG, E_COEF_OPENFAILED or
/// E_COEF_BADFORMAT as the readers, the outputs then unchanged.
Status Read9fCoefSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height);
Status Read9fCoefSize(std::istream& stream, std::uint32_t& width, std::uint32_t& height);
Status Read3fCoefSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height);
Status Read3fCoefSize(std::istream& stream, std::uint32_t& width, std::uint32_t& height);
Status Read9bCoefSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height);
Status Read9bCoefSize(std::istream& stream, std::uint32_t& width, std::uint32_t& height);
Status Read3bCoefSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height);
Status Read3bCoefSize(std::istream& stream, std::uint32_t& width, std::uint32_t& height);

} // namespace trevolt
