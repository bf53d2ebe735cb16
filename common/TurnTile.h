// What a turn moves elements by: runs read backwards, tiles read by their columns, hints to the cache
// of what comes next. An element is as many bytes as its kind has, at any address.
//
// Its speed is the memory's. A turn reads or writes rows that are far apart, which no processor
// foresees: so every line is asked for ahead of its use. And rows whose distance is a power of two
// push each other out of the cache: so a tile is copied row by row, every line of it touched once,
// into memory of its own, and stored from there column by column, every line filled at once.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace trevolt {

/// Bytes and words of one vector, which every processor that this is compiled for has.
inline constexpr std::size_t kVectorBytes = 16;
inline constexpr std::size_t kVectorWords = 8;

using WordVector [[gnu::vector_size(kVectorBytes)]] = std::uint16_t;
using HalfVector [[gnu::vector_size(kVectorBytes)]] = std::uint64_t;

inline WordVector LoadWords(const std::byte* from) {
    WordVector words;
    std::memcpy(&words, from, sizeof words);
    return words;
}

inline void StoreWords(std::byte* to, WordVector words) { std::memcpy(to, &words, sizeof words); }

/// Halves first: of all eight words at once GCC 12 makes moves of single words.
inline WordVector ReversedWords(WordVector words) {
    HalfVector halves;
    std::memcpy(&halves, &words, sizeof halves);
    halves = __builtin_shufflevector(halves, halves, 1, 0);
    std::memcpy(&words, &halves, sizeof words);
    return __builtin_shufflevector(words, words, 3, 2, 1, 0, 7, 6, 5, 4);
}

// ---- stores past the cache ----

/// Stores a vector, at an address that is a multiple of its bytes, without fetching the line that it
/// goes to, where the processor can; `EndStreaming` must follow before another thread reads it.
inline void StreamWords(std::byte* to, WordVector words) {
#ifdef __SSE2__
    _mm_stream_si128(reinterpret_cast<__m128i*>(to), std::bit_cast<__m128i>(words));
#else
    StoreWords(to, words);
#endif
}

inline void EndStreaming() {
#ifdef __SSE2__
    _mm_sfence();
#endif
}

// ---- hints to the cache ----
//
// Always inlined, since GCC drops calls of functions of hints alone. A line may lie outside of what
// is ever read or written: nothing is touched.

inline constexpr std::size_t kLineBytes = 64;

enum class ELineUse { Read, Write };

/// Asks for the lines of `bytes` bytes from `offset` bytes behind `at` on.
template <ELineUse Use>
[[gnu::always_inline]] inline void PrefetchLines(const void* at, std::ptrdiff_t offset,
                                                 std::size_t bytes) {
    const std::uintptr_t first =
        reinterpret_cast<std::uintptr_t>(at) + static_cast<std::uintptr_t>(offset);
    for (std::size_t line = 0; line < bytes + kLineBytes - 1; line += kLineBytes) {
        const auto* hint = reinterpret_cast<const void*>(first + line); // NOLINT(*-no-int-to-ptr)
        __builtin_prefetch(hint, Use == ELineUse::Write ? 1 : 0);
    }
}

// ---- runs ----

/// Bytes that a short element is moved with: one load and one store that reach into the next
/// element, but never behind it.
template <std::size_t Bytes>
inline constexpr std::size_t kMovedBytes = Bytes <= kVectorBytes ? std::bit_ceil(Bytes) : Bytes;

template <std::size_t Bytes>
struct MovedElement {
    std::byte bytes[kMovedBytes<Bytes>];
};

/// Puts `count` elements, at least one, at `to`, the first from `from`, each other `fromStep` bytes
/// behind the one before it. Of each but the last `kMovedBytes` bytes are read; nothing is written
/// behind the last.
template <std::size_t Bytes>
void MoveRun(const std::byte* from, std::ptrdiff_t fromStep, std::byte* to, std::size_t count) {
    constexpr std::size_t kAtOnce = Bytes <= kVectorBytes ? 8 : 1;
    std::size_t left = count;
    for (; left > kAtOnce; left -= kAtOnce, to += kAtOnce * Bytes) {
        MovedElement<Bytes> elements[kAtOnce];
        for (auto& element : elements) {
            std::memcpy(&element, from, sizeof element);
            from += fromStep;
        }
        for (std::size_t i = 0; i < kAtOnce; ++i)
            std::memcpy(to + i * Bytes, &elements[i], sizeof elements[i]);
    }
    for (; left > 1; --left, from += fromStep, to += Bytes) {
        MovedElement<Bytes> element;
        std::memcpy(&element, from, sizeof element);
        std::memcpy(to, &element, sizeof element);
    }
    std::memcpy(to, from, Bytes);
}

/// Puts the `count` elements at `from`, at least one, at `to` in reverse order. Nothing outside of
/// them is read or written.
template <std::size_t Bytes>
void MoveReversed(const std::byte* from, std::byte* to, std::size_t count) {
    constexpr auto kBack = -static_cast<std::ptrdiff_t>(Bytes);
    if constexpr (Bytes == sizeof(std::uint16_t)) {
        for (; count >= kVectorWords; count -= kVectorWords, to += kVectorBytes)
            StoreWords(to, ReversedWords(LoadWords(from + (count - kVectorWords) * Bytes)));
        if (count == 0)
            return;
    }
    const std::byte* const last = from + (count - 1) * Bytes;
    std::memcpy(to, last, Bytes); // no element lies behind it
    if (count > 1)
        MoveRun<Bytes>(last + kBack, kBack, to + Bytes, count - 1);
}

// ---- tiles ----

/// Columns to rows of eight words each: interleaving row i with row i + 4 three times over.
inline void TransposeWords(const std::byte* from, std::size_t pitch, std::byte* to,
                           std::ptrdiff_t step) {
    WordVector rows[kVectorWords];
    for (WordVector& row : rows) {
        row = LoadWords(from);
        from += pitch;
    }
    for (int round = 0; round < 3; ++round) {
        WordVector mixed[kVectorWords];
        for (std::size_t i = 0; i < 4; ++i) {
            const WordVector a = rows[i];
            const WordVector b = rows[i + 4];
            mixed[2 * i] = __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11);
            mixed[2 * i + 1] = __builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15);
        }
        std::memcpy(rows, mixed, sizeof rows);
    }
    for (const WordVector& row : rows) {
        StoreWords(to, row);
        to += step;
    }
}

/// Rows of elements, side by side, that are stored by their columns.
template <std::size_t Bytes>
class CTurnTile {
  public:
    /// What was quickest of the shapes that were measured. Tiles of long elements hold less time's
    /// work, so that lines are asked for two tiles ahead.
    static constexpr std::int32_t kColumns = Bytes == 3 ? 64 : Bytes <= kVectorBytes ? 32 : 16;
    static constexpr std::int32_t kRows = Bytes <= kVectorBytes ? kColumns : 4;
    static constexpr std::int32_t kTilesAhead = Bytes <= kVectorBytes ? 1 : 2;

    static constexpr std::size_t kPitch = std::size_t{kColumns} * Bytes;

    /// Takes `count` elements as row `index`.
    void SetRow(std::size_t index, const std::byte* from, std::size_t count) {
        std::byte* const to = m_bytes + index * kPitch;
        if (count != kColumns) {
            std::memcpy(to, from, count * Bytes);
            return;
        }
        // Vector by vector: of a copy of known length GCC makes a string instruction, slow to start.
        static_assert(kPitch % kVectorBytes == 0);
        for (std::size_t at = 0; at < kPitch; at += kVectorBytes)
            StoreWords(to + at, LoadWords(from + at));
    }

    /// Puts the first `columns` of the first `rows` rows at `to`, each column as a run, `step` bytes
    /// behind the one before it.
    void StoreColumns(std::size_t columns, std::size_t rows, std::byte* to,
                      std::ptrdiff_t step) const {
        std::size_t column = 0;
        if constexpr (Bytes == sizeof(std::uint16_t)) {
            for (; column + kVectorWords <= columns; column += kVectorWords)
                StoreEightColumns(column, rows, to + static_cast<std::ptrdiff_t>(column) * step,
                                  step);
        }
        for (; column < columns; ++column)
            StoreColumn(column, 0, rows, to + static_cast<std::ptrdiff_t>(column) * step);
    }

  private:
    /// Asks for the lines that the same column of a later tile is going to fill.
    [[gnu::always_inline]] static void PrefetchColumn(const std::byte* to) {
        constexpr std::size_t kColumnBytes = std::size_t{kRows} * Bytes;
        PrefetchLines<ELineUse::Write>(to, static_cast<std::ptrdiff_t>(kTilesAhead * kColumnBytes),
                                       kColumnBytes);
    }

    void StoreColumn(std::size_t column, std::size_t firstRow, std::size_t rows,
                     std::byte* to) const {
        PrefetchColumn(to);
        MoveRun<Bytes>(m_bytes + firstRow * kPitch + column * Bytes,
                       static_cast<std::ptrdiff_t>(kPitch), to + firstRow * Bytes, rows - firstRow);
    }

    void StoreEightColumns(std::size_t column, std::size_t rows, std::byte* to,
                           std::ptrdiff_t step) const {
        for (std::size_t i = 0; i < kVectorWords; ++i)
            PrefetchColumn(to + static_cast<std::ptrdiff_t>(i) * step);
        std::size_t row = 0;
        for (; row + kVectorWords <= rows; row += kVectorWords)
            TransposeWords(m_bytes + row * kPitch + column * Bytes, kPitch, to + row * Bytes, step);
        if (row == rows)
            return;
        for (std::size_t i = 0; i < kVectorWords; ++i)
            StoreColumn(column + i, row, rows, to + static_cast<std::ptrdiff_t>(i) * step);
    }

    std::byte m_bytes[kRows * kPitch + kVectorBytes]; ///< the last element is moved with more bytes
};

} // namespace trevolt
