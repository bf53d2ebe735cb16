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

/// What `step` answers of a file that has an output; false where it lacks memory. The files before this
/// one have their names all the same.
template <class Step>
bool OrRefuse(STurnedFile& file, const Step& step) {
    try {
        return file.output != nullptr && step();
    } catch (const std::bad_alloc&) {
        Drop(file);
        file.isMemoryRefused = true;
        return false;
    }
}

bool GiveTime(STurnedFile& file) {
    if (CopyWriteTime(file.timeOf, file.output->Path()))
        return true;
    Fail(file, WithSystemReason("its time cannot be given to its output", errno));
    return false;
}

std::string DescribeSharedName(const std::wstring& other) {
    return fmt::format("cannot be written: its name means the file {} in the target folder, "
                       "which this run wrote before",
                       WideToShownUtf8(other));
}

} // namespace

void COutputKeeper::Keep(std::vector<STurnedFile>& files) {
    std::vector<int> errors(files.size());
    Sync(files, errors);
    if (GiveTimes(files, errors))
        Sync(files, errors); // quick: the bytes are there
    bool isAnyKept = false;
    for (std::size_t i = 0; i < files.size(); ++i)
        isAnyKept |= OrRefuse(files[i], [&] { return Keep(files[i], errors[i]); });
    const int error = isAnyKept ? m_target.SyncNames() : 0;
    if (error != 0)
        for (STurnedFile& file : files)
            if (!file.outcome.outputName.empty())
                Fail(file, DescribeFolderSyncProblem(error));
}

void COutputKeeper::Sync(const std::vector<STurnedFile>& files, std::vector<int>& errors) const {
    if (!m_target.IsSynced() || m_interrupted)
        return;
    const auto sync = [&](std::size_t i) {
        if (files[i].output != nullptr && errors[i] == 0)
            errors[i] = files[i].output->Sync();
    };
    ShareOut(files.size(), kSyncsAtOnce, sync);
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (errors[i] == EMFILE || errors[i] == ENFILE) { // for several at a time alone, perhaps
            errors[i] = 0;
            sync(i);
        }
    }
}

bool COutputKeeper::GiveTimes(std::vector<STurnedFile>& files,
                              const std::vector<int>& errors) const {
    bool isAnyGiven = false;
    for (std::size_t i = 0; i < files.size() && !m_interrupted; ++i)
        if (!files[i].timeOf.empty() && errors[i] == 0)
            isAnyGiven |= OrRefuse(files[i], [&] { return GiveTime(files[i]); });
    return isAnyGiven;
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
