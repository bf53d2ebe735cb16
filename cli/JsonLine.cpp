#include "cli/JsonLine.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

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

void Print(JsonMembers members, JsonMembers more) {
    CJsonLine line(stdout);
    line.PutObject(members, more);
    line.End();
    if (std::fflush(stdout) != 0)
        throw std::system_error(errno, std::generic_category());
}

} // namespace

void PrintObject(JsonMembers members) { Print(members, {}); }

void PrintSummary(ERotationEnd end, int exitStatus, JsonMembers members) {
    Print({{"type", "summary"},
           {"version", kJsonVersion},
           {"end", EndName(end)},
           {"exit_status", exitStatus}},
          members);
}

CJson SizeOf(const PixelSize& size) {
    return CJson::Of(size, [](CJsonLine& line, const PixelSize& known) {
        line.PutObject({{"width", known.width}, {"height", known.height}});
    });
}

CJson SizeOrNull(const PixelSize& size) {
    return size == PixelSize{} ? CJson(nullptr) : SizeOf(size);
}

CJson TextOrNull(std::string_view text) { return text.empty() ? CJson(nullptr) : CJson(text); }

std::string KindName(const SFileKind* kind) {
    return kind == nullptr ? std::string() : WideToShownUtf8(kind->extension.substr(1));
}

} // namespace trevolt
