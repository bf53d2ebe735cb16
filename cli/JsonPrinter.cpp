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

std::string_view OutputOf(const SFileOutcome& outcome) {
    return outcome.skipped ? std::string_view() : outcome.outputName;
}

constexpr auto kPutPassedOver = [](CJsonLine& line, const std::vector<SPassedOver>& entries) {
    CJsonElements elements(line);
    for (const SPassedOver& entry : entries)
        elements.Add({{"name", entry.name}, {"reason", entry.reason}});
    elements.End();
};

class CJsonPrinter : public CRunPrinter {
  public:
    explicit CJsonPrinter(const SRotationRequest& request) : m_request(request) {}

    void OnPlan(const SRotationPlan& plan) override {
        std::vector<std::string> sources;
        for (const std::wstring& source : m_request.sources)
            sources.push_back(WideToShownUtf8(source));
        const std::string target = WideToShownUtf8(m_request.targetFolder);
        m_passedOver = plan.passedOver.size();
        PrintObject(
            {{"type", "plan"},
             {"version", kJsonVersion},
             {"program", TREVOLT_VERSION},
             {"sources", sources},
             {"target", target},
             {"dry_run", m_request.dryRun},
             {"shard", {{"number", m_request.shard.number}, {"count", m_request.shard.count}}},
             {"files", plan.turns.size() + plan.unnamable.size()},
             {"passed_over", CJson::Of(plan.passedOver, kPutPassedOver)}});
    }

    void OnFile(const SFileOutcome& outcome, std::size_t, std::size_t) override {
        PrintObject({{"type", "file"},
                     {"name", outcome.name},
                     {"output", TextOrNull(OutputOf(outcome))},
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
        PrintSummary(outcome.end, ExitStatus(outcome.end),
                     {{"written", outcome.written},
                      {"failed", outcome.failed},
                      {"skipped", outcome.skipped},
                      {"passed_over", m_passedOver},
                      {"errors", outcome.errors},
                      {"manifest_error", TextOrNull(outcome.manifestError)},
                      {"report_error", TextOrNull(outcome.reportError)}});
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
