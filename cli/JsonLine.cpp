#include "cli/JsonLine.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include <fmt/format.h>

#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

const char* EndName(ERotationEnd end) {
    switch (end) {
    case ERotationEnd::AllDone:
        return "done";
    case ERotationEnd::SomeFailed:
        return "failed";
    case ERotationEnd::Interrupted:
        return "interrupted";
    case ERotationEnd::NothingToDo:
        break;
    }
    return "nothing_to_do";
}

} // namespace

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

Json KindOrNull(const SFileKind* kind) {
    return kind == nullptr ? Json(nullptr) : Json(WideToShownUtf8(kind->extension.substr(1)));
}

Json SummaryOf(ERotationEnd end, int exitStatus) {
    return {{"type", "summary"},
            {"version", kJsonVersion},
            {"end", EndName(end)},
            {"exit_status", exitStatus}};
}

} // namespace trevolt
