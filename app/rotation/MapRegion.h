// Rectangles of maps: files placed in them, pieces cut out of them, and pieces written as files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/rotation/CoefFile.h"
#include "app/rotation/OutputFile.h"
#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/PixelRect.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

/// "left,top,right,bottom", as it is told and given.
std::string ShownRect(const SPixelRect& rect);

/// Whether all of `rect` lies in pixels 0,0 to `size`.
bool IsWithin(const SPixelRect& rect, const PixelSize& size);

/// The part of `rect` in pixels 0,0 to `size`; a rectangle without pixels where there is none.
SPixelRect CutTo(const SPixelRect& rect, const PixelSize& size);

/// The size of pixels turned by a code of `kAngles`, or by 0, which turns nothing.
PixelSize TurnedBy(std::uint32_t code, const PixelSize& size);

/// Turns all of a map by a code of `kAngles`, or by 0, which leaves it; the gains become 1.0. False,
/// and the map is empty, when the memory is refused.
bool TurnWhole(CChromaCorrectCoef& map, std::uint32_t code);

/// What became of a file that was put into a map.
struct SPlacing {
    std::vector<std::string> problems; ///< what is damaged or went wrong; none: it is there whole
    std::vector<std::string> notes;    ///< what is unusual and no problem
    std::vector<std::string> losses;   ///< what the file holds and a map cannot
    bool isPut = false;                ///< the rectangle's pixels are no longer what they were
};

/// Reads the file, turns it by a code of `kAngles` or by 0, and puts the pixels that can be read into
/// `rect` of the map, as far as the map reaches. The rectangle is of the file's turned size; that the
/// file has another one by now is a problem. Takes no memory but one file's; throws std::bad_alloc.
SPlacing PlaceCoefFile(const std::wstring& path, std::uint32_t code, const SPixelRect& rect,
                       CChromaCorrectCoef& map);

/// Writes the pixels of `rect`, which lies in the map, turned by a code of `kAngles` or by 0, as a
/// file of the kind that the name of `path` tells. What went wrong, in plain words; else nothing.
std::string WriteMapPiece(const CChromaCorrectCoef& map, const SPixelRect& rect, std::uint32_t code,
                          const SFileKind& kind, const std::wstring& path);

} // namespace trevolt
