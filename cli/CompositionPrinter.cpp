#include "cli/CompositionPrinter.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include <fmt/format.h>

#include "app/rotation/MapRegion.h"
#include "cli/Commands.h"
#include "cli/JsonLine.h"
#include "cli/ShownText.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

struct SEndRow {
    ECompositionEnd end;
    const char* name;
    int exitStatus;
};

constexpr std::array kEnds{SEndRow{ECompositionEnd::Done, "done", kExitAllDone},
                           SEndRow{ECompositionEnd::SomeFailed, "failed", kExitSomeFailed},
                           SEndRow{ECompositionEnd::Refused, "nothing_to_do", kExitUsage},
                           SEndRow{ECompositionEnd::Interrupted, "interrupted", kExitInterrupted}};

const SEndRow& RowOf(ECompositionEnd end) {
    return *std::find_if(kEnds.begin(), kEnds.end(),
                         [end](const SEndRow& row) { return row.end == end; });
}

int DegreesOf(std::uint32_t code) { return 90 * static_cast<int>(code); }

const char* PluralEnd(std::uint64_t count) { return count == 1 ? "" : "s"; }

std::string TurnText(std::uint32_t code) {
    return code == 0 ? std::string() : fmt::format(", turned by {}\u00B0", DegreesOf(code));
}

void TellProblems(const std::string& name, const std::vector<std::string>& problems) {
    for (const std::string& problem : problems)
        PrintLine(stderr, "{}: {}", name, problem);
}

/// What a file that was taken lacks, and what is unusual about it.
void TellRemarks(const std::string& name, const char* target,
                 const std::vector<std::string>& losses, const std::vector<std::string>& notes) {
    if (!losses.empty())
        PrintLine(stdout, "{}: {} {}", name, target, fmt::join(losses, ", "));
    for (const std::string& note : notes)
        PrintLine(stdout, "{}: {}", name, note);
}

Json RectOrNull(const SPixelRect& rect) {
    if (rect == SPixelRect{})
        return nullptr;
    return {{"left", rect.left}, {"top", rect.top}, {"right", rect.right}, {"bottom", rect.bottom}};
}

std::size_t CountFailed(const SComposition& result) {
    return static_cast<std::size_t>(
        std::count_if(result.files.begin(), result.files.end(),
                      [](const SPlacedOutcome& file) { return !file.problems.empty(); }));
}

std::size_t CountWritten(const SCropping& result) {
    return static_cast<std::size_t>(
        std::count_if(result.pieces.begin(), result.pieces.end(),
                      [](const SPieceOutcome& piece) { return piece.isWritten; }));
}

void TellScreen(const SCompositionRequest& request, const SComposition& result) {
    const std::string output = WideToShownUtf8(request.output.path);
    for (std::size_t i = 0; i < result.files.size(); ++i) {
        const SPlacedFile& file = request.files[i];
        const SPlacedOutcome& outcome = result.files[i];
        const std::string name = WideToShownUtf8(file.name);
        PrintLine(stdout, "{} -> {}  ({} x {}{})", name, ShownRect(outcome.rect),
                  outcome.ownSize.width, outcome.ownSize.height, TurnText(file.code));
        TellRemarks(name, "the screen lacks", outcome.losses, outcome.notes);
    }
    for (const std::string& loss : result.losses)
        PrintLine(stdout, "{}: {}", output, loss);
    if (result.uncovered != 0)
        PrintLine(stdout, "{}: {} of its pixels {} in no file and {} default values", output,
                  result.uncovered, result.uncovered == 1 ? "is" : "are",
                  result.uncovered == 1 ? "has" : "have");
    const std::size_t put = result.files.size() - result.outside;
    PrintLine(stdout, "{} file{} put into {}  ({} x {}), {} failed{}", put, PluralEnd(put), output,
              result.size.width, result.size.height, CountFailed(result),
              result.outside == 0 ? "" : fmt::format(", {} outside", result.outside));
}

} // namespace

int ExitStatus(ECompositionEnd end) { return RowOf(end).exitStatus; }

void TellComposition(const SCompositionRequest& request, const SComposition& result) {
    for (std::size_t i = 0; i < result.files.size(); ++i)
        TellProblems(WideToShownUtf8(request.files[i].name), result.files[i].problems);
    for (const std::string& error : result.errors)
        Complain("{}", error);
    if (result.isWritten)
        TellScreen(request, result);
    else if (result.end == ECompositionEnd::Interrupted)
        Complain("interrupted: nothing is written");
    else if (const std::size_t failed = CountFailed(result); failed != 0)
        Complain("nothing is written: {} of {} files failed", failed, result.files.size());
}

void TellCropping(const SCropRequest& request, const SCropping& result) {
    const std::string input = WideToShownUtf8(request.input);
    TellProblems(input, result.problems);
    for (const std::string& error : result.errors)
        Complain("{}", error);
    for (std::size_t i = 0; i < result.pieces.size(); ++i) {
        const SCropPiece& piece = request.pieces[i];
        const SPieceOutcome& outcome = result.pieces[i];
        const std::string name = WideToShownUtf8(piece.name);
        if (!outcome.problem.empty())
            PrintLine(stderr, "{}: {}", name, outcome.problem);
        if (outcome.isWritten)
            PrintLine(stdout, "{} -> {}  ({} x {}{})", ShownRect(piece.rect), name,
                      outcome.size.width, outcome.size.height, TurnText(piece.code));
        for (const std::string& loss : outcome.losses)
            PrintLine(stdout, "{}: {}", name, loss);
    }
    const std::size_t written = CountWritten(result);
    if (written != 0) {
        TellRemarks(input, "what is cut out of it lacks", result.losses, result.notes);
        PrintLine(stdout, "{} file{} cut out of {}  ({} x {}), {} failed", written,
                  PluralEnd(written), input, result.size.width, result.size.height,
                  result.pieces.size() - written);
    }
    if (result.end == ECompositionEnd::Interrupted)
        Complain("interrupted: {} of {} files are written", written, result.pieces.size());
}

void TellCompositionAsJson(const SCompositionRequest& request, const SComposition& result) {
    for (std::size_t i = 0; i < result.files.size(); ++i) {
        const SPlacedFile& file = request.files[i];
        const SPlacedOutcome& outcome = result.files[i];
        const char* const placed = result.isWritten ? "placed" : "not_written";
        PrintObject({{"type", "file"},
                     {"name", WideToShownUtf8(file.name)},
                     {"status", outcome.problems.empty() ? placed : "failed"},
                     {"angle", DegreesOf(file.code)},
                     {"own_size", SizeOrNull(outcome.ownSize)},
                     {"rect", RectOrNull(outcome.rect)},
                     {"problems", outcome.problems},
                     {"losses", outcome.losses},
                     {"notes", outcome.notes}});
    }
    PrintObject({{"type", "summary"},
                 {"version", kJsonVersion},
                 {"end", RowOf(result.end).name},
                 {"exit_status", ExitStatus(result.end)},
                 {"output", result.isWritten ? Json(WideToShownUtf8(request.output.path)) : Json()},
                 {"size", SizeOrNull(result.size)},
                 {"uncovered", result.uncovered},
                 {"outside", result.outside},
                 {"files", result.files.size()},
                 {"failed", CountFailed(result)},
                 {"losses", result.losses},
                 {"errors", result.errors}});
}

void TellCroppingAsJson(const SCropRequest& request, const SCropping& result) {
    for (std::size_t i = 0; i < result.pieces.size(); ++i) {
        const SCropPiece& piece = request.pieces[i];
        const SPieceOutcome& outcome = result.pieces[i];
        const char* const unwritten = outcome.problem.empty() ? "not_written" : "failed";
        PrintObject({{"type", "file"},
                     {"name", WideToShownUtf8(piece.name)},
                     {"status", outcome.isWritten ? "written" : unwritten},
                     {"angle", DegreesOf(piece.code)},
                     {"rect", RectOrNull(piece.rect)},
                     {"size", SizeOrNull(outcome.size)},
                     {"losses", outcome.losses},
                     {"problem", TextOrNull(outcome.problem)}});
    }
    PrintObject({{"type", "summary"},
                 {"version", kJsonVersion},
                 {"end", RowOf(result.end).name},
                 {"exit_status", ExitStatus(result.end)},
                 {"input", WideToShownUtf8(request.input)},
                 {"size", SizeOrNull(result.size)},
                 {"written", CountWritten(result)},
                 {"files", result.pieces.size()},
                 {"problems", result.problems},
                 {"losses", result.losses},
                 {"notes", result.notes},
                 {"errors", result.errors}});
}

} // namespace trevolt
