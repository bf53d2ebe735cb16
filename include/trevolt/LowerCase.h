// The lower case in which a file's kind is looked for in its name; it never looks at the process's
// locale.
#pragma once

#include <string>
#include <string_view>

namespace trevolt {

/// `text` with A to Z folded to a to z; every other character stays.
inline std::wstring ToLowerAscii(std::wstring_view text) {
    std::wstring lowered(text);
    for (wchar_t& c : lowered)
        if (c >= L'A' && c <= L'Z')
            c = static_cast<wchar_t>(c - L'A' + L'a');
    return lowered;
}

} // namespace trevolt
