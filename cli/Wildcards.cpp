#include "cli/Wildcards.h"

#include <algorithm>

#include "platform/FileSystem.h"

namespace trevolt {
namespace {

wchar_t LowerCase(wchar_t c) {
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

} // namespace

bool MatchesWildcards(std::wstring_view pattern, std::wstring_view name) {
    std::size_t p = 0;
    std::size_t n = 0;
    std::size_t star = std::wstring_view::npos; // the last one that was passed
    std::size_t starName = 0;                   // where what it stands for ends
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == L'*') {
            star = p++;
            starName = n;
        } else if (p < pattern.size() &&
                   (pattern[p] == L'?' || LowerCase(pattern[p]) == LowerCase(name[n]))) {
            ++p;
            ++n;
        } else if (star != std::wstring_view::npos) {
            p = star + 1;
            n = ++starName;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(L'*', p) == std::wstring_view::npos;
}

std::vector<std::wstring> ExpandWildcards(const std::wstring& pattern) {
    const std::wstring folder = FolderPart(pattern);
    const std::wstring name = pattern.substr(folder.size());
    if (name.find_first_of(L"*?") == std::wstring::npos)
        return {pattern};
    std::vector<std::wstring> paths;
    for (const FolderEntry& entry :
         ListEntries(folder.empty() ? WithSeparator(L".") : folder).entries)
        if (entry.name != L"." && entry.name != L".." && MatchesWildcards(name, entry.name))
            paths.push_back(folder + entry.name);
    std::sort(paths.begin(), paths.end());
    return paths;
}

} // namespace trevolt
