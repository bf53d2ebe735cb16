#include "coef/CNewBrightCorrectCoef.h"

#include "coef/FileSize.h"
#include "trevolt/PlacedCoefFile.h"
#include "trevolt/TextCoefFile.h"
#include "trevolt/TurnedCoefFile.h"

namespace trevolt {

bool CCNewBrightCorrectCoef::FillRectChannel(std::int32_t channel, std::uint32_t x, std::uint32_t y,
                                             std::uint32_t width, std::uint32_t height, float value,
                                             std::uint32_t tableIndex) {
    return FillThrough(m_pTransferTable, channel, {x, y, width, height}, value, tableIndex);
}

bool CCNewBrightCorrectCoef::SetPixelChannel(std::int32_t channel, std::uint32_t x, std::uint32_t y,
                                             float value, std::uint32_t tableIndex) {
    return SetThrough(m_pTransferTable, channel, x, y, value, tableIndex);
}

Status CCNewBrightCorrectCoef::SetPixel3Word(std::uint32_t x, std::uint32_t y,
                                             const S3WordCoef& words) {
    return SetPixel(x, y, words);
}

S3WordCoef CCNewBrightCorrectCoef::GetPixel3Word(std::uint32_t x, std::uint32_t y) const {
    return PixelOrDefault(x, y);
}

Status CCNewBrightCorrectCoef::SetRectFromFloat3(std::uint32_t x, std::uint32_t y,
                                                 std::uint32_t width, std::uint32_t height,
                                                 const float* values) {
    return ConvertIn<S3WordCoef>(
        Store(), {x, y, width, height}, values, kElementWords<S3WordCoef>,
        [](std::size_t word) { return word; }, CutToWord);
}

Status CCNewBrightCorrectCoef::GetRect3Word(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                            std::uint32_t height, std::uint16_t* words) const {
    return CopyElementsOut<S3WordCoef>(Store(), {x, y, width, height}, words);
}

Status CCNewBrightCorrectCoef::SetRect3WordEx(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                              std::uint32_t height, const std::uint16_t* words,
                                              std::uint32_t pitch) {
    return CopyElementsIn<S3WordCoef>(Store(), {x, y, width, height}, words, pitch);
}

Status CCNewBrightCorrectCoef::SetRect3Word(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                            std::uint32_t height, const std::uint16_t* words) {
    return CopyElementsInUncut<S3WordCoef>(Store(), {x, y, width, height}, words);
}

Status CCNewBrightCorrectCoef::SaveTurnedBandB(const wchar_t* path, const SPixelRect& rect,
                                               std::uint32_t mode, const SPixelRect& whole,
                                               std::uint64_t& directoryPosition,
                                               std::uint64_t& dataPosition,
                                               std::uint32_t bandOffset, const std::byte* name,
                                               const std::uint8_t* flag) {
    return SaveTurnedBand(path, rect, mode, {whole, directoryPosition, dataPosition, bandOffset},
                          OwnerFields(name, flag));
}

Status CCNewBrightCorrectCoef::SaveTurnedFileB(const wchar_t* path, const SPixelRect& rect,
                                               std::uint32_t mode, const std::byte* name,
                                               const std::uint8_t* flag) {
    return SaveTurnedFile(path, rect, mode, OwnerFields(name, flag));
}

Status CCNewBrightCorrectCoef::SaveCoefKind77(const wchar_t* path) {
    return SaveThroughMap([&](const auto& map) { return WriteTextCoefFile(map, path, nullptr); });
}

Status CCNewBrightCorrectCoef::SaveLegacy83(const wchar_t* path, const SPixelRect& rect,
                                            std::uint32_t mode) {
    return SaveThroughMap(
        [&](const auto& map) { return WriteTurned3bCoefFile(map, path, rect, mode); });
}

Status CCNewBrightCorrectCoef::LoadLegacy96(const wchar_t* path, std::int32_t x, std::int32_t y,
                                            const bool* mask) {
    SPixelRect rect{x, y, x, y};
    return PlaceFile<S3fCoefKind>(Place3fCoefFile, path, rect, /*clip=*/false, mask);
}

Status CCNewBrightCorrectCoef::GetBrightCoefSize(const wchar_t* path, std::uint32_t& width,
                                                 std::uint32_t& height) {
    return QuerySize(path, width, height);
}

Status CCNewBrightCorrectCoef::GetChromaCoefSize(const wchar_t* path, std::uint32_t& width,
                                                 std::uint32_t& height) {
    CWordFileSource file(path);
    return QueryBinarySize(k9fFile, file, width, height);
}

Status CCNewBrightCorrectCoef::GetBrightCoefInfo(const wchar_t* path, std::byte* name,
                                                 std::uint32_t capacity, std::uint8_t& flag) {
    return ReadInfo(path, name, capacity, flag);
}

Status CCNewBrightCorrectCoef::CopyRectFrom120(const SWordView& view, std::uint32_t x,
                                               std::uint32_t y) {
    return CopyViewIn(view, x, y);
}

} // namespace trevolt
