#include <algorithm>
#include <charconv>
#include <cstdio>
#include <memory>
#include <thread>

#include <fmt/format.h>

#include "cli/Commands.h"
#include "platform/Process.h"
#include "trevolt/FolderRotation.h"
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
    unsigned jobs = DefaultJobs();
    std::string manifest;
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
std::int64_t ParseSide(std::string_view text, const std::string& size) {
    std::int64_t side = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), side);
    const bool isNumber = !text.empty() && end == text.data() + text.size() && text[0] != '-';
    if (isNumber && (error == std::errc::result_out_of_range || side > kLargestMapSide))
        throw CLI::ValidationError(
            "--size", fmt::format("{} is above {} in one direction", size, kLargestMapSide));
    if (!isNumber || side < 1)
        throw CLI::ValidationError(
            "--size", fmt::format("{} is not a size: give WIDTHxHEIGHT in pixels", size));
    return side;
}

PixelSize ParseSize(const std::string& size) {
    const std::size_t cross = std::min(size.find_first_of("xX"), size.size());
    const std::string_view text = size;
    const std::string_view height = cross < size.size() ? text.substr(cross + 1) : "";
    return {ParseSide(text.substr(0, cross), size), ParseSide(height, size)};
}

std::wstring ParsePath(const char* name, const std::string& path) {
    auto wide = Utf8ToWide(path);
    if (!wide)
        throw CLI::ValidationError(name, "its name is not valid UTF-8");
    return *std::move(wide);
}

SRotationRequest MakeRequest(const Options& options) {
    SRotationRequest request;
    request.sourceFolder = ParsePath("SOURCE", options.source);
    request.targetFolder = ParsePath("TARGET", options.target);
    request.angle = kAngles[static_cast<std::size_t>(options.angle / 90 - 1)];
    if (!options.size.empty())
        request.size = ParseSize(options.size);
    request.wholeScreen = options.wholeScreen;
    request.lenient = options.lenient;
    request.jobs = options.jobs;
    request.manifest = ParsePath("--manifest", options.manifest);
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
    CConsoleListener listener;
    const SRotationOutcome outcome = RotateFolder(request, CatchInterrupts(), listener);
    listener.ClearProgress();
    if (outcome.end == ERotationEnd::NothingToDo) {
        fmt::print(stderr, "trevolt-cli: {}\n", outcome.error);
        return kExitUsage;
    }
    if (!outcome.error.empty())
        fmt::print(stderr, "trevolt-cli: {}\n", outcome.error);
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
    command->add_option("SOURCE", options->source, "Folder of the coefficient files")->required();
    command->add_option("TARGET", options->target, "Existing folder for the turned files")
        ->required();
    command->callback([options, &exitStatus] { exitStatus = Rotate(*options); });
}

} // namespace trevolt
