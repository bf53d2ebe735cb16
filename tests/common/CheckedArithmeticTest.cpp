#include "common/CheckedArithmetic.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

TEST(CheckedArithmetic, GivesTheProductThatTheResultHolds) {
    EXPECT_EQ(CheckedProduct<std::int32_t>(65535, 32768), 2147450880);
    EXPECT_EQ(CheckedProduct<std::int32_t>(0U, 0xFFFFFFFFU), 0);
    EXPECT_EQ(CheckedProduct<std::int32_t>(-65536, 32768),
              std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(CheckedProduct<std::uint64_t>(0xFFFFFFFFU, 0xFFFFFFFFU), 0xFFFFFFFE00000001U);
}

TEST(CheckedArithmetic, GivesNothingBeyondIt) {
    EXPECT_EQ(CheckedProduct<std::int32_t>(65536, 32768), std::nullopt); // 2^31
    EXPECT_EQ(CheckedProduct<std::int32_t>(65536U, 65536U), std::nullopt);
    EXPECT_EQ(CheckedProduct<std::uint32_t>(-1, 1), std::nullopt);
    EXPECT_EQ(CheckedProduct<std::uint64_t>(std::numeric_limits<std::uint64_t>::max(), 2),
              std::nullopt);
}

} // namespace
} // namespace trevolt
