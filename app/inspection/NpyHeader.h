// The header of a .npy file, NumPy's form of one array: a magic, a version, and the literal of a
// dictionary that tells type, order and shape.
#pragma once

#include <cstdint>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

namespace trevolt {

/// Of an array of plain numbers, as the file tells it.
struct SNpyHeader {
    std::string descr; ///< byte order, letter and size, as "<f4"
    bool isFortranOrder = false;
    std::vector<std::uint64_t> shape;

    friend bool operator==(const SNpyHeader&, const SNpyHeader&) = default;
};

/// Most dimensions and most letters of a type that are taken.
inline constexpr std::size_t kMostNpyDimensions = 32;
inline constexpr std::size_t kMostNpyDescrChars = 32;
/// Most bytes of a dictionary, which a version 1.0 cannot pass.
inline constexpr std::uint32_t kMostNpyDictBytes = 0xFFFF;

/// Takes the header of version 1.0, 2.0 or 3.0 at the stream's position, which is then that of the
/// first value. What is wrong with it, in plain words, empty when nothing is; `header` is undefined
/// else.
std::string ReadNpyHeader(std::istream& stream, SNpyHeader& header);

/// Takes the literal: each of the three keys once, in any order, blanks between and behind. False for
/// every other text.
bool ParseNpyDict(std::string_view text, SNpyHeader& header);

/// A header of version 1.0, byte for byte as NumPy writes it, which ends at a multiple of 64 bytes.
std::string FormatNpyHeader(const SNpyHeader& header);

/// "(3, 4, 12)".
std::string FormatNpyShape(const std::vector<std::uint64_t>& shape);

} // namespace trevolt
