#include "trevolt/TransferProblems.h"

#include <string_view>

#include <fmt/format.h>

#include "platform/SystemError.h"

namespace trevolt {

std::vector<std::string> DescribeReadProblems(Status status, const CTransferReport& report) {
    if (report.WasMemoryRefused())
        return {"not enough memory to read it whole"};
    for (const Status answer : {status, report.FailedRead()})
        if (Failed(answer))
            return {fmt::format("cannot be read: {}", DescribeStatus(answer))};
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
    return problems;
}

std::vector<std::string> DescribeReadNotes(const CTransferReport& report) {
    if (report.ForeignIndices() == 0)
        return {};
    return {fmt::format("{} of its chunks {} a block index that is not that of the place",
                        report.ForeignIndices(), report.ForeignIndices() == 1 ? "has" : "have")};
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

std::string DescribeRenameProblem(int error) {
    const std::string reason = SystemErrorText(error);
    return fmt::format("cannot be given its final name in the target folder{}{}",
                       reason.empty() ? "" : ": ", reason);
}

} // namespace trevolt
