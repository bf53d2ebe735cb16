#include "cli/JsonLine.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include <fmt/format.h>

namespace trevolt {

void PrintObject(const Json& object) {
    fmt::print("{}\n", object.dump(-1, ' ', false, Json::error_handler_t::replace));
    if (std::fflush(stdout) != 0)
        throw std::system_error(errno, std::generic_category());
}

Json SizeOrNull(const PixelSize& size) {
    if (size == PixelSize{})
        return nullptr;
    return {{"width", size.width}, {"height", size.height}};
}

Json TextOrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

} // namespace trevolt
