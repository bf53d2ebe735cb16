#include "platform/SystemError.h"

#include <algorithm>
#include <array>
#include <cerrno>

namespace trevolt {
namespace {

struct ErrorText {
    int error;
    const char* text;
};

// What listing a folder, opening and writing a file and starting a thread meet. The systems' own
// texts follow the locale.
constexpr std::array kErrorTexts{
    ErrorText{EACCES, "Permission denied"},
    ErrorText{EAGAIN, "Resource temporarily unavailable"},
    ErrorText{EBUSY, "Device or resource busy"},
#ifdef EDQUOT
    ErrorText{EDQUOT, "Disk quota exceeded"},
#endif
    ErrorText{EEXIST, "File exists"},
    ErrorText{EFBIG, "File too large"},
    ErrorText{EINVAL, "Invalid argument"},
    ErrorText{EIO, "Input/output error"},
    ErrorText{EISDIR, "Is a directory"},
    ErrorText{ELOOP, "Too many levels of symbolic links"},
    ErrorText{EMFILE, "Too many open files"},
    ErrorText{ENAMETOOLONG, "File name too long"},
    ErrorText{ENFILE, "Too many open files in system"},
    ErrorText{ENODEV, "No such device"},
    ErrorText{ENOENT, "No such file or directory"},
    ErrorText{ENOMEM, "Cannot allocate memory"},
    ErrorText{ENOSPC, "No space left on device"},
    ErrorText{ENOTDIR, "Not a directory"},
    ErrorText{ENXIO, "No such device or address"},
    ErrorText{EPERM, "Operation not permitted"},
    ErrorText{EPIPE, "Broken pipe"},
    ErrorText{EROFS, "Read-only file system"},
#ifdef ESTALE
    ErrorText{ESTALE, "Stale file handle"},
#endif
};

} // namespace

std::string SystemErrorText(int error) {
    if (error == 0)
        return {};
    const auto found = std::find_if(kErrorTexts.begin(), kErrorTexts.end(),
                                    [&](const ErrorText& text) { return text.error == error; });
    return found == kErrorTexts.end() ? "system error " + std::to_string(error) : found->text;
}

std::string WithSystemReason(const std::string& problem, int error) {
    const std::string reason = SystemErrorText(error);
    return reason.empty() ? problem : problem + ": " + reason;
}

} // namespace trevolt
