#include "trevolt/StatusCodes.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

namespace trevolt {
namespace {

struct StatusText {
    Status status;
    const char* name;
    const char* meaning;
};

constexpr std::array kStatusTexts{
    StatusText{E_FAIL, "E_FAIL", "the content is damaged or does not match its header"},
    StatusText{E_POINTER, "E_POINTER", "there is no store to load into or save from"},
    StatusText{E_HANDLE, "E_HANDLE", "the file could not be opened"},
    StatusText{E_OUTOFMEMORY, "E_OUTOFMEMORY", "not enough memory"},
    StatusText{E_COEF_INVALIDARG, "E_COEF_INVALIDARG", "missing path, empty map or bad rectangle"},
    StatusText{E_COEF_NOBUFFER, "E_COEF_NOBUFFER", "a buffer or a block is missing"},
    StatusText{E_COEF_NOTIMPL, "E_COEF_NOTIMPL", "this kind does not offer the operation"},
    StatusText{E_COEF_SIZELIMIT, "E_COEF_SIZELIMIT", "the store's size limit is reached"},
    StatusText{E_COEF_BADFORMAT, "E_COEF_BADFORMAT",
               "not a file of this kind, or of a newer version"},
    StatusText{E_COEF_OPENFAILED, "E_COEF_OPENFAILED", "the file could not be opened"},
    StatusText{E_COEF_BADTEXT, "E_COEF_BADTEXT", "the first line is not a known tag"},
};

constexpr StatusText kSuccess{S_OK, "S_OK", "success"};
constexpr StatusText kUnknown{MakeStatus(0xFFFFFFFF), "unknown status", "unknown failure"};

const StatusText& FindText(Status status) {
    if (!Failed(status))
        return kSuccess;
    const auto found = std::find_if(kStatusTexts.begin(), kStatusTexts.end(),
                                    [&](const StatusText& text) { return text.status == status; });
    return found == kStatusTexts.end() ? kUnknown : *found;
}

} // namespace

const char* StatusName(Status status) { return FindText(status).name; }

const char* StatusMeaning(Status status) { return FindText(status).meaning; }

std::string DescribeStatus(Status status) {
    return fmt::format("{} (0x{:08X}): {}", StatusName(status), static_cast<std::uint32_t>(status),
                       StatusMeaning(status));
}

} // namespace trevolt
