#include "platform/FileSystem.h"

#include <cerrno>
#include <system_error>

#include <windows.h>

namespace trevolt {
namespace {

constexpr bool IsSeparator(wchar_t c) { return c == L'\\' || c == L'/'; }

EntryKind KindOf(DWORD attributes) {
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return EntryKind::Folder;
    return (attributes & FILE_ATTRIBUTE_DEVICE) != 0 ? EntryKind::Other : EntryKind::File;
}

/// A handle that only identifies its entry, closed with the holder.
class CEntryHandle {
  public:
    /// `flags` are further ones; without `access` the handle only identifies.
    explicit CEntryHandle(const std::wstring& path, DWORD flags = 0, DWORD access = 0)
        : m_handle(CreateFileW(path.c_str(), access,
                               FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                               OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr)) {}
    ~CEntryHandle() {
        if (m_handle != INVALID_HANDLE_VALUE)
            CloseHandle(m_handle);
    }
    CEntryHandle(const CEntryHandle&) = delete;
    CEntryHandle& operator=(const CEntryHandle&) = delete;

    bool IsOpen() const { return m_handle != INVALID_HANDLE_VALUE; }

    bool Identify(BY_HANDLE_FILE_INFORMATION& info) const {
        return m_handle != INVALID_HANDLE_VALUE && GetFileInformationByHandle(m_handle, &info) != 0;
    }

    /// The moment of the last write.
    bool TellWriteTime(FILETIME& time) const {
        return m_handle != INVALID_HANDLE_VALUE &&
               GetFileTime(m_handle, nullptr, nullptr, &time) != 0;
    }
    bool TakeWriteTime(const FILETIME& time) const {
        return m_handle != INVALID_HANDLE_VALUE &&
               SetFileTime(m_handle, nullptr, nullptr, &time) != 0;
    }

  private:
    HANDLE m_handle;
};

/// A moment in the system's steps of 100 ns.
std::int64_t StepsOf(const FILETIME& time) {
    return static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32U |
                                     time.dwLowDateTime);
}

/// The `errno` value of a system call's error, 0 for one that has none.
int ErrnoOf(DWORD error) {
    const std::error_condition condition =
        std::error_code(static_cast<int>(error), std::system_category()).default_error_condition();
    return condition.category() == std::generic_category() ? condition.value() : 0;
}

/// That of a call which failed: where it has none, as of a read or write that went wrong.
int ErrnoOfFailure(DWORD error) {
    const int value = ErrnoOf(error);
    return value == 0 ? EIO : value;
}

bool Move(const std::wstring& from, const std::wstring& to, DWORD flags) {
    errno = 0;
    if (MoveFileExW(from.c_str(), to.c_str(), flags) != 0)
        return true;
    errno = ErrnoOf(GetLastError());
    return false;
}

} // namespace

std::optional<NativePath> ToNativePath(const std::wstring& path) {
    if (path.find(L'\0') != std::wstring::npos)
        return std::nullopt;
    return path;
}

FolderListing ListEntries(const std::wstring& prefix) {
    FolderListing listing;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((prefix + L"*.*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        listing.error = error == ERROR_FILE_NOT_FOUND ? 0 : ErrnoOfFailure(error);
        return listing;
    }
    do {
        listing.entries.push_back({found.cFileName, KindOf(found.dwFileAttributes)});
    } while (FindNextFileW(search, &found) != 0);
    const DWORD error = GetLastError();
    listing.error = error == ERROR_NO_MORE_FILES ? 0 : ErrnoOfFailure(error);
    FindClose(search);
    return listing;
}

bool IsEmptyFolder(const std::wstring& folder) {
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((WithSeparator(folder) + L"*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) // a volume's own folder has no "." to be found
        return GetLastError() == ERROR_FILE_NOT_FOUND;
    bool isEmpty = true;
    do {
        const std::wstring_view name = found.cFileName;
        isEmpty = name == L"." || name == L"..";
    } while (isEmpty && FindNextFileW(search, &found) != 0);
    isEmpty = isEmpty && GetLastError() == ERROR_NO_MORE_FILES;
    FindClose(search);
    return isEmpty;
}

bool PathExists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsFolder(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::optional<EntryKind> KindOfEntry(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    errno = 0;
    if (attributes != INVALID_FILE_ATTRIBUTES)
        return KindOf(attributes);
    const DWORD error = GetLastError(); // for the library no name is a file that is not there
    errno = error == ERROR_INVALID_NAME ? EINVAL : ErrnoOf(error);
    return std::nullopt;
}

int RefusalOfNewFiles(const std::wstring& folder) {
    return CEntryHandle(folder, 0, FILE_ADD_FILE).IsOpen() ? 0 : ErrnoOfFailure(GetLastError());
}

int RefusalOfSync(const std::wstring&) { return 0; } // names are written through

bool IsSameEntry(const std::wstring& a, const std::wstring& b) {
    BY_HANDLE_FILE_INFORMATION first{};
    BY_HANDLE_FILE_INFORMATION second{};
    return CEntryHandle(a).Identify(first) && CEntryHandle(b).Identify(second) &&
           first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
           first.nFileIndexHigh == second.nFileIndexHigh &&
           first.nFileIndexLow == second.nFileIndexLow;
}

bool CreateFolders(const std::wstring& path) {
    bool stands = false;
    int reason = 0;
    const auto make = [&](const std::wstring& folder) {
        const bool isMade = CreateDirectoryW(folder.c_str(), nullptr) != 0;
        int error = isMade ? 0 : ErrnoOf(GetLastError());
        stands = isMade || IsFolder(folder);
        if (error == EEXIST) // what stands is no folder, or a link that leads to none
            error = PathExists(folder) ? ENOTDIR : ENOENT;
        if (stands || reason == 0)
            reason = stands ? 0 : error;
    };
    for (std::size_t i = 1; i < path.size(); ++i)
        if (IsSeparator(path[i]))
            make(path.substr(0, i));
    make(path);
    errno = reason;
    return stands;
}

bool ReplaceWith(const std::wstring& from, const std::wstring& to) {
    return Move(from, to, MOVEFILE_REPLACE_EXISTING);
}

bool ReplaceDurably(const std::wstring& from, const std::wstring& to) {
    return Move(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
}

bool NameNew(const std::wstring& from, const std::wstring& to, bool isDurable) {
    return Move(from, to, isDurable ? MOVEFILE_WRITE_THROUGH : 0);
}

int MakeNativeFile(const NativePath& path) noexcept {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return ErrnoOfFailure(GetLastError());
    CloseHandle(file);
    return 0;
}

bool RemoveFile(const std::wstring& path) { return RemoveNativeFile(path); }

bool RemoveNativeFile(const NativePath& path) noexcept { return DeleteFileW(path.c_str()) != 0; }

int SyncNativeFile(const NativePath& path) noexcept {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return ErrnoOfFailure(GetLastError());
    const int error = FlushFileBuffers(file) != 0 ? 0 : ErrnoOfFailure(GetLastError());
    CloseHandle(file);
    return error;
}

int SyncNativeFolder(const NativePath& /*folder*/) noexcept {
    return 0;
} // names are written through

bool IsLink(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return false;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(path.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return true; // as far as is known
    FindClose(search);
    return IsReparseTagNameSurrogate(found.dwReserved0) != 0; // files kept in a cloud stand here
}

std::optional<EntryIdentity> IdentityOf(const std::wstring& path, EIdentified identified) {
    BY_HANDLE_FILE_INFORMATION info{};
    const DWORD flags = identified == EIdentified::Link ? FILE_FLAG_OPEN_REPARSE_POINT : 0;
    if (!CEntryHandle(path, flags).Identify(info))
        return std::nullopt;
    const std::uint64_t index = std::uint64_t{info.nFileIndexHigh} << 32U | info.nFileIndexLow;
    return index == 0 ? std::nullopt
                      : std::optional(EntryIdentity{info.dwVolumeSerialNumber, index});
}

std::optional<std::chrono::seconds> AgeOf(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) == 0)
        return std::nullopt;
    constexpr std::int64_t kStepsOfSecond = 10'000'000;
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return std::chrono::seconds((StepsOf(now) - StepsOf(data.ftLastWriteTime)) / kStepsOfSecond);
}

bool CopyWriteTime(const std::wstring& from, const std::wstring& to) {
    FILETIME time{};
    errno = 0;
    if (CEntryHandle(from, 0, FILE_READ_ATTRIBUTES).TellWriteTime(time) &&
        CEntryHandle(to, 0, FILE_WRITE_ATTRIBUTES).TakeWriteTime(time))
        return true;
    errno = ErrnoOf(GetLastError());
    return false;
}

void DropCachedPages(const std::wstring& path) {
    const CEntryHandle unbuffered(path, FILE_FLAG_NO_BUFFERING,
                                  GENERIC_READ); // opening it is enough
}

std::wstring FolderPart(const std::wstring& path) {
    return path.substr(0, path.find_last_of(L"\\/") + 1); // npos + 1 is 0
}

std::wstring WithSeparator(std::wstring folder) {
    if (!folder.empty() && !IsSeparator(folder.back()))
        folder.push_back(kPathSeparator);
    return folder;
}

} // namespace trevolt
