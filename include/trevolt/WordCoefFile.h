// The bridges between word files and coefficient maps: a temporary coefficient object of the file's
// kind loads or writes the file, and every pixel is converted between its words and the map.
//
// On load a word becomes word ÷ 65535; on save a value becomes the low 16 bits of
// roundf(value × 65535), so that what exceeds 1.0 wraps to a small word.
#pragma once

#include <cstdint>
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
/// transfer report as refused memory, failed chunks as such; the status tells neither.
Status LoadWordCoefFile(EWordKind kind, CChromaCorrectCoef& map, const wchar_t* path,
                        const SMapRegion& region = {});

/// Writes `map` as a word file, the default element where the colour grid ends before the map.
/// E_COEF_INVALIDARG for a null path or an empty map, E_FAIL for a map whose colour grid has no
/// storage, the store's status when it cannot get the map's size, else the export's.
Status SaveWordCoefFile(EWordKind kind, const CChromaCorrectCoef& map, const wchar_t* path);

/// A word file's size in pixels, by the query of the kind's object; its statuses.
Status ReadWordCoefSize(EWordKind kind, const wchar_t* path, std::uint32_t& width,
                        std::uint32_t& height);

/// What a word file holds and a map cannot, so that a turn loses it: extra words, owner name and
/// flag, an origin. In plain words, one entry each; empty when there is nothing, or no such file.
std::vector<std::string> DescribeWordFileLosses(const wchar_t* path);

} // namespace trevolt
