// Names with `*` and `?` in place of letters, where no shell has replaced them before the program
// starts.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace trevolt {

/// Whether the system leaves wildcards to its programs.
#ifdef _WIN32
inline constexpr bool kProgramsExpandWildcards = true;
#else
inline constexpr bool kProgramsExpandWildcards = false;
#endif

/// Whether `pattern` stands for the whole of `name`: `*` for any letters or none, `?` for one, A to Z
/// and a to z being the same.
bool MatchesWildcards(std::wstring_view pattern, std::wstring_view name);

/// The entries that `pattern` stands for, sorted; wildcards count behind its last separator only.
/// `pattern` itself when it has none there.
std::vector<std::wstring> ExpandWildcards(const std::wstring& pattern);

} // namespace trevolt
