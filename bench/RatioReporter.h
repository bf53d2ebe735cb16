// Runs a program's benchmarks and prints ratios of their times, measured side by side in one run.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

namespace trevolt {

/// What is printed at the end: the shortest processor time of one benchmark to that of another.
struct SRatio {
    std::string what;
    std::string of;
    std::string to;
};

/// Shows the runs, and keeps the shortest time of each for the ratios.
class CRatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.error_occurred || run.run_type != Run::RT_Iteration)
                continue;
            const std::string name = run.run_name.function_name +
                                     (run.run_name.args.empty() ? "" : "/" + run.run_name.args);
            const double time = run.GetAdjustedCPUTime();
            const auto [entry, isNew] = m_shortest.try_emplace(name, time);
            entry->second = std::min(entry->second, time);
        }
    }

    void Print(const SRatio& ratio) const {
        const auto numerator = m_shortest.find(ratio.of);
        const auto denominator = m_shortest.find(ratio.to);
        if (numerator != m_shortest.end() && denominator != m_shortest.end())
            fmt::print("{}: {:.2f}\n", ratio.what, numerator->second / denominator->second);
    }

  private:
    std::map<std::string, double> m_shortest;
};

/// The main function of a benchmark program.
inline int RunWithRatios(int argc, char** argv, const std::vector<SRatio>& ratios) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    CRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    fmt::print("\nratios, shortest time to shortest time\n");
    for (const SRatio& ratio : ratios)
        reporter.Print(ratio);
    return 0;
}

} // namespace trevolt
