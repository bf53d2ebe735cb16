#include "trevolt/TransferProblems.h"

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
    if (report.FailedChunks() != 0)
        problems.push_back(
            fmt::format("is damaged: {} of its chunks could not be read", report.FailedChunks()));
    if (report.MissingPixels() != 0)
        problems.push_back(fmt::format(
            "is incomplete: {} no data",
            report.MissingPixels() == 1 ? std::string("1 pixel has")
                                        : fmt::format("{} pixels have", report.MissingPixels())));
    return problems;
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
