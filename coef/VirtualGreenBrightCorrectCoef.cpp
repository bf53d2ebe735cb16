#include "coef/VirtualGreenBrightCorrectCoef.h"

namespace trevolt {

Status CVirtualGreenBrightCorrectCoef::SetRect4WordU16(std::uint32_t x, std::uint32_t y,
                                                       std::uint32_t width, std::uint32_t height,
                                                       const std::uint16_t* words) {
    return CopyElementsIn<S4WordCoef>(Store(), {x, y, width, height}, words);
}

Status CVirtualGreenBrightCorrectCoef::SetPixel4Word(std::uint32_t x, std::uint32_t y,
                                                     const S4WordCoef& words) {
    return SetPixel(x, y, words);
}

Status CVirtualGreenBrightCorrectCoef::GetRect4Word(std::uint32_t x, std::uint32_t y,
                                                    std::uint32_t width, std::uint32_t height,
                                                    std::uint16_t* words) const {
    return CopyElementsOut<S4WordCoef>(Store(), {x, y, width, height}, words);
}

Status CVirtualGreenBrightCorrectCoef::SetRect4WordRaw(const SPixelRect& rect,
                                                       const std::uint16_t* words) {
    return SetEdgedRect(rect, words);
}

Status CVirtualGreenBrightCorrectCoef::SetRect4WordVB(std::uint32_t x, std::uint32_t y,
                                                      std::uint32_t width, std::uint32_t height,
                                                      const std::uint16_t* words,
                                                      std::uint32_t pitch) {
    return CopyElementsIn<S4WordCoef>(Store(), {x, y, width, height}, words, pitch);
}

S4WordCoef CVirtualGreenBrightCorrectCoef::GetPixel4Word(std::uint32_t x, std::uint32_t y) const {
    return PixelOrDefault(x, y);
}

Status CVirtualGreenBrightCorrectCoef::SaveTurnedBandVB(
    const wchar_t* path, const SPixelRect& rect, std::uint32_t mode, const SPixelRect& whole,
    std::uint64_t& directoryPosition, std::uint64_t& dataPosition, std::uint32_t bandOffset,
    const std::byte* name, const std::uint8_t* flag) {
    return SaveTurnedBand(path, rect, mode, {whole, directoryPosition, dataPosition, bandOffset},
                          OwnerFields(name, flag));
}

Status CVirtualGreenBrightCorrectCoef::SaveTurnedFileVB(const wchar_t* path, const SPixelRect& rect,
                                                        std::uint32_t mode, const std::byte* name,
                                                        const std::uint8_t* flag) {
    return SaveTurnedFile(path, rect, mode, OwnerFields(name, flag));
}

Status CVirtualGreenBrightCorrectCoef::GetVBCoefInfo(const wchar_t* path, std::byte* name,
                                                     std::uint32_t capacity, std::uint8_t& flag) {
    return ReadInfo(path, name, capacity, flag);
}

Status CVirtualGreenBrightCorrectCoef::GetVBCoefSize(const wchar_t* path, std::uint32_t& width,
                                                     std::uint32_t& height) {
    return QuerySize(path, width, height);
}

} // namespace trevolt
