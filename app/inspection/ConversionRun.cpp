#include "app/inspection/ConversionRun.h"

#include <set>
#include <utility>

#include <fmt/format.h>

#include "app/inspection/ConversionPlan.h"
#include "app/rotation/CoefFileSearch.h"
#include "app/rotation/OutputFile.h"
#include "platform/FileSystem.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

SConvertedFile UnnamableFile(const std::string& name) {
    SConvertedFile file;
    file.name = name;
    file.conversion.problems.emplace_back(DescribeUnnamable(name));
    return file;
}

/// One output under its own name.
SConversion ConvertSingle(const SConversionRequest& request, const SPlannedConversion& file) {
    const SOutputFile output{file.outputName, request.replaces, request.sync};
    if (const std::string obstacle = DescribeOutputObstacle(output, {file.path});
        !obstacle.empty()) {
        SConversion refused;
        refused.problems.push_back(
            fmt::format("its output {} {}", WideToShownUtf8(file.outputName), obstacle));
        return refused;
    }
    return ConvertFile(file.path, file.target, [&](const OutputWriter& write) {
        return WriteOutputFile(output, write,
                               DescribeExistingOutput(WideToShownUtf8(file.outputName)));
    });
}

/// Outputs of a folder.
class CFolderConversion {
  public:
    CFolderConversion(const SConversionRequest& request, const SConversionPlan& plan)
        : m_request(request), m_plan(plan), m_target(request.output, request.sync) {}

    /// Why the folders of the outputs cannot be written to; empty when they can.
    std::string Prepare() const {
        std::set<std::wstring> below{L""};
        for (const SPlannedConversion& file : m_plan.files)
            below.insert(file.outputName.substr(0, file.outputName.rfind(kFolderSlash) + 1));
        std::string refused =
            FirstRefused(below, [this](const auto& one) { return m_target.Refusal(one); });
        if (!refused.empty())
            return refused;
        for (const std::wstring& one : below)
            m_target.RemoveAbandoned(one);
        return FirstRefused(below, [this](const auto& one) { return m_target.Make(one); });
    }

    SConversion Convert(const SPlannedConversion& file) {
        if (std::string obstacle = DescribeObstacle(file.outputName); !obstacle.empty()) {
            SConversion refused;
            refused.problems.push_back(std::move(obstacle));
            return refused;
        }
        return ConvertFile(file.path, file.target, [&](const OutputWriter& write) {
            std::string problem =
                WriteOutput(m_target, file.outputName, m_request.replaces, write,
                            DescribeExistingOutput(WideToShownUtf8(file.outputName)));
            if (const int error = problem.empty() ? m_target.SyncNames() : 0; error != 0)
                problem = DescribeFolderSyncProblem(error);
            return problem;
        });
    }

  private:
    /// Why the output does not take the place of what stands there.
    std::string DescribeObstacle(const std::wstring& outputName) const {
        const std::wstring path = WithSeparator(m_request.output) + outputName;
        const std::string name = WideToShownUtf8(outputName);
        if (std::string obstacle = DescribeIrreplaceable(path, name); !obstacle.empty())
            return obstacle;
        return !m_request.replaces && PathExists(path) ? DescribeExistingOutput(name)
                                                       : std::string();
    }

    /// Tells of the first folder that `refusal` answers an `errno` value of; nothing when it does of
    /// none.
    template <class Refusal>
    std::string FirstRefused(const std::set<std::wstring>& below, Refusal refusal) const {
        for (const std::wstring& one : below)
            if (const int error = refusal(one); error != 0)
                return fmt::format("the target folder {} {}",
                                   WideToShownUtf8(WithSeparator(m_request.output) + one),
                                   DescribeRefusedFolder(error));
        return {};
    }

    const SConversionRequest& m_request;
    const SConversionPlan& m_plan;
    COutputFolder m_target;
};

class CPlannedConversions {
  public:
    CPlannedConversions(const SConversionPlan& plan, const std::atomic<bool>& interrupted,
                        CConversionListener& listener)
        : m_plan(plan),
          m_interrupted(interrupted),
          m_listener(listener),
          m_budget(CMemoryBudget::Process()) {}
    ~CPlannedConversions() { m_budget.GiveBackKept(); }
    CPlannedConversions(const CPlannedConversions&) = delete;
    CPlannedConversions& operator=(const CPlannedConversions&) = delete;

    template <class Convert>
    SConversionOutcome Run(Convert convert) {
        for (const std::string& name : m_plan.unnamable)
            Deliver(UnnamableFile(name));
        for (const SPlannedConversion& file : m_plan.files) {
            if (m_interrupted)
                break;
            // Whatever needs memory comes before the output has its name: what has it is told.
            SConvertedFile told{WideToShownUtf8(file.name),
                                WideToShownUtf8(file.path),
                                WideToShownUtf8(file.outputName),
                                file.target.kind == nullptr,
                                {}};
            told.conversion = convert(file);
            Deliver(told);
        }
        m_total.end = m_interrupted         ? ERotationEnd::Interrupted
                      : m_total.failed == 0 ? ERotationEnd::AllDone
                                            : ERotationEnd::SomeFailed;
        return m_total;
    }

  private:
    void Deliver(const SConvertedFile& file) {
        ++(file.HasFailed() ? m_total.failed : m_total.written);
        m_listener.OnFile(file);
    }

    const SConversionPlan& m_plan;
    const std::atomic<bool>& m_interrupted;
    CConversionListener& m_listener;
    CMemoryBudget& m_budget; ///< made before memory can run out: a destructor may not ask for any
    SConversionOutcome m_total;
};

SConversionOutcome NothingConverted(std::vector<std::string> why, bool isListingBroken) {
    SConversionOutcome outcome;
    outcome.end = isListingBroken ? ERotationEnd::SomeFailed : ERotationEnd::NothingToDo;
    outcome.errors = std::move(why);
    return outcome;
}

} // namespace

SConversionOutcome RunConversion(const SConversionRequest& request,
                                 const std::atomic<bool>& interrupted,
                                 CConversionListener& listener) {
    const SConversionPlan plan = PlanConversion(request);
    if (!plan.obstacles.empty())
        return NothingConverted(plan.obstacles, plan.isListingBroken);
    CPlannedConversions run(plan, interrupted, listener);
    if (!request.to)
        return run.Run(
            [&](const SPlannedConversion& file) { return ConvertSingle(request, file); });
    CFolderConversion folder(request, plan);
    if (std::string obstacle = folder.Prepare(); !obstacle.empty())
        return NothingConverted({std::move(obstacle)}, false);
    return run.Run([&](const SPlannedConversion& file) { return folder.Convert(file); });
}

} // namespace trevolt
