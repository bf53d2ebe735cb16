// Arithmetic on sizes that come from files or from users: overflow gives nothing instead of a
// small number.
#pragma once

#include <concepts>
#include <optional>

namespace trevolt {

/// a × b where `Result` holds it, whatever types the factors have.
template <std::integral Result, std::integral A, std::integral B>
constexpr std::optional<Result> CheckedProduct(A a, B b) {
    Result product{};
    if (__builtin_mul_overflow(a, b, &product))
        return std::nullopt;
    return product;
}

} // namespace trevolt
