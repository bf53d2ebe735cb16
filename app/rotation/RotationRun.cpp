#include "trevolt/RotationRun.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <map>
#include <new>
#include <utility>

#include <fmt/format.h>

#include "app/rotation/CoefFileSearch.h"
#include "app/rotation/FileRotation.h"
#include "app/rotation/Manifest.h"
#include "app/rotation/OutputFile.h"
#include "app/rotation/OutputFolder.h"
#include "app/rotation/OutputKeeper.h"
#include "app/rotation/WorkShare.h"
#include "common/OrderedJobs.h"
#include "platform/FileSystem.h"
#include "trevolt/FileKinds.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

SFileOutcome UnnamableOutcome(const SRotationRequest& request, const std::string& name) {
    SFileOutcome outcome;
    outcome.name = name;
    outcome.angleCode = request.angles.empty() ? request.angle.code : 0; // no row can name it
    outcome.problems.emplace_back(DescribeUnnamable(name));
    return outcome;
}

/// How long a finished file waits for others where one thread does all the work.
constexpr std::chrono::milliseconds kLongestWait{200};
/// How many outputs may lie in the target folder without their names: those of one sync, and as many
/// that are turned meanwhile.
constexpr std::size_t kFilesAhead = 2 * kFilesOfSync;

/// The turn of what is planned.
class CPlannedRun {
  public:
    CPlannedRun(const SRotationRequest& request, const std::atomic<bool>& interrupted,
                const SRotationPlan& plan, COutputFolder& target, CRotationListener& listener)
        : m_request(request),
          m_interrupted(interrupted),
          m_plan(plan),
          m_target(target),
          m_listener(listener),
          m_share(plan.turns.size(), request.jobs, FreeMemory()) {}
    ~CPlannedRun() { CMemoryBudget::Process().GiveBackKept(); }
    CPlannedRun(const CPlannedRun&) = delete;
    CPlannedRun& operator=(const CPlannedRun&) = delete;

    SRotationOutcome Run() {
        for (const std::string& name : m_plan.unnamable)
            Deliver(UnnamableOutcome(m_request, name));
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
            return TurnFile(m_request, m_interrupted, m_share, m_target, m_plan.turns[i]);
        };
        // A file that is to reach the disk waits for that, never for the next one: no job waits with it.
        const ETaker taker = m_target.IsSynced() ? ETaker::Waits : ETaker::Works;
        COrderedWork<STurnedFile, decltype(turn)> turned(m_plan.turns.size(), m_request.jobs, turn,
                                                         taker, kFilesAhead);
        COutputKeeper keeper(m_target, m_request.existing, m_interrupted);
        std::size_t taken = 0;
        while (taken < m_plan.turns.size()) {
            std::vector<STurnedFile> files = TakeTogether(turned, m_plan.turns.size() - taken);
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
                    Deliver(RefusedOutcome(m_plan.turns[first + i]));
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

    static SFileOutcome RefusedOutcome(const SPlannedTurn& turn) {
        SFileOutcome outcome;
        outcome.name = WideToShownUtf8(turn.name);
        outcome.angleCode = turn.angle.code;
        outcome.problems.emplace_back("not enough memory");
        return outcome;
    }

    void Deliver(const SFileOutcome& outcome) {
        m_total.written += outcome.outputName.empty() ? 0 : 1;
        m_total.failed += outcome.HasFailed() ? 1 : 0;
        m_total.skipped += outcome.skipped ? 1 : 0;
        if (!outcome.interrupted || outcome.HasFailed())
            m_listener.OnFile(outcome, ++m_done, m_plan.turns.size() + m_plan.unnamable.size());
        m_manifestLines += outcome.manifestLines;
    }

    const SRotationRequest& m_request;
    const std::atomic<bool>& m_interrupted;
    const SRotationPlan& m_plan;
    COutputFolder& m_target;
    CRotationListener& m_listener;
    CWorkShare m_share;
    std::size_t m_done = 0;
    std::string m_manifestLines; ///< of the files that were told as written
    SRotationOutcome m_total;
};

SRotationOutcome NothingToDo(std::vector<std::string> why) {
    SRotationOutcome outcome;
    outcome.end = ERotationEnd::NothingToDo;
    outcome.errors = std::move(why);
    return outcome;
}

/// The places that a run writes to, before it begins.
class CPlaces {
  public:
    CPlaces(const SRotationRequest& request, const COutputFolder& target)
        : m_request(request), m_target(target) {}

    /// Makes the folders of the outputs, after all were looked at, and clears what killed runs left
    /// there; a dry run only looks. Why a file that is wanted cannot come to stand, in plain words; empty
    /// when all can.
    std::string Prepare(const SRotationPlan& plan) const {
        const std::map<std::wstring, bool> folders = FoldersOf(plan);
        std::string refused =
            FirstRefused(folders, [this](const auto& below) { return m_target.Refusal(below); });
        if (!refused.empty() || m_request.dryRun)
            return refused;
        RemoveAbandoned(folders);
        refused = FirstRefused(folders, [this](const auto& below) { return m_target.Make(below); });
        return refused.empty() ? TrySideFiles() : refused;
    }

  private:
    std::string TrySideFiles() const {
        for (const auto& [what, path] :
             {std::pair("manifest", &m_request.manifest), std::pair("report", &m_request.report)})
            if (const int error = TryBeside(*path); error != 0)
                return fmt::format("the {} {} {}", what, WideToShownUtf8(*path),
                                   DescribeRefusingFolder(*path, error));
        return {};
    }

    /// The folders of the outputs, below the target, and whether one of them gets any.
    std::map<std::wstring, bool> FoldersOf(const SRotationPlan& plan) const {
        std::map<std::wstring, bool> folders{{L"", false}};
        for (const SPlannedTurn& turn : plan.turns) {
            bool& isWritten = folders[turn.outputName.substr(0, turn.outputName.rfind(L'/') + 1)];
            isWritten |= !turn.isTaken || m_request.existing == EExistingOutput::Replace;
        }
        return folders;
    }

    /// Of all folders, before one is tried: what lies there may be what leaves no room for a new file.
    void RemoveAbandoned(const std::map<std::wstring, bool>& folders) const {
        for (const auto& [below, isWritten] : folders)
            m_target.RemoveAbandoned(below);
    }

    /// Tells of the first folder that `refusal` answers an `errno` value of; nothing when it does of
    /// none. One that stands and gets no output may be read-only.
    template <class Refusal>
    std::string FirstRefused(const std::map<std::wstring, bool>& folders, Refusal refusal) const {
        for (const auto& [below, isWritten] : folders) {
            const std::wstring folder = WithSeparator(m_request.targetFolder) + below;
            if (const int error = isWritten || !IsFolder(folder) ? refusal(below) : 0; error != 0)
                return fmt::format("the target folder {} {}", WideToShownUtf8(folder),
                                   DescribeRefusedFolder(error));
        }
        return {};
    }

    /// What is written behind the last file is not to fail then; what is seen without writing, the plan
    /// has told.
    int TryBeside(const std::wstring& path) const {
        if (path.empty())
            return 0;
        const std::wstring folder = FolderPart(path);
        const COutputFolder beside(folder.empty() ? L"." : folder, m_request.sync);
        beside.RemoveAbandoned();
        return beside.Try();
    }

    const SRotationRequest& m_request;
    const COutputFolder& m_target;
};

} // namespace

SRotationOutcome RunRotation(const SRotationRequest& request, const std::atomic<bool>& interrupted,
                             CRotationListener& listener) {
    const SRotationPlan plan = PlanRotation(request);
    if (!plan.obstacles.empty()) {
        SRotationOutcome outcome = NothingToDo(plan.obstacles);
        if (plan.isListingBroken)
            outcome.end = ERotationEnd::SomeFailed;
        return outcome;
    }
    COutputFolder target(request.targetFolder, request.sync);
    if (std::string obstacle = CPlaces(request, target).Prepare(plan); !obstacle.empty())
        return NothingToDo({std::move(obstacle)});
    listener.OnPlan(plan);
    return CPlannedRun(request, interrupted, plan, target, listener).Run();
}

} // namespace trevolt
