// What a run is going to do: which files it takes, what they become, and what forbids it.
#include <algorithm>
#include <cerrno>
#include <map>
#include <memory>
#include <new>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "platform/FileSystem.h"
#include "platform/SystemError.h"
#include "trevolt/FileKinds.h"
#include "trevolt/RotationRun.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr wchar_t kSlash = L'/'; ///< between the folders of names that are told, on every system
constexpr SAngle kCopy{L"0\u00B0", 0};
constexpr std::wstring_view kOtherFiles = L"*";
/// So many of one sort are told, and how many more there are.
constexpr std::size_t kToldObstacles = 10;

SAngle AngleOf(std::uint32_t code) {
    const auto* const found = std::find_if(kAngles.begin(), kAngles.end(),
                                           [&](const SAngle& angle) { return angle.code == code; });
    return found == kAngles.end() ? kCopy : *found;
}

/// What a plan cannot do, in the order in which it was found.
class CObstacles {
  public:
    explicit CObstacles(std::vector<std::string>& told) : m_told(told) {}
    ~CObstacles() {
        try {
            if (m_count > kToldObstacles)
                m_told.push_back(fmt::format("and {} more like these", m_count - kToldObstacles));
        } catch (const std::bad_alloc&) { // the first ones stop the run by themselves
        }
    }
    CObstacles(const CObstacles&) = delete;
    CObstacles& operator=(const CObstacles&) = delete;

    void Add(std::string obstacle) {
        if (++m_count <= kToldObstacles)
            m_told.push_back(std::move(obstacle));
    }

  private:
    std::vector<std::string>& m_told;
    std::size_t m_count = 0;
};

/// Collects the files of the sources.
class CSourceSearch {
  public:
    CSourceSearch(const SRotationRequest& request, SRotationPlan& plan)
        : m_request(request), m_plan(plan), m_obstacles(plan.obstacles) {}

    void Add(const std::wstring& source) {
        const auto kind = KindOfEntry(source);
        const int error = errno;
        if (!kind && (error == 0 || error == ENOENT))
            m_obstacles.Add(fmt::format("the source {} does not exist", WideToShownUtf8(source)));
        else if (!kind)
            m_obstacles.Add(WithSystemReason(
                fmt::format("the source {} cannot be looked at", WideToShownUtf8(source)), error));
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
                fmt::format("the source {} is neither a file nor a folder", WideToShownUtf8(path)));
        else if (FindLoadKind(name) == nullptr)
            m_obstacles.Add(fmt::format("the source {} is no coefficient file by its name",
                                        WideToShownUtf8(path)));
        else
            AddTurn(name);
    }

    void AddTree(const std::wstring& source) {
        if (!m_request.targetFolder.empty() && IsSameEntry(source, m_request.targetFolder)) {
            m_obstacles.Add("source and target are the same folder: choose another target, so that "
                            "the source stays as it is");
            return;
        }
        m_folder = std::make_shared<const std::wstring>(WithSeparator(source));
        const std::size_t first = m_plan.turns.size();
        std::vector<std::wstring> folders{L""}; // below the source, still to be listed
        while (!folders.empty()) {
            const std::wstring below = std::move(folders.back());
            folders.pop_back();
            AddFolder(below, folders);
        }
        std::sort(m_plan.turns.begin() + static_cast<std::ptrdiff_t>(first), m_plan.turns.end(),
                  [](const SPlannedTurn& a, const SPlannedTurn& b) { return a.name < b.name; });
    }

    void AddFolder(const std::wstring& below, std::vector<std::wstring>& folders) {
        FolderListing listing = ListEntries(*m_folder + below);
        if (listing.error != 0) {
            RefuseListing(WideToShownUtf8(*m_folder + below), listing);
            return;
        }
        if (below.empty())
            m_plan.turns.reserve(m_plan.turns.size() + listing.entries.size());
        for (FolderEntry& entry : listing.entries) {
            const std::wstring name = std::exchange(entry.name, {}); // held once: they may be many
            if (entry.kind == EntryKind::Folder)
                AddSubfolder(below, name, folders);
            else if (entry.kind == EntryKind::Other)
                PassOver(below + name, "a pipe, socket or device");
            else if (FindLoadKind(name) == nullptr)
                PassOver(below + name, "no coefficient file by its name");
            else
                AddTurn(below + name);
        }
        for (const std::string& raw : listing.unnamedByUtf8)
            if (FindLoadKind(std::wstring(raw.begin(), raw.end())) != nullptr)
                m_plan.unnamable.push_back(WideToShownUtf8(below) + raw);
    }

    void AddSubfolder(const std::wstring& below, const std::wstring& name,
                      std::vector<std::wstring>& folders) {
        if (name == L"." || name == L"..")
            return;
        const std::wstring path = *m_folder + below + name;
        if (!m_request.recursive)
            PassOver(below + name, "a folder");
        else if (IsLink(path))
            PassOver(below + name, "a link to a folder");
        else if (IsSameEntry(path, m_request.targetFolder))
            PassOver(below + name, "the target folder");
        else
            folders.push_back(below + name + kSlash);
    }

    void RefuseListing(const std::string& folder, const FolderListing& listing) {
        const bool isDenied = listing.error == EACCES && listing.entries.empty();
        m_plan.isListingBroken |= !isDenied;
        m_obstacles.Add(isDenied ? fmt::format("the source folder {} may not be read", folder)
                                 : WithSystemReason(
                                       fmt::format("the source folder {} cannot be listed", folder),
                                       listing.error));
    }

    void AddTurn(const std::wstring& name) {
        m_plan.turns.push_back({m_folder, name, {}, m_request.angle});
    }

    void PassOver(const std::wstring& name, const char* reason) {
        m_plan.passedOver.push_back({WideToShownUtf8(name), reason});
    }

    const SRotationRequest& m_request;
    SRotationPlan& m_plan;
    std::shared_ptr<const std::wstring> m_folder; ///< of the source at hand, with its separator
    CObstacles m_obstacles;
};

void FindTurns(const SRotationRequest& request, SRotationPlan& plan) {
    CSourceSearch search(request, plan);
    for (const std::wstring& source : request.sources)
        search.Add(source);
    std::sort(plan.unnamable.begin(), plan.unnamable.end());
    std::sort(plan.passedOver.begin(), plan.passedOver.end(),
              [](const SPassedOver& a, const SPassedOver& b) { return a.name < b.name; });
}

void CheckCount(const SRotationRequest& request, SRotationPlan& plan) {
    const std::size_t count = plan.turns.size() + plan.unnamable.size();
    std::vector<std::string> names;
    for (const std::wstring& source : request.sources)
        names.push_back(WideToShownUtf8(source));
    const std::string sources = fmt::format("{}", fmt::join(names, ", "));
    if (count == 0)
        plan.obstacles.push_back(fmt::format("there is no coefficient file in {}", sources));
    else if (request.wholeScreen && count != 1)
        plan.obstacles.push_back(fmt::format(
            "a whole screen is exactly one coefficient file, but {} holds {}", sources, count));
}

void TakeAngles(const SRotationRequest& request, SRotationPlan& plan) {
    if (request.angles.empty())
        return;
    std::map<std::wstring_view, std::uint32_t> rows;
    for (const SFileAngle& row : request.angles)
        rows.emplace(row.name, row.code);
    const auto others = rows.find(kOtherFiles);
    std::set<std::wstring_view> used;
    {
        CObstacles obstacles(plan.obstacles);
        for (SPlannedTurn& turn : plan.turns) {
            const auto own = rows.find(turn.name);
            const auto row = own == rows.end() ? others : own;
            if (row == rows.end()) {
                obstacles.Add(fmt::format("the table of angles has no row for {}",
                                          WideToShownUtf8(turn.name)));
                continue;
            }
            used.insert(row->first);
            turn.angle = AngleOf(row->second);
        }
    }
    CObstacles obstacles(plan.obstacles);
    for (const auto& [name, code] : rows)
        if (name != kOtherFiles && !used.contains(name))
            obstacles.Add(
                fmt::format("the table of angles names {}, which is no file of the sources",
                            WideToShownUtf8(std::wstring(name))));
}

bool CanStandInName(wchar_t c) {
    constexpr std::wstring_view kForbidden =
        L".\\/:*?\"<>|"; // on some system, or between its parts
    return c >= L' ' && c != 0x7F && kForbidden.find(c) == std::wstring_view::npos;
}

void NameOutputs(const SRotationRequest& request, SRotationPlan& plan) {
    if (request.suffix &&
        !std::all_of(request.suffix->begin(), request.suffix->end(), CanStandInName))
        plan.obstacles.push_back(fmt::format("\"{}\" cannot stand in the names of outputs",
                                             WideToShownUtf8(*request.suffix)));
    for (SPlannedTurn& turn : plan.turns) {
        const std::size_t folderLength = turn.name.rfind(kSlash) + 1; // npos + 1 is 0
        const std::wstring_view angle = request.suffix ? *request.suffix : turn.angle.text;
        turn.outputName = turn.name.substr(0, folderLength) +
                          ExportName(std::wstring_view(turn.name).substr(folderLength), angle);
        turn.outputName.shrink_to_fit(); // files may be many
    }
}

wchar_t Folded(wchar_t c) {
    return kNamesIgnoreCase && c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

bool IsNameBefore(const std::wstring& a, const std::wstring& b) {
    return std::lexicographical_compare(
        a.begin(), a.end(), b.begin(), b.end(),
        [](wchar_t one, wchar_t other) { return Folded(one) < Folded(other); });
}

/// Files may be many: they are told apart without copies of their names.
void CheckOutputsDiffer(SRotationPlan& plan) {
    CObstacles obstacles(plan.obstacles);
    std::vector<const SPlannedTurn*> turns;
    turns.reserve(plan.turns.size());
    for (const SPlannedTurn& turn : plan.turns)
        turns.push_back(&turn);
    std::sort(turns.begin(), turns.end(), [](const SPlannedTurn* a, const SPlannedTurn* b) {
        if (IsNameBefore(a->outputName, b->outputName))
            return true;
        return a < b && !IsNameBefore(b->outputName, a->outputName); // in the plan's order
    });
    for (std::size_t i = 1; i < turns.size(); ++i) {
        const SPlannedTurn& turn = *turns[i];
        if (IsNameBefore(turns[i - 1]->outputName, turn.outputName))
            continue;
        const std::string path = WideToShownUtf8(turn.Path());
        const std::string earlier = WideToShownUtf8(turns[i - 1]->Path());
        obstacles.Add(path == earlier ? fmt::format("{} is named twice as a source", path)
                                      : fmt::format("{} and {} would both become {}", earlier, path,
                                                    WideToShownUtf8(turn.outputName)));
    }
}

/// Finds the outputs that stand already. None may be a source, by whatever name.
void FindTaken(const SRotationRequest& request, SRotationPlan& plan) {
    if (request.targetFolder.empty()) // where files are only listed
        return;
    std::vector<std::pair<EntryIdentity, const SPlannedTurn*>> standing;
    for (SPlannedTurn& turn : plan.turns) {
        const std::wstring path = WithSeparator(request.targetFolder) + turn.outputName;
        const auto entry = IdentityOf(path);
        turn.isTaken = entry || PathExists(path); // not every file system has identities
        if (entry)
            standing.emplace_back(*entry, &turn);
    }
    if (standing.empty())
        return;
    std::set<std::optional<EntryIdentity>> sources;
    for (const SPlannedTurn& turn : plan.turns)
        for (const EIdentified identified : {EIdentified::Link, EIdentified::WhereItLeads})
            sources.insert(IdentityOf(turn.Path(), identified));
    CObstacles obstacles(plan.obstacles);
    for (const auto& [entry, turn] : standing)
        if (sources.contains(entry))
            obstacles.Add(fmt::format("the output {} of {} is one of the sources",
                                      WideToShownUtf8(turn->outputName),
                                      WideToShownUtf8(turn->Path())));
}

void CheckCopies(const SRotationRequest& request, SRotationPlan& plan) {
    const auto copy =
        std::find_if(plan.turns.begin(), plan.turns.end(),
                     [](const SPlannedTurn& turn) { return turn.angle.code == kCopy.code; });
    if (request.size && copy != plan.turns.end())
        plan.obstacles.push_back(fmt::format("{} is to be copied, which no size can change",
                                             WideToShownUtf8(copy->name)));
}

void CheckTarget(const SRotationRequest& request, SRotationPlan& plan) {
    if (PathExists(request.targetFolder) && !IsFolder(request.targetFolder))
        plan.obstacles.push_back(
            fmt::format("the target {} is not a folder", WideToShownUtf8(request.targetFolder)));
}

void CheckManifest(const std::wstring& manifest, SRotationPlan& plan) {
    if (manifest.empty())
        return;
    const std::string shown = WideToShownUtf8(manifest);
    const std::wstring folder = FolderPart(manifest);
    if (PathExists(manifest))
        plan.obstacles.push_back(
            fmt::format("the manifest {} exists already: choose another name", shown));
    else if (!folder.empty() && !IsFolder(folder))
        plan.obstacles.push_back(
            fmt::format("the folder of the manifest {} does not exist", shown));
    else if (FindLoadKind(manifest.substr(folder.size())) != nullptr) // a later run would take it
        plan.obstacles.push_back(fmt::format(
            "the manifest {} has the name of a coefficient file: choose another name", shown));
}

void TakeShard(const SShard& shard, SRotationPlan& plan) {
    std::vector<SPlannedTurn> turns;
    for (std::size_t i = shard.number - 1; i < plan.turns.size(); i += shard.count)
        turns.push_back(std::move(plan.turns[i]));
    plan.turns = std::move(turns);
    if (shard.number != 1) // told once
        plan.unnamable.clear();
}

} // namespace

SRotationPlan PlanRotation(const SRotationRequest& request) {
    SRotationPlan plan;
    FindTurns(request, plan);
    CheckTarget(request, plan);
    CheckManifest(request.manifest, plan);
    if (!plan.obstacles.empty())
        return plan;
    CheckCount(request, plan);
    TakeAngles(request, plan);
    CheckCopies(request, plan);
    NameOutputs(request, plan);
    CheckOutputsDiffer(plan);
    FindTaken(request, plan);
    TakeShard(request.shard, plan);
    return plan;
}

} // namespace trevolt
