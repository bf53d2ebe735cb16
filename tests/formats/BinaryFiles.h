// Files of a binary kind, by the kind's type.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>

#include "formats/BinaryCoefKind.h"
#include "tests/formats/BinaryKinds.h"
#include "tests/support/LzFrames.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt::test {

template <class Kind>
class CBinaryFiles : public testing::Test {
  protected:
    static const BinaryKind& Named() {
        for (const BinaryKind& kind : kBinaryKinds)
            if (static_cast<std::uint8_t>(kind.magic[0]) == Kind::kMagic[0])
                return kind;
        return kBinaryKinds[0];
    }

    static Bytes File(const PixelSize& size, const Bytes& raw, const SFrameForm& form = {},
                      std::uint32_t version = 1) {
        Bytes file = Header(Named(), version, static_cast<std::uint32_t>(size.width),
                            static_cast<std::uint32_t>(size.height));
        const Bytes frame = FrameOf(raw, form);
        file.insert(file.end(), frame.begin(), frame.end());
        return file;
    }

    /// A body of every byte and every kind of float; half of the elements are alike.
    static Bytes WildBody(const PixelSize& size) {
        const auto count = static_cast<std::size_t>(size.width * size.height);
        Bytes raw = Noise(count * Kind::kStoredBytes);
        for (std::size_t i = 0; i < count; i += 2)
            std::memcpy(&raw[i * Kind::kStoredBytes], &kWild, Kind::kStoredBytes);
        return raw;
    }

  private:
    // Nine floats: a NaN with a payload, a signalling one, infinities, denormals, −0, and two that
    // no byte holds.
    static constexpr std::array<std::uint32_t, 9> kWild{0x7FC12345, 0xFF800001, 0x7F800000,
                                                        0xFF800000, 0x00000001, 0x807FFFFF,
                                                        0x80000000, 0x40490FDB, 0xC479FFFF};
};

template <class /*unused*/, class... Kinds>
using TypesBehind = testing::Types<Kinds...>;
#define TREVOLT_TYPE(Kind) , Kind
using BinaryKindTypes = TypesBehind<void TREVOLT_EACH_BINARY_COEF_KIND(TREVOLT_TYPE)>;
#undef TREVOLT_TYPE

} // namespace trevolt::test
