// What the fuzz targets of the map's files share: kinds told by an input, maps with known content,
// and comparisons bit for bit.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "fuzz/FuzzInput.h"
#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/MassiveBuf.h"
#include "trevolt/MatrixCoef.h"

namespace trevolt::fuzz {

/// Bit for bit, so that a NaN equals itself and −0 is not 0.
inline bool SameBits(const SMatrixCoef& a, const SMatrixCoef& b) {
    using Bits = std::array<std::uint32_t, 12>;
    return std::bit_cast<Bits>(a) == std::bit_cast<Bits>(b);
}

inline std::vector<std::byte> BytesOf(const CMassiveBuf& buffer) {
    std::vector<std::byte> bytes;
    bytes.reserve(static_cast<std::size_t>(buffer.ByteCount()));
    for (std::size_t i = 0; i < buffer.BlockCount(); ++i)
        bytes.insert(bytes.end(), buffer.Block(i), buffer.Block(i) + buffer.BlockSize(i));
    return bytes;
}

/// The kind whose magic begins as the input does; of another first byte, whose file no kind reads,
/// the one that it names.
template <class Kinds>
const auto& KindOf(const Kinds& kinds, std::span<const std::byte> input) {
    const auto first =
        input.empty() ? std::uint8_t{0} : std::to_integer<std::uint8_t>(input.front());
    for (const auto& kind : kinds)
        if (kind.magic.front() == first)
            return kind;
    return kinds[first % kinds.size()];
}

/// A map whose values no file is likely to hold.
inline CChromaCorrectCoef PaintedMap(std::uint32_t width, std::uint32_t height) {
    CChromaCorrectCoef map;
    map.Resize(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height));
    Check(map.IsEmpty() || map.HasStorage());
    for (std::int32_t y = 0; y < map.Height(); ++y)
        for (std::int32_t x = 0; x < map.Width(); ++x) {
            SMatrixCoef element;
            for (std::size_t k = 0; k < element.m.size(); ++k)
                element.m[k] = -1.0F - static_cast<float>(y * 64 + x * 12) - static_cast<float>(k);
            map.SetElement(x, y, element);
        }
    return map;
}

} // namespace trevolt::fuzz
