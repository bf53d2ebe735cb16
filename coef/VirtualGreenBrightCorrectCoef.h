// CVirtualGreenBrightCorrectCoef: the coefficient object of displays whose pixels have four
// emitters, the fourth a second, virtual green. A pixel has four gains. Its file is the `.4wcoef`
// word file (docs/formats/4wcoef.md).
//
// An object is used by one thread at a time; different objects by any threads.
#pragma once

#include "coef/VirtualGreenCorrectCoef.h"

namespace trevolt {

class CVirtualGreenBrightCorrectCoef final : public CVirtualGreenCorrectCoef<S4WordCoef> {
  public:
    Status SetRect4WordU16(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                           std::uint32_t height, const std::uint16_t* words) override;
    Status SetPixel4Word(std::uint32_t x, std::uint32_t y, const S4WordCoef& words) override;
    Status GetRect4Word(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height,
                        std::uint16_t* words) const override;
    Status SetRect4WordRaw(const SPixelRect& rect, const std::uint16_t* words) override;
    Status SetRect4WordVB(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                          std::uint32_t height, const std::uint16_t* words,
                          std::uint32_t pitch) override;
    S4WordCoef GetPixel4Word(std::uint32_t x, std::uint32_t y) const override;

    Status SaveTurnedBandVB(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                            const SPixelRect& whole, std::uint64_t& directoryPosition,
                            std::uint64_t& dataPosition, std::uint32_t bandOffset,
                            const std::byte* name, const std::uint8_t* flag) override;
    Status SaveTurnedFileVB(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                            const std::byte* name, const std::uint8_t* flag) override;
    Status GetVBCoefInfo(const wchar_t* path, std::byte* name, std::uint32_t capacity,
                         std::uint8_t& flag) override;
    Status GetVBCoefSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) override;
};

template <>
struct SObjectOf<S4WordCoef> {
    using Type = CVirtualGreenBrightCorrectCoef;
};

} // namespace trevolt
