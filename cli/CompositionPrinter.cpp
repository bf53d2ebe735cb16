#include "cli/CompositionPrinter.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <string_view>

#include <fmt/format.h>

#include "app/rotation/MapRegion.h"
#include "cli/Commands.h"
#include "cli/JsonLine.h"
#include "cli/RunPrinter.h"
#include "cli/ShownText.h"
#include "platform/FileSystem.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

ERotationEnd RunEndOf(ECompositionEnd end) {
    switch (end) {
    case ECompositionEnd::Done:
        return ERotationEnd::AllDone;
    case ECompositionEnd::SomeFailed:
        return ERotationEnd::SomeFailed;
    case ECompositionEnd::Interrupted:
        return ERotationEnd::Interrupted;
    case ECompositionEnd::Refused:
        break;
    }
    return ERotationEnd::NothingToDo;
}

std::string ShownLastName(const std::wstring& path) {
    return WideToShownUtf8(path.substr(FolderPart(path).size()));
}

int DegreesOf(std::uint32_t code) { return 90 * static_cast<int>(code); }

const char* PluralEnd(std::uint64_t count) { return count == 1 ? "" : "s"; }

// What tells of outputs that have their names takes no memory: it is told where none is left, too.

const char* TurnText(std::uint32_t code) {
    constexpr std::array kTexts{"", ", turned by 90\u00B0", ", turned by 180\u00B0",
                                ", turned by 270\u00B0"};
    return kTexts[code];
}

/// Behind a file's name; empty where its size is not known.
std::string SizeText(const PixelSize& size) {
    return size == PixelSize{} ? "" : fmt::format("  ({} x {})", size.width, size.height);
}

/// Of a rectangle as it is shown, to be joined.
std::array<std::int32_t, 4> SidesOf(const SPixelRect& rect) {
    return {rect.left, rect.top, rect.right, rect.bottom};
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

CJson RectOrNull(const SPixelRect& rect) {
    if (rect == SPixelRect{})
        return nullptr;
    return CJson::Of(rect, [](CJsonLine& line, const SPixelRect& known) {
        line.PutObject({{"left", known.left},
                        {"top", known.top},
                        {"right", known.right},
                        {"bottom", known.bottom}});
    });
}

std::size_t CountFailed(const SComposition& result) {
    return static_cast<std::size_t>(
        std::count_if(result.files.begin(), result.files.end(),
                      [](const SPlacedOutcome& file) { return !file.problems.empty(); }));
}

/// Of those without problems.
std::size_t CountOutside(const SComposition& result) {
    return static_cast<std::size_t>(
        std::count_if(result.files.begin(), result.files.end(), [](const SPlacedOutcome& file) {
            return file.isOutside && file.problems.empty();
        }));
}

std::size_t CountWritten(const SCropping& result) {
    return static_cast<std::size_t>(
        std::count_if(result.pieces.begin(), result.pieces.end(),
                      [](const SPieceOutcome& piece) { return piece.isWritten; }));
}

std::size_t CountFailed(const SCropping& result) {
    return static_cast<std::size_t>(
        std::count_if(result.pieces.begin(), result.pieces.end(),
                      [](const SPieceOutcome& piece) { return !piece.problem.empty(); }));
}

/// Of one wholly outside a note tells it.
void TellHidden(const SPlacedOutcome& file) {
    const auto tell = [&file](std::uint64_t count, const char* what) {
        if (count != 0)
            PrintLine(stdout, "{}: {} of its pixels {} {}", file.name, count,
                      count == 1 ? "is" : "are", what);
    };
    tell(file.isOutside ? 0 : file.cut, "outside the screen and cut");
    tell(file.overwritten, "overwritten by later files");
}

void TellScreen(const SCompositionRequest& request, const SComposition& result) {
    for (std::size_t i = 0; i < result.files.size(); ++i) {
        const SPlacedOutcome& outcome = result.files[i];
        PrintLine(stdout, "{} -> {}  ({} x {}{})", outcome.name,
                  fmt::join(SidesOf(outcome.rect), ","), outcome.ownSize.width,
                  outcome.ownSize.height, TurnText(request.files[i].code));
        TellHidden(outcome);
        TellRemarks(outcome.name, "the screen lacks", outcome.losses, outcome.notes);
    }
    for (const std::string& loss : result.losses)
        PrintLine(stdout, "{}: {}", result.output, loss);
    if (result.uncovered != 0)
        PrintLine(stdout, "{}: {} of its pixels {} in no file and {} default values", result.output,
                  result.uncovered, result.uncovered == 1 ? "is" : "are",
                  result.uncovered == 1 ? "has" : "have");
    const std::size_t failed = CountFailed(result);
    const std::size_t outside = CountOutside(result);
    const std::size_t placed = result.files.size() - failed - outside;
    CShownLine line(stdout);
    const auto end = std::back_inserter(line);
    fmt::format_to(end, "{} file{} put into {}  ({} x {}), ", placed, PluralEnd(placed),
                   result.output, result.size.width, result.size.height);
    if (outside != 0)
        fmt::format_to(end, "{} outside, ", outside);
    fmt::format_to(end, "{} failed{}", failed,
                   failed == 0 ? "" : "; what could be read is there, too");
    line.End();
}

const char* StatusOf(const SPlacedOutcome& file, bool isWritten) {
    if (!file.problems.empty())
        return "failed";
    if (!isWritten)
        return "not_written";
    return file.isOutside ? "outside" : "placed";
}

} // namespace

int ExitStatus(ECompositionEnd end) { return ExitStatus(RunEndOf(end)); }

void TellComposition(const SCompositionRequest& request, const SComposition& result) {
    for (std::size_t i = 0; i < result.files.size(); ++i)
        TellProblems(result.files[i].name, result.files[i].problems);
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
    TellProblems(result.input, result.problems);
    for (const std::string& error : result.errors)
        Complain("{}", error);
    for (std::size_t i = 0; i < result.pieces.size(); ++i) {
        const SCropPiece& piece = request.pieces[i];
        const SPieceOutcome& outcome = result.pieces[i];
        if (!outcome.problem.empty())
            PrintLine(stderr, "{}: {}", outcome.name, outcome.problem);
        if (outcome.isWritten)
            PrintLine(stdout, "{} -> {}  ({} x {}{})", fmt::join(SidesOf(piece.rect), ","),
                      outcome.name, outcome.size.width, outcome.size.height, TurnText(piece.code));
        for (const std::string& loss : outcome.losses)
            PrintLine(stdout, "{}: {}", outcome.name, loss);
    }
    if (result.isMemoryRefused) // the run ends here
        return;
    const std::size_t written = CountWritten(result);
    const std::size_t failed = CountFailed(result);
    if (written != 0)
        TellRemarks(result.input, "what is cut out of it lacks", result.losses, result.notes);
    if (written + failed != 0)
        PrintLine(stdout, "{} file{} cut out of {}{}, {} failed{}", written, PluralEnd(written),
                  result.input, SizeText(result.size), failed,
                  result.problems.empty() ? "" : "; what could not be read of it is default");
    if (result.end == ECompositionEnd::SomeFailed && written + failed == 0 &&
        !result.problems.empty())
        Complain("nothing is written: the source failed");
    if (result.end == ECompositionEnd::Interrupted)
        Complain("interrupted: {} of {} files are written", written, result.pieces.size());
}

CCompositionObjects::CCompositionObjects(const SCompositionRequest& request, bool isOfTable)
    : m_output(WideToShownUtf8(request.output.path)) {
    for (const SPlacedFile& file : request.files)
        m_files.push_back({isOfTable ? WideToShownUtf8(file.name) : ShownLastName(file.path),
                           WideToShownUtf8(file.path), file.code});
}

void CCompositionObjects::Tell(const SComposition& result) const {
    for (std::size_t i = 0; i < result.files.size(); ++i) {
        const SPlacedOutcome& outcome = result.files[i];
        PrintObject({{"type", "file"},
                     {"name", m_files[i].name},
                     {"path", m_files[i].path},
                     {"status", StatusOf(outcome, result.isWritten)},
                     {"angle", DegreesOf(m_files[i].code)},
                     {"own_size", SizeOrNull(outcome.ownSize)},
                     {"rect", RectOrNull(outcome.rect)},
                     {"cut_pixels", outcome.cut},
                     {"overwritten_pixels", outcome.overwritten},
                     {"problems", outcome.problems},
                     {"losses", outcome.losses},
                     {"notes", outcome.notes}});
    }
    const std::size_t failed = CountFailed(result);
    const std::size_t outside = CountOutside(result);
    PrintSummary(RunEndOf(result.end), ExitStatus(result.end),
                 {{"output", result.isWritten ? CJson(m_output) : CJson()},
                  {"size", SizeOrNull(result.size)},
                  {"uncovered_pixels", result.uncovered},
                  {"placed", result.isWritten ? result.files.size() - failed - outside : 0},
                  {"outside", outside},
                  {"failed", failed},
                  {"losses", result.losses},
                  {"errors", result.errors}});
}

void TellCroppingAsJson(const SCropRequest& request, const SCropping& result) {
    for (std::size_t i = 0; i < result.pieces.size(); ++i) {
        const SCropPiece& piece = request.pieces[i];
        const SPieceOutcome& outcome = result.pieces[i];
        const char* const unwritten = outcome.problem.empty() ? "not_written" : "failed";
        PrintObject({{"type", "file"},
                     {"name", outcome.name},
                     {"output", outcome.isWritten ? CJson(outcome.name) : CJson()},
                     {"status", outcome.isWritten ? "written" : unwritten},
                     {"angle", DegreesOf(piece.code)},
                     {"rect", RectOrNull(piece.rect)},
                     {"turned_size", SizeOrNull(outcome.size)},
                     {"problems",
                      outcome.problem.empty() ? CJson::Array() : CJson::Array({outcome.problem})},
                     {"losses", outcome.losses},
                     {"notes", CJson::Array()}});
    }
    PrintSummary(RunEndOf(result.end), ExitStatus(result.end),
                 {{"path", result.input},
                  {"own_size", SizeOrNull(result.size)},
                  {"written", CountWritten(result)},
                  {"failed", CountFailed(result)},
                  {"problems", result.problems},
                  {"losses", result.losses},
                  {"notes", result.notes},
                  {"errors", result.errors}});
}

} // namespace trevolt
