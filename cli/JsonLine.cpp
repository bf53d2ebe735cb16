#include "cli/JsonLine.h"

#include <cstdio>

#include <fmt/format.h>

namespace trevolt {

void PrintObject(const Json& object) {
    fmt::print("{}\n", object.dump(-1, ' ', false, Json::error_handler_t::replace));
    std::fflush(stdout); // an error is seen when the program ends
}

Json SizeOrNull(const PixelSize& size) {
    if (size == PixelSize{})
        return nullptr;
    return {{"width", size.width}, {"height", size.height}};
}

Json TextOrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

} // namespace trevolt
