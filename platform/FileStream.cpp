#include "platform/FileStream.h"

#include "platform/FileSystem.h"

namespace trevolt {

bool OpenFileStream(std::fstream& stream, const wchar_t* path, std::ios::openmode mode) {
    if (path == nullptr)
        return false;
    const auto native = ToNativePath(path);
    // On POSIX a folder opens for reading, and only its first read fails.
    if (!native || IsFolder(path))
        return false;
    stream.open(native->c_str(), mode | std::ios::binary);
    return stream.is_open();
}

std::optional<std::uint64_t> BytesToEnd(std::istream& stream) {
    const std::streamoff here = stream.tellg();
    if (here < 0)
        return std::nullopt;
    stream.seekg(0, std::ios::end);
    const std::streamoff end = stream.tellg();
    stream.seekg(here);
    if (!stream || end < here)
        return std::nullopt;
    return static_cast<std::uint64_t>(end - here);
}

} // namespace trevolt
