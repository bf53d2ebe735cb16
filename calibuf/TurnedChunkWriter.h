// Writes turned planes as chunks, without a store.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <ostream>

#include "calibuf/WordElementKind.h"
#include "calibuf/WordPlanes.h"
#include "trevolt/PixelRect.h"
#include "trevolt/QuarterTurn.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// What becomes of planes: their top-left `size` pixels, sides of 1 to 65535, turned by a known code.
/// A pixel beyond the planes has the words `beyond`.
struct SPlaneTurn {
    PixelSize size;
    std::uint32_t code;
    std::array<std::uint16_t, kMaxWords> beyond;
    /// Where the turned picture's left top comes in the store, which holds all of it.
    PixelPosition place{};

    /// The turned picture.
    SPixelRect Rect() const;
    /// A part of it, counted from its left top.
    SPixelRect InPicture(const SPixelRect& rect) const;
};

/// Writes the turned pixels of planes at the stream's position, to the bytes that
/// `CCaliBuf::WriteRectChunks` writes of a store that holds them. The work is shared among `threads`
/// threads at most, one of which writes at a time. E_COEF_NOBUFFER, with nothing written, when scratch
/// memory is refused; failures of the stream stay in its state.
Status WriteTurnedChunks(std::ostream& stream, const CWordPlanes& planes, const SPlaneTurn& turn,
                         std::size_t threads);

} // namespace trevolt
