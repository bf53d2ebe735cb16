// Paths, folders and whole-file operations. Paths are wide strings; on POSIX they stand for UTF-8
// names, and a path that has no UTF-8 form exists nowhere.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace trevolt {

// kNamesIgnoreCase: a path opens its file in whatever case its letters A to Z stand.
#ifdef _WIN32
using NativePath = std::wstring;
inline constexpr wchar_t kPathSeparator = L'\\';
inline constexpr bool kNamesIgnoreCase = true;
#else
using NativePath = std::string;
inline constexpr wchar_t kPathSeparator = L'/';
inline constexpr bool kNamesIgnoreCase = false;
#endif

/// `path` as the system's own calls take it; nothing when it has no such form.
std::optional<NativePath> ToNativePath(const std::wstring& path);

enum class EntryKind {
    File,   ///< a regular file, or a link that leads nowhere
    Folder, ///< a folder or a link to one
    Other   ///< a FIFO, device or socket
};

struct FolderEntry {
    std::wstring name; ///< as found, without its folder
    EntryKind kind = EntryKind::File;
};

/// One (on POSIX) whose name is not valid UTF-8.
struct UnnamedEntry {
    std::string rawName;
    EntryKind kind = EntryKind::File;
    bool isLink = false; ///< of what it leads to is the kind
};

struct FolderListing {
    /// The `errno` value of what ended the listing before the folder's end, or kept the system from
    /// telling what an entry is, which stands as a file then; else 0.
    int error = 0;
    std::vector<FolderEntry> entries; ///< in the system's order, "." and ".." included
    std::vector<UnnamedEntry> unnamedByUtf8;
};

/// Every entry whose full name begins with `prefix`: a folder's path with its separator gives all
/// of its entries. What the system refuses to tell is missing, and the listing's error says why.
FolderListing ListEntries(const std::wstring& prefix);

/// Whether `folder` is seen to be a folder that holds nothing; it is not read further than to its first
/// entry. False where the system refuses to tell.
bool IsEmptyFolder(const std::wstring& folder);

/// Whether `path` names a file, a folder or another entry; links are followed.
bool PathExists(const std::wstring& path);

/// Whether `path` names a folder; links are followed.
bool IsFolder(const std::wstring& path);

/// What stands at `path`, links followed; nothing when nothing does or the system does not tell, and
/// `errno` says why, where the system does, else it is 0.
std::optional<EntryKind> KindOfEntry(const std::wstring& path);

/// Why the system would refuse a new file in a folder, as far as it tells that without one: an `errno`
/// value, 0 when it would not.
int RefusalOfNewFiles(const std::wstring& folder);

/// Why the system would refuse to bring a folder's names to the disk, as far as it tells that without
/// being asked to: an `errno` value, 0 when it would not.
int RefusalOfSync(const std::wstring& folder);

/// Whether both paths exist and name the same entry.
bool IsSameEntry(const std::wstring& a, const std::wstring& b);

/// Makes the folder and those above it. False when it does not stand afterwards, and `errno` then
/// tells why the first that is missing could not be made, where the system does.
bool CreateFolders(const std::wstring& path);

/// Renames `from` to `to` in one step; a file at `to` is replaced. False leaves both as they were,
/// and `errno` tells why where the system does, else it is 0.
bool ReplaceWith(const std::wstring& from, const std::wstring& to);

/// The same, and where the system has it, not before the new name is on the disk; elsewhere
/// `SyncNativeFolder` sees to that.
bool ReplaceDurably(const std::wstring& from, const std::wstring& to);

/// Renames `from` to `to` in one step where nothing stands at `to`, not even a link that leads nowhere;
/// with `isDurable` as `ReplaceDurably`. False leaves both as they were, and `errno` tells why where
/// the system does, EEXIST when something stands there, else it is 0.
bool NameNew(const std::wstring& from, const std::wstring& to, bool isDurable);

/// Makes an empty file where nothing stands; allocates nothing. The `errno` value of the reason when it
/// does not stand, else 0.
int MakeNativeFile(const NativePath& path) noexcept;

/// Removes a file. False when it stays.
bool RemoveFile(const std::wstring& path);

/// The same of a path in the system's form; allocates nothing.
bool RemoveNativeFile(const NativePath& path) noexcept;

/// Waits until the file's bytes are on the disk; allocates nothing. The `errno` value of the reason
/// when they are not, 0 when they are.
int SyncNativeFile(const NativePath& path) noexcept;

/// Waits until the names that a folder holds are on the disk, where the file system has a way to ask
/// for it. The `errno` value of the reason when they may not be, else 0.
int SyncNativeFolder(const NativePath& folder) noexcept;

/// What tells an entry of the file system from every other that stands at the same time: the numbers
/// of its volume and of itself there.
using EntryIdentity = std::pair<std::uint64_t, std::uint64_t>;

enum class EIdentified { Link, WhereItLeads };

/// Of the file or folder that stands at `path`, and where that is a link, of it or of what it leads to;
/// nothing when none does, or where the file system numbers nothing.
std::optional<EntryIdentity> IdentityOf(const std::wstring& path,
                                        EIdentified identified = EIdentified::Link);

/// Whether a link stands at `path`, wherever it leads.
bool IsLink(const std::wstring& path);

/// How long ago the file was last written, by this machine's clock; nothing when it cannot be told.
std::optional<std::chrono::seconds> AgeOf(const std::wstring& path);

/// Gives the file at `to` the time at which that at `from` was last written. False when it has not got
/// it, and `errno` tells why where the system does, else it is 0.
bool CopyWriteTime(const std::wstring& from, const std::wstring& to);

/// Lets the system forget what it holds of a file whose bytes are on the disk, so that the next read
/// comes from there, where the system can be asked to.
void DropCachedPages(const std::wstring& path);

/// `path` up to and including its last separator, empty when it has none.
std::wstring FolderPart(const std::wstring& path);

/// `folder` followed by the separator, unless it is empty or ends with one.
std::wstring WithSeparator(std::wstring folder);

/// `path` without separators at its end, where it has other characters before them.
inline std::wstring WithoutSeparator(std::wstring path) {
    while (path.size() > 1 && FolderPart(path) == path)
        path.pop_back();
    return path;
}

} // namespace trevolt
