#include "coef/VirtualGreenChromaCorrectCoef.h"

namespace trevolt {

Status CVirtualGreenChromaCorrectCoef::SetPixel12Word(std::uint32_t x, std::uint32_t y,
                                                      const S12WordCoef& words) {
    return SetPixel(x, y, words);
}

Status CVirtualGreenChromaCorrectCoef::SetRect4WordU16(std::uint32_t x, std::uint32_t y,
                                                       std::uint32_t width, std::uint32_t height,
                                                       const std::uint16_t* words) {
    return CopyElementsIn<S12WordCoef>(Store(), {x, y, width, height}, words);
}

Status CVirtualGreenChromaCorrectCoef::SetRect12WordEx(std::uint32_t x, std::uint32_t y,
                                                       std::uint32_t width, std::uint32_t height,
                                                       const std::uint16_t* words,
                                                       std::uint32_t pitch) {
    return CopyElementsIn<S12WordCoef>(Store(), {x, y, width, height}, words, pitch);
}

Status CVirtualGreenChromaCorrectCoef::SetRect12WordVC(const SPixelRect& rect,
                                                       const std::uint16_t* words) {
    return SetEdgedRect(rect, words);
}

S9WordCoef CVirtualGreenChromaCorrectCoef::GetPixel9Word(std::uint32_t x, std::uint32_t y) const {
    const auto w = PixelOrDefault(x, y).w;
    return {{w[0], w[1], w[3], w[4], w[5], w[7], w[8], w[9], w[11]}};
}

S12WordCoef CVirtualGreenChromaCorrectCoef::GetPixel12Word(std::uint32_t x, std::uint32_t y) const {
    return PixelOrDefault(x, y);
}

Status CVirtualGreenChromaCorrectCoef::SaveTurnedBandVC(
    const wchar_t* path, const SPixelRect& rect, std::uint32_t mode, const SPixelRect& whole,
    std::uint64_t& directoryPosition, std::uint64_t& dataPosition, std::uint32_t bandOffset,
    const std::byte* name, const std::uint8_t* flag) {
    return SaveTurnedBand(path, rect, mode, {whole, directoryPosition, dataPosition, bandOffset},
                          OwnerFields(name, flag));
}

Status CVirtualGreenChromaCorrectCoef::SaveTurnedFileVC(const wchar_t* path, const SPixelRect& rect,
                                                        std::uint32_t mode, const std::byte* name,
                                                        const std::uint8_t* flag) {
    return SaveTurnedFile(path, rect, mode, OwnerFields(name, flag));
}

Status CVirtualGreenChromaCorrectCoef::GetVCCoefInfo(const wchar_t* path, std::byte* name,
                                                     std::uint32_t capacity, std::uint8_t& flag) {
    return ReadInfo(path, name, capacity, flag);
}

Status CVirtualGreenChromaCorrectCoef::GetVCCoefSize(const wchar_t* path, std::uint32_t& width,
                                                     std::uint32_t& height) {
    return QuerySize(path, width, height);
}

Status CVirtualGreenChromaCorrectCoef::CopyRectOut123(std::uint32_t x, std::uint32_t y,
                                                      const SWordTarget& target) const {
    return CopyViewOut(x, y, target);
}

} // namespace trevolt
