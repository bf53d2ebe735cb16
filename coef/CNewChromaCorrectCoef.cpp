#include "coef/CNewChromaCorrectCoef.h"

#include <algorithm>
#include <string_view>

#include "coef/FileSize.h"
#include "trevolt/PlacedCoefFile.h"
#include "trevolt/TextCoefFile.h"
#include "trevolt/TurnedCoefFile.h"

namespace trevolt {
namespace {

/// The extension of files with extra words, in exactly these letters.
constexpr std::wstring_view kExtraWordExtension = L"9wPCoef";

/// The characters after the last point, none without one.
std::wstring_view ExtensionOf(std::wstring_view path) {
    const std::size_t point = path.rfind(L'.');
    return point == std::wstring_view::npos ? std::wstring_view() : path.substr(point + 1);
}

} // namespace

bool NamesExtraWordFile(std::wstring_view path) { return ExtensionOf(path) == kExtraWordExtension; }

CCNewChromaCorrectCoef::CCNewChromaCorrectCoef() {
    m_second.owner = std::make_unique<CCaliOperation<SWordCoef>>();
}

// ---- both stores ----

Status CCNewChromaCorrectCoef::Create(std::uint16_t width, std::uint16_t height) {
    if (Store() == nullptr || ExtraStore() == nullptr)
        return E_FAIL;
    const Status status = Store()->Allocate(width, height);
    return Failed(status) ? status : ExtraStore()->Allocate(width, height);
}

Status CCNewChromaCorrectCoef::SetBufferMode(bool unlimited) {
    const Status status = CMapCorrectCoef::SetBufferMode(unlimited);
    if (!Failed(status) && ExtraStore() != nullptr)
        ExtraStore()->SetSizeLimit(Store()->SizeLimit());
    return status;
}

bool CCNewChromaCorrectCoef::FillRectChannel(std::int32_t channel, std::uint32_t x, std::uint32_t y,
                                             std::uint32_t width, std::uint32_t height, float value,
                                             std::uint32_t tableIndex) {
    return FillThrough(&m_transferTable, channel, {x, y, width, height}, value, tableIndex);
}

bool CCNewChromaCorrectCoef::SetPixelChannel(std::int32_t channel, std::uint32_t x, std::uint32_t y,
                                             float value, std::uint32_t tableIndex) {
    return SetThrough(&m_transferTable, channel, x, y, value, tableIndex);
}

Status CCNewChromaCorrectCoef::SetPixel10Word(std::uint32_t x, std::uint32_t y,
                                              const S9WordCoef& matrix, std::uint16_t extraWord) {
    if (FindPixel(x, y) == nullptr || FindExtraWord(x, y) == nullptr)
        return E_FAIL;
    DropStatus(SetPixel(x, y, matrix)); // the pixel was found above
    return SetPixelExtraWord(x, y, extraWord);
}

Status CCNewChromaCorrectCoef::SetPixelExtraWord(std::uint32_t x, std::uint32_t y,
                                                 std::uint16_t extraWord) {
    SWordCoef* const extra = FindExtraWord(x, y);
    if (extra == nullptr)
        return E_FAIL;
    extra->w[0] = extraWord;
    return S_OK;
}

Status CCNewChromaCorrectCoef::GetRect10Word(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                             std::uint32_t height, std::uint16_t* words) const {
    SStoreRect rect{x, y, width, height};
    if (const Status status = CutToStore(Store(), words, rect); Failed(status))
        return status;
    for (std::uint64_t row = rect.y; row < rect.y + rect.height; ++row)
        for (std::uint64_t column = rect.x; column < rect.x + rect.width; ++column) {
            const auto pixelX = static_cast<std::uint32_t>(column);
            const auto pixelY = static_cast<std::uint32_t>(row);
            const S9WordCoef matrix = PixelOrDefault(pixelX, pixelY);
            const SWordCoef* const extra = FindExtraWord(pixelX, pixelY);
            words = std::copy(matrix.w.begin(), matrix.w.end(), words);
            *words++ = extra == nullptr ? SWordCoef{}.w[0] : extra->w[0];
        }
    return S_OK;
}

Status CCNewChromaCorrectCoef::SetRectExtraWord(std::uint32_t x, std::uint32_t y,
                                                std::uint32_t width, std::uint32_t height,
                                                const std::uint16_t* words) {
    return CopyElementsInUncut<SWordCoef>(ExtraStore(), {x, y, width, height}, words);
}

// ---- the matrix store ----

Status CCNewChromaCorrectCoef::SetPixel9Word(std::uint32_t x, std::uint32_t y,
                                             const S9WordCoef& words) {
    return SetPixel(x, y, words);
}

S9WordCoef CCNewChromaCorrectCoef::GetPixel9Word(std::uint32_t x, std::uint32_t y) const {
    return PixelOrDefault(x, y);
}

Status CCNewChromaCorrectCoef::SetRect9WordU16(std::uint32_t x, std::uint32_t y,
                                               std::uint32_t width, std::uint32_t height,
                                               const std::uint16_t* words) {
    return CopyElementsIn<S9WordCoef>(Store(), {x, y, width, height}, words);
}

Status CCNewChromaCorrectCoef::GetRect9Word(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                            std::uint32_t height, std::uint16_t* words) const {
    return CopyElementsOut<S9WordCoef>(Store(), {x, y, width, height}, words);
}

Status CCNewChromaCorrectCoef::SetRect9WordEx(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                              std::uint32_t height, const std::uint16_t* words,
                                              std::uint32_t pitch) {
    return CopyElementsIn<S9WordCoef>(Store(), {x, y, width, height}, words, pitch);
}

Status CCNewChromaCorrectCoef::TransferRect9WordEx(std::uint32_t x, std::uint32_t y,
                                                   std::uint32_t width, std::uint32_t height,
                                                   std::uint16_t* words, std::uint32_t pitch,
                                                   bool intoStore) {
    if (intoStore)
        return SetRect9WordEx(x, y, width, height, words, pitch);
    return CopyElementsOut<S9WordCoef>(Store(), {x, y, width, height}, words, pitch);
}

Status CCNewChromaCorrectCoef::SetRect9Word(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                            std::uint32_t height, const std::uint16_t* words) {
    return CopyElementsInUncut<S9WordCoef>(Store(), {x, y, width, height}, words);
}

// ---- files ----

Status CCNewChromaCorrectCoef::ExportCoef(const wchar_t* path, const SPixelRect& rect,
                                          const std::byte* name, const std::uint8_t* flag) {
    if (path != nullptr && NamesExtraWordFile(path))
        return WriteExtraWordFile(Store(), ExtraStore(), path, rect, OwnerFields(name, flag));
    return CMapCorrectCoef::ExportCoef(path, rect, name, flag);
}

Status CCNewChromaCorrectCoef::SaveWholeStoreC(const wchar_t* path) {
    if (Store() == nullptr)
        return E_POINTER;
    return WriteExtraWordFile(Store(), ExtraStore(), path, WholeStore(*Store()),
                              OwnerFields(nullptr, nullptr));
}

Status CCNewChromaCorrectCoef::LoadFile(CWordFileSource& file, std::uint32_t x, std::uint32_t y) {
    ChunkFormatId magic{};
    if (const Status status = ReadFileMagic(file, magic); Failed(status))
        return status;
    if (magic == Kind().extraWordFormatId)
        return LoadExtraWordFile(Store(), ExtraStore(), file, x, y);
    return LoadRecognised(magic, file, x, y);
}

Status CCNewChromaCorrectCoef::LoadCoefRect(const wchar_t* path, std::uint32_t x, std::uint32_t y) {
    CWordFileSource file(path);
    return LoadFile(file, x, y);
}

Status CCNewChromaCorrectCoef::SaveTurnedBandC(const wchar_t* path, const SPixelRect& rect,
                                               std::uint32_t mode, const SPixelRect& whole,
                                               std::uint64_t& directoryPosition,
                                               std::uint64_t& dataPosition,
                                               std::uint32_t bandOffset, const std::byte* name,
                                               const std::uint8_t* flag) {
    return SaveTurnedBand(path, rect, mode, {whole, directoryPosition, dataPosition, bandOffset},
                          OwnerFields(name, flag));
}

Status CCNewChromaCorrectCoef::SaveTurnedFileC(const wchar_t* path, const SPixelRect& rect,
                                               std::uint32_t mode, const std::byte* name,
                                               const std::uint8_t* flag) {
    return SaveTurnedFile(path, rect, mode, OwnerFields(name, flag));
}

Status CCNewChromaCorrectCoef::SaveCoefKind76(const wchar_t* path) {
    return SaveThroughMap([&](const auto& map) { return WriteTextCoefFile(map, path, nullptr); });
}

Status CCNewChromaCorrectCoef::SaveLegacy82(const wchar_t* path, const SPixelRect& rect,
                                            std::uint32_t mode) {
    return SaveThroughMap(
        [&](const auto& map) { return WriteTurned9bCoefFile(map, path, rect, mode); });
}

Status CCNewChromaCorrectCoef::LoadLegacy97(const wchar_t* path, std::int32_t x, std::int32_t y,
                                            const bool* mask) {
    SPixelRect rect{x, y, x, y};
    return PlaceFile<S9fCoefKind>(Place9fCoefFile, path, rect, /*clip=*/false, mask);
}

Status CCNewChromaCorrectCoef::GetBrightCoefSize(const wchar_t* path, std::uint32_t& width,
                                                 std::uint32_t& height) {
    CWordFileSource file(path);
    return QueryBinarySize(k3fFile, file, width, height);
}

Status CCNewChromaCorrectCoef::GetChromaCoefSize(const wchar_t* path, std::uint32_t& width,
                                                 std::uint32_t& height) {
    return QuerySize(path, width, height);
}

Status CCNewChromaCorrectCoef::GetChromaCoefInfo(const wchar_t* path, std::byte* name,
                                                 std::uint32_t capacity, std::uint8_t& flag) {
    return ReadInfo(path, name, capacity, flag);
}

// ---- streams and views ----

Status CCNewChromaCorrectCoef::ReadChunkHeader2(std::istream& stream, SChunkHeader& header) {
    const auto read = ReadChunkHeader(stream);
    if (!read || read->formatId != kChromaChunkFormat2)
        return E_COEF_BADFORMAT;
    header = *read;
    return S_OK;
}

Status CCNewChromaCorrectCoef::CopyRectFrom119(const SWordView& view, std::uint32_t x,
                                               std::uint32_t y) {
    return CopyViewIn(view, x, y);
}

Status CCNewChromaCorrectCoef::WriteChunks2(std::ostream& stream, const SPixelRect& rect,
                                            const std::byte* name, const std::uint8_t* flag) {
    return WriteExtraWordStream(Store(), ExtraStore(), stream, rect, OwnerFields(name, flag));
}

void CCNewChromaCorrectCoef::SetChromaMode(std::uint32_t mode) { m_mode = mode; }

} // namespace trevolt
