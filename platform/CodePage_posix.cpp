#include "platform/CodePage.h"

namespace trevolt {

std::optional<std::wstring> CodePageToWide(std::string_view /*bytes*/, unsigned /*page*/) {
    return std::nullopt;
}

unsigned SystemCodePage() { return 1252; }

} // namespace trevolt
