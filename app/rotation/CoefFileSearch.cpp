#include "app/rotation/CoefFileSearch.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include "app/rotation/Obstacles.h"
#include "common/ShownCharacters.h"
#include "platform/FileSystem.h"
#include "platform/SystemError.h"
#include "trevolt/FileKinds.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

// Why an entry of a folder is passed over.
constexpr const char* kFolder = "a folder";
constexpr const char* kFolderLink = "a link to a folder";
constexpr const char* kNoFile = "a pipe, socket or device";
constexpr const char* kNoCoefFile = "no coefficient file by its name";

/// Collects the files of the sources.
class CSourceSearch {
  public:
    CSourceSearch(const SCoefFileSearch& request, SCoefFiles& found)
        : m_request(request), m_found(found), m_obstacles(found.obstacles) {}

    void Add(const std::wstring& source) {
        const auto kind = KindOfEntry(source);
        const int error = errno;
        if (!kind && (error == 0 || error == ENOENT || error == EINVAL)) // or cannot be one
            m_obstacles.Add(fmt::format("the source {} does not exist: check its path",
                                        WideToShownUtf8(source)));
        else if (!kind)
            m_obstacles.Add(DescribeHiddenSource(source, error));
        else if (*kind == EntryKind::Folder)
            AddTree(source);
        else
            AddFile(source, *kind);
    }

  private:
    void AddFile(const std::wstring& path, EntryKind kind) {
        m_folder = std::make_shared<const std::wstring>(FolderPart(path));
        const std::wstring name = path.substr(m_folder->size());
        if (kind == EntryKind::Other)
            m_obstacles.Add(
                fmt::format("the source {} is neither a file nor a folder: give one of them",
                            WideToShownUtf8(path)));
        else if (!m_request.takes(name))
            m_obstacles.Add(fmt::format("the source {} {}", WideToShownUtf8(path), kForeignSource));
        else
            AddName(name);
    }

    void AddTree(const std::wstring& source) {
        if (!m_request.targetFolder.empty() && IsSameEntry(source, m_request.targetFolder)) {
            m_obstacles.Add("source and target are the same folder: choose another target, so that "
                            "the source stays as it is");
            return;
        }
        m_folder = std::make_shared<const std::wstring>(WithSeparator(source));
        const std::size_t first = m_found.files.size();
        std::vector<std::wstring> folders{L""}; // below the source, still to be listed
        while (!folders.empty()) {
            const std::wstring below = std::move(folders.back());
            folders.pop_back();
            AddFolder(below, folders);
        }
        std::sort(m_found.files.begin() + static_cast<std::ptrdiff_t>(first), m_found.files.end(),
                  [](const SCoefFileName& a, const SCoefFileName& b) { return a.name < b.name; });
    }

    void AddFolder(const std::wstring& below, std::vector<std::wstring>& folders) {
        FolderListing listing = ListEntries(*m_folder + below);
        if (listing.error != 0) {
            RefuseListing(WideToShownUtf8(*m_folder + below), listing);
            return;
        }
        if (below.empty())
            m_found.files.reserve(m_found.files.size() + listing.entries.size());
        for (FolderEntry& entry : listing.entries) {
            const std::wstring name = std::exchange(entry.name, {}); // held once: they may be many
            if (name == L"." || name == L"..")
                continue;
            if (entry.kind == EntryKind::Folder)
                AddSubfolder(below, name, folders);
            else if (entry.kind == EntryKind::Other)
                PassOver(WideToShownUtf8(below + name), kNoFile);
            else if (!m_request.takes(name))
                PassOver(WideToShownUtf8(below + name), kNoCoefFile);
            else
                AddName(below + name);
        }
        for (const UnnamedEntry& entry : listing.unnamedByUtf8)
            AddUnnamed(WideToShownUtf8(below) + Shown(entry.rawName), entry);
    }

    /// What cannot be opened by its name, `shown` so: it fails where it is meant.
    void AddUnnamed(const std::string& shown, const UnnamedEntry& entry) {
        const std::wstring letters(entry.rawName.begin(), entry.rawName.end());
        if (entry.kind == EntryKind::Other)
            PassOver(shown, kNoFile);
        else if (entry.kind == EntryKind::File && m_request.takes(letters))
            m_found.unnamable.push_back(shown);
        else if (entry.kind == EntryKind::File)
            PassOver(shown, kNoCoefFile);
        else if (!m_request.recursive)
            PassOver(shown, kFolder);
        else if (entry.isLink)
            PassOver(shown, kFolderLink);
        else
            m_found.unnamable.push_back(shown + static_cast<char>(kFolderSlash));
    }

    void AddSubfolder(const std::wstring& below, const std::wstring& name,
                      std::vector<std::wstring>& folders) {
        const std::wstring path = *m_folder + below + name;
        if (!m_request.recursive)
            PassOver(WideToShownUtf8(below + name), kFolder);
        else if (IsLink(path))
            PassOver(WideToShownUtf8(below + name), kFolderLink);
        else if (IsSameEntry(path, m_request.targetFolder))
            PassOver(WideToShownUtf8(below + name), "the target folder");
        else
            folders.push_back(below + name + kFolderSlash);
    }

    void RefuseListing(const std::string& folder, const FolderListing& listing) {
        const bool isDenied = listing.error == EACCES && listing.entries.empty();
        m_found.isListingBroken |= !isDenied;
        const std::string told = WithSystemReason(
            fmt::format("the source folder {} cannot be listed", folder), listing.error);
        m_obstacles.Add(isDenied ? told + ": leave it out, or ask for the right to read it" : told);
    }

    void AddName(const std::wstring& name) { m_found.files.push_back({m_folder, name}); }

    void PassOver(std::string name, const char* reason) {
        m_found.passedOver.push_back({std::move(name), reason});
    }

    const SCoefFileSearch& m_request;
    SCoefFiles& m_found;
    std::shared_ptr<const std::wstring> m_folder; ///< of the source at hand, with its separator
    CObstacles m_obstacles;
};

} // namespace

std::string DescribeHiddenSource(const std::wstring& path, int error) {
    return WithSystemReason(fmt::format("the source {} cannot be looked at", WideToShownUtf8(path)),
                            error) +
           ": check its path and its rights";
}

bool IsCoefFileName(std::wstring_view name) { return FindLoadKind(name) != nullptr; }

const char* DescribeUnnamable(std::string_view name) {
    return name.ends_with(static_cast<char>(kFolderSlash))
               ? "passed over with all that it holds: the folder's name is not valid UTF-8"
               : "passed over: its name is not valid UTF-8";
}

SCoefFiles FindCoefFiles(const SCoefFileSearch& request) {
    SCoefFiles found;
    {
        CSourceSearch search(request, found);
        for (const std::wstring& source : request.sources)
            search.Add(source);
    }
    std::sort(found.unnamable.begin(), found.unnamable.end());
    std::sort(found.passedOver.begin(), found.passedOver.end(),
              [](const SPassedOver& a, const SPassedOver& b) { return a.name < b.name; });
    return found;
}

} // namespace trevolt
