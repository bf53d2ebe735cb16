// Bytes packed as a zlib stream by several threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace trevolt {

/// Bytes that are packed by themselves: what is alike is found in them, not from one to the other.
inline constexpr std::size_t kDeflateStripe = std::size_t{512} << 10;

/// The bytes as one zlib stream of an effort of 1 to 9, made by up to `jobs` threads; the same for
/// every number of them. Throws std::bad_alloc.
std::vector<std::uint8_t> DeflateInStripes(std::span<const std::uint8_t> bytes, int effort,
                                           std::size_t jobs);

} // namespace trevolt
