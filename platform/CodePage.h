// Text of the time before Unicode, in a code page of Windows.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace trevolt {

/// Wide form of `bytes`, which are text in the code page of the number `page` (1252, 936, ...);
/// nothing when the system does not know the page. POSIX systems know none.
std::optional<std::wstring> CodePageToWide(std::string_view bytes, unsigned page);

/// The code page that the system's language was written in: never UTF-8, which the program's own
/// active one may be. 1252 where the system tells none.
unsigned SystemCodePage();

} // namespace trevolt
