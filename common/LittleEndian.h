// Little-endian fields of persistent layouts, read from and written to byte positions.
// The caller has checked that the field lies inside the bytes.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <type_traits>

namespace trevolt {

// Grid and store elements go to files as they lie in memory, so the host must be little-endian.
static_assert(std::endian::native == std::endian::little,
              "coefficient files hold little-endian elements as they lie in memory");

/// The field of type T (an integer or a float) at `bytes`.
template <class T>
T LoadLittle(const std::byte* bytes) {
    static_assert(std::is_arithmetic_v<T>);
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

/// Writes the field of type T at `bytes`.
template <class T>
void StoreLittle(std::byte* bytes, std::type_identity_t<T> value) {
    static_assert(std::is_arithmetic_v<T>);
    std::memcpy(bytes, &value, sizeof value);
}

} // namespace trevolt
