// A turned copy of a rectangle of a store.
#pragma once

#include <cstdint>

#include "calibuf/CaliOperation.h"
#include "coef/StoreRect.h"
#include "trevolt/PixelRect.h"
#include "trevolt/QuarterTurn.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// Copies the pixels of `rect`, a rectangle with columns and rows and edges of 0 and more, each to
/// where a known `mode` puts it when the turned rectangle's left top is at (left, top) of `target`,
/// whose blocks there are allocated. Pixels past the store's size or missing there stay as they are.
template <class Element>
void PutTurned(const CCaliBuf& store, const SPixelRect& rect, std::uint32_t mode, CCaliBuf& target,
               std::uint32_t left, std::uint32_t top) {
    SStoreRect source{static_cast<std::uint64_t>(rect.left), static_cast<std::uint64_t>(rect.top),
                      static_cast<std::uint64_t>(rect.Width()),
                      static_cast<std::uint64_t>(rect.Height())};
    if (Failed(CutToStore(&store, &target, source)))
        return; // all of it lies outside
    const CQuarterTurn turn(mode, rect.Width(), rect.Height());
    ForEachElementRun<Element>(
        store, source,
        [&](const Element* run, std::uint32_t count, std::uint64_t x, std::uint64_t y) {
            for (std::uint32_t i = 0; i < count; ++i) {
                const PixelPosition to =
                    turn.Turned(static_cast<std::int64_t>(x) + i, static_cast<std::int64_t>(y));
                *reinterpret_cast<Element*>(
                    target.FindElement(left + static_cast<std::uint32_t>(to.x),
                                       top + static_cast<std::uint32_t>(to.y))) = run[i];
            }
        });
}

/// Sizes `target` to the turned rectangle and copies the rectangle's pixels into it, each where
/// `mode` puts it; pixels that the store's size does not hold, or that are missing, become the
/// default. E_COEF_INVALIDARG for a store without a size, an empty rectangle or one with negative
/// edges, or a mode that is no turn; E_FAIL when the target gets no memory.
template <class Element>
Status CopyTurned(const CCaliBuf& store, const SPixelRect& rect, std::uint32_t mode,
                  CCaliBuf& target) {
    if (store.Width() == 0 || store.Height() == 0 || rect.left < 0 || rect.top < 0 ||
        rect.Width() < 1 || rect.Height() < 1 || !CQuarterTurn::IsKnown(mode))
        return E_COEF_INVALIDARG;
    const CQuarterTurn turn(mode, rect.Width(), rect.Height());
    const PixelSize size = turn.TurnedSize();
    const auto width = static_cast<std::uint32_t>(size.width);
    const auto height = static_cast<std::uint32_t>(size.height);
    if (!target.HasRoomFor(width, height) || Failed(target.Allocate(width, height)))
        return E_FAIL;
    PutTurned<Element>(store, rect, mode, target, 0, 0);
    return S_OK;
}

} // namespace trevolt
