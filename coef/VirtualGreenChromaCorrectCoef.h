// CVirtualGreenChromaCorrectCoef: the chroma object of displays whose pixels have four emitters. A
// pixel has a 3×4 matrix of twelve words, rows of four; in each row the third word is the
// virtual-green input's. Its file is the `.12wcoef` word file (docs/formats/12wcoef.md).
//
// An object is used by one thread at a time; different objects by any threads.
#pragma once

#include "coef/VirtualGreenCorrectCoef.h"

namespace trevolt {

class CVirtualGreenChromaCorrectCoef final : public CVirtualGreenCorrectCoef<S12WordCoef> {
  public:
    Status SetPixel12Word(std::uint32_t x, std::uint32_t y, const S12WordCoef& words) override;
    Status SetRect4WordU16(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                           std::uint32_t height, const std::uint16_t* words) override;
    Status SetRect12WordEx(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                           std::uint32_t height, const std::uint16_t* words,
                           std::uint32_t pitch) override;
    Status SetRect12WordVC(const SPixelRect& rect, const std::uint16_t* words) override;
    S9WordCoef GetPixel9Word(std::uint32_t x, std::uint32_t y) const override;
    S12WordCoef GetPixel12Word(std::uint32_t x, std::uint32_t y) const override;

    Status SaveTurnedBandVC(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                            const SPixelRect& whole, std::uint64_t& directoryPosition,
                            std::uint64_t& dataPosition, std::uint32_t bandOffset,
                            const std::byte* name, const std::uint8_t* flag) override;
    Status SaveTurnedFileVC(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                            const std::byte* name, const std::uint8_t* flag) override;
    Status GetVCCoefInfo(const wchar_t* path, std::byte* name, std::uint32_t capacity,
                         std::uint8_t& flag) override;
    Status GetVCCoefSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) override;
    Status CopyRectOut123(std::uint32_t x, std::uint32_t y,
                          const SWordTarget& target) const override;
};

template <>
struct SObjectOf<S12WordCoef> {
    using Type = CVirtualGreenChromaCorrectCoef;
};

} // namespace trevolt
