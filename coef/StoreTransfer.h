// Rectangle transfers between a store and a caller's buffer, for any element: raw words, floats,
// bytes, and one channel. Statuses are those of the rectangle iteration (coef/StoreRect.h).
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>

#include "coef/StoreRect.h"
#include "trevolt/CaliOperationData.h"
#include "trevolt/FixedPoint.h"

namespace trevolt {

/// Elements from row to row of the caller's buffer; none given, the rows are as long as the cut
/// rectangle.
using Pitch = std::optional<std::uint32_t>;

/// Cuts the rectangle to the store and calls transfer(element run, count, caller's place of its
/// first element) for every row of it that is allocated. E_COEF_INVALIDARG for a short pitch.
template <class Element, class Store, class Transfer>
Status TransferRect(Store* store, SStoreRect rect, const void* buffer, Pitch pitch,
                    Transfer&& transfer) {
    if (const Status status = CutToStore(store, buffer, rect); Failed(status))
        return status;
    const std::uint64_t rowPitch = pitch.value_or(static_cast<std::uint32_t>(rect.width));
    if (rowPitch < rect.width)
        return E_COEF_INVALIDARG;
    ForEachElementRun<Element>(*store, rect,
                               [&](auto* run, std::uint32_t count, std::uint64_t x,
                                   std::uint64_t y) { transfer(run, count, y * rowPitch + x); });
    return S_OK;
}

template <class Element>
inline constexpr std::size_t kElementWords = sizeof(Element) / sizeof(std::uint16_t);

template <class Element>
Status CopyElementsIn(CCaliBuf* store, const SStoreRect& rect, const std::uint16_t* words,
                      Pitch pitch = std::nullopt) {
    return TransferRect<Element>(
        store, rect, words, pitch, [&](Element* run, std::uint32_t count, std::uint64_t place) {
            std::memcpy(static_cast<void*>(run), words + place * kElementWords<Element>,
                        count * sizeof(Element));
        });
}

template <class Element>
Status CopyElementsOut(const CCaliBuf* store, const SStoreRect& rect, std::uint16_t* words,
                       Pitch pitch = std::nullopt) {
    return TransferRect<Element>(store, rect, words, pitch,
                                 [&](const Element* run, std::uint32_t count, std::uint64_t place) {
                                     std::memcpy(words + place * kElementWords<Element>, run,
                                                 count * sizeof(Element));
                                 });
}

/// As `CopyElementsIn`, but without cutting: E_COEF_NOBUFFER without buffer or store,
/// E_COEF_INVALIDARG for an empty rectangle.
template <class Element>
Status CopyElementsInUncut(CCaliBuf* store, const SStoreRect& rect, const std::uint16_t* words) {
    if (store == nullptr || words == nullptr)
        return E_COEF_NOBUFFER;
    if (rect.IsEmpty())
        return E_COEF_INVALIDARG;
    ForEachElementRun<Element>(
        *store, rect, [&](Element* run, std::uint32_t count, std::uint64_t x, std::uint64_t y) {
            std::memcpy(static_cast<void*>(run),
                        words + (y * rect.width + x) * kElementWords<Element>,
                        count * sizeof(Element));
        });
    return S_OK;
}

/// Sets every word of every element from `perElement` caller values: word k becomes
/// convert(value[valueOf(k)]).
template <class Element, class Value, class ValueOf, class Convert>
Status ConvertIn(CCaliBuf* store, const SStoreRect& rect, const Value* values,
                 std::size_t perElement, ValueOf&& valueOf, Convert&& convert) {
    return TransferRect<Element>(store, rect, values, std::nullopt,
                                 [&](Element* run, std::uint32_t count, std::uint64_t place) {
                                     const Value* source = values + place * perElement;
                                     for (std::uint32_t i = 0; i < count; ++i, source += perElement)
                                         for (std::size_t k = 0; k < run[i].w.size(); ++k)
                                             run[i].w[k] = convert(source[valueOf(k)]);
                                 });
}

/// One word of every element to floats. E_FAIL without a word.
template <class Element>
Status CopyChannelOut(const CCaliBuf* store, const SStoreRect& rect,
                      std::optional<std::uint32_t> word, float* values,
                      Pitch pitch = std::nullopt) {
    if (!word)
        return E_FAIL;
    return TransferRect<Element>(store, rect, values, pitch,
                                 [&](const Element* run, std::uint32_t count, std::uint64_t place) {
                                     for (std::uint32_t i = 0; i < count; ++i)
                                         values[place + i] = WordToFloat(run[i].w[*word]);
                                 });
}

/// One word of every element from floats, rounded, not clamped. E_FAIL without a word.
template <class Element>
Status CopyChannelIn(CCaliBuf* store, const SStoreRect& rect, std::optional<std::uint32_t> word,
                     const float* values) {
    if (!word)
        return E_FAIL;
    return TransferRect<Element>(store, rect, values, std::nullopt,
                                 [&](Element* run, std::uint32_t count, std::uint64_t place) {
                                     for (std::uint32_t i = 0; i < count; ++i)
                                         run[i].w[*word] = RoundToWord(values[place + i]);
                                 });
}

/// Gives word `word` of every allocated element of the rectangle, which is not cut, the same value
/// or its entry in a row of the transfer table. `table` may be null for row 0.
template <class Element>
void FillChannel(CCaliBuf& store, const SStoreRect& rect, std::uint32_t word, float value,
                 CCaliOperationData* table, std::uint32_t row) {
    const std::uint16_t fixed = RoundToClampedWord(value);
    const std::uint32_t* entries = nullptr; // of the row, once a block has been met
    ForEachElementRun<Element>(
        store, rect, [&](Element* run, std::uint32_t count, std::uint64_t, std::uint64_t) {
            if (row != 0 && entries == nullptr) {
                if (CCaliOperationData::IsStepRow(row))
                    table->SetStep(row, value);
                entries = table->Row(row).data();
            }
            for (std::uint32_t i = 0; i < count; ++i) {
                std::uint16_t& target = run[i].w[word];
                target = row == 0 ? fixed : CCaliOperationData::ClampedEntry(entries[target]);
            }
        });
}

} // namespace trevolt
