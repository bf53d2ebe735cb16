// The numbers at the ends of what a coordinate and a coefficient can hold.
#pragma once

#include <cstdint>
#include <limits>

namespace trevolt::test {

inline constexpr std::int32_t kInt32Min = std::numeric_limits<std::int32_t>::min();
inline constexpr std::int32_t kInt32Max = std::numeric_limits<std::int32_t>::max();
inline constexpr float kInfinity = std::numeric_limits<float>::infinity();
inline constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

} // namespace trevolt::test
