#include <memory>

#include <fmt/format.h>

#include "app/rotation/Manifest.h"
#include "app/rotation/Obstacles.h"
#include "cli/Commands.h"
#include "cli/OptionGroup.h"
#include "cli/OptionValues.h"
#include "cli/ShownText.h"
#include "platform/Process.h"

namespace trevolt {
namespace {

constexpr const char* kVerifyNotes = R"(Examples:
  trevolt-cli rotate --angle 90 --manifest turned.sums measured turned
      leaves the sums of the files read and written
  trevolt-cli verify turned.sums
      tells later whether all of them are still the same

Exit states:
  0    all files are as their sums say
  1    some file differs, is missing or cannot be read, or some line is no sum
  2    wrong usage, or the manifest does not open
  130  interrupted; what is told of a file holds)";

/// Prints a line a file, and where a line of the manifest is none.
class CConsoleVerification : public CVerificationListener {
  public:
    explicit CConsoleVerification(const std::string& manifest) : m_manifest(manifest) {}

    void OnFile(const SVerifiedFile& file) override {
        PrintLine(stdout, "{}: {}", file.name, AnswerTo(file));
    }
    void OnBadLine(std::uint64_t number) override {
        if (++m_badLines <= kToldObstacles)
            PrintLine(stderr, "{}: line {} is no sum with its file name", m_manifest, number);
    }
    /// Of a file that is no manifest no more lines than these are told.
    void TellFurtherBadLines() const {
        if (m_badLines > kToldObstacles)
            PrintLine(stderr, "{}: and {} more like these", m_manifest,
                      m_badLines - kToldObstacles);
    }

  private:
    static std::string AnswerTo(const SVerifiedFile& file) {
        switch (file.answer) {
        case SVerifiedFile::EAnswer::Right:
            return "OK";
        case SVerifiedFile::EAnswer::Missing:
            return "missing";
        case SVerifiedFile::EAnswer::Unreadable:
            return fmt::format("FAILED: {}", file.problem);
        case SVerifiedFile::EAnswer::Differs:
            break;
        }
        return "FAILED";
    }

    const std::string& m_manifest;
    std::uint64_t m_badLines = 0;
};

int ExitStatus(EVerificationEnd end) {
    switch (end) {
    case EVerificationEnd::AllRight:
        return kExitAllDone;
    case EVerificationEnd::SomeWrong:
        return kExitSomeFailed;
    case EVerificationEnd::Interrupted:
        return kExitInterrupted;
    case EVerificationEnd::NothingToDo:
        break;
    }
    return kExitUsage;
}

int Verify(const std::string& manifest) {
    const std::wstring path = ParseFor("MANIFEST", "a file", manifest, ParsePath);
    CConsoleVerification listener(manifest);
    const SVerification outcome = VerifyManifest(path, listener, CatchInterrupts());
    listener.TellFurtherBadLines();
    if (!outcome.error.empty())
        Complain("{}", outcome.error);
    if (outcome.end != EVerificationEnd::NothingToDo)
        fmt::print("{} OK, {} failed, {} missing{}\n", outcome.right, outcome.differing,
                   outcome.missing,
                   outcome.end == EVerificationEnd::Interrupted ? ", interrupted" : "");
    return ExitStatus(outcome.end);
}

} // namespace

void AddVerifyCommand(CLI::App& program, int& exitStatus) {
    const auto manifest = std::make_shared<std::string>();
    CLI::App& command =
        AddCommand(program, "verify", "Compare the files of a manifest with their SHA-256 sums",
                   kVerifyNotes, exitStatus, [manifest] { return Verify(*manifest); });
    COptionGroup(command, kPlaces)
        .AddPlace("MANIFEST", "FILE", *manifest,
                  "File of sums, by rotate --manifest or sha256sum; the names in it are relative "
                  "to the current folder")
        .Required();
}

} // namespace trevolt
