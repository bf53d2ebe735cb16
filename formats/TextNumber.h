// Numbers as the text coefficient files hold them: the bytes that printf would give in the C
// locale, whatever the process's locale is. May be used from any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace trevolt {

/// The most characters of `WriteFixed5`: a sign, 39 digits, the point and five decimals.
inline constexpr std::size_t kFixed5Chars = 46;

/// Writes `value` as "%1.5f" does for the float widened to double (ties of the exact value go to
/// the even digit, a negative zero keeps its sign); values that are not finite as "inf", "-inf" and
/// "nan". `out` must have room for `kFixed5Chars`. Returns the position behind the text.
char* WriteFixed5(char* out, float value);

/// The characters of `WritePadded5`.
inline constexpr std::size_t kPadded5Chars = 5;

/// Writes `value`, at most 99999, as "%5u" does: right-aligned in five characters, for which `out`
/// must have room. Returns the position behind them.
char* WritePadded5(char* out, std::uint32_t value);

} // namespace trevolt
