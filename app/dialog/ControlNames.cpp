#include "app/dialog/ControlNames.h"

namespace trevolt {
namespace {

/// Drops a key in brackets with the blank before it, as scripts have it whose letters are no keys.
std::wstring WithoutBracketedKey(std::wstring text) {
    constexpr std::size_t kBracketedKey = 4;
    const std::size_t open = text.find(L"(&");
    if (open == std::wstring::npos || open + kBracketedKey > text.size() || text[open + 3] != L')')
        return text;
    text.erase(open, kBracketedKey);
    if (open > 0 && text[open - 1] == L' ')
        text.erase(open - 1, 1);
    return text;
}

} // namespace

std::wstring WithoutAccessKey(const std::wstring& text) {
    std::wstring name;
    bool isMark = false;
    for (const wchar_t c : WithoutBracketedKey(text)) {
        isMark = c == L'&' && !isMark;
        if (!isMark)
            name.push_back(c);
    }
    return name;
}

std::wstring ButtonName(const std::wstring& button, const std::wstring& label) {
    return WithoutAccessKey(button) + L", " + WithoutAccessKey(label);
}

} // namespace trevolt
