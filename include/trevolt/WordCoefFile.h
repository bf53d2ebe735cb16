// The bridges between word files and coefficient maps: a temporary coefficient object of the file's
// kind loads or writes the file, and every pixel is converted between its words and the map.
//
// On load a word becomes word ÷ 65535; on save a value becomes the low 16 bits of
// roundf(value × 65535), so that what exceeds 1.0 wraps to a small word.
//
// Each operation has two forms. The first takes a path, which may be null, and opens the file itself.
// The second takes a stream, which is in binary mode and can be sought, and stays the caller's; the
// file begins at its position. A stream to be read that had failed or met its end, or that cannot be sought, reads as
// a file without bytes, and has failed afterwards. An offset that a file with extra words tells is one
// in its stream, so such a file begins where its stream does.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/StatusCodes.h"
#include "trevolt/WordElements.h"

namespace trevolt {

/// A region of a map; only left and top are used, as the offset of a loaded file in the map.
struct SMapRegion {
    std::uint32_t left = 0;
    std::uint32_t top = 0;
    std::uint32_t right = 0;
    std::uint32_t bottom = 0;
};

/// Loads a word file into `map`, its pixel (0, 0) at the region's left top. The map keeps its size:
/// a larger file is cut, a smaller one leaves the rest as it was. The size query's status when that
/// fails, then the load's, else 0. A store that could not get its size is noted in the thread's
/// transfer report as refused memory, failed chunks as such; the status tells neither. A brightness
/// or chroma file may also be of the float kind with as many values, or a map's image.
Status LoadWordCoefFile(EWordKind kind, CChromaCorrectCoef& map, const wchar_t* path,
                        const SMapRegion& region = {});

/// As above from a stream, which afterwards stands behind the data of the file's last chunk; of a
/// file that is damaged, not taken or no word file it stands anywhere, and may have failed.
Status LoadWordCoefFile(EWordKind kind, CChromaCorrectCoef& map, std::istream& stream,
                        const SMapRegion& region = {});

/// Writes `map` as a word file, the default element where the colour grid ends before the map.
/// E_COEF_INVALIDARG for a null path or an empty map, E_FAIL for a map whose colour grid has no
/// storage, the store's status when it cannot get the map's size, else the export's.
Status SaveWordCoefFile(EWordKind kind, const CChromaCorrectCoef& map, const wchar_t* path);

/// As above into a stream, which after a success stands at its end. E_FAIL when the stream fails,
/// E_COEF_NOBUFFER when memory to compress with is refused: the file is not whole then.
Status SaveWordCoefFile(EWordKind kind, const CChromaCorrectCoef& map, std::ostream& stream);

/// A word file's size in pixels from its header, both 0 after a failure; no object is made for it.
/// A brightness or chroma file may also be a `.9fcoef` or `.3fcoef` one. E_COEF_INVALIDARG for a null
/// path, E_COEF_OPENFAILED, E_COEF_BADFORMAT for a file of another kind, of another file-kind value
/// than the virtual-green kinds' 2, or shorter than its header.
Status ReadWordCoefSize(EWordKind kind, const wchar_t* path, std::uint32_t& width,
                        std::uint32_t& height);

/// As above from a stream, which is put back to where it was.
Status ReadWordCoefSize(EWordKind kind, std::istream& stream, std::uint32_t& width,
                        std::uint32_t& height);

/// What a word file holds and a map cannot, so that a turn loses it unless it is to be kept: extra
/// words, owner name and flag, an origin. In plain words, one entry each; empty when there is nothing, or no such file.
std::vector<std::string> DescribeWordFileLosses(const wchar_t* path);

/// As above from a stream, which is put back to where it was.
std::vector<std::string> DescribeWordFileLosses(std::istream& stream);

} // namespace trevolt
