// What {fmt} leaves to a library: its functions that are no templates, and what its templates need
// of a locale for the two kinds of characters that the project prints.
#include <fmt/format-inl.h>

namespace fmt::detail {

template char decimal_point_impl<char>(locale_ref);
template wchar_t decimal_point_impl<wchar_t>(locale_ref);
template thousands_sep_result<char> thousands_sep_impl<char>(locale_ref);
template thousands_sep_result<wchar_t> thousands_sep_impl<wchar_t>(locale_ref);

} // namespace fmt::detail
