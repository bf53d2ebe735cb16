#include "app/rotation/OutputKeeper.h"

#include <cerrno>
#include <new>
#include <utility>

#include <fmt/format.h>

#include "common/OrderedJobs.h"
#include "platform/FileSystem.h"
#include "platform/SystemError.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

/// How many of them at a time: the threads wait for the disk and take no processor.
constexpr std::size_t kSyncsAtOnce = 8;

/// Nothing is told to be written.
void Drop(STurnedFile& file) {
    file.output.reset();
    file.outcome.outputName.clear();
    file.outcome.losses.clear();
    file.outcome.outputSum.clear();
    file.outcome.outputPicture = {};
    file.outcome.manifestLines.clear();
}

void Fail(STurnedFile& file, std::string problem) {
    Drop(file);
    file.outcome.problems.push_back(std::move(problem));
}

/// Another program was quicker.
void Skip(STurnedFile& file) {
    Drop(file);
    file.outcome.notes.clear();
    file.outcome.skipped = true;
}

std::string DescribeSharedName(const std::wstring& other) {
    return fmt::format("cannot be written: its name means the file {} in the target folder, "
                       "which this run wrote before",
                       WideToShownUtf8(other));
}

} // namespace

void COutputKeeper::Keep(std::vector<STurnedFile>& files) {
    const std::vector<int> errors = Sync(files);
    bool isAnyKept = false;
    for (std::size_t i = 0; i < files.size(); ++i)
        isAnyKept |= files[i].output != nullptr && KeepOrRefuse(files[i], errors[i]);
    const int error = isAnyKept ? m_target.SyncNames() : 0;
    if (error != 0)
        for (STurnedFile& file : files)
            if (!file.outcome.outputName.empty())
                Fail(file, DescribeFolderSyncProblem(error));
}

std::vector<int> COutputKeeper::Sync(const std::vector<STurnedFile>& files) const {
    std::vector<int> errors(files.size());
    if (!m_target.IsSynced() || m_interrupted)
        return errors;
    const auto sync = [&](std::size_t i) {
        errors[i] = files[i].output == nullptr ? 0 : files[i].output->Sync();
    };
    ShareOut(files.size(), kSyncsAtOnce, sync);
    for (std::size_t i = 0; i < files.size(); ++i)
        if (errors[i] == EMFILE || errors[i] == ENFILE) // for several at a time alone, perhaps
            sync(i);
    return errors;
}

bool COutputKeeper::KeepOrRefuse(STurnedFile& file, int error) {
    try {
        return Keep(file, error);
    } catch (const std::bad_alloc&) {
        Drop(file);
        file.isMemoryRefused = true;
        return false;
    }
}

bool COutputKeeper::Keep(STurnedFile& file, int error) {
    if (m_interrupted) { // asked once: what has its final name is also told of
        file.outcome.interrupted = true;
        Drop(file);
        return false;
    }
    if (error != 0) {
        Fail(file, DescribeSyncProblem(error));
        return false;
    }
    if (!file.timeOf.empty() && !CopyWriteTime(file.timeOf, file.output->Path())) {
        Fail(file, WithSystemReason("its time cannot be given to its output", errno));
        return false;
    }
    const SKeptOutput kept = m_target.Keep(*file.output, m_existing == EExistingOutput::Replace);
    if (kept.isKept)
        return true;
    if (!kept.sameEntryAs.empty())
        Fail(file, DescribeSharedName(kept.sameEntryAs));
    else if (!kept.isTaken)
        Fail(file, DescribeRenameProblem(kept.error));
    else if (m_existing == EExistingOutput::Skip)
        Skip(file);
    else
        Fail(file, DescribeExistingOutput(file.outcome.outputName));
    return false;
}

} // namespace trevolt
