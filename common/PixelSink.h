// What takes the pixels of a file that is never held whole.
#pragma once

#include <cstdint>

#include "trevolt/MatrixCoef.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

/// Pixels that are looked at in one go: they fit the cache.
inline constexpr std::uint32_t kPixelRun = 256;

/// Takes a picture row by row. The calls come one after the other, but not all by the same thread.
class CPixelSink {
  public:
    virtual ~CPixelSink() = default;
    CPixelSink(const CPixelSink&) = delete;
    CPixelSink& operator=(const CPixelSink&) = delete;

    /// Takes the picture's size: once, before its pixels.
    virtual void TakeSize(const PixelSize& size) noexcept = 0;

    /// Takes the next `count` pixels of a row: `kPixelRun`, or those up to the row's end if they are
    /// fewer. They are there until it answers.
    virtual void TakeRun(const SMatrixCoef* pixels, std::uint32_t count) noexcept = 0;

  protected:
    CPixelSink() = default;
};

} // namespace trevolt
