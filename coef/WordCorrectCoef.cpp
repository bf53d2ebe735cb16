#include "coef/WordCorrectCoef.h"

#include <algorithm>
#include <limits>

#include "coef/FileSize.h"
#include "coef/MapTransfer.h"
#include "coef/TurnedStore.h"
#include "formats/BinaryCoefKind.h"
#include "trevolt/BinaryCoefFile.h"
#include "trevolt/PlacedCoefFile.h"

namespace trevolt {
namespace {

constexpr std::uint64_t kDefaultSizeLimit = 0x7FFFFFFFFFFFFFFF;
constexpr std::uint64_t kNoSizeLimit = std::numeric_limits<std::uint64_t>::max();

} // namespace

template <class Element>
CWordCorrectCoef<Element>::CWordCorrectCoef()
    : m_pStore(std::make_unique<CCaliOperation<Element>>()) {}

template <class Element>
CWordCorrectCoef<Element>::~CWordCorrectCoef() = default;

// ---- the store ----

template <class Element>
Status CWordCorrectCoef<Element>::Create(std::uint16_t width, std::uint16_t height) {
    return m_pStore ? Store()->Allocate(width, height) : E_FAIL;
}

template <class Element>
std::uint32_t CWordCorrectCoef<Element>::GetWidth() const {
    return m_pStore ? Store()->Width() : 0;
}

template <class Element>
std::uint32_t CWordCorrectCoef<Element>::GetHeight() const {
    return m_pStore ? Store()->Height() : 0;
}

template <class Element>
std::uint32_t CWordCorrectCoef<Element>::GetRectBlockCount(const SPixelRect& rect) const {
    return m_pStore ? RectBlockCount(rect) : 0;
}

template <class Element>
std::uint32_t CWordCorrectCoef<Element>::GetBlockListSize() const {
    return m_pStore ? static_cast<std::uint32_t>(Store()->UsedBlocks().size()) : 0;
}

template <class Element>
Status CWordCorrectCoef<Element>::SetBufferMode(bool unlimited) {
    if (!m_pStore)
        return E_FAIL;
    Store()->SetSizeLimit(unlimited ? kNoSizeLimit : kDefaultSizeLimit);
    return S_OK;
}

// ---- channels ----

template <class Element>
bool CWordCorrectCoef<Element>::FillRectChannel(std::int32_t channel, std::uint32_t x,
                                                std::uint32_t y, std::uint32_t width,
                                                std::uint32_t height, float value,
                                                std::uint32_t tableIndex) {
    return FillThrough(nullptr, channel, {x, y, width, height}, value, tableIndex);
}

template <class Element>
bool CWordCorrectCoef<Element>::SetPixelChannel(std::int32_t channel, std::uint32_t x,
                                                std::uint32_t y, float value,
                                                std::uint32_t tableIndex) {
    return SetThrough(nullptr, channel, x, y, value, tableIndex);
}

template <class Element>
bool CWordCorrectCoef<Element>::FillThrough(CCaliOperationData* table, std::int32_t channel,
                                            const SStoreRect& rect, float value,
                                            std::uint32_t tableIndex) {
    const auto word = Kind().fillChannel.WordOf(channel);
    const std::uint32_t row = CCaliOperationData::IsRowIndex(tableIndex) ? tableIndex : 0;
    if (!m_pStore || rect.IsEmpty() || !word || (row != 0 && table == nullptr))
        return false;
    FillChannel<Element>(*Store(), rect, *word, value, table, row);
    return true;
}

template <class Element>
bool CWordCorrectCoef<Element>::SetThrough(const CCaliOperationData* table, std::int32_t channel,
                                           std::uint32_t x, std::uint32_t y, float value,
                                           std::uint32_t tableIndex) {
    const auto word = Kind().setChannel.WordOf(channel);
    Element* const pixel = FindPixel(x, y);
    if (!word || pixel == nullptr)
        return false;
    std::uint16_t& target = pixel->w[*word];
    if (CCaliOperationData::IsRowIndex(tableIndex)) {
        if (table != nullptr)
            target = table->Candidate(tableIndex, target);
        return false;
    }
    const std::int64_t scaled = RoundToWide(value);
    target = static_cast<std::uint16_t>(scaled);
    return scaled > kFullScale;
}

template <class Element>
Status CWordCorrectCoef<Element>::GetRectFloatEx(std::int32_t channel, SPixelRect& region,
                                                 float* values) const {
    const auto rect = FromEdges(region);
    if (!rect)
        return E_COEF_INVALIDARG;
    const Status status =
        CopyChannelOut<Element>(Store(), *rect, Kind().readChannel.WordOf(channel), values);
    if (!Failed(status)) {
        region.right = std::min(region.right, WholeStore(*Store()).right);
        region.bottom = std::min(region.bottom, WholeStore(*Store()).bottom);
    }
    return status;
}

template <class Element>
Status CWordCorrectCoef<Element>::SetRectChannelFloat(std::int32_t channel, std::uint32_t x,
                                                      std::uint32_t y, std::uint32_t width,
                                                      std::uint32_t height, const float* values) {
    return CopyChannelIn<Element>(Store(), {x, y, width, height},
                                  Kind().readChannel.WordOf(channel), values);
}

template <class Element>
Status CWordCorrectCoef<Element>::GetRectChannelFloat(std::int32_t channel, std::uint32_t x,
                                                      std::uint32_t y, std::uint32_t width,
                                                      std::uint32_t height, float* values) const {
    return CopyChannelOut<Element>(Store(), {x, y, width, height},
                                   Kind().readChannel.WordOf(channel), values);
}

template <class Element>
Status CWordCorrectCoef<Element>::GetRectChannelFloat98(std::int32_t channel, std::uint32_t x,
                                                        std::uint32_t y, std::uint32_t width,
                                                        std::uint32_t height, float* values,
                                                        std::uint32_t pitch) const {
    return CopyChannelOut<Element>(Store(), {x, y, width, height},
                                   Kind().readChannel.WordOf(channel), values, pitch);
}

template <class Element>
float CWordCorrectCoef<Element>::GetPixelChannelFloat(std::int32_t channel, std::uint32_t x,
                                                      std::uint32_t y) const {
    const auto word = Kind().readChannel.WordOf(channel);
    return word ? WordToFloat(PixelOrDefault(x, y).w[*word]) : 0.0F;
}

template <class Element>
Status CWordCorrectCoef<Element>::CopyViewIn(const SWordView& view, std::uint32_t x,
                                             std::uint32_t y) {
    return CopyElementsIn<Element>(Store(), {x, y, view.width, view.height}, view.words,
                                   view.pitch);
}

template <class Element>
Status CWordCorrectCoef<Element>::CopyViewOut(std::uint32_t x, std::uint32_t y,
                                              const SWordTarget& target) const {
    return CopyElementsOut<Element>(Store(), {x, y, target.width, target.height}, target.words,
                                    target.pitch);
}

template <class Element>
Status CWordCorrectCoef<Element>::SetEdgedRect(const SPixelRect& rect, const std::uint16_t* words) {
    const auto edged = FromEdges(rect);
    return edged ? CopyElementsIn<Element>(Store(), *edged, words) : E_COEF_INVALIDARG;
}

// ---- word files ----

template <class Element>
Status CWordCorrectCoef<Element>::WriteChunkFile(const wchar_t* path, const SPixelRect& rect,
                                                 const std::byte* name,
                                                 const std::uint8_t* flag) const {
    return WriteRectFile(Kind(), Store(), path, rect, OwnerFields(name, flag));
}

template <class Element>
Status CWordCorrectCoef<Element>::WriteChunkStream(std::ostream& stream,
                                                   const SPixelRect& rect) const {
    return WriteRectStream(Kind(), Store(), stream, rect, OwnerFields(nullptr, nullptr));
}

template <class Element>
Status
CWordCorrectCoef<Element>::ExportCoefEx(const wchar_t* path, const SPixelRect& band,
                                        const SPixelRect& whole, std::uint64_t& directoryPosition,
                                        std::uint64_t& dataPosition, std::uint32_t bandOffset,
                                        const std::byte* name, const std::uint8_t* flag) {
    return WriteBandFile(Kind(), Store(), path, band,
                         {whole, directoryPosition, dataPosition, bandOffset},
                         OwnerFields(name, flag));
}

template <class Element>
Status CWordCorrectCoef<Element>::ExportCoef(const wchar_t* path, const SPixelRect& rect,
                                             const std::byte* name, const std::uint8_t* flag) {
    return WriteChunkFile(path, rect, name, flag);
}

template <class Element>
Status CWordCorrectCoef<Element>::ExportCoefDefault(const wchar_t* path) {
    return WriteWholeFile(Kind(), Store(), path, OwnerFields(nullptr, nullptr));
}

template <class Element>
Status CWordCorrectCoef<Element>::QuerySize(const wchar_t* path, std::uint32_t& width,
                                            std::uint32_t& height) const {
    CWordFileSource file(path);
    return QueryWordFileSize(Kind(), FileKind(), file, width, height);
}

template <class Element>
Status CWordCorrectCoef<Element>::ReadInfo(const wchar_t* path, std::byte* name,
                                           std::uint32_t capacity, std::uint8_t& flag) {
    return ReadOwnerData(path, Kind(), name, capacity, flag);
}

template <class Element>
Status CWordCorrectCoef<Element>::LoadFile(CWordFileSource& file, std::uint32_t x,
                                           std::uint32_t y) {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    const Status status = QueryWordFileSize(Kind(), FileKind(), file, width, height);
    return Failed(status) ? status : LoadChunkFile(Store(), file, x, y);
}

template <class Element>
Status CWordCorrectCoef<Element>::LoadCoefRect(const wchar_t* path, std::uint32_t x,
                                               std::uint32_t y) {
    CWordFileSource file(path);
    return LoadFile(file, x, y);
}

template <class Element>
Status CWordCorrectCoef<Element>::LoadCoefEx(const wchar_t* path, SPixelRect& rect) {
    if (rect.left < 0 || rect.top < 0)
        return E_COEF_INVALIDARG;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    if (const Status status = QuerySize(path, width, height); Failed(status))
        return status;
    const SPixelRect given = rect;
    rect.right = EdgeInStore(rect.left, width, GetWidth());
    rect.bottom = EdgeInStore(rect.top, height, GetHeight());
    const Status status = LoadCoefRect(path, static_cast<std::uint32_t>(rect.left),
                                       static_cast<std::uint32_t>(rect.top));
    if (status == E_COEF_BADFORMAT) // of a kind that is sized and not loaded
        rect = given;
    return status;
}

template <class Element>
Status CWordCorrectCoef<Element>::LoadCoef(const wchar_t* path) {
    return LoadCoefRect(path, 0, 0);
}

template <class Element>
Status CWordCorrectCoef<Element>::LoadLegacy80(const wchar_t* path) {
    CChromaCorrectCoef map;
    SPixelRect rect;
    return ChangeThroughMap<Element>(Store(), map, rect, [&] {
        return Place9fCoefFile(map, path, rect, /*clip=*/false, S9fCoefKind::AllEntries());
    });
}

template <class Element>
Status CWordCorrectCoef<Element>::SaveLegacy86(const wchar_t* path) {
    CChromaCorrectCoef map;
    const Status status = StoreToMap<Element>(Store(), map);
    return Failed(status) ? status : Write9fCoefFile(map, path, nullptr);
}

// ---- turned copies ----

template <class Element>
Status CWordCorrectCoef<Element>::MakeTurnedCopy(const wchar_t* path, const SPixelRect& rect,
                                                 std::uint32_t mode,
                                                 CCaliOperation<Element>& copy) const {
    if (path == nullptr || !m_pStore)
        return E_COEF_INVALIDARG;
    return CopyTurned<Element>(*Store(), rect, mode, copy.Buffer());
}

template <class Element>
Status CWordCorrectCoef<Element>::SaveTurnedBand(const wchar_t* path, const SPixelRect& rect,
                                                 std::uint32_t mode, const SBandPlace& place,
                                                 const SOwnerFields& owner) const {
    CCaliOperation<Element> copy;
    if (const Status status = MakeTurnedCopy(path, rect, mode, copy); Failed(status))
        return status;
    return WriteBandFile(Kind(), &copy.Buffer(), path, WholeStore(copy.Buffer()), place, owner);
}

template <class Element>
Status CWordCorrectCoef<Element>::SaveTurnedFile(const wchar_t* path, const SPixelRect& rect,
                                                 std::uint32_t mode,
                                                 const SOwnerFields& owner) const {
    CCaliOperation<Element> copy;
    if (const Status status = MakeTurnedCopy(path, rect, mode, copy); Failed(status))
        return status;
    return WriteRectFile(Kind(), &copy.Buffer(), path, WholeStore(copy.Buffer()), owner);
}

// ---- digest and images ----

template <class Element>
Status CWordCorrectCoef<Element>::GetStoreDigest(std::wstring& text) const {
    return m_pStore && Store()->ComputeMD5(text) ? S_OK : E_FAIL;
}

template <class Element>
Status CWordCorrectCoef<Element>::LoadStoreImage(const std::byte* image) {
    return m_pStore ? Store()->LoadFromMemory(image) : E_FAIL;
}

template <class Element>
Status CWordCorrectCoef<Element>::LoadBoundedStoreImage(const std::byte* image,
                                                        std::size_t length) {
    return m_pStore ? Store()->LoadFromMemory(image, length) : E_FAIL;
}

template <class Element>
Status CWordCorrectCoef<Element>::SaveStoreImage(std::byte* destination, std::uint32_t originX,
                                                 std::uint32_t originY) const {
    return m_pStore ? Store()->SaveToMemory(destination, originX, originY) : E_FAIL;
}

template <class Element>
std::uint64_t CWordCorrectCoef<Element>::MaxStoreImageBytes() const {
    return m_pStore ? Store()->MaxMemoryImageBytes() : 0;
}

#define TREVOLT_WORD_OBJECT(kind, element, sizes) template class CWordCorrectCoef<element>;
TREVOLT_WORD_KINDS(TREVOLT_WORD_OBJECT)
#undef TREVOLT_WORD_OBJECT

} // namespace trevolt
