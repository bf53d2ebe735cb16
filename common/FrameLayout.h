// What of an LZ4 frame is put together and taken apart here; the frame's header is read by LZ4.
#pragma once

#include <cstddef>
#include <cstdint>

namespace trevolt {

inline constexpr std::uint32_t kFrameMagic = 0x184D2204;

// The descriptor's first byte.
inline constexpr unsigned kFrameVersionFlags = 0x40;
inline constexpr unsigned kIndependentBlocksFlag = 0x20;
inline constexpr unsigned kContentSizeFlag = 0x08;
inline constexpr unsigned kContentChecksumFlag = 0x04;
inline constexpr std::size_t kFrameFlagsOffset = 4;

// The descriptor's second byte and what it says: a frame's largest block.
inline constexpr unsigned kLargestBlocksCode = 0x70;
inline constexpr std::size_t kLargestBlockBytes = std::size_t{4} << 20;

/// Bytes of a header without the fields that the flags name, and of the longest one.
inline constexpr std::size_t kShortestHeaderBytes = 7;
inline constexpr std::size_t kLongestHeaderBytes = 19;

// A block is its size, a uint32, and as many bytes; with this bit they are stored as they are. A
// size of 0 is the end mark.
inline constexpr std::uint32_t kStoredAsIsBit = 0x80000000;

/// Bytes of a block's size field and of a checksum.
inline constexpr std::size_t kFrameFieldBytes = 4;

} // namespace trevolt
