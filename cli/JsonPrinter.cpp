#include "cli/JsonLine.h"
#include "cli/RunPrinter.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

int Degrees(std::uint32_t code) { return 90 * static_cast<int>(code); }

const char* FileStatus(const SFileOutcome& outcome) {
    if (outcome.HasFailed())
        return "failed";
    return outcome.skipped ? "skipped" : "turned";
}

class CJsonPrinter : public CRunPrinter {
  public:
    explicit CJsonPrinter(const SRotationRequest& request) : m_request(request) {}

    void OnPlan(const SRotationPlan& plan) override {
        CJson sources = CJson::Array();
        for (const std::wstring& source : m_request.sources)
            sources.Add(WideToShownUtf8(source));
        CJson passedOver = CJson::Array();
        for (const SPassedOver& entry : plan.passedOver)
            passedOver.Add({{"name", entry.name}, {"reason", entry.reason}});
        m_passedOver = plan.passedOver.size();
        PrintObject(
            {{"type", "plan"},
             {"version", kJsonVersion},
             {"program", TREVOLT_VERSION},
             {"sources", sources},
             {"target", WideToShownUtf8(m_request.targetFolder)},
             {"dry_run", m_request.dryRun},
             {"shard", {{"number", m_request.shard.number}, {"count", m_request.shard.count}}},
             {"files", plan.turns.size() + plan.unnamable.size()},
             {"passed_over", passedOver}});
    }

    void OnFile(const SFileOutcome& outcome, std::size_t, std::size_t) override {
        PrintObject({{"type", "file"},
                     {"name", outcome.name},
                     {"output", TextOrNull(outcome.skipped ? "" : outcome.outputName)},
                     {"status", FileStatus(outcome)},
                     {"angle", Degrees(outcome.angleCode)},
                     {"own_size", SizeOrNull(outcome.ownSize)},
                     {"size", SizeOrNull(outcome.size)},
                     {"turned_size", SizeOrNull(outcome.turnedSize)},
                     {"problems", outcome.problems},
                     {"losses", outcome.losses},
                     {"notes", outcome.notes}});
    }

    void OnEnd(const SRotationOutcome& outcome) override {
        CJson summary = SummaryOf(outcome.end, ExitStatus(outcome.end));
        summary.Set({{"written", outcome.written},
                     {"failed", outcome.failed},
                     {"skipped", outcome.skipped},
                     {"passed_over", m_passedOver},
                     {"errors", outcome.errors},
                     {"manifest_error", TextOrNull(outcome.manifestError)},
                     {"report_error", TextOrNull(outcome.reportError)}});
        PrintObject(summary);
    }

  private:
    const SRotationRequest& m_request;
    std::size_t m_passedOver = 0;
};

} // namespace

std::unique_ptr<CRunPrinter> MakeJsonPrinter(const SRotationRequest& request) {
    return std::make_unique<CJsonPrinter>(request);
}

} // namespace trevolt
