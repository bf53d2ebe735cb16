// Which of a map's twelve values the pixels of a file hold, in which order, and as what.
#pragma once

#include <algorithm>
#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <span>
#include <tuple>

#include "trevolt/FileKinds.h"
#include "trevolt/MatrixCoef.h"

namespace trevolt {

/// A set of a map element's values: bit k stands for m[k].
using MapValues = std::bitset<std::tuple_size_v<decltype(SMatrixCoef::m)>>;

/// Those of the matrix.
inline constexpr MapValues kWholeMatrix{0x1FF};

enum class EStoredValue : std::uint8_t {
    Float, ///< float32, bit for bit
    Word,  ///< the low 16 bits of roundf(value × 65535)
    Byte,  ///< the low 8 bits of roundf(value × 255)
    Text,  ///< five decimals, which are cleaned when they are read
};

struct SElementForm {
    EStoredValue value = EStoredValue::Float;
    std::uint32_t count = 0;
    /// The map's value behind each stored one; those past `count` are 0.
    std::array<std::uint8_t, 12> places{};

    std::span<const std::uint8_t> Places() const { return {places.data(), count}; }
    /// The set of the places.
    MapValues Values() const {
        MapValues values;
        for (const std::uint8_t place : Places())
            values.set(place);
        return values;
    }
    friend bool operator==(const SElementForm&, const SElementForm&) = default;
};

/// `value`s of the map's values at `places`.
template <std::size_t Count, class Places>
constexpr SElementForm MakeElementForm(EStoredValue value, const Places& places) {
    SElementForm form{value, Count};
    std::transform(places.begin(), places.begin() + Count, form.places.begin(),
                   [](auto place) { return static_cast<std::uint8_t>(place); });
    return form;
}

/// A pixel of the map itself.
inline constexpr SElementForm kMapForm = MakeElementForm<12>(
    EStoredValue::Float, std::array<std::uint8_t, 12>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});

/// The form of the kind's files. A value that they do not hold is the default element's when it is
/// read; off the diagonal that is 0.
const SElementForm& FormOfKind(const SFileKind& kind);

} // namespace trevolt
