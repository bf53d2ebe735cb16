// The folder that a run's outputs go into, and those below it. Each is written under a name of its own that no kind
// matches, brought to the disk, and only then given its final name; what a run leaves there that is
// ended by force, a later one removes.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "platform/FileSystem.h"

namespace trevolt {

/// A file under work in the output folder, removed unless it was given its final name.
class CTemporaryOutput {
  public:
    /// Nothing is written yet.
    CTemporaryOutput(std::wstring path, std::wstring finalName);
    ~CTemporaryOutput();
    CTemporaryOutput(const CTemporaryOutput&) = delete;
    CTemporaryOutput& operator=(const CTemporaryOutput&) = delete;

    /// Where the output is to be written.
    const std::wstring& Path() const { return m_path; }
    /// The name that it is to have, below the output folder.
    const std::wstring& FinalName() const { return m_finalName; }

    /// Makes the file, empty: the `errno` value of the reason when it does not stand, else 0.
    int Make() const noexcept;

    /// Waits until the file's bytes are on the disk: the `errno` value of the reason when they are
    /// not, else 0. Throws nothing; several outputs may be synced at a time.
    int Sync() const noexcept;

  private:
    friend class COutputFolder;

    std::wstring m_path;
    std::wstring m_finalName;
    std::optional<NativePath> m_native; ///< to be removed without memory
    bool m_kept = false;
};

/// What became of an output that was to get its final name.
struct SKeptOutput {
    bool isKept = false;
    bool isTaken = false;     ///< something stands under the name that is not to be replaced
    int error = 0;            ///< else the `errno` value of the reason, 0 without one
    std::wstring sameEntryAs; ///< or the run's earlier output whose name means the same file
};

/// Why a folder gets no output, to be told behind its name, by the `errno` value that `Make` or `Refusal`
/// answers.
std::string DescribeRefusedFolder(int error);

/// Whether the system takes the name of `path` for something new, whose folder need not stand yet: the
/// `errno` value of the reason when it is seen that it does not, else 0.
int RefusalOfName(const std::wstring& path);

/// Used by one thread, `Begin` by any.
class COutputFolder {
  public:
    /// A run that writes into the folder begins; with `sync`, what it is told to be there has reached
    /// the disk.
    COutputFolder(const std::wstring& folder, bool sync);

    /// Makes the folder `below` the output folder, and the output folder itself, where they are
    /// missing. The `errno` value of the reason when it does not stand afterwards, takes no file, or
    /// may not reach the disk, else 0.
    int Make(const std::wstring& below = {}) const;

    /// Makes a file in the output folder `below` that goes again: the `errno` value of the reason when
    /// none can be made, else 0.
    int Try(const std::wstring& below = {}) const;

    /// Why `Make` would fail, as far as the system tells that without writing: an `errno` value, 0 when
    /// it would not.
    int Refusal(const std::wstring& below = {}) const;

    /// Removes the files under work in the folder `below` of runs that certainly ended: those of a process that was counted
    /// as this one is and is gone, and those that nobody has written to for a week. What other
    /// machines work on stays. It comes before `Make` and `Try`, which may fail for want of the room that
    /// they take.
    void RemoveAbandoned(const std::wstring& below = {}) const;

    /// A file of this run under work, to become `name`, and in the same folder.
    std::unique_ptr<CTemporaryOutput> Begin(const std::wstring& name) const;

    /// Whether outputs are to be synced before they are kept.
    bool IsSynced() const { return m_sync; }

    /// Gives an output its final name. With `replaces` a file of that name is replaced, unless this
    /// run wrote it under another one: some folders do not tell "A" from "a".
    SKeptOutput Keep(CTemporaryOutput& output, bool replaces);

    /// Waits until the names that were given are on the disk: the `errno` value of the reason when
    /// they may not be, else 0. Does nothing without `sync`.
    int SyncNames() noexcept;

  private:
    /// That this run wrote; nothing of what stood before.
    std::optional<std::wstring> FindKept(const std::wstring& path) const;

    std::wstring m_folder;
    std::set<NativePath> m_unsynced; ///< folders that were given names since the last sync
    std::wstring m_prefix;           ///< of the names of this run's files under work
    bool m_sync;
    std::map<EntryIdentity, std::wstring> m_kept; ///< what this run wrote, with its name
};

} // namespace trevolt
