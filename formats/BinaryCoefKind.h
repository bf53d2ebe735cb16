// The one table of the binary kinds: which matrix entries a kind stores and as what, its magic and
// its oddities. Whatever is compiled for each kind is so from the list at the end.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "trevolt/FixedPoint.h"
#include "trevolt/MassiveGrid.h"
#include "trevolt/MatrixCoef.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

using CoefFileMagic = std::array<std::uint8_t, 16>;

/// A value stored bit for bit.
struct SFloatValue {
    using Type = float;
    static constexpr Type kOne = 1.0F;
    static float Load(Type stored) { return stored; }
    static Type Save(float value) { return value; }
};

/// A value stored as value × 255; what rounds above 255 or below 0 wraps.
struct SByteValue {
    using Type = std::uint8_t;
    static constexpr Type kOne = 255;
    static float Load(Type stored) { return ByteToFloat(stored); }
    static Type Save(float value) { return RoundToByte(value); }
};

/// What the kinds share, from their value and the matrix entries that they store. An entry mask has
/// one flag per stored entry. A kind says otherwise by a member of the same name.
template <class Value, std::size_t... Entries>
struct SBinaryCoefKind {
    static constexpr std::size_t kStoredCount = sizeof...(Entries);
    static constexpr std::array<std::size_t, kStoredCount> kEntries{Entries...};
    static constexpr bool kIsDiagonal = kStoredCount == 3;
    using Stored = std::array<typename Value::Type, kStoredCount>;
    using EntryMask = std::array<bool, kStoredCount>;
    static constexpr std::uint32_t kStoredBytes = sizeof(Stored);

    /// What a read answers that took the whole map from a file of its size.
    static constexpr Status kWholeMapRead = S_OK;
    /// Whether a map without storage is refused by the writer, and not written as the identity.
    static constexpr bool kNeedsStorage = false;
    /// Whether a prepared grid is the body as it stands, and not converted into one.
    static constexpr bool kTakesPreparedBody = false;

    /// The stored element of the identity matrix.
    static constexpr Stored Identity() {
        Stored stored{};
        for (std::size_t k = 0; k < kStoredCount; ++k)
            stored[k] = kEntries[k] % 4 == 0 ? Value::kOne : typename Value::Type{};
        return stored;
    }

    static Stored Save(const SMatrixCoef& element) { return {Value::Save(element.m[Entries])...}; }

    /// The stored element of a pixel, or of the identity for null.
    static Stored SaveOrIdentity(const SMatrixCoef* element) {
        return element == nullptr ? Identity() : Save(*element);
    }

    /// Sets the matrix: the stored entries, and 0 off the diagonal where only that is stored. The
    /// trailing values stay.
    static void Load(const Stored& stored, SMatrixCoef& element) {
        LoadMasked(stored, AllEntries(), element);
    }

    /// As `Load`, of an element as it lies in a file.
    static void LoadBytes(const std::byte* bytes, SMatrixCoef& element) {
        Stored stored;
        std::memcpy(&stored, bytes, sizeof stored);
        Load(stored, element);
    }

    /// As `Load`, but a stored entry whose flag is false stays as it was.
    static void LoadMasked(const Stored& stored, const EntryMask& mask, SMatrixCoef& element) {
        if constexpr (kIsDiagonal)
            for (const std::size_t offDiagonal : {1U, 2U, 3U, 5U, 6U, 7U})
                element.m[offDiagonal] = 0.0F;
        for (std::size_t k = 0; k < kStoredCount; ++k)
            if (mask[k])
                element.m[kEntries[k]] = Value::Load(stored[k]);
    }

    static constexpr EntryMask AllEntries() {
        EntryMask mask{};
        mask.fill(true);
        return mask;
    }

    /// The stored element at a linear index of a body.
    static Stored At(const CMassiveGrid& body, std::uint32_t index) {
        Stored stored;
        std::memcpy(&stored, body.Element(index), sizeof stored);
        return stored;
    }

    /// Sets a map's element from the stored one at a linear index of a body.
    static void LoadAt(const CMassiveGrid& body, std::uint32_t index, SMatrixCoef& element) {
        Load(At(body, index), element);
    }

    static void Put(CMassiveGrid& body, std::uint32_t index, const Stored& stored) {
        std::memcpy(body.Element(index), &stored, sizeof stored);
    }
};

template <class Value>
using MatrixCoefKind = SBinaryCoefKind<Value, 0, 1, 2, 3, 4, 5, 6, 7, 8>;
template <class Value>
using DiagonalCoefKind = SBinaryCoefKind<Value, 0, 4, 8>;

/// `.9fcoef`: the matrix as 9 float32.
struct S9fCoefKind : MatrixCoefKind<SFloatValue> {
    static constexpr CoefFileMagic kMagic{0xA7, 0x00, 0xF3, 0xCE, 0x46, 0xC7, 0x1E, 0x48,
                                          0xB3, 0xD2, 0x5E, 0xDD, 0x63, 0x31, 0x46, 0x61};

    /// The result of copying a whole grid over the map's, a truth value, is the status.
    static constexpr Status kWholeMapRead = MakeStatus(1);
    static constexpr bool kTakesPreparedBody = true;

    /// What a file holds is the start of a map's element.
    static void LoadBytes(const std::byte* bytes, SMatrixCoef& element) {
        std::memcpy(element.m.data(), bytes, kStoredBytes);
    }

    /// Copies twelve values from the start of a stored element: nine of its own and the first three
    /// of the one behind it.
    static void LoadAt(const CMassiveGrid& body, std::uint32_t index, SMatrixCoef& element) {
        if (body.RunLength(index) > 1) {
            std::memcpy(element.m.data(), body.Element(index), sizeof element.m);
            return;
        }
        const SMatrixCoef defaults;
        std::memcpy(element.m.data(), body.Element(index), kStoredBytes);
        std::copy(defaults.m.begin() + kStoredCount, defaults.m.end(),
                  element.m.begin() + kStoredCount);
    }
};
/// `.3fcoef`: the matrix diagonal as 3 float32.
struct S3fCoefKind : DiagonalCoefKind<SFloatValue> {
    static constexpr CoefFileMagic kMagic{0xF0, 0x5F, 0xD4, 0xA2, 0xCF, 0x9E, 0x93, 0x4F,
                                          0x8F, 0x8A, 0xCD, 0xD1, 0x1E, 0x52, 0xCA, 0x32};
};
/// `.9bcoef`: the matrix as 9 bytes.
struct S9bCoefKind : MatrixCoefKind<SByteValue> {
    static constexpr CoefFileMagic kMagic{0x1B, 0xD1, 0xF3, 0xCA, 0x70, 0xD5, 0x9E, 0x42,
                                          0x97, 0xBB, 0x9B, 0xA3, 0x1F, 0x0C, 0x48, 0xD6};

    static constexpr bool kNeedsStorage = true;
};
/// `.3bcoef`: the matrix diagonal as 3 bytes.
struct S3bCoefKind : DiagonalCoefKind<SByteValue> {
    static constexpr CoefFileMagic kMagic{0xCC, 0x88, 0x57, 0x02, 0xE6, 0x46, 0xC1, 0x49,
                                          0x94, 0xE1, 0x82, 0x32, 0xD6, 0x15, 0xFA, 0xA2};
};

/// Every binary kind.
#define TREVOLT_EACH_BINARY_COEF_KIND(DO)                                                          \
    DO(S9fCoefKind) DO(S3fCoefKind) DO(S9bCoefKind) DO(S3bCoefKind)

/// The raw map file, which has no stored elements but whole grids (formats/RawMapFile.cpp).
inline constexpr CoefFileMagic kRawMapMagic{0x20, 0xBA, 0xCA, 0x2D, 0xED, 0x0B, 0xB9, 0x44,
                                            0xA4, 0xC1, 0xC9, 0xD0, 0x19, 0x16, 0x81, 0x2C};

} // namespace trevolt
