// What a run is going to do: which files it takes, what they become, and what forbids it.
#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "app/rotation/CoefFileSearch.h"
#include "app/rotation/NameOrder.h"
#include "app/rotation/Obstacles.h"
#include "app/rotation/OutputFile.h"
#include "platform/FileSystem.h"
#include "platform/TrimmedText.h"
#include "trevolt/FileKinds.h"
#include "trevolt/RotationRun.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr SAngle kCopy{L"0\u00B0", 0};
constexpr std::wstring_view kOtherFiles = L"*";

SAngle AngleOf(std::uint32_t code) {
    const auto* const found = std::find_if(kAngles.begin(), kAngles.end(),
                                           [&](const SAngle& angle) { return angle.code == code; });
    return found == kAngles.end() ? kCopy : *found;
}

void FindTurns(const SRotationRequest& request, SRotationPlan& plan) {
    SCoefFiles found = FindCoefFiles({request.sources, request.recursive, request.targetFolder});
    plan.turns.reserve(found.files.size());
    for (SCoefFileName& file : found.files)
        plan.turns.push_back({std::move(file.folder), std::move(file.name), {}, request.angle});
    plan.passedOver = std::move(found.passedOver);
    plan.unnamable = std::move(found.unnamable);
    plan.obstacles = std::move(found.obstacles);
    plan.isListingBroken = found.isListingBroken;
}

void CheckCount(const SRotationRequest& request, SRotationPlan& plan) {
    const std::size_t count = plan.turns.size() + plan.unnamable.size();
    std::vector<std::string> names;
    for (const std::wstring& source : request.sources)
        names.push_back(WideToShownUtf8(source));
    const std::string sources = fmt::format("{}", fmt::join(names, ", "));
    if (count == 0)
        plan.obstacles.push_back(fmt::format(
            "there is no coefficient file in {}: give a folder that holds some", sources));
    else if (request.wholeScreen && count != 1)
        plan.obstacles.push_back(fmt::format(
            "a whole screen is exactly one coefficient file, but {} holds {}: give one file",
            sources, count));
}

using AngleRows = std::map<std::wstring_view, const SFileAngle*, SNameOrder>;

std::string ShownTable(const SRotationRequest& request) {
    return request.angleTable.empty()
               ? "the table of angles"
               : fmt::format("the table of angles {}", WideToShownUtf8(request.angleTable));
}

/// The rows that turn a file.
std::set<const SFileAngle*> GiveAngles(const SRotationRequest& request, const AngleRows& rows,
                                       SRotationPlan& plan) {
    const auto others = rows.find(kOtherFiles);
    std::set<const SFileAngle*> used;
    CObstacles obstacles(plan.obstacles);
    for (SPlannedTurn& turn : plan.turns) {
        const auto own = rows.find(turn.name);
        const auto row = own == rows.end() ? others : own;
        if (row == rows.end()) {
            obstacles.Add(fmt::format("{} has no row for {}: add one, or a row for *",
                                      ShownTable(request), WideToShownUtf8(turn.name)));
            continue;
        }
        used.insert(row->second);
        turn.angle = AngleOf(row->second->code);
    }
    return used;
}

/// Blanks at an end of a name are the name's, and not seen.
const char* AdviceOn(std::wstring_view name) {
    return Trimmed<wchar_t>(name) == name ? "correct the row"
                                          : "correct the row, also the blanks around the name";
}

void TakeAngles(const SRotationRequest& request, SRotationPlan& plan) {
    if (request.angles.empty())
        return;
    AngleRows rows;
    for (const SFileAngle& row : request.angles)
        rows.emplace(row.name, &row);
    const std::set<const SFileAngle*> used = GiveAngles(request, rows, plan);
    CObstacles obstacles(plan.obstacles);
    for (const auto& [name, row] : rows)
        if (name != kOtherFiles && !used.contains(row))
            obstacles.Add(fmt::format("{} names {}{}, which is no file of the sources: {}",
                                      ShownTable(request), WideToShownUtf8(row->name),
                                      row->line == 0 ? "" : fmt::format(" in line {}", row->line),
                                      AdviceOn(name)));
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
        const std::size_t folderLength = turn.name.rfind(kFolderSlash) + 1; // npos + 1 is 0
        const std::wstring_view angle = request.suffix ? *request.suffix : turn.angle.text;
        turn.outputName = turn.name.substr(0, folderLength) +
                          ExportName(std::wstring_view(turn.name).substr(folderLength), angle);
        turn.outputName.shrink_to_fit(); // files may be many
    }
}

/// Files may be many: they are told apart without copies of their names.
void CheckOutputsDiffer(SRotationPlan& plan) {
    CObstacles obstacles(plan.obstacles);
    const SNameOrder isNameBefore;
    std::vector<const SPlannedTurn*> turns;
    turns.reserve(plan.turns.size());
    for (const SPlannedTurn& turn : plan.turns)
        turns.push_back(&turn);
    std::sort(turns.begin(), turns.end(), [&](const SPlannedTurn* a, const SPlannedTurn* b) {
        if (isNameBefore(a->outputName, b->outputName))
            return true;
        return a < b && !isNameBefore(b->outputName, a->outputName); // in the plan's order
    });
    for (std::size_t i = 1; i < turns.size(); ++i) {
        const SPlannedTurn& turn = *turns[i];
        if (isNameBefore(turns[i - 1]->outputName, turn.outputName))
            continue;
        const std::string path = WideToShownUtf8(turn.Path());
        const std::string earlier = WideToShownUtf8(turns[i - 1]->Path());
        obstacles.Add(
            path == earlier
                ? fmt::format("{} is named twice as a source: name it once", path)
                : fmt::format("{} and {} would both become {}: give each a target of its own",
                              earlier, path, WideToShownUtf8(turn.outputName)));
    }
}

/// Finds the outputs that stand already. None may be a source, by whatever name.
void FindTaken(const SRotationRequest& request, SRotationPlan& plan) {
    const std::wstring& target = request.targetFolder; // empty where files are only listed
    // To ask for each of many names takes long, above all on a share of another computer.
    if (!PathExists(target) || IsEmptyFolder(target))
        return;
    std::vector<std::pair<EntryIdentity, const SPlannedTurn*>> standing;
    for (SPlannedTurn& turn : plan.turns) {
        const std::wstring path = WithSeparator(target) + turn.outputName;
        const auto entry = IdentityOf(path);
        turn.isTaken = entry || PathExists(path); // not every file system has identities
        turn.isSkipped = turn.isTaken && request.existing == EExistingOutput::Skip &&
                         KindOfEntry(path) == EntryKind::File;
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
            obstacles.Add(
                fmt::format("the output {} of {} is one of the sources: choose another target",
                            WideToShownUtf8(turn->outputName), WideToShownUtf8(turn->Path())));
}

void CheckCopies(const SRotationRequest& request, SRotationPlan& plan) {
    const auto copy =
        std::find_if(plan.turns.begin(), plan.turns.end(),
                     [](const SPlannedTurn& turn) { return turn.angle.code == kCopy.code; });
    if (request.size && copy != plan.turns.end())
        plan.obstacles.push_back(fmt::format(
            "{} is to be copied, which no size can change: give it another angle, or no size",
            WideToShownUtf8(copy->name)));
}

void CheckTarget(const SRotationRequest& request, SRotationPlan& plan) {
    const std::wstring& target = request.targetFolder;
    if (PathExists(target) && !IsFolder(target))
        plan.obstacles.push_back(
            fmt::format("the target {} is not a folder: choose another", WideToShownUtf8(target)));
    else if (!PathExists(target) && IsLink(target))
        plan.obstacles.push_back(fmt::format(
            "the target {} is a link that leads nowhere: choose another", WideToShownUtf8(target)));
}

/// Whether both name one folder, which need not stand yet.
bool IsSameFolder(const std::wstring& a, const std::wstring& b) {
    const std::wstring first = WithoutSeparator(a.empty() ? L"." : a);
    const std::wstring second = WithoutSeparator(b.empty() ? L"." : b);
    if (IsSameEntry(first, second))
        return true;
    const std::wstring above = FolderPart(first);
    const std::wstring aboveSecond = FolderPart(second);
    const bool isTop = first == L"." || second == L"." || above == first || aboveSecond == second;
    if (isTop || PathExists(first) || PathExists(second))
        return false;
    return first.substr(above.size()) == second.substr(aboveSecond.size()) &&
           IsSameFolder(above, aboveSecond);
}

/// A file that a run leaves beside its outputs.
struct SSideFile {
    const char* what;
    const std::wstring& path;
    bool replaces; ///< what stands there
};

/// Why it cannot be left there, to be told behind its name, as far as that is seen; else nothing.
std::string DescribeSideObstacle(const SSideFile& file, const std::wstring& target) {
    const std::wstring folder = FolderPart(file.path);
    const bool isNamed = folder != file.path;
    const bool isMadeByTheRun = isNamed && IsSameFolder(folder, target) && !PathExists(target);
    if (isNamed && IsSameFolder(file.path, target))
        return "is the target: choose another name";
    if (std::string obstacle =
            isMadeByTheRun ? DescribeNameObstacle(file.path) : DescribePlaceObstacle(file.path);
        !obstacle.empty())
        return obstacle;
    if (!file.replaces && IsNameTaken(file.path))
        return "exists already: choose another name";
    if (FindLoadKind(file.path.substr(folder.size())) != nullptr) // a later run would take it
        return "has the name of a coefficient file: choose another name";
    return {};
}

void CheckSideFile(const SSideFile& file, const std::wstring& target, SRotationPlan& plan) {
    if (file.path.empty())
        return;
    if (const std::string obstacle = DescribeSideObstacle(file, target); !obstacle.empty())
        plan.obstacles.push_back(
            fmt::format("the {} {} {}", file.what, WideToShownUtf8(file.path), obstacle));
}

bool IsOneFile(const std::wstring& a, const std::wstring& b) {
    return a.substr(FolderPart(a).size()) == b.substr(FolderPart(b).size()) &&
           IsSameFolder(FolderPart(a), FolderPart(b));
}

void CheckSideFiles(const SRotationRequest& request, SRotationPlan& plan) {
    CheckSideFile({"manifest", request.manifest, false}, request.targetFolder, plan);
    CheckSideFile({"report", request.report, request.existing == EExistingOutput::Replace},
                  request.targetFolder, plan);
    if (!request.manifest.empty() && !request.report.empty() &&
        IsOneFile(request.manifest, request.report))
        plan.obstacles.push_back(fmt::format("the manifest and the report are both {}: choose "
                                             "another name for one of them",
                                             WideToShownUtf8(request.report)));
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
    CheckSideFiles(request, plan);
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
