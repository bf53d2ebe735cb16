// Stores with known content, and the bytes that they write, for the tests of the calibration
// buffer.
#pragma once

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "calibuf/CaliOperation.h"
#include "common/LittleEndian.h"
#include "tests/support/TestFiles.h"

namespace trevolt::test {

/// The five kinds, for typed tests.
using AllElements = ::testing::Types<SWordCoef, S3WordCoef, S4WordCoef, S9WordCoef, S12WordCoef>;

/// What `FillPattern` gives word k of pixel (x, y); near the corner never a default word.
inline std::uint16_t PatternWord(std::uint32_t x, std::uint32_t y, std::uint32_t k) {
    return static_cast<std::uint16_t>(x * 7 + y * 13 + k * 101 + 1);
}

template <class T>
T PatternElement(std::uint32_t x, std::uint32_t y) {
    T element;
    for (std::uint32_t k = 0; k < element.w.size(); ++k)
        element.w[k] = PatternWord(x, y, k);
    return element;
}

template <class T>
void FillPattern(CCaliOperation<T>& owner) {
    for (std::uint32_t y = 0; y < owner.Buffer().Height(); ++y)
        for (std::uint32_t x = 0; x < owner.Buffer().Width(); ++x)
            if (T* element = owner.Find(x, y))
                *element = PatternElement<T>(x, y);
}

/// Pixels of [x0, x1) × [y0, y1) whose element differs from the pattern's at (x - dx, y - dy).
template <class T>
int CountUnlikePattern(const CCaliOperation<T>& owner, std::uint32_t x0, std::uint32_t y0,
                       std::uint32_t x1, std::uint32_t y1, std::uint32_t dx = 0,
                       std::uint32_t dy = 0) {
    int unlike = 0;
    for (std::uint32_t y = y0; y < y1; ++y)
        for (std::uint32_t x = x0; x < x1; ++x) {
            const T* element = owner.Find(x, y);
            unlike += element == nullptr || element->w != PatternElement<T>(x - dx, y - dy).w;
        }
    return unlike;
}

/// Pixels of all blocks that hold something else than the default element.
template <class T>
int CountUnlikeDefault(const CCaliOperation<T>& owner) {
    int unlike = 0;
    for (const std::uint32_t index : owner.Buffer().UsedBlocks()) {
        const auto* elements = reinterpret_cast<const T*>(owner.Buffer().Block(index)->pData);
        for (std::uint32_t i = 0; i < kBlockElements; ++i)
            unlike += elements[i].w != T{}.w;
    }
    return unlike;
}

/// Whether two stores have the same blocks in the same order with the same bytes.
inline bool HoldSame(const CCaliBuf& a, const CCaliBuf& b) {
    if (!std::ranges::equal(a.UsedBlocks(), b.UsedBlocks()))
        return false;
    return std::ranges::all_of(a.UsedBlocks(), [&](std::uint32_t index) {
        return a.Block(index)->nBytes == b.Block(index)->nBytes &&
               std::memcmp(a.Block(index)->pData, b.Block(index)->pData, a.Block(index)->nBytes) ==
                   0;
    });
}

/// A binary stream in memory that holds `bytes`, at its start.
inline std::stringstream StreamOf(std::span<const std::byte> bytes) {
    return std::stringstream(std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()),
                             std::ios::in | std::ios::out | std::ios::binary);
}

inline Bytes BytesOf(const std::stringstream& stream) {
    const std::string text = stream.str();
    Bytes bytes(text.size());
    if (!bytes.empty())
        std::memcpy(bytes.data(), text.data(), text.size());
    return bytes;
}

/// A stream that holds `header` and stands behind it.
inline std::stringstream StreamBehind(const SChunkHeader& header) {
    std::stringstream stream = StreamOf(EncodeChunkHeader(header));
    stream.seekp(kChunkHeaderBytes);
    return stream;
}

/// Record `i` of the directory that starts at `at`.
inline SChunkRecord RecordAt(const Bytes& file, std::uint32_t planeCount, std::size_t i,
                             std::size_t at = kChunkHeaderBytes) {
    return DecodeChunkRecord(file.data() + at + i * ChunkRecordBytes(planeCount), planeCount);
}

/// A whole chunk file of what `rect` covers of the store, its header as the file kinds write it.
inline Bytes RectFile(const CCaliBuf& store, const SPixelRect& rect) {
    std::stringstream stream =
        StreamBehind({.originX = static_cast<std::uint32_t>(rect.left),
                      .originY = static_cast<std::uint32_t>(rect.top),
                      .width = static_cast<std::uint32_t>(rect.Width()),
                      .height = static_cast<std::uint32_t>(rect.Height()),
                      .recordCount = static_cast<std::uint32_t>(BlocksTouchedBy(rect).Count()),
                      .directoryOffset = store.ElemSize() == sizeof(SWordCoef) ? 168U : 0U});
    EXPECT_EQ(store.WriteRectChunks(stream, rect), S_OK);
    EXPECT_TRUE(stream.good());
    return BytesOf(stream);
}

/// Reads a chunk file from memory at (x, y), without clipping.
inline Status ReadAt(CCaliBuf& store, const Bytes& file, std::uint32_t x, std::uint32_t y,
                     std::uint32_t clipWidth = 0, std::uint32_t clipHeight = 0) {
    std::stringstream stream = StreamOf(file);
    return store.ReadRectChunks(stream, x, y, clipWidth, clipHeight);
}

} // namespace trevolt::test
