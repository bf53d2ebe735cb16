// What tests look for in pictures.
#pragma once

#include <optional>

#include "app/inspection/Picture.h"

namespace trevolt::test {

/// The smallest rectangle that holds all pixels for which `isWanted(colour)`; nothing without one.
template <class IsWanted>
std::optional<SPictureRect> BoundsOf(const CPicture& picture, const IsWanted& isWanted) {
    int left = picture.Width();
    int top = picture.Height();
    int right = -1;
    int bottom = -1;
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x) {
            if (!isWanted(picture.At(x, y)))
                continue;
            left = x < left ? x : left;
            top = y < top ? y : top;
            right = x > right ? x : right;
            bottom = y > bottom ? y : bottom;
        }
    if (right < 0)
        return std::nullopt;
    return SPictureRect{left, top, right - left + 1, bottom - top + 1};
}

inline int CountOf(const CPicture& picture, SColour colour) {
    int count = 0;
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x)
            count += picture.At(x, y) == colour ? 1 : 0;
    return count;
}

/// The left top of every sheet's content.
inline constexpr int kContentLeft = 28;
inline constexpr int kContentTop = 84;

} // namespace trevolt::test
