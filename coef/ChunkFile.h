// Word files: what the kinds share in writing, recognising and reading them. The layout is told in
// docs/formats/chunk.md.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>

#include "calibuf/CaliBuf.h"
#include "calibuf/ChunkLayout.h"
#include "coef/WordFileSource.h"
#include "coef/WordKind.h"
#include "trevolt/PixelRect.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// What an object adds to its files' headers.
struct SOwnerFields {
    std::uint8_t fileKind = 0;
    const std::byte* name = nullptr;    ///< 16 bytes, or null: then the flag is left out too
    const std::uint8_t* flag = nullptr; ///< null counts as 0
};

/// One band of a larger file, and the state that goes from band to band.
struct SBandPlace {
    const SPixelRect& whole;
    std::uint64_t& directoryPosition;
    std::uint64_t& dataPosition;
    std::uint32_t offset; ///< the band's first row in the whole
};

/// Blocks of the grid that a rectangle touches, allocated or not, as slot 4 counts them.
std::uint32_t RectBlockCount(const SPixelRect& rect);

/// The header of a file of `rect`.
SChunkHeader MakeChunkHeader(const ChunkFormatId& formatId, const SPixelRect& rect,
                             const SOwnerFields& owner);

// What a writer's status does not tell of lost chunks is noted in the thread's transfer report.

/// Writes `rect` as a whole file. E_POINTER for a null path or store; the kind's answer when the
/// file does not open; else S_OK, whatever became of the chunks.
Status WriteRectFile(const SWordKind& kind, const CCaliBuf* store, const wchar_t* path,
                     const SPixelRect& rect, const SOwnerFields& owner);

/// Writes one band; the band with offset 0 creates the file. E_POINTER and open failures as above;
/// S_OK for a band without rows; E_COEF_INVALIDARG for an offset past what a shift can be; else the
/// band writer's status.
Status WriteBandFile(const SWordKind& kind, const CCaliBuf* store, const wchar_t* path,
                     const SPixelRect& band, const SBandPlace& place, const SOwnerFields& owner);

/// Writes every allocated block whole, with origin (0, 0) and the store's size. E_POINTER for a
/// null path or store, E_COEF_OPENFAILED, else S_OK.
Status WriteWholeFile(const SWordKind& kind, const CCaliBuf* store, const wchar_t* path,
                      const SOwnerFields& owner);

/// As the two above at a stream's position. E_POINTER without a store, E_FAIL when the stream
/// fails, and the rectangle writer's status.
Status WriteRectStream(const SWordKind& kind, const CCaliBuf* store, std::ostream& stream,
                       const SPixelRect& rect, const SOwnerFields& owner);
Status WriteWholeStream(const SWordKind& kind, const CCaliBuf* store, std::ostream& stream,
                        const SOwnerFields& owner);

/// Writes `rect` of a matrix store and of an extra-word store at the stream's position: header and
/// matrix part, then the extra-word part, to which the header leads. `extra` may be null.
/// E_POINTER without the matrix store. E_FAIL when the stream fails, or when the matrix part ends
/// past 4 GiB: the extra words are left out then, and the header's directory offset is 0. Else S_OK.
Status WriteExtraWordStream(const CCaliBuf* matrix, const CCaliBuf* extra, std::ostream& stream,
                            const SPixelRect& rect, const SOwnerFields& owner);

/// As above, as a file. E_POINTER for a null path or matrix store, E_COEF_OPENFAILED, else S_OK.
Status WriteExtraWordFile(const CCaliBuf* matrix, const CCaliBuf* extra, const wchar_t* path,
                          const SPixelRect& rect, const SOwnerFields& owner);

/// The first 16 bytes of a file; all zero when it has fewer. E_COEF_INVALIDARG for a null path,
/// E_COEF_OPENFAILED.
Status ReadFileMagic(CWordFileSource& file, ChunkFormatId& magic);

/// The header of a word file of the kind. E_COEF_INVALIDARG for a null path, E_COEF_OPENFAILED,
/// E_COEF_BADFORMAT for another format or a file shorter than a header.
Status ReadChunkFileHeader(CWordFileSource& file, const SWordKind& kind, SChunkHeader& header);

/// Copies min(capacity, 16) bytes of the owner data of a word file of the kind to `name` (null for
/// none) and the flag. Statuses of `ReadChunkFileHeader`.
Status ReadOwnerData(const wchar_t* path, const SWordKind& kind, std::byte* name,
                     std::uint32_t capacity, std::uint8_t& flag);

/// Reads a word file, its left top at (x, y), into the store. E_POINTER without one, E_HANDLE when
/// the file does not open, else the chunk reader's status.
Status LoadChunkFile(CCaliBuf* store, CWordFileSource& file, std::uint32_t x, std::uint32_t y);

/// As above for a file with extra words. E_POINTER without either store, E_COEF_OPENFAILED, E_FAIL
/// when the matrix part fails, else the status of the extra-word part.
Status LoadExtraWordFile(CCaliBuf* matrix, CCaliBuf* extra, CWordFileSource& file, std::uint32_t x,
                         std::uint32_t y);

} // namespace trevolt
