#include "coef/MapTransfer.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "coef/WordKind.h"
#include "trevolt/FixedPoint.h"

namespace trevolt {
namespace {

template <class Element>
using ConvertedWords = std::array<std::uint16_t, kWordKind<Element>.convertedWords>;

template <class Element>
ConvertedWords<Element> ConvertElement(const SMatrixCoef& source) {
    ConvertedWords<Element> words;
    for (std::size_t k = 0; k < words.size(); ++k)
        words[k] = TruncateToWord(source.m[kWordKind<Element>.mapValues[k]]);
    return words;
}

/// Writes the words from element `place` of a block on, up to the block's end.
template <class Element>
void PutWords(Element* block, std::size_t place, const ConvertedWords<Element>& words) {
    const std::size_t bytes =
        std::min(sizeof words, (std::size_t{kBlockElements} - place) * sizeof(Element));
    std::memcpy(reinterpret_cast<std::byte*>(block) + place * sizeof(Element), words.data(), bytes);
}

template <class Element>
void PutElement(const Element& element, SMatrixCoef& target) {
    for (std::size_t k = 0; k < element.w.size(); ++k)
        target.m[kWordKind<Element>.mapValues[k]] = WordToFloat(element.w[k]);
}

} // namespace

Status SizeMap(CChromaCorrectCoef& map, std::uint64_t width, std::uint64_t height) {
    map.Reset();
    if (std::max(width, height) > kLargestMapSide)
        return E_FAIL;
    map.Resize(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height));
    if (map.IsEmpty() || map.HasStorage())
        return S_OK;
    map.Reset();
    return E_FAIL;
}

template <class Element>
Status MapToStore(const CChromaCorrectCoef& map, std::int32_t mapX, std::int32_t mapY,
                  CCaliBuf* store, SStoreRect rect) {
    if (const Status status = CutToStore(store, &map, rect); Failed(status))
        return status;
    ForEachBlockPiece(rect, [&](const SBlockPiece& piece) {
        auto* const block = BlockElements<Element>(*store, piece.block);
        if (block == nullptr)
            return;
        const auto left = mapX + static_cast<std::int32_t>(piece.bufferX);
        const auto top = mapY + static_cast<std::int32_t>(piece.bufferY);
        for (std::uint32_t x = 0; x < piece.width; ++x)
            for (std::uint32_t y = 0; y < piece.height; ++y)
                PutWords<Element>(
                    block, std::size_t{piece.startY + y} * kBlockWidth + piece.startX + x,
                    ConvertElement<Element>(map.ElementOrDefault(
                        left + static_cast<std::int32_t>(x), top + static_cast<std::int32_t>(y))));
    });
    return S_OK;
}

template <class Element>
Status StoreToMap(const CCaliBuf* store, CChromaCorrectCoef& map) {
    if (store == nullptr)
        return E_FAIL;
    if (const Status status = SizeMap(map, store->Width(), store->Height()); Failed(status))
        return status;
    ForEachElementRun<Element>(
        *store, {0, 0, store->Width(), store->Height()},
        [&](const Element* run, std::uint32_t count, std::uint64_t x, std::uint64_t y) {
            for (std::uint32_t i = 0; i < count; ++i)
                PutElement(run[i], *map.FindElement(static_cast<std::int32_t>(x + i),
                                                    static_cast<std::int32_t>(y)));
        });
    return S_OK;
}

#define TREVOLT_MAP_TRANSFERS(kind, element, sizes)                                                \
    template Status MapToStore<element>(const CChromaCorrectCoef&, std::int32_t, std::int32_t,     \
                                        CCaliBuf*, SStoreRect);                                    \
    template Status StoreToMap<element>(const CCaliBuf*, CChromaCorrectCoef&);
TREVOLT_WORD_KINDS(TREVOLT_MAP_TRANSFERS)
#undef TREVOLT_MAP_TRANSFERS

} // namespace trevolt
