// What word files hold beside the coefficients of their pixels, and what becomes of their origin when
// they are turned and keep it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "calibuf/CaliOperation.h"
#include "calibuf/ChunkLayout.h"
#include "coef/WordKind.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

/// What was loaded of a file beside its pixels.
struct SWordExtras {
    std::optional<SChunkHeader> header; ///< of a word file of the kind, with its owner and origin
    std::unique_ptr<CCaliOperation<SWordCoef>> words; ///< null for a file without extra words
};

/// Whether the header is that of a file which the kind loads, so that its extras are the file's own.
bool IsHeaderOf(const SWordKind& kind, const SChunkHeader& header);

/// Where the left top of the file's first `size` pixels comes by a turn of a known code: with the
/// whole wall, or without a wall where it was. Nothing when they do not lie within the wall.
std::optional<PixelPosition> TurnedOrigin(const SChunkHeader& header, const PixelSize& size,
                                          std::uint32_t code, const std::optional<PixelSize>& wall);

/// Whether a store, and so a word file, has room for pixels at that place.
bool IsInGrid(const PixelPosition& place, const PixelSize& size);

} // namespace trevolt
