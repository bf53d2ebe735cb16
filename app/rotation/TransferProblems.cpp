#include "trevolt/TransferProblems.h"

#include <array>
#include <string_view>

#include <fmt/format.h>

#include "platform/SystemError.h"

namespace trevolt {

namespace {

/// How the lines of a flaw are told: of one line its number is filled in, of several how many they
/// are and the number of the first.
struct SFlawText {
    ETextFlaw flaw;
    const char* one;
    const char* several;
};

constexpr std::array kFlawTexts{
    SFlawText{ETextFlaw::SizeLine, "line {} is no whole size line",
              "{} lines are no whole size lines, the first is line {}"},
    SFlawText{ETextFlaw::DataLine, "line {} is no whole data line",
              "{} lines are no whole data lines, the first is line {}"},
    SFlawText{ETextFlaw::Outside, "line {} names a pixel outside the file's size",
              "{} lines name pixels outside the file's size, the first is line {}"},
    SFlawText{ETextFlaw::Repeated, "line {} names a pixel that an earlier line names",
              "{} lines name pixels that earlier lines name, the first is line {}"},
    SFlawText{ETextFlaw::LongLine, "line {} is too long, and what follows in the file is not read",
              "{} lines are too long, and what follows is not read, the first is line {}"},
    SFlawText{ETextFlaw::NoEnd, "line {} is the last and has no end",
              "{} last lines have no end, the first is line {}"},
};
static_assert(kFlawTexts.size() == CTextFlaws::kKinds);

void AppendTextProblems(const CTextFlaws& flaws, std::vector<std::string>& problems) {
    for (const SFlawText& text : kFlawTexts) {
        const SFlawedLines& lines = flaws[text.flaw];
        if (lines.count == 1)
            problems.push_back("is damaged: " + fmt::format(fmt::runtime(text.one), lines.first));
        if (lines.count > 1)
            problems.push_back("is damaged: " +
                               fmt::format(fmt::runtime(text.several), lines.count, lines.first));
    }
}

} // namespace

std::vector<std::string> DescribeReadProblems(Status status, const CTransferReport& report) {
    if (report.WasMemoryRefused())
        return {"not enough memory to read it whole"};
    if (report.HasReadFailed()) {
        const std::string reason = SystemErrorText(report.SystemError());
        return {"cannot be read: " +
                (reason.empty() ? "the system did not give all of its bytes" : reason)};
    }
    for (const Status answer : {status, report.FailedRead()})
        if (Failed(answer))
            return {WithSystemReason(fmt::format("cannot be read: {}", DescribeStatus(answer)),
                                     report.SystemError())};
    std::vector<std::string> problems;
    const auto add = [&](std::uint64_t count, std::string_view one, std::string_view several) {
        if (count != 0)
            problems.push_back(fmt::format(fmt::runtime(count == 1 ? one : several), count));
    };
    constexpr std::string_view kFailed = "is damaged: {} of its chunks could not be read";
    add(report.FailedChunks(), kFailed, kFailed);
    add(report.ChunksOutside(), "is damaged: {} of its chunks reaches out of its area",
        "is damaged: {} of its chunks reach out of its area");
    add(report.RepeatedPixels(), "is damaged: {} pixel lies in several of its chunks",
        "is damaged: {} pixels lie in several of its chunks");
    add(report.StrayBytes(), "is damaged: {} byte lies behind its last chunk",
        "is damaged: {} bytes lie behind its last chunk");
    add(report.MissingPixels(), "is incomplete: {} pixel has no data",
        "is incomplete: {} pixels have no data");
    AppendTextProblems(report.TextFlaws(), problems);
    return problems;
}

std::vector<std::string> DescribeExtraWordProblems(const CTransferReport& report) {
    const std::uint64_t count = report.MissingExtraWords();
    if (count == 0 || report.WasMemoryRefused() || report.HasReadFailed())
        return {};
    return {fmt::format("is incomplete: {} {} no extra word", count,
                        count == 1 ? "pixel has" : "pixels have")};
}

std::vector<std::string> DescribeReadNotes(const CTransferReport& report) {
    std::vector<std::string> notes;
    if (const std::uint32_t count = report.ForeignIndices(); count != 0)
        notes.push_back(
            fmt::format("{} of its chunks {} a block index that is not that of the place", count,
                        count == 1 ? "has" : "have"));
    if (report.CleanedPixels() != 0)
        notes.push_back(fmt::format("cleaning changed {} of its pixels", report.CleanedPixels()));
    return notes;
}

std::string DescribeWriteProblem(Status status, const CTransferReport& report) {
    if (report.WasMemoryRefused())
        return "not enough memory to write it whole";
    const std::string reason = SystemErrorText(report.SystemError());
    if (report.HasWriteFailed())
        return fmt::format("cannot be written: {}",
                           reason.empty() ? "the target refused some of the bytes" : reason);
    if (!Failed(status))
        return {};
    return fmt::format("cannot be written: {}{}{}", DescribeStatus(status),
                       reason.empty() ? "" : ": ", reason);
}

std::string DescribeExistingOutput(const std::string& name) {
    return fmt::format("its output {} exists already: overwrite it, or choose another target",
                       name);
}

std::string DescribeRenameProblem(int error) {
    const std::string reason = SystemErrorText(error);
    return fmt::format("cannot be given its final name in the target folder{}{}",
                       reason.empty() ? "" : ": ", reason);
}

std::string DescribeSyncProblem(int error) { return WithSystemReason("cannot be written", error); }

std::string DescribeFolderSyncProblem(int error) {
    return WithSystemReason("written, but its name may be lost: the target folder cannot be synced",
                            error);
}

} // namespace trevolt
