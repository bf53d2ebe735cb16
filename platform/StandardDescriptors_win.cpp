#include "platform/StandardDescriptors.h"

#include <cstdio>

#include <windows.h>

#include <io.h>

namespace trevolt {
namespace {

struct StandardDescriptor {
    DWORD id;
    FILE* stream;
    const char* mode;
};

bool IsOpen(HANDLE handle) {
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE)
        return false;
    SetLastError(NO_ERROR);
    return GetFileType(handle) != FILE_TYPE_UNKNOWN || GetLastError() == NO_ERROR;
}

/// A handle may be a number that its owner closed, which the next file to be opened is given again.
void OpenHandle(DWORD id) {
    if (IsOpen(GetStdHandle(id)))
        return;
    const HANDLE nowhere =
        CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    SetStdHandle(id, nowhere == INVALID_HANDLE_VALUE ? nullptr : nowhere);
}

/// The C library's own, which it took from the handles when the program began.
bool IsOpen(FILE* stream) {
    const int descriptor = _fileno(stream);
    if (descriptor < 0)
        return false;
    return IsOpen(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor))); // NOLINT(*-no-int-to-ptr)
}

} // namespace

void OpenStandardDescriptors() {
    const StandardDescriptor descriptors[] = {{STD_INPUT_HANDLE, stdin, "r"},
                                              {STD_OUTPUT_HANDLE, stdout, "w"},
                                              {STD_ERROR_HANDLE, stderr, "w"}};
    for (const StandardDescriptor& descriptor : descriptors) {
        OpenHandle(descriptor.id);
        if (!IsOpen(descriptor.stream))
            static_cast<void>(std::freopen("NUL", descriptor.mode, descriptor.stream));
    }
}

} // namespace trevolt
