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

/// The answer of `call`. Where the system refuses it, by the answer or by what is thrown, and `reason`
/// is still 0, that becomes the `errno` value.
template <class Call, class Refused>
auto KeepingReason(int& reason, Call call, Refused isRefused) {
    errno = 0;
    const auto keep = [&] {
        if (reason == 0)
            reason = errno;
    };
    try {
        const auto answer = call();
        if (isRefused(answer))
            keep();
        return answer;
    } catch (...) {
        keep();
        throw;
    }
}

bool IsFalse(bool answer) { return !answer; }

/// Where a file has no such place, the system answers with EINVAL.
bool IsRefusedSeek(std::streambuf::pos_type place) {
    return place == std::streambuf::pos_type(-1) && errno != EINVAL;
}

} // namespace

bool OpenFileStream(std::fstream& stream, const wchar_t* path, std::ios::openmode mode) {
    return OpenBinary(stream, path, mode);
}

CInputFile::CInputFile() : std::istream(nullptr) { rdbuf(&m_buffer); }

bool CInputFile::Open(const wchar_t* path) {
    if (!m_buffer.Open(path))
        setstate(std::ios::failbit);
    return good();
}

bool CInputFile::CBuffer::Open(const wchar_t* path) {
    return KeepingReason(
        m_systemError, [&] { return OpenBinary<std::filebuf>(*this, path, std::ios::in); },
        IsFalse);
}

// A refused read throws.
CInputFile::CBuffer::int_type CInputFile::CBuffer::underflow() {
    return KeepingReason(
        m_systemError, [&] { return std::filebuf::underflow(); }, [](int_type) { return false; });
}

std::streamsize CInputFile::CBuffer::xsgetn(char* bytes, std::streamsize count) {
    return KeepingReason(
        m_systemError, [&] { return std::filebuf::xsgetn(bytes, count); },
        [](std::streamsize) { return false; });
}

CInputFile::CBuffer::pos_type CInputFile::CBuffer::seekoff(off_type offset, std::ios::seekdir from,
                                                           std::ios::openmode which) {
    return KeepingReason(
        m_systemError, [&] { return std::filebuf::seekoff(offset, from, which); }, IsRefusedSeek);
}

CInputFile::CBuffer::pos_type CInputFile::CBuffer::seekpos(pos_type to, std::ios::openmode which) {
    return KeepingReason(
        m_systemError, [&] { return std::filebuf::seekpos(to, which); }, IsRefusedSeek);
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

bool COutputFile::CBuffer::Open(const wchar_t* path, std::ios::openmode mode) {
    return KeepingReason(
        m_systemError, [&] { return OpenBinary<std::filebuf>(*this, path, mode); }, IsFalse);
}

bool COutputFile::CBuffer::Close() {
    return KeepingReason(
        m_systemError, [&] { return close() != nullptr; }, IsFalse);
}

COutputFile::CBuffer::int_type COutputFile::CBuffer::overflow(int_type byte) {
    return KeepingReason(
        m_systemError, [&] { return std::filebuf::overflow(byte); },
        [](int_type put) { return traits_type::eq_int_type(put, traits_type::eof()); });
}

std::streamsize COutputFile::CBuffer::xsputn(const char* bytes, std::streamsize count) {
    return KeepingReason(
        m_systemError, [&] { return std::filebuf::xsputn(bytes, count); },
        [&](std::streamsize put) { return put != count; });
}

COutputFile::CBuffer::pos_type
COutputFile::CBuffer::seekoff(off_type offset, std::ios::seekdir from, std::ios::openmode which) {
    return KeepingReason(
        m_systemError, [&] { return std::filebuf::seekoff(offset, from, which); }, IsRefusedSeek);
}

COutputFile::CBuffer::pos_type COutputFile::CBuffer::seekpos(pos_type to,
                                                             std::ios::openmode which) {
    return KeepingReason(
        m_systemError, [&] { return std::filebuf::seekpos(to, which); }, IsRefusedSeek);
}

namespace {

/// All of what tells its end only by reaching it.
std::optional<std::string> ReadPieces(std::istream& stream, std::uint64_t limit) {
    constexpr std::size_t kPieceBytes = std::size_t{64} << 10;
    stream.clear();
    std::string bytes;
    std::string piece(kPieceBytes, '\0');
    while (bytes.size() <= limit && !stream.eof() && !stream.bad()) {
        stream.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        bytes.append(piece, 0, static_cast<std::size_t>(stream.gcount()));
    }
    if (stream.bad() || bytes.size() > limit)
        return std::nullopt;
    return bytes;
}

} // namespace

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
    const std::streamoff here = stream.tellg();
    if (here < 0) // a pipe, which has no places
        return ReadPieces(stream, limit);
    const auto size = BytesToEnd(stream);
    if (size.value_or(0) == 0) { // also of what the system makes when it is read
        stream.clear();
        stream.seekg(here);
        return stream.good() ? ReadPieces(stream, limit) : std::nullopt;
    }
    if (*size > limit)
        return std::nullopt;
    std::string bytes(static_cast<std::size_t>(*size), '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream.good())
        return std::nullopt;
    return bytes;
}

} // namespace trevolt
