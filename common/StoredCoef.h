// A coefficient file in the elements that it stores: what is loaded so is turned and written without
// a coefficient map. Only whole and intact files of a kind's own are taken; for every other one the
// map's way, which tells what is wrong with it, is there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>

#include "trevolt/QuarterTurn.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

class CStoredCoef {
  public:
    virtual ~CStoredCoef() = default;
    CStoredCoef(const CStoredCoef&) = delete;
    CStoredCoef& operator=(const CStoredCoef&) = delete;

    /// The size that the file's header tells, in pixels.
    virtual PixelSize Size() const = 0;

    /// Writes the top-left `size` pixels, turned by a known code (1 to 3), as a file of the kind at
    /// the stream's position, byte for byte what the kind's writer makes of a turned map; pixels
    /// that the file does not hold are the stored form of a map's default element. Both sides of
    /// `size` are 1 to 65535. The work is shared among `threads` threads at most; the bytes do not
    /// depend on their number. E_FAIL when the stream fails or memory is refused, which the
    /// thread's transfer report hears of; the file is not whole then.
    virtual Status WriteTurned(std::ostream& stream, const PixelSize& size, std::uint32_t code,
                               std::size_t threads) const = 0;

  protected:
    CStoredCoef() = default;
};

} // namespace trevolt
