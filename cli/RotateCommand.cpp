#include <cstdio>
#include <memory>

#include <fmt/format.h>

#include "app/inspection/RotationReport.h"
#include "app/rotation/CoefFileSearch.h"
#include "cli/Commands.h"
#include "cli/OptionGroup.h"
#include "cli/RotateOptions.h"
#include "cli/RunPrinter.h"
#include "cli/ShownText.h"
#include "platform/Process.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr const char* kRotateNotes = R"(Examples:
  trevolt-cli rotate -a 90 measured turned
      turns every coefficient file of the folder measured into turned
  trevolt-cli rotate -a 180 -r --skip-existing wall_a wall_b turned
      two folders with all folders in them, as far as it is not done yet
  trevolt-cli rotate --angles mounting.csv --verify measured turned
      each cabinet by the angle of its row, and every output read back
  trevolt-cli rotate -a 90 -n --size 8x6 measured/Cab_01.9fcoef turned
      tells what would be done with one file, and writes nothing

Exit states:
  0    all files are done
  1    some file failed, or an output or a report could not be written
  2    wrong usage, or nothing to do; nothing was written
  130  interrupted; what is told as done is whole)";

void PrintPath(const std::wstring& path, bool endsWithNull) {
    fmt::print("{}{}", WideToShownUtf8(path), endsWithNull ? '\0' : '\n');
}

/// Prints the files that a run would take, and why it would take none.
int ListFiles(const SRotationRequest& request, const SRotateOptions& options) {
    const SRotationPlan plan = PlanRotation(request);
    for (const std::string& obstacle : plan.obstacles)
        Complain("{}", obstacle);
    if (options.verbose)
        for (const SPassedOver& entry : plan.passedOver)
            PrintLine(stderr, "{}: passed over: {}", entry.name, entry.reason);
    if (!plan.obstacles.empty())
        return plan.isListingBroken ? kExitSomeFailed : kExitUsage;
    for (const SPlannedTurn& turn : plan.turns)
        if (!turn.isSkipped)
            PrintPath(turn.Path(), options.nullEnds);
    for (const std::string& name : plan.unnamable)
        PrintLine(stderr, "{}: {}", name, DescribeUnnamable(name));
    return plan.unnamable.empty() ? kExitAllDone : kExitSomeFailed;
}

std::unique_ptr<CRunPrinter> MakePrinter(const SRotationRequest& request,
                                         const SRotateOptions& options) {
    if (options.json)
        return MakeJsonPrinter(request);
    return MakeLinePrinter(request, {options.quiet, options.verbose});
}

/// Tells the report first: a printer throws where nobody listens.
class CReportedRun : public CRotationListener {
  public:
    CReportedRun(CRotationReport& report, CRunPrinter& printer)
        : m_report(report), m_printer(printer) {}

    void OnPlan(const SRotationPlan& plan) override {
        m_report.OnPlan(plan);
        m_printer.OnPlan(plan);
    }
    void OnFile(const SFileOutcome& outcome, std::size_t done, std::size_t count) override {
        m_report.OnFile(outcome, done, count);
        m_printer.OnFile(outcome, done, count);
    }

  private:
    CRotationReport& m_report;
    CRunPrinter& m_printer;
};

SRotationOutcome RunReported(SRotationRequest& request, CRunPrinter& printer) {
    CRotationReport report(request, TREVOLT_VERSION);
    request.thumbnail = [&report](const CChromaCorrectCoef& map) { return report.Thumbnail(map); };
    CReportedRun listener(report, printer);
    SRotationOutcome outcome;
    try {
        outcome = RunRotation(request, CatchInterrupts(), listener);
    } catch (...) { // what was told stands, and the page tells it
        outcome.end = ERotationEnd::Interrupted;
        report.Write(outcome);
        throw;
    }
    outcome.reportError = report.Write(outcome);
    if (!outcome.reportError.empty() && outcome.end == ERotationEnd::AllDone)
        outcome.end = ERotationEnd::SomeFailed;
    return outcome;
}

int Rotate(const SRotateOptions& options) {
    SRotationRequest request = MakeRotationRequest(options);
    if (options.maxMemory)
        CMemoryBudget::Process().SetLimit(*options.maxMemory);
    if (options.list)
        return ListFiles(request, options);
    const auto printer = MakePrinter(request, options);
    const SRotationOutcome outcome = request.report.empty()
                                         ? RunRotation(request, CatchInterrupts(), *printer)
                                         : RunReported(request, *printer);
    printer->OnEnd(outcome);
    return ExitStatus(outcome.end);
}

} // namespace

int ExitStatus(ERotationEnd end) {
    switch (end) {
    case ERotationEnd::AllDone:
        return kExitAllDone;
    case ERotationEnd::SomeFailed:
        return kExitSomeFailed;
    case ERotationEnd::Interrupted:
        return kExitInterrupted;
    case ERotationEnd::NothingToDo:
        break;
    }
    return kExitUsage;
}

void AddRotateCommand(CLI::App& program, int& exitStatus) {
    const auto options = std::make_shared<SRotateOptions>();
    CLI::App& command =
        AddCommand(program, "rotate", "Turn coefficient files into another folder", kRotateNotes,
                   exitStatus, [options] { return Rotate(*options); });
    AddRotateOptions(command, *options);
}

} // namespace trevolt
