#include "platform/FileSystem.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

struct DirCloser {
    void operator()(DIR* dir) const { closedir(dir); }
};

bool Stat(const std::wstring& path, struct stat& out) {
    const auto native = ToNativePath(path);
    return native && stat(native->c_str(), &out) == 0;
}

EntryKind KindOf(const struct stat& info) {
    if (S_ISDIR(info.st_mode))
        return EntryKind::Folder;
    return S_ISREG(info.st_mode) ? EntryKind::File : EntryKind::Other;
}

bool IsNativeFolder(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool IsNativeLink(const std::string& path) {
    struct stat info {};
    return lstat(path.c_str(), &info) == 0 && S_ISLNK(info.st_mode);
}

/// Of a look at an entry that is gone, or at a link that leads nowhere.
bool IsNothingThere(int error) { return error == ENOENT || error == ENOTDIR || error == ELOOP; }

/// What the folder itself tells of its entry, which needs no right to look at that; where it tells
/// nothing, and of links, what stands at `path`. A look that fails leaves its reason in `error`.
EntryKind KindOf(const dirent& entry, const std::string& path, int& error) {
    if (entry.d_type == DT_REG)
        return EntryKind::File;
    if (entry.d_type == DT_DIR)
        return EntryKind::Folder;
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN)
        return EntryKind::Other;
    struct stat info {};
    if (stat(path.c_str(), &info) == 0)
        return KindOf(info);
    const int lookError = errno;
    // No search follows a link to a folder, and one that is meant as a file fails by itself.
    if (error == 0 && !IsNothingThere(lookError) && !IsNativeLink(path))
        error = lookError;
    return EntryKind::File;
}

/// Why the system would refuse an access to a folder: an `errno` value, 0 when it would not.
int RefusalOf(const std::wstring& folder, int access) {
    const auto native = ToNativePath(folder);
    if (!native)
        return ENOENT;
    return faccessat(AT_FDCWD, native->c_str(), access, AT_EACCESS) == 0 ? 0 : errno;
}

/// What `fsync` has to say of an entry that is opened for it.
int SyncEntry(const char* path) noexcept {
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return errno;
    int error = 0;
    do
        error = fsync(descriptor) == 0 ? 0 : errno;
    while (error == EINTR);
    close(descriptor);
    return error;
}

} // namespace

std::optional<NativePath> ToNativePath(const std::wstring& path) {
    auto native = WideToUtf8(path);
    if (native && native->find('\0') != std::string::npos)
        return std::nullopt;
    return native;
}

FolderListing ListEntries(const std::wstring& prefix) {
    FolderListing listing;
    const auto native = ToNativePath(prefix);
    if (!native)
        return listing;
    const std::size_t nameStart = native->rfind('/') + 1; // npos + 1 is 0
    const std::string folder = nameStart == 0 ? "./" : native->substr(0, nameStart);
    const std::string nameBegin = native->substr(nameStart);
    int lookError = 0;
    // The C++ library's iterator ends the program when it gets no memory.
    const std::unique_ptr<DIR, DirCloser> dir(opendir(folder.c_str()));
    while (dir) {
        errno = 0;
        const dirent* const entry = readdir(dir.get());
        if (entry == nullptr)
            break;
        const std::string name = entry->d_name;
        if (!name.starts_with(nameBegin))
            continue;
        const EntryKind kind = KindOf(*entry, folder + name, lookError);
        if (auto wide = Utf8ToWide(name))
            listing.entries.push_back({std::move(*wide), kind});
        else
            listing.unnamedByUtf8.push_back({name, kind, IsNativeLink(folder + name)});
    }
    listing.error = errno != 0 ? errno : lookError;
    return listing;
}

bool IsEmptyFolder(const std::wstring& folder) {
    const auto native = ToNativePath(folder);
    const std::unique_ptr<DIR, DirCloser> dir(native ? opendir(native->c_str()) : nullptr);
    if (!dir)
        return false;
    errno = 0;
    while (const dirent* const entry = readdir(dir.get()))
        if (const std::string_view name = entry->d_name; name != "." && name != "..")
            return false;
    return errno == 0;
}

bool PathExists(const std::wstring& path) {
    struct stat info {};
    return Stat(path, info);
}

bool IsFolder(const std::wstring& path) {
    struct stat info {};
    return Stat(path, info) && S_ISDIR(info.st_mode);
}

std::optional<EntryKind> KindOfEntry(const std::wstring& path) {
    const auto native = ToNativePath(path);
    struct stat info {};
    errno = 0;
    if (!native || stat(native->c_str(), &info) != 0)
        return std::nullopt;
    return KindOf(info);
}

int RefusalOfNewFiles(const std::wstring& folder) { return RefusalOf(folder, W_OK | X_OK); }

int RefusalOfSync(const std::wstring& folder) { return RefusalOf(folder, R_OK); }

bool IsSameEntry(const std::wstring& a, const std::wstring& b) {
    struct stat first {};
    struct stat second {};
    return Stat(a, first) && Stat(b, second) && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

bool CreateFolders(const std::wstring& path) {
    errno = 0;
    const auto native = ToNativePath(path);
    if (!native)
        return false;
    bool stands = false;
    int reason = 0;
    const auto make = [&](const std::string& folder) {
        int error = mkdir(folder.c_str(), 0777) == 0 ? 0 : errno;
        stands = error == 0 || IsNativeFolder(folder);
        if (error == EEXIST) // what stands is no folder, or a link that leads to none
            error = access(folder.c_str(), F_OK) == 0 ? ENOTDIR : errno;
        if (stands || reason == 0)
            reason = stands ? 0 : error;
    };
    for (std::size_t i = native->find('/', 1); i != std::string::npos; i = native->find('/', i + 1))
        make(native->substr(0, i));
    make(*native);
    errno = reason;
    return stands;
}

bool ReplaceWith(const std::wstring& from, const std::wstring& to) {
    const auto nativeFrom = ToNativePath(from);
    const auto nativeTo = ToNativePath(to);
    errno = 0;
    return nativeFrom && nativeTo && std::rename(nativeFrom->c_str(), nativeTo->c_str()) == 0;
}

bool ReplaceDurably(const std::wstring& from, const std::wstring& to) {
    return ReplaceWith(from, to);
}

bool NameNew(const std::wstring& from, const std::wstring& to, bool /*isDurable*/) {
    const auto nativeFrom = ToNativePath(from);
    const auto nativeTo = ToNativePath(to);
    errno = 0;
    if (!nativeFrom || !nativeTo)
        return false;
    if (renameat2(AT_FDCWD, nativeFrom->c_str(), AT_FDCWD, nativeTo->c_str(), RENAME_NOREPLACE) ==
        0)
        return true;
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    // The file system has no such rename; a second name it refuses as well where one stands.
    if (link(nativeFrom->c_str(), nativeTo->c_str()) == 0) {
        RemoveNativeFile(*nativeFrom);
        return true;
    }
    if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS)
        return false;
    // Nor second names: what comes to stand there in this moment is replaced.
    if (IdentityOf(to)) {
        errno = EEXIST;
        return false;
    }
    return ReplaceWith(from, to);
}

int MakeNativeFile(const NativePath& path) noexcept {
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0)
        return errno;
    close(descriptor);
    return 0;
}

bool RemoveFile(const std::wstring& path) {
    const auto native = ToNativePath(path);
    return native && RemoveNativeFile(*native);
}

bool RemoveNativeFile(const NativePath& path) noexcept { return unlink(path.c_str()) == 0; }

int SyncNativeFile(const NativePath& path) noexcept { return SyncEntry(path.c_str()); }

int SyncNativeFolder(const NativePath& folder) noexcept {
    const int error = SyncEntry(folder.c_str());
    return error == EINVAL ? 0 : error; // the file system has nothing of the kind
}

bool IsLink(const std::wstring& path) {
    const auto native = ToNativePath(path);
    return native && IsNativeLink(*native);
}

std::optional<EntryIdentity> IdentityOf(const std::wstring& path, EIdentified identified) {
    struct stat info {};
    const auto native = ToNativePath(path);
    const auto tell = identified == EIdentified::Link ? lstat : stat;
    if (!native || tell(native->c_str(), &info) != 0 || info.st_ino == 0)
        return std::nullopt;
    return EntryIdentity{info.st_dev, info.st_ino};
}

std::optional<std::chrono::seconds> AgeOf(const std::wstring& path) {
    struct stat info {};
    if (!Stat(path, info))
        return std::nullopt;
    return std::chrono::seconds(time(nullptr) - info.st_mtime);
}

bool CopyWriteTime(const std::wstring& from, const std::wstring& to) {
    const auto nativeTo = ToNativePath(to);
    struct stat info {};
    errno = 0;
    if (!nativeTo || !Stat(from, info))
        return false;
    const std::array<timespec, 2> times{timespec{0, UTIME_OMIT}, info.st_mtim};
    return utimensat(AT_FDCWD, nativeTo->c_str(), times.data(), 0) == 0;
}

void DropCachedPages(const std::wstring& path) {
    const auto native = ToNativePath(path);
    const int descriptor = native ? open(native->c_str(), O_RDONLY | O_CLOEXEC) : -1;
    if (descriptor < 0)
        return;
    posix_fadvise(descriptor, 0, 0, POSIX_FADV_DONTNEED);
    close(descriptor);
}

std::wstring FolderPart(const std::wstring& path) {
    return path.substr(0, path.rfind(kPathSeparator) + 1); // npos + 1 is 0
}

std::wstring WithSeparator(std::wstring folder) {
    if (!folder.empty() && folder.back() != kPathSeparator)
        folder.push_back(kPathSeparator);
    return folder;
}

} // namespace trevolt
