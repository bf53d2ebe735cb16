#include "cli/RotateOptions.h"

#include <algorithm>
#include <thread>

#include <fmt/format.h>

#include "cli/Commands.h"
#include "cli/OptionGroup.h"
#include "cli/OptionValues.h"
#include "cli/SharedOptions.h"

namespace trevolt {
namespace {

/// Every processor has one; 1 where their number is not known.
std::size_t DefaultJobs() {
    return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, kMostJobs);
}

void AddTurn(CLI::App& command, SRotateOptions& options) {
    COptionGroup group(command, "Turn");
    const COption angle = group.AddValue("--angle,-a", "90|180|270", options.angle, ParseAngle,
                                         std::string("Clockwise turn in degrees") + kAngleForms);
    group
        .AddValue("--angles", "TABLE", options.angleTable, ParsePath,
                  "CSV file with a file and its angle a row, for files that are mounted in "
                  "different ways; * stands for all without a row, and angle 0 copies")
        .Excludes(angle);
    group
        .AddValue("--size,-s", "WIDTHxHEIGHT", options.size, ParseSize,
                  "Size of every map in pixels; larger files are cut, smaller ones stand on "
                  "defaults")
        .Default("each file's own");
    group.AddFlag("--lenient", options.lenient,
                  "Also write what could be read of files that are damaged");
    const COption keepExtras = group.AddFlag(
        "--keep-extras", options.keepExtras,
        "Keep the extra words, the owner and the origin of word files, which are lost "
        "otherwise");
    group
        .AddValue("--wall", "WIDTHxHEIGHT", options.wall, ParseSize,
                  "Size of the wall in whose pixels kept origins are turned; without it they "
                  "stay as they are")
        .Needs(keepExtras);
}

void AddInputs(CLI::App& command, SRotateOptions& options) {
    COptionGroup group(command, "Inputs");
    group.AddFlag("--recursive,-r", options.recursive,
                  "Also turn what lies in folders of the source folders; the target gets the same "
                  "folders");
    group.AddFlag("--screen", options.wholeScreen,
                  "The source is one whole-screen file; refuse any other number");
    group
        .AddValue("--shard", "I/N", options.shard, ParseShard,
                  "Take every N-th file, from the I-th on, so that N machines share a run")
        .Default("1/1");
    group.AddValue("--max-file-size", "BYTES", options.limits.fileBytes, ParseBytes,
                   "Bytes that a file may have, or as 500M or 2G; larger ones fail");
    group.AddValue("--max-size", "WIDTHxHEIGHT", options.limits.largestSize, ParseSize,
                   "Size in pixels that a file may have; larger ones fail");
}

void AddOutputs(CLI::App& command, SRotateOptions& options) {
    COptionGroup group(command, "Outputs");
    const COption overwrite = group.AddFlag("--overwrite", options.overwrite, kOverwriteHelp);
    group
        .AddFlag("--skip-existing", options.skipExisting,
                 "Leave outputs that exist, and do not turn their files")
        .Excludes(overwrite);
    group
        .AddValue(
            "--suffix", "TEXT", options.suffix, ParseSuffix,
            "What stands in names of outputs in place of the angle, as cw in Cab_01-cw.9fcoef")
        .Default("the angle, as in Cab_01-90\u00B0.9fcoef");
    group.AddFlag("--keep-times", options.keepTimes,
                  "Give outputs the time at which their sources were last written");
    group.AddFlag("--verify", options.verify,
                  "Read each output back from the disk and compare it before it gets its name");
    group.AddValue("--manifest", "FILE", options.manifest, ParsePath,
                   "New file for the SHA-256 sums of the files turned and written, as sha256sum "
                   "takes them; check them with the command verify");
    group.AddFlag("--no-sync", options.noSync, kNoSyncHelp);
}

void AddPage(COptionGroup& group, SRotateOptions& options, COption dryRun, COption list) {
    group
        .AddValue("--report", "FILE.html", options.report, ParsePagePath,
                  "Page on the run for a browser: each file with its sums, times and pictures, and "
                  "what failed first")
        .Excludes(dryRun)
        .Excludes(list);
}

void AddWork(CLI::App& command, SRotateOptions& options) {
    COptionGroup group(command, "Work");
    options.jobs = DefaultJobs();
    group
        .AddValue(
            "--jobs,-j", "N", options.jobs, ParseJobs,
            fmt::format("Threads that turn files, or share one large file, 1 to {}", kMostJobs))
        .Default("one a processor");
    group
        .AddValue("--max-memory", "BYTES", options.maxMemory, ParseBytes,
                  "Memory for pixels, in bytes or as 500M or 2G; what does not fit fails")
        .Default("90 % of the machine's");
}

void AddReport(CLI::App& command, SRotateOptions& options, COption target) {
    COptionGroup group(command, "Report");
    const COption dryRun = group.AddFlag(
        "--dry-run,-n", options.dryRun,
        "Do all but write: the same plan and the same lines, but for what only writing shows");
    const COption list = group.AddFlag(
        "--list", options.list,
        "Print the files that a run would take, one a line, as they open and with nothing "
        "escaped, and turn none; then neither an angle nor, for one SOURCE, a TARGET is needed");
    // Then the last of several places is the target all the same, as in the run.
    list.Spares(target);
    AddPage(group, options, dryRun, list);
    group
        .AddFlag("--null,-0", options.nullEnds,
                 "End the names of --list with NUL, for names that hold line ends")
        .Needs(list);
    const COption json = AddJsonFlag(command, options.json);
    json.Excludes(list);
    const COption quiet =
        group.AddFlag("--quiet,-q", options.quiet, "Print only what goes wrong").Excludes(json);
    group
        .AddFlag("--verbose,-v", options.verbose,
                 "Also name the entries of source folders that are passed over, and why")
        .Excludes(quiet)
        .Excludes(json);
}

/// The target's.
COption AddPlaces(CLI::App& command, SRotateOptions& options) {
    AddSources(command, "SOURCE", options.sources);
    const auto take = [&options](const std::string& text) {
        options.target = ParseFor("TARGET", "a folder", text, ParsePath);
    };
    return COptionGroup(command, kPlaces)
        .AddPlace("TARGET", "FOLDER", take, "Folder for the turned files, made when missing")
        .Required();
}

} // namespace

void AddRotateOptions(CLI::App& command, SRotateOptions& options) {
    const COption target = AddPlaces(command, options);
    AddTurn(command, options);
    AddInputs(command, options);
    AddOutputs(command, options);
    AddWork(command, options);
    AddReport(command, options, target);
}

} // namespace trevolt
