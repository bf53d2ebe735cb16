// Text in an HTML page: nothing of it is markup, and nothing of it is hidden.
#pragma once

#include <string>
#include <string_view>

namespace trevolt {

/// The text as an element's content or between quotes as an attribute's value. What cannot be seen is
/// shown as in messages, as \x1B or \u202E.
std::string Html(std::string_view text);

/// Bytes in base64, as in data: addresses.
std::string Base64(std::string_view bytes);

} // namespace trevolt
