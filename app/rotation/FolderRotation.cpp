#include "trevolt/FolderRotation.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <new>
#include <utility>

#include <fmt/format.h>

#include "app/rotation/FileRotation.h"
#include "app/rotation/Manifest.h"
#include "app/rotation/OutputFolder.h"
#include "app/rotation/OutputKeeper.h"
#include "app/rotation/WorkShare.h"
#include "common/OrderedJobs.h"
#include "platform/FileSystem.h"
#include "platform/SystemError.h"
#include "trevolt/FileKinds.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

struct KnownFiles {
    bool isDenied = false;              ///< the folder may not be read
    int error = 0;                      ///< the `errno` value of what ended the listing early
    std::vector<std::wstring> names;    ///< sorted
    std::vector<std::string> unnamable; ///< of a known kind, but not valid UTF-8
};

KnownFiles FindKnownFiles(const std::wstring& folder) {
    KnownFiles known;
    const FolderListing listing = ListEntries(folder);
    known.isDenied = listing.error == EACCES && listing.entries.empty();
    known.error = listing.error;
    for (const FolderEntry& entry : listing.entries)
        if (entry.kind == EntryKind::File && FindLoadKind(entry.name) != nullptr)
            known.names.push_back(entry.name);
    std::sort(known.names.begin(), known.names.end());
    for (const std::string& raw : listing.unnamedByUtf8)
        if (FindLoadKind(std::wstring(raw.begin(), raw.end())) != nullptr)
            known.unnamable.push_back(raw);
    std::sort(known.unnamable.begin(), known.unnamable.end());
    return known;
}

/// Why the run cannot leave a manifest there; empty when it can, or none is wanted.
std::string FindManifestObstacle(const std::wstring& manifest) {
    if (manifest.empty())
        return {};
    const std::string shown = WideToShownUtf8(manifest);
    const std::wstring folder = FolderPart(manifest);
    const std::wstring name = manifest.substr(folder.size());
    if (PathExists(manifest))
        return fmt::format("the manifest {} exists already: choose another name", shown);
    if (!folder.empty() && !IsFolder(folder))
        return fmt::format("the folder of the manifest {} does not exist", shown);
    // A later run would take it for a cabinet.
    if (FindLoadKind(name) != nullptr)
        return fmt::format(
            "the manifest {} has the name of a coefficient file: choose another name", shown);
    return {};
}

/// Why nothing can be done; empty when the run can begin.
std::string FindObstacle(const SRotationRequest& request) {
    const std::string source = WideToShownUtf8(request.sourceFolder);
    const std::string target = WideToShownUtf8(request.targetFolder);
    if (!PathExists(request.sourceFolder))
        return fmt::format("the source folder {} does not exist", source);
    if (!IsFolder(request.sourceFolder))
        return fmt::format("the source {} is not a folder", source);
    if (!PathExists(request.targetFolder))
        return fmt::format("the target folder {} does not exist", target);
    if (!IsFolder(request.targetFolder))
        return fmt::format("the target {} is not a folder", target);
    if (IsSameEntry(request.sourceFolder, request.targetFolder))
        return "source and target are the same folder: choose another target, so that the source "
               "stays as it is";
    return FindManifestObstacle(request.manifest);
}

std::string FindObstacle(const SRotationRequest& request, const KnownFiles& known) {
    const std::size_t count = known.names.size() + known.unnamable.size();
    const std::string source = WideToShownUtf8(request.sourceFolder);
    if (known.isDenied)
        return fmt::format("the source folder {} may not be read", source);
    if (known.error != 0)
        return fmt::format("the source folder {} cannot be listed: {}", source,
                           SystemErrorText(known.error));
    if (count == 0)
        return fmt::format("there is no coefficient file in {}", source);
    if (request.wholeScreen && count != 1)
        return fmt::format("a whole screen is exactly one coefficient file, but {} holds {}",
                           source, count);
    return {};
}

SFileOutcome UnnamableOutcome(const std::string& raw) {
    SFileOutcome outcome;
    for (const char c : raw)
        outcome.name += static_cast<unsigned char>(c) < 0x80
                            ? std::string(1, c)
                            : fmt::format("\\x{:02X}", static_cast<unsigned char>(c));
    outcome.problems.emplace_back("passed over: its name is not valid UTF-8");
    return outcome;
}

/// How long a finished file waits for others where one thread does all the work.
constexpr std::chrono::milliseconds kLongestWait{200};
/// How many outputs may lie in the target folder without their names: those of one sync, and as many
/// that are turned meanwhile.
constexpr std::size_t kFilesAhead = 2 * kFilesOfSync;

/// The turn of a folder whose files are known.
class CFolderRun {
  public:
    CFolderRun(const SRotationRequest& request, const std::atomic<bool>& interrupted,
               const KnownFiles& known, COutputFolder& target, CRotationListener& listener)
        : m_request(request),
          m_interrupted(interrupted),
          m_known(known),
          m_target(target),
          m_listener(listener),
          m_share(known.names.size(), request.jobs, FreeMemory()) {}
    ~CFolderRun() { CMemoryBudget::Process().GiveBackKept(); }
    CFolderRun(const CFolderRun&) = delete;
    CFolderRun& operator=(const CFolderRun&) = delete;

    SRotationOutcome Run() {
        for (const std::string& raw : m_known.unnamable)
            Deliver(UnnamableOutcome(raw));
        TurnAll();
        if (!m_manifestLines.empty())
            m_total.manifestError =
                WriteManifest(m_request.manifest, m_manifestLines, m_request.sync);
        const bool isDone = m_total.failed == 0 && m_total.manifestError.empty();
        if (m_interrupted)
            m_total.end = ERotationEnd::Interrupted;
        else
            m_total.end = isDone ? ERotationEnd::AllDone : ERotationEnd::SomeFailed;
        return m_total;
    }

  private:
    static std::uint64_t FreeMemory() {
        const CMemoryBudget& budget = CMemoryBudget::Process();
        return budget.Limit() - std::min(budget.Outstanding(), budget.Limit());
    }

    void TurnAll() {
        const auto turn = [this](std::size_t i) {
            return TurnFile(m_request, m_interrupted, m_share, m_target, m_known.names[i]);
        };
        // A file that is done waits for the disk, never for the next one: one job has its thread, too.
        COrderedWork<STurnedFile, decltype(turn)> turned(m_known.names.size(), m_request.jobs, turn,
                                                         kFilesAhead, m_target.IsSynced() ? 1 : 2);
        COutputKeeper keeper(m_target, m_interrupted);
        std::size_t taken = 0;
        while (taken < m_known.names.size()) {
            std::vector<STurnedFile> files = TakeTogether(turned, m_known.names.size() - taken);
            keeper.Keep(files);
            DeliverAll(files, taken);
            taken += files.size();
        }
    }

    /// Tells of the files from number `first` on. Where memory is refused for the telling of one, the
    /// others are told all the same: those that have their names.
    void DeliverAll(const std::vector<STurnedFile>& files, std::size_t first) {
        bool isMemoryRefused = false;
        for (std::size_t i = 0; i < files.size(); ++i) {
            try {
                if (files[i].isMemoryRefused)
                    Deliver(RefusedOutcome(m_known.names[first + i]));
                else
                    Deliver(files[i].outcome);
            } catch (const std::bad_alloc&) {
                isMemoryRefused = true;
            }
        }
        if (isMemoryRefused)
            throw std::bad_alloc();
    }

    /// The next file, and those up to `most` that are finished with it, where they are synced.
    template <class Turned>
    std::vector<STurnedFile> TakeTogether(Turned& turned, std::size_t most) const {
        most = std::min(most, m_target.IsSynced() ? kFilesOfSync : 1);
        const auto begin = std::chrono::steady_clock::now();
        const auto isSoon = [&] {
            return turned.HasThreads() ? turned.IsReady()
                                       : std::chrono::steady_clock::now() - begin < kLongestWait;
        };
        std::vector<STurnedFile> files;
        do
            files.push_back(turned.Take());
        while (files.size() < most && isSoon());
        return files;
    }

    static SFileOutcome RefusedOutcome(const std::wstring& name) {
        SFileOutcome outcome;
        outcome.name = WideToShownUtf8(name);
        outcome.problems.emplace_back("not enough memory");
        return outcome;
    }

    void Deliver(const SFileOutcome& outcome) {
        m_total.written += outcome.outputName.empty() ? 0 : 1;
        m_total.failed += outcome.HasFailed() ? 1 : 0;
        if (!outcome.interrupted || outcome.HasFailed())
            m_listener.OnFile(outcome, ++m_done, m_known.names.size() + m_known.unnamable.size());
        m_manifestLines += outcome.manifestLines;
    }

    const SRotationRequest& m_request;
    const std::atomic<bool>& m_interrupted;
    const KnownFiles& m_known;
    COutputFolder& m_target;
    CRotationListener& m_listener;
    CWorkShare m_share;
    std::size_t m_done = 0;
    std::string m_manifestLines; ///< of the files that were told as written
    SRotationOutcome m_total;
};

SRotationOutcome NothingToDo(std::string why) {
    SRotationOutcome outcome;
    outcome.end = ERotationEnd::NothingToDo;
    outcome.error = std::move(why);
    return outcome;
}

} // namespace

SRotationOutcome RotateFolder(const SRotationRequest& request, const std::atomic<bool>& interrupted,
                              CRotationListener& listener) {
    if (std::string obstacle = FindObstacle(request); !obstacle.empty())
        return NothingToDo(std::move(obstacle));
    const KnownFiles known = FindKnownFiles(WithSeparator(request.sourceFolder));
    if (std::string obstacle = FindObstacle(request, known); !obstacle.empty()) {
        SRotationOutcome outcome = NothingToDo(std::move(obstacle));
        if (known.error != 0 && !known.isDenied)
            outcome.end = ERotationEnd::SomeFailed;
        return outcome;
    }
    COutputFolder target(request.targetFolder, request.sync);
    if (const int error = target.SyncNames(); error != 0)
        return NothingToDo(fmt::format("the target folder {} cannot be synced: {}",
                                       WideToShownUtf8(request.targetFolder),
                                       SystemErrorText(error)));
    target.RemoveAbandoned();
    return CFolderRun(request, interrupted, known, target, listener).Run();
}

} // namespace trevolt
