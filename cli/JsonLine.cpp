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

void PrintObject(const CJson& object) {
    fmt::print("{}\n", object.Text());
    if (std::fflush(stdout) != 0)
        throw std::system_error(errno, std::generic_category());
}

CJson SizeOrNull(const PixelSize& size) {
    if (size == PixelSize{})
        return nullptr;
    return {{"width", size.width}, {"height", size.height}};
}

CJson TextOrNull(const std::string& text) { return text.empty() ? CJson(nullptr) : CJson(text); }

CJson KindOrNull(const SFileKind* kind) {
    return kind == nullptr ? CJson(nullptr) : CJson(WideToShownUtf8(kind->extension.substr(1)));
}

CJson SummaryOf(ERotationEnd end, int exitStatus) {
    return {{"type", "summary"},
            {"version", kJsonVersion},
            {"end", EndName(end)},
            {"exit_status", exitStatus}};
}

} // namespace trevolt
