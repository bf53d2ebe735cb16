// The turn of one coefficient map: whole pixels move, no coefficient changes.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/PixelRect.h"

namespace trevolt {

/// One entry of the angle box: its text, which also marks output names, and its code.
struct SAngle {
    std::wstring_view text;
    std::uint32_t code;
};

/// The angle box's entries in their order.
inline constexpr std::array kAngles{SAngle{L"90\u00B0", 1}, SAngle{L"180\u00B0", 2},
                                    SAngle{L"270\u00B0", 3}};

/// Turns the top-left width × height pixels of `source` by a known code (1 to 3) into `target`,
/// which takes the turned size. Pixels that the source does not hold are its default element; the
/// target's gains are all 1.0. When the memory is refused the target has its size and no storage;
/// a zero or negative size leaves it empty.
void TurnMap(const CChromaCorrectCoef& source, std::int32_t width, std::int32_t height,
             std::uint32_t code, CChromaCorrectCoef& target);

} // namespace trevolt
