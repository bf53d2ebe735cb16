#include "platform/FileStream.h"

#include <cerrno>

#include "platform/FileSystem.h"

namespace trevolt {
namespace {

/// Opens a stream or a stream buffer; false, and `errno` tells why where the system does.
template <class File>
bool OpenBinary(File& file, const wchar_t* path, std::ios::openmode mode) {
    errno = 0;
    if (path == nullptr)
        return false;
    const auto native = ToNativePath(path);
    if (!native)
        return false;
    // On POSIX a folder opens for reading, and only its first read fails.
    if (IsFolder(path)) {
        errno = EISDIR;
        return false;
    }
    errno = 0;
    file.open(native->c_str(), mode | std::ios::binary);
    return file.is_open();
}

} // namespace

bool OpenFileStream(std::fstream& stream, const wchar_t* path, std::ios::openmode mode) {
    return OpenBinary(stream, path, mode);
}

CInputFile::CInputFile() : std::istream(nullptr) { rdbuf(&m_buffer); }

bool CInputFile::Open(const wchar_t* path) {
    if (!OpenBinary<std::filebuf>(m_buffer, path, std::ios::in))
        setstate(std::ios::failbit);
    return good();
}

template <class Read>
auto CInputFile::CBuffer::KeepingReason(Read read) {
    errno = 0;
    try {
        return read();
    } catch (...) {
        if (m_systemError == 0)
            m_systemError = errno;
        throw;
    }
}

CInputFile::CBuffer::int_type CInputFile::CBuffer::underflow() {
    return KeepingReason([&] { return std::filebuf::underflow(); });
}

std::streamsize CInputFile::CBuffer::xsgetn(char* bytes, std::streamsize count) {
    return KeepingReason([&] { return std::filebuf::xsgetn(bytes, count); });
}

COutputFile::COutputFile() : std::ostream(nullptr) { rdbuf(&m_buffer); }

bool COutputFile::Open(const wchar_t* path, std::ios::openmode mode) {
    if (!m_buffer.Open(path, mode | std::ios::out))
        setstate(std::ios::failbit);
    return good();
}

bool COutputFile::Close() {
    if (!m_buffer.Close())
        setstate(std::ios::failbit);
    return good();
}

template <class Call, class Refused>
auto COutputFile::CBuffer::KeepingReason(Call call, Refused isRefused) {
    errno = 0;
    const auto result = call();
    if (isRefused(result) && m_systemError == 0)
        m_systemError = errno;
    return result;
}

bool COutputFile::CBuffer::Open(const wchar_t* path, std::ios::openmode mode) {
    return KeepingReason([&] { return OpenBinary<std::filebuf>(*this, path, mode); },
                         [](bool opened) { return !opened; });
}

bool COutputFile::CBuffer::Close() {
    return KeepingReason([&] { return close() != nullptr; }, [](bool closed) { return !closed; });
}

COutputFile::CBuffer::int_type COutputFile::CBuffer::overflow(int_type byte) {
    return KeepingReason(
        [&] { return std::filebuf::overflow(byte); },
        [](int_type put) { return traits_type::eq_int_type(put, traits_type::eof()); });
}

std::streamsize COutputFile::CBuffer::xsputn(const char* bytes, std::streamsize count) {
    return KeepingReason([&] { return std::filebuf::xsputn(bytes, count); },
                         [&](std::streamsize put) { return put != count; });
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
    return ReadToEnd(stream, limit);
}

std::optional<std::string> ReadToEnd(std::istream& stream, std::uint64_t limit) {
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
