// Arithmetic on sizes that come from files or from users: overflow gives nothing instead of a
// small number.
#pragma once

#include <concepts>
#include <limits>
#include <optional>

namespace trevolt {

template <std::integral T>
constexpr std::optional<T> CheckedAdd(T a, T b) {
    T sum{};
    if (__builtin_add_overflow(a, b, &sum))
        return std::nullopt;
    return sum;
}

template <std::integral T>
constexpr std::optional<T> CheckedMultiply(T a, T b) {
    T product{};
    if (__builtin_mul_overflow(a, b, &product))
        return std::nullopt;
    return product;
}

} // namespace trevolt
