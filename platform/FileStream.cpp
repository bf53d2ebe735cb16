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

std::optional<std::string> ReadWholeFile(const std::wstring& path, std::uint64_t limit) {
    std::fstream stream;
    if (!OpenFileStream(stream, path.c_str(), std::ios::in))
        return std::nullopt;
    const auto size = BytesToEnd(stream);
    if (!size || *size > limit)
        return std::nullopt;
    std::string bytes(static_cast<std::size_t>(*size), '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream.good())
        return std::nullopt;
    return bytes;
}

} // namespace trevolt
