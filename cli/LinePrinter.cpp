#include <chrono>
#include <cstdio>
#include <iterator>
#include <string>

#include <fmt/format.h>

#include "cli/ProgressBar.h"
#include "cli/RunPrinter.h"
#include "cli/ShownText.h"
#include "platform/Process.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

/// One line of the terminal at standard error; nothing where there is none.
class CProgressLine {
  public:
    explicit CProgressLine(bool isWanted)
        : m_columns(isWanted ? ErrorTerminalColumns() : 0),
          m_begin(std::chrono::steady_clock::now()) {}

    void Add(const PixelSize& size) {
        m_progress.pixels += static_cast<std::uint64_t>(size.width * size.height);
    }

    void Show(std::size_t done, std::size_t count) {
        if (m_columns == 0 || done >= count)
            return;
        m_progress.done = done;
        m_progress.count = count;
        m_progress.elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::steady_clock::now() - m_begin);
        // The last column stays free: some terminals break the line behind it.
        const std::string text = ProgressText(m_progress, m_columns - 1);
        Clear();
        fmt::print(stderr, "{}", text);
        std::fflush(stderr);
        m_shown = text.size();
    }

    void Clear() {
        // Not every console of Windows obeys an escape that clears the line.
        if (m_shown > 0)
            fmt::print(stderr, "\r{:{}}\r", "", m_shown);
        m_shown = 0;
    }

  private:
    std::size_t m_columns;
    std::chrono::steady_clock::time_point m_begin;
    SProgress m_progress;
    std::size_t m_shown = 0; ///< columns
};

const char* Plural(std::size_t count) { return count == 1 ? "" : "s"; }

class CLinePrinter : public CRunPrinter {
  public:
    CLinePrinter(const SRotationRequest& request, SLineStyle style)
        : m_request(request), m_style(style), m_progress(!style.quiet) {
        if (request.angles.empty())
            m_angle = " by " + WideToShownUtf8(request.angle.text);
    }

    void OnPlan(const SRotationPlan& plan) override {
        TellPassedOver(plan);
        m_passedOver = plan.passedOver.size();
        m_progress.Show(0, plan.turns.size() + plan.unnamable.size());
    }

    void OnFile(const SFileOutcome& outcome, std::size_t done, std::size_t count) override {
        m_progress.Clear();
        for (const std::string& problem : outcome.problems)
            PrintLine(stderr, "{}: {}", outcome.name, problem);
        if (!m_style.quiet)
            TellWritten(outcome);
        m_progress.Add(outcome.size);
        m_progress.Show(done, count);
    }

    void OnEnd(const SRotationOutcome& outcome) override {
        m_progress.Clear();
        for (const std::string& error : outcome.errors)
            Complain("{}", error);
        if (outcome.end == ERotationEnd::NothingToDo && m_style.verbose)
            TellPassedOver(PlanRotation(m_request));
        if (!outcome.errors.empty())
            return;
        if (!outcome.manifestError.empty())
            Complain("{}", outcome.manifestError);
        if (!outcome.reportError.empty())
            Complain("{}", outcome.reportError);
        if (!m_style.quiet)
            TellClosing(outcome);
    }

  private:
    void TellPassedOver(const SRotationPlan& plan) const {
        if (!m_style.verbose)
            return;
        for (const SPassedOver& entry : plan.passedOver)
            PrintLine(stdout, "{}: passed over: {}", entry.name, entry.reason);
    }

    static void TellWritten(const SFileOutcome& outcome) {
        if (outcome.skipped)
            PrintLine(stdout, "{}: skipped: its output exists already", outcome.name);
        if (outcome.outputName.empty() || outcome.skipped)
            return;
        PrintLine(stdout, "{} -> {}  ({} x {} -> {} x {})", outcome.name, outcome.outputName,
                  outcome.size.width, outcome.size.height, outcome.turnedSize.width,
                  outcome.turnedSize.height);
        if (!outcome.losses.empty())
            PrintLine(stdout, "{}: the turned file lacks {}", outcome.name,
                      fmt::join(outcome.losses, ", "));
        for (const std::string& note : outcome.notes)
            PrintLine(stdout, "{}: {}", outcome.name, note);
    }

    void TellClosing(const SRotationOutcome& outcome) const {
        CShownLine line(stdout);
        const auto end = std::back_inserter(line);
        fmt::format_to(end, "{}{} file{} {}turned{}, {} failed",
                       m_request.dryRun ? "dry run: " : "", outcome.written,
                       Plural(outcome.written), m_request.dryRun ? "would be " : "", m_angle,
                       outcome.failed);
        if (outcome.skipped > 0)
            fmt::format_to(end, ", {} skipped", outcome.skipped);
        if (m_passedOver > 0)
            fmt::format_to(end, ", {} {} passed over", m_passedOver,
                           m_passedOver == 1 ? "entry" : "entries");
        if (outcome.end == ERotationEnd::Interrupted)
            fmt::format_to(end, ", interrupted");
        line.End();
    }

    const SRotationRequest& m_request;
    std::string m_angle; ///< behind "turned", made while there is memory
    SLineStyle m_style;
    CProgressLine m_progress;
    std::size_t m_passedOver = 0;
};

} // namespace

std::unique_ptr<CRunPrinter> MakeLinePrinter(const SRotationRequest& request, SLineStyle style) {
    return std::make_unique<CLinePrinter>(request, style);
}

} // namespace trevolt
