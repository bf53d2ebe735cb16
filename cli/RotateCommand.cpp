#include <algorithm>
#include <charconv>
#include <cstdio>
#include <memory>
#include <optional>
#include <thread>

#include <fmt/format.h>

#include "cli/Commands.h"
#include "platform/Process.h"
#include "trevolt/RotationRun.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr unsigned kMostJobs = 256;

/// Every processor has one; 1 where their number is not known.
unsigned DefaultJobs() { return std::clamp(std::thread::hardware_concurrency(), 1U, kMostJobs); }

struct Options {
    int angle = 0;
    std::string size;
    bool wholeScreen = false;
    bool lenient = false;
    bool noSync = false;
    unsigned jobs = DefaultJobs();
    std::string manifest;
    std::optional<std::string> maxSize;
    std::optional<std::string> maxFileSize;
    std::optional<std::string> maxMemory;
    std::string source;
    std::string target;
};

/// Prints outcome lines, and where standard error is a terminal how far the run is.
class CConsoleListener : public CRotationListener {
  public:
    CConsoleListener() : m_showProgress(IsErrorTerminal()) {}

    void OnFile(const SFileOutcome& outcome, std::size_t done, std::size_t count) override {
        ClearProgress();
        for (const std::string& problem : outcome.problems)
            fmt::print(stderr, "{}: {}\n", outcome.name, problem);
        if (!outcome.outputName.empty())
            fmt::print("{} -> {}  ({} x {} -> {} x {})\n", outcome.name, outcome.outputName,
                       outcome.size.width, outcome.size.height, outcome.turnedSize.width,
                       outcome.turnedSize.height);
        if (!outcome.losses.empty())
            fmt::print("{}: the turned file lacks {}\n", outcome.name,
                       fmt::join(outcome.losses, ", "));
        if (!outcome.outputName.empty())
            for (const std::string& note : outcome.notes)
                fmt::print("{}: {}\n", outcome.name, note);
        if (m_showProgress && done < count) {
            fmt::print(stderr, "{} of {} ...", done, count);
            std::fflush(stderr);
        }
    }

    void ClearProgress() const {
        if (m_showProgress)
            fmt::print(stderr, "\r\x1b[K");
    }

  private:
    bool m_showProgress;
};

/// A side of "WxH", 1 to the largest, or an error that names it.
std::int64_t ParseSide(const char* option, std::string_view text, const std::string& size) {
    std::int64_t side = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), side);
    const bool isNumber = !text.empty() && end == text.data() + text.size() && text[0] != '-';
    if (isNumber && (error == std::errc::result_out_of_range || side > kLargestMapSide))
        throw CLI::ValidationError(
            option, fmt::format("{} is above {} in one direction", size, kLargestMapSide));
    if (!isNumber || side < 1)
        throw CLI::ValidationError(
            option, fmt::format("{} is not a size: give WIDTHxHEIGHT in pixels", size));
    return side;
}

PixelSize ParseSize(const char* option, const std::string& size) {
    const std::size_t cross = std::min(size.find_first_of("xX"), size.size());
    const std::string_view text = size;
    const std::string_view height = cross < size.size() ? text.substr(cross + 1) : "";
    return {ParseSide(option, text.substr(0, cross), size), ParseSide(option, height, size)};
}

std::wstring ParsePath(const char* name, const std::string& path) {
    auto wide = Utf8ToWide(path);
    if (!wide)
        throw CLI::ValidationError(name, "its name is not valid UTF-8");
    return *std::move(wide);
}

/// The factor of the unit behind a number, none or one letter; 0 for any other text.
std::uint64_t UnitBytes(std::string_view unit) {
    constexpr std::string_view kUnits = "KkMmGgTt"; // each 1024 of the one before
    if (unit.empty())
        return 1;
    const std::size_t place = unit.size() == 1 ? kUnits.find(unit[0]) : std::string_view::npos;
    return place == std::string_view::npos ? 0 : std::uint64_t{1024} << 10 * (place / 2);
}

/// Bytes as "500", "500K" or "2G", or an error that names the option.
std::uint64_t ParseBytes(const char* option, const std::string& text) {
    std::uint64_t number = 0;
    const char* const textEnd = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), textEnd, number);
    const std::uint64_t unit = UnitBytes({end, static_cast<std::size_t>(textEnd - end)});
    if (error == std::errc::result_out_of_range || (unit != 0 && number > UINT64_MAX / unit))
        throw CLI::ValidationError(option, fmt::format("{} is too large", text));
    if (error != std::errc{} || unit == 0 || number == 0)
        throw CLI::ValidationError(
            option,
            fmt::format("{} is no number of bytes: give one, or one with K, M, G or T", text));
    return number * unit;
}

SRotationLimits ParseLimits(const Options& options) {
    SRotationLimits limits;
    if (options.maxSize)
        limits.largestSize = ParseSize("--max-size", *options.maxSize);
    if (options.maxFileSize)
        limits.fileBytes = ParseBytes("--max-file-size", *options.maxFileSize);
    return limits;
}

PixelSize ParseSizeWithin(const std::string& text, const PixelSize& largest) {
    const PixelSize size = ParseSize("--size", text);
    if (size.width > largest.width || size.height > largest.height)
        throw CLI::ValidationError("--size", fmt::format("{} is above --max-size {}x{}", text,
                                                         largest.width, largest.height));
    return size;
}

SRotationRequest MakeRequest(const Options& options) {
    SRotationRequest request;
    request.sources = {ParsePath("SOURCE", options.source)};
    request.targetFolder = ParsePath("TARGET", options.target);
    request.angle = kAngles[static_cast<std::size_t>(options.angle / 90 - 1)];
    request.limits = ParseLimits(options);
    if (!options.size.empty())
        request.size = ParseSizeWithin(options.size, request.limits.largestSize);
    request.wholeScreen = options.wholeScreen;
    request.lenient = options.lenient;
    request.jobs = options.jobs;
    request.manifest = ParsePath("--manifest", options.manifest);
    request.sync = !options.noSync;
    return request;
}

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

int Rotate(const Options& options) {
    const SRotationRequest request = MakeRequest(options);
    if (options.maxMemory)
        CMemoryBudget::Process().SetLimit(ParseBytes("--max-memory", *options.maxMemory));
    CConsoleListener listener;
    const SRotationOutcome outcome = RunRotation(request, CatchInterrupts(), listener);
    listener.ClearProgress();
    if (!outcome.errors.empty()) {
        fmt::print(stderr, "trevolt-cli: {}\n", outcome.errors.front());
        return ExitStatus(outcome.end);
    }
    if (!outcome.manifestError.empty())
        fmt::print(stderr, "trevolt-cli: {}\n", outcome.manifestError);
    fmt::print("{} file{} turned by {}\u00B0, {} failed{}\n", outcome.written,
               outcome.written == 1 ? "" : "s", options.angle, outcome.failed,
               outcome.end == ERotationEnd::Interrupted ? ", interrupted" : "");
    return ExitStatus(outcome.end);
}

} // namespace

void AddRotateCommand(CLI::App& program, int& exitStatus) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand(
        "rotate", "Turn every coefficient file of a folder into another folder");
    command->add_option("--angle", options->angle, "Clockwise turn in degrees: 90, 180 or 270")
        ->required()
        ->check(CLI::IsMember({90, 180, 270}));
    command->add_option("--size", options->size,
                        "Size of every map as WIDTHxHEIGHT in pixels; larger files are cut, "
                        "smaller ones stand on defaults (without it: each file's own size)");
    command->add_flag("--screen", options->wholeScreen,
                      "The source holds one whole-screen file; refuse any other number");
    command->add_flag("--lenient", options->lenient,
                      "Also write what could be read of files that are damaged");
    command
        ->add_option(
            "--jobs", options->jobs,
            "Threads that turn files, or share one large file (without it: one a processor)")
        ->check(CLI::Range(1U, kMostJobs));
    command
        ->add_option("--manifest", options->manifest,
                     "New file for the SHA-256 sums of the files turned and written, as sha256sum "
                     "takes them; check them with the command verify")
        ->check([](const std::string& file) { return file.empty() ? "it has no name" : ""; });
    command->add_option("--max-memory", options->maxMemory,
                        "Memory for pixels, in bytes or as 500M or 2G; what does not fit fails "
                        "(without it: 90 % of the machine's)");
    command->add_option("--max-file-size", options->maxFileSize,
                        "Bytes that a file may have, or as 500M or 2G; larger ones fail");
    command->add_option("--max-size", options->maxSize,
                        "Size that a file may have, as WIDTHxHEIGHT in pixels; larger ones fail");
    command->add_flag("--no-sync", options->noSync, kNoSyncHelp);
    command->add_option("SOURCE", options->source, "Folder of the coefficient files")->required();
    command->add_option("TARGET", options->target, "Existing folder for the turned files")
        ->required();
    command->callback([options, &exitStatus] { exitStatus = Rotate(*options); });
}

} // namespace trevolt
