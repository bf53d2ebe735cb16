// Wide text, in which this library takes paths and gives names, and UTF-8, independent of the
// process's locale. Wide text is UTF-16 where wchar_t has 16 bits and UTF-32 elsewhere. On POSIX
// systems a wide path stands for the file whose name is its UTF-8 form.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace trevolt {

/// UTF-8 of `text`; nothing when `text` holds a lone surrogate or a value past U+10FFFF.
std::optional<std::string> WideToUtf8(std::wstring_view text);

/// Wide form of `text`; nothing when `text` is not valid UTF-8 (overlong forms and surrogates are
/// not).
std::optional<std::wstring> Utf8ToWide(std::string_view text);

/// UTF-8 of `text` for showing it: what has no UTF-8 form becomes U+FFFD.
std::string WideToShownUtf8(std::wstring_view text);

} // namespace trevolt
