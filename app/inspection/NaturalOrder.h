// The order that people give to names with numbers in them: Cab_2 stands before Cab_10.
#pragma once

#include <string_view>

namespace trevolt {

/// Whether `a` stands before `b`: runs of digits 0 to 9 by their numbers, all else letter by letter.
bool IsBeforeNaturally(std::wstring_view a, std::wstring_view b);

} // namespace trevolt
