// The HTML page of a report, part by part: what stands on it and how. Nothing in it is fetched from
// anywhere, and it has no script.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "trevolt/RotationRun.h"

namespace trevolt {

using TimePoint = std::chrono::system_clock::time_point;

/// A file that was told.
struct SReportedFile {
    const SFileOutcome& outcome;
    std::size_t number = 1; ///< in the order of the run
    TimePoint finished;
};

/// A file that the page leads to from its top.
struct SReportLink {
    std::size_t number = 1;
    std::string name;    ///< UTF-8
    std::string problem; ///< the first
};

/// So many failed files are linked from the top, and so many entries that were passed over are told.
inline constexpr std::size_t kReportedAtMost = 100;

/// What the page tells of the run as a whole.
struct SReportedRun {
    const SRotationRequest& request;
    const SRotationOutcome& outcome; ///< of it the end and the errors
    std::string version;             ///< of the program
    TimePoint started{};
    TimePoint ended{};
    std::size_t planned = 0; ///< files
    std::size_t written = 0; ///< of which some may have failed as well
    std::size_t failed = 0;
    std::size_t skipped = 0;
    std::size_t told = 0;               ///< rows
    std::vector<SReportLink> links{};   ///< the first failed files
    std::size_t passedOver = 0;         ///< entries of the sources
    std::vector<SPassedOver> entries{}; ///< the first of them
    bool hasPictures = false;
};

enum class EReportTable { Failed, Others };

// In the order of the page. Between the begin and the end of a table stand its rows; a table without
// rows is left out.
std::string ReportBegin(const SReportedRun& run);
std::string ReportTableBegin(EReportTable table, std::size_t rows);
std::string ReportRow(const SReportedFile& file);
std::string ReportTableEnd();
std::string ReportEnd(const SReportedRun& run);

/// "12 ms", "1.25 s", "2 min 5 s", "3 h 7 min".
std::string ShownDuration(std::chrono::microseconds duration);

} // namespace trevolt
