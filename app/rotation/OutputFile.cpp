#include "app/rotation/OutputFile.h"

#include <algorithm>

#include <fmt/format.h>

#include "platform/SystemError.h"
#include "trevolt/FileKinds.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

std::wstring OutputFolderOf(const std::wstring& path) {
    std::wstring folder = FolderPart(path);
    return folder.empty() ? L"." : folder;
}

std::wstring OutputNameOf(const std::wstring& path) { return path.substr(FolderPart(path).size()); }

bool IsOneOf(const std::wstring& path, const std::vector<std::wstring>& inputs) {
    return std::any_of(inputs.begin(), inputs.end(),
                       [&](const std::wstring& input) { return IsSameEntry(path, input); });
}

} // namespace

std::string WriteOutput(COutputFolder& target, const std::wstring& name, bool replaces,
                        const OutputWriter& write, const std::string& taken) {
    const auto output = target.Begin(name);
    if (std::string problem = write(output->Path()); !problem.empty())
        return problem;
    if (const int error = target.IsSynced() ? output->Sync() : 0; error != 0)
        return DescribeSyncProblem(error);
    const SKeptOutput kept = target.Keep(*output, replaces);
    if (kept.isKept)
        return {};
    return kept.isTaken ? taken : DescribeRenameProblem(kept.error);
}

std::string DescribeOutputObstacle(const SOutputFile& output,
                                   const std::vector<std::wstring>& inputs) {
    const std::wstring folder = OutputFolderOf(output.path);
    if (!IsFolder(folder))
        return fmt::format(
            "lies in the folder {}, which does not exist: make it, or choose another",
            WideToShownUtf8(folder));
    if (IsFolder(output.path))
        return "is a folder: give the name of a file";
    if (IsOneOf(output.path, inputs))
        return "is one of the inputs, which stay as they are: choose another name";
    if (!output.replaces && PathExists(output.path))
        return kExistingOutput;
    return {};
}

std::string WriteOutputFile(const SOutputFile& output, const OutputWriter& write,
                            const std::string& taken) {
    COutputFolder target(OutputFolderOf(output.path), output.sync);
    target.RemoveAbandoned();
    if (std::string problem =
            WriteOutput(target, OutputNameOf(output.path), output.replaces, write, taken);
        !problem.empty())
        return problem;
    const int error = target.SyncNames();
    return error == 0 ? std::string() : DescribeFolderSyncProblem(error);
}

std::string SaveCoefFile(const CChromaCorrectCoef& map, const SOutputFile& output) {
    const SFileKind* const kind = FindExportKind(OutputNameOf(output.path));
    if (kind == nullptr)
        return "is no coefficient file by its name";
    return WriteOutputFile(output, [&](const std::wstring& path) {
        const CTransferReport report;
        const Status status = kind->save(map, path.c_str());
        return DescribeWriteProblem(status, report);
    });
}

} // namespace trevolt
