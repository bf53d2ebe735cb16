#include <fmt/format.h>

#include "app/rotation/AngleTable.h"
#include "cli/OptionGroup.h"
#include "cli/OptionValues.h"
#include "cli/RotateOptions.h"
#include "cli/ShownText.h"
#include "cli/Sources.h"
#include "platform/FileSystem.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

std::vector<SFileAngle> ReadAngles(const std::wstring& path) {
    SAngleTable table = ReadAngleTable(path);
    if (table.problems.empty())
        return std::move(table.rows);
    const std::string shown = WideToShownUtf8(path);
    const std::string last = std::move(table.problems.back());
    table.problems.pop_back();
    for (const std::string& problem : table.problems)
        Complain("--angles: {}: {}", shown, problem);
    throw CUsageError("--angles", fmt::format("{}: {}", shown, last));
}

void TakeAngles(const SRotateOptions& options, SRotationRequest& request) {
    if (options.angleTable) {
        request.angles = ReadAngles(*options.angleTable);
        request.angleTable = *options.angleTable;
    } else if (options.angle)
        request.angle = kAngles[*options.angle - 1];
    else if (!options.list || options.skipExisting) // which outputs stand, their names tell
        throw CUsageError("rotate needs an angle: give --angle 90, 180 or 270, or --angles TABLE");
}

void CheckSize(const SRotateOptions& options) {
    const PixelSize& largest = options.limits.largestSize;
    if (options.size &&
        (options.size->width > largest.width || options.size->height > largest.height))
        throw CUsageError("--size",
                          fmt::format("{}x{} is above --max-size {}x{}: give one that fits",
                                      options.size->width, options.size->height, largest.width,
                                      largest.height));
}

/// Even with --overwrite.
void CheckReport(const SRotateOptions& options) {
    if (options.angleTable && IsSameEntry(options.report, *options.angleTable))
        throw CUsageError("--report",
                          fmt::format("{} is the table of angles, which stays: choose another name",
                                      WideToShownUtf8(options.report)));
}

/// A list has its target, if any, as the last of the sources.
void TakePlaces(const SRotateOptions& options, SRotationRequest& request) {
    std::vector<std::string> sources = options.sources;
    request.targetFolder = options.target;
    if (options.list && sources.size() > 1) {
        request.targetFolder = ParseFor("TARGET", "a folder", sources.back(), ParsePath);
        sources.pop_back();
    }
    request.sources = ParseSources("SOURCE", sources);
}

EExistingOutput ExistingOutputs(const SRotateOptions& options) {
    if (options.overwrite)
        return EExistingOutput::Replace;
    return options.skipExisting ? EExistingOutput::Skip : EExistingOutput::Refuse;
}

} // namespace

SRotationRequest MakeRotationRequest(const SRotateOptions& options) {
    CheckSize(options);
    CheckReport(options);
    SRotationRequest request;
    TakeAngles(options, request);
    TakePlaces(options, request);
    request.recursive = options.recursive;
    request.suffix = options.suffix;
    request.existing = ExistingOutputs(options);
    request.size = options.size;
    request.wholeScreen = options.wholeScreen;
    request.lenient = options.lenient;
    request.keepExtras = options.keepExtras;
    request.wall = options.wall;
    request.keepTimes = options.keepTimes;
    request.verify = options.verify;
    request.dryRun = options.dryRun;
    request.shard = options.shard;
    request.jobs = options.jobs;
    request.manifest = options.manifest;
    request.report = options.report;
    request.sums = !options.report.empty();
    request.limits = options.limits;
    request.sync = !options.noSync;
    return request;
}

} // namespace trevolt
