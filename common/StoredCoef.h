// A coefficient file in the elements that it stores: what is loaded so is turned and written without
// a coefficient map, whether the file is whole or not, and looked at pixel by pixel. What is not a file
// of the kind's own is left to the map's way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "trevolt/MatrixCoef.h"
#include "trevolt/QuarterTurn.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// What becomes of that which a file holds beside the coefficients of its pixels: extra words, the
/// owner's name and flag, and the place of its left top among the pixels of the wall, its origin.
struct SExtrasOfTurn {
    bool areKept = false;
    /// The wall's size before the turn, in whose pixels a kept origin is turned; without it the origin
    /// stays.
    std::optional<PixelSize> wall;
};

class CStoredCoef {
  public:
    virtual ~CStoredCoef() = default;
    CStoredCoef(const CStoredCoef&) = delete;
    CStoredCoef& operator=(const CStoredCoef&) = delete;

    /// The size of what was read, in pixels: that of the file's header, 0 × 0 when nothing was.
    virtual PixelSize Size() const = 0;

    /// Writes the top-left `size` pixels, turned by a known code (1 to 3), as a file of the kind at
    /// the stream's position, byte for byte what the kind's writer makes of a turned map; pixels
    /// beyond the read ones are the stored form of a map's default element. Both sides of `size` are 1
    /// to 65535. Of extras that were loaded to be kept the file has those of the source, turned with its
    /// pixels: pixels beyond the read ones have the extra word 0. The work is shared among `threads` threads at most; the bytes do not depend on their
    /// number. E_COEF_INVALIDARG, with nothing written, when the kept origin has no place; E_FAIL
    /// when the stream fails or memory is refused, which the thread's transfer report hears of, or
    /// when the matrix part ends past 4 GiB, behind which no extra words can be found; the file is
    /// not whole then.
    virtual Status WriteTurned(std::ostream& stream, const PixelSize& size, std::uint32_t code,
                               std::size_t threads) const = 0;

    /// Copies `count` pixels from (x, y) on to the right, which lie in what was read: the values that
    /// the file sets of a map's elements, and the default's for the others. Any thread may ask.
    virtual void CopyElements(std::uint32_t x, std::uint32_t y, std::uint32_t count,
                              SMatrixCoef* elements) const = 0;

    /// The digest of the store of a word file, as a coefficient object tells it that has loaded the
    /// file; nothing for other kinds, and when the system's hashing fails. Any thread may ask.
    virtual std::optional<std::wstring> StoreDigest() const { return std::nullopt; }

  protected:
    CStoredCoef() = default;
};

/// A file that was loaded in its stored elements.
struct SStoredLoad {
    /// What the load of the file into a map answers; the thread's transfer report tells the same, too,
    /// but for what memory the two need.
    Status status{};
    /// What could be read, as a map holds it. Null for a file that is not of the kind's own.
    std::unique_ptr<CStoredCoef> coef;
};

} // namespace trevolt
