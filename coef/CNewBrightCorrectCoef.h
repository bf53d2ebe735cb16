// CCNewBrightCorrectCoef: the brightness kind of coefficient object. A pixel has three gains, red,
// green and blue. Its own file is the brightness word file (docs/formats/3wcoef.md); it also loads
// `.3fcoef` files. It has no transfer table: channel writes pass table index 0.
//
// An object is used by one thread at a time; different objects by any threads.
#pragma once

#include "coef/MapCorrectCoef.h"

namespace trevolt {

class CCNewBrightCorrectCoef final : public CMapCorrectCoef<S3WordCoef> {
  public:
    bool FillRectChannel(std::int32_t channel, std::uint32_t x, std::uint32_t y,
                         std::uint32_t width, std::uint32_t height, float value,
                         std::uint32_t tableIndex) override;
    bool SetPixelChannel(std::int32_t channel, std::uint32_t x, std::uint32_t y, float value,
                         std::uint32_t tableIndex) override;
    Status SetPixel3Word(std::uint32_t x, std::uint32_t y, const S3WordCoef& words) override;
    S3WordCoef GetPixel3Word(std::uint32_t x, std::uint32_t y) const override;
    Status SetRectFromFloat3(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                             std::uint32_t height, const float* values) override;
    Status GetRect3Word(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height,
                        std::uint16_t* words) const override;
    Status SetRect3WordEx(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                          std::uint32_t height, const std::uint16_t* words,
                          std::uint32_t pitch) override;
    Status SetRect3Word(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height,
                        const std::uint16_t* words) override;

    Status SaveTurnedBandB(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                           const SPixelRect& whole, std::uint64_t& directoryPosition,
                           std::uint64_t& dataPosition, std::uint32_t bandOffset,
                           const std::byte* name, const std::uint8_t* flag) override;
    Status SaveTurnedFileB(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                           const std::byte* name, const std::uint8_t* flag) override;
    Status SaveCoefKind77(const wchar_t* path) override;
    Status SaveLegacy83(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode) override;
    Status LoadLegacy96(const wchar_t* path, std::int32_t x, std::int32_t y,
                        const bool* mask) override;

    Status GetBrightCoefSize(const wchar_t* path, std::uint32_t& width,
                             std::uint32_t& height) override;
    Status GetChromaCoefSize(const wchar_t* path, std::uint32_t& width,
                             std::uint32_t& height) override;
    Status GetBrightCoefInfo(const wchar_t* path, std::byte* name, std::uint32_t capacity,
                             std::uint8_t& flag) override;
    Status CopyRectFrom120(const SWordView& view, std::uint32_t x, std::uint32_t y) override;

  private:
    friend struct SCoefFields;

    CCaliOperationData* m_pTransferTable = nullptr; ///< the kind has none
};

template <>
struct SObjectOf<S3WordCoef> {
    using Type = CCNewBrightCorrectCoef;
};

} // namespace trevolt
