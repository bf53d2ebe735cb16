#include "app/rotation/OutputFile.h"

#include <algorithm>
#include <cerrno>

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

std::string DescribeFolderObstacle(const std::wstring& path) {
    const std::wstring folder = OutputFolderOf(path);
    const auto standing = KindOfEntry(WithoutSeparator(folder));
    const int error = standing ? 0 : errno;
    const std::string shown = WideToShownUtf8(folder);
    if (standing == EntryKind::Folder) {
        const int refusal = RefusalOfNewFiles(folder);
        return refusal == 0 ? std::string() : DescribeRefusingFolder(path, refusal);
    }
    if (standing || error == ENOTDIR)
        return fmt::format("lies in {}, which is no folder: choose another", shown);
    if (error == 0 || error == ENOENT)
        return fmt::format(
            "lies in the folder {}, which does not exist: make it, or choose another", shown);
    return DescribeRefusingFolder(path, error);
}

std::string DescribeRefusedName(int error) {
    return WithSystemReason("is no name that the system takes", error) + ": choose another";
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

std::string DescribeRefusingFolder(const std::wstring& path, int error) {
    return WithSystemReason(fmt::format("lies in the folder {}, where no file can be made",
                                        WideToShownUtf8(OutputFolderOf(path))),
                            error) +
           ": choose another";
}

std::string DescribeIrreplaceable(const std::wstring& path, const std::string& name) {
    const auto standing = KindOfEntry(path);
    if (!standing || standing == EntryKind::File)
        return {};
    return fmt::format("its output {} is {}: choose another target", name,
                       standing == EntryKind::Folder ? "a folder" : "neither a file nor a folder");
}

std::string DescribePlaceObstacle(const std::wstring& path) {
    if (std::string obstacle = DescribeFolderObstacle(path); !obstacle.empty())
        return obstacle;
    const auto standing = KindOfEntry(path);
    const int error = errno;
    if (standing == EntryKind::Folder)
        return "is a folder: give the name of a file";
    if (standing == EntryKind::Other)
        return "is neither a file nor a folder: choose another name";
    if (standing || error == 0 || error == ENOENT || IsLink(path))
        return {};
    return DescribeRefusedName(error);
}

std::string DescribeNameObstacle(const std::wstring& path) {
    const int error = RefusalOfName(path);
    return error == 0 ? std::string() : DescribeRefusedName(error);
}

bool IsNameTaken(const std::wstring& path) { return PathExists(path) || IsLink(path); }

std::string DescribeOutputObstacle(const SOutputFile& output,
                                   const std::vector<std::wstring>& inputs) {
    if (std::string obstacle = DescribePlaceObstacle(output.path); !obstacle.empty())
        return obstacle;
    if (IsOneOf(output.path, inputs))
        return "is one of the inputs, which stay as they are: choose another name";
    if (!output.replaces && IsNameTaken(output.path))
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
