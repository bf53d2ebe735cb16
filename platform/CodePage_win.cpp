#include "platform/CodePage.h"

#include <windows.h>

namespace trevolt {

std::optional<std::wstring> CodePageToWide(std::string_view bytes, unsigned page) {
    const int byteCount = static_cast<int>(bytes.size());
    const int units = MultiByteToWideChar(page, 0, bytes.data(), byteCount, nullptr, 0);
    if (units == 0 && !bytes.empty())
        return std::nullopt;
    std::wstring text(static_cast<std::size_t>(units), L'\0');
    MultiByteToWideChar(page, 0, bytes.data(), byteCount, text.data(), units);
    return text;
}

unsigned SystemCodePage() {
    constexpr unsigned kWestern = 1252;
    constexpr LCTYPE kAsked = LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER;
    DWORD page = CP_ACP;
    if (GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, kAsked, reinterpret_cast<LPWSTR>(&page),
                       sizeof page / sizeof(wchar_t)) == 0)
        return kWestern;
    // A language that was never written in a code page has none of its own.
    return page == CP_ACP || page == CP_UTF8 ? kWestern : page;
}

} // namespace trevolt
