// Names of files, as the system tells them apart: in any case of their letters A to Z where it opens them
// so.
#pragma once

#include <algorithm>
#include <string_view>

#include "platform/FileSystem.h"

namespace trevolt {

/// An order of names in which those of one file are equal.
struct SNameOrder {
    bool operator()(std::wstring_view a, std::wstring_view b) const {
        return std::lexicographical_compare(
            a.begin(), a.end(), b.begin(), b.end(),
            [](wchar_t one, wchar_t other) { return Folded(one) < Folded(other); });
    }

  private:
    static wchar_t Folded(wchar_t c) {
        return kNamesIgnoreCase && c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a')
                                                          : c;
    }
};

} // namespace trevolt
