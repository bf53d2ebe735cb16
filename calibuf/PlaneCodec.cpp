#include "calibuf/PlaneCodec.h"

#include <lz4.h>

#include "calibuf/BlockGrid.h"
#include "calibuf/PlaneLayout.h"
#include "calibuf/WordElementKind.h"

namespace trevolt {
namespace {

constexpr std::size_t kPlaneGap = 160; // words, a few cache lines: planes start in different sets
constexpr std::size_t kWordsOfUnknownKind = 3;
constexpr int kAcceleration = 1;

/// What LZ4 may fill for a plane of `count` words.
int PlaneCapacity(std::size_t count) { return static_cast<int>(count * 2 * kWordBytes); }

/// The words of a plane in which LZ4 found no match: its block is one run of literals, and they
/// stand in it as they are. Null for any other block, and for a run of another length.
const std::byte* FindLiteralPlane(std::span<const std::byte> block, std::size_t planeBytes) {
    constexpr std::size_t kLongRun = 15; // the length goes on in the next bytes
    constexpr std::byte kFullByte{255};  // and on in the byte behind
    if (block.empty())
        return nullptr;
    std::size_t at = 1;
    auto length = std::to_integer<std::size_t>(block[0] >> 4);
    for (bool goesOn = length == kLongRun; goesOn; ++at) {
        if (at == block.size())
            return nullptr;
        length += std::to_integer<std::size_t>(block[at]);
        goesOn = block[at] == kFullByte;
    }
    return length == planeBytes && block.size() - at == length ? block.data() + at : nullptr;
}

/// The compressed bytes of a plane, 0 when LZ4 makes none of it.
std::uint32_t CompressPlane(const void* words, std::byte* destination, std::size_t count) {
    return static_cast<std::uint32_t>(LZ4_compress_fast(
        static_cast<const char*>(words), reinterpret_cast<char*>(destination),
        static_cast<int>(count * kWordBytes), PlaneCapacity(count), kAcceleration));
}

SPlaneLayout LayoutFor(const WordElementKind* kind, std::size_t maxElements) {
    return {kind == nullptr ? kWordsOfUnknownKind : kind->wordCount, maxElements + kPlaneGap};
}

} // namespace

CPlaneCodec::CPlaneCodec(std::size_t elemSize, std::size_t maxElements)
    : m_elemSize(elemSize),
      m_isKnownKind(FindWordElementKind(elemSize) != nullptr),
      m_layout(LayoutFor(FindWordElementKind(elemSize), maxElements)),
      // A plane may be decoded to twice its size before it is refused; the next one overwrites
      // what ran over, and behind the last one there is room.
      m_scratch((m_layout.wordCount + 1) * m_layout.stride * kWordBytes) {}

std::size_t CPlaneCodec::MostCompressedBytes(std::size_t wordCount, std::size_t count) {
    return wordCount * LZ4_COMPRESSBOUND(count * kWordBytes);
}

std::uint16_t* CPlaneCodec::Plane(std::size_t k) {
    return reinterpret_cast<std::uint16_t*>(m_scratch.Data()) + k * m_layout.stride;
}

Status CPlaneCodec::Compress(std::byte* destination, std::uint32_t& total, const std::byte* source,
                             std::uint32_t* planeSizes, std::size_t count) {
    total = 0;
    if (!m_isKnownKind)
        return E_FAIL;
    if (m_layout.wordCount == 1) {
        total = planeSizes[0] = CompressPlane(source, destination, count);
        return S_OK;
    }
    GatherPlanes(source, count, Plane(0), m_layout);
    total = CompressFilled(destination, planeSizes, count);
    return S_OK;
}

std::uint32_t CPlaneCodec::CompressFilled(std::byte* destination, std::uint32_t* planeSizes,
                                          std::size_t count) {
    std::uint32_t total = 0;
    for (std::size_t k = 0; k < m_layout.wordCount; ++k) {
        planeSizes[k] = CompressPlane(Plane(k), destination + total, count);
        total += planeSizes[k];
    }
    return total;
}

Status CPlaneCodec::Decode(const SChunkRecord& record, const std::byte* compressed) {
    m_decoded = 0;
    m_count = record.Elements();
    if (!IsPossibleChunk(record, m_elemSize) || m_elemSize < m_layout.wordCount * kWordBytes)
        return E_FAIL;
    std::uint32_t left = record.totalSize;
    for (; m_decoded < m_layout.wordCount; ++m_decoded) {
        const std::uint32_t size = record.planeSizes[m_decoded];
        if (size > left)
            return E_FAIL;
        m_planes[m_decoded] = DecodePlane(m_decoded, {compressed, size}, m_count);
        if (m_planes[m_decoded] == nullptr)
            return E_FAIL;
        compressed += size;
        left -= size;
    }
    return S_OK;
}

std::uint32_t CPlaneCodec::Scatter(std::byte* destination) const {
    if (m_decoded == 0)
        return 0;
    ScatterPlanes(std::span(m_planes).first(m_decoded), destination, m_count, m_elemSize);
    return static_cast<std::uint32_t>(m_decoded * m_count * kWordBytes);
}

const std::byte* CPlaneCodec::DecodePlane(std::size_t k, std::span<const std::byte> block,
                                          std::size_t count) {
    const std::size_t planeBytes = count * kWordBytes;
    if (const std::byte* const literals = FindLiteralPlane(block, planeBytes))
        return literals;
    auto* const plane = reinterpret_cast<std::byte*>(Plane(k));
    const int made = LZ4_decompress_safe(reinterpret_cast<const char*>(block.data()),
                                         reinterpret_cast<char*>(plane),
                                         static_cast<int>(block.size()), PlaneCapacity(count));
    return made >= 0 && static_cast<std::size_t>(made) == planeBytes ? plane : nullptr;
}

bool IsPossibleChunk(const SChunkRecord& record, std::size_t elemSize) {
    return record.width > 0 && record.width <= kBlockWidth && record.height > 0 &&
           record.height <= kBlockHeight && record.totalSize <= elemSize * kBlockElements * 2;
}

} // namespace trevolt
