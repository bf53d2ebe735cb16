#include "trevolt/FolderRotation.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include <fmt/format.h>

#include "app/rotation/Manifest.h"
#include "app/rotation/OutputFolder.h"
#include "app/rotation/SourceFile.h"
#include "app/rotation/StoredKinds.h"
#include "app/rotation/WorkShare.h"
#include "coef/WordObjects.h"
#include "common/OrderedJobs.h"
#include "common/WrittenFile.h"
#include "platform/FileStream.h"
#include "platform/FileSystem.h"
#include "platform/SystemError.h"
#include "trevolt/FileKinds.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

/// A file that went as far as a thread of its own can take it.
struct STurnedFile {
    SFileOutcome outcome;
    std::unique_ptr<CTemporaryOutput> output; ///< null when there is nothing to keep
    bool isMemoryRefused = false;             ///< then the outcome tells nothing
};

bool IsMapSize(const PixelSize& size) {
    return size.width <= kLargestMapSide && size.height <= kLargestMapSide;
}

/// Whether a map can have the size, so that a file may be written in it without one.
bool IsPossibleMap(const PixelSize& size) {
    return size.width > 0 && size.height > 0 && IsMapSize(size) &&
           size.width * size.height <= std::numeric_limits<std::int32_t>::max();
}

std::uint64_t PixelsOf(const PixelSize& size) {
    return static_cast<std::uint64_t>(size.width) * static_cast<std::uint64_t>(size.height);
}

/// What a file in work takes beside its pixels, and more.
constexpr std::uint64_t kSideBytes = std::uint64_t{32} << 20;
/// What each further thread that works on a file takes, and more: the pieces of the widest body.
constexpr std::uint64_t kThreadBytes = std::uint64_t{32} << 20;
/// A map's bytes a pixel: an element and a gain.
constexpr std::uint64_t kMapBytes = sizeof(SMatrixCoef) + sizeof(float);

std::string WithReason(std::string problem, int error) {
    const std::string reason = SystemErrorText(error);
    return reason.empty() ? problem : fmt::format("{}: {}", problem, reason);
}

/// One file's way from the source folder to its output, which has yet to get its name.
class CFileRotation {
  public:
    CFileRotation(const SRotationRequest& request, const std::atomic<bool>& interrupted,
                  CWorkShare& share, COutputFolder& target, const std::wstring& name)
        : m_request(request),
          m_interrupted(interrupted),
          m_share(share),
          m_target(target),
          m_name(name),
          m_loadKind(*FindLoadKind(name)),
          m_storedKind(FindStoredKind(name)) {}

    STurnedFile Run() {
        m_outcome.name = WideToShownUtf8(m_name);
        Turn();
        m_outcome.interrupted = m_interrupted && m_output == nullptr;
        return {std::move(m_outcome), std::move(m_output)};
    }

  private:
    void Turn() {
        if (m_interrupted)
            return;
        m_source.Open(WithSeparator(m_request.sourceFolder) + m_name);
        if (!IsWithinBytes() || !SumSource() || !FindSize())
            return;
        if (!TurnStored())
            TurnThroughMap();
    }

    bool IsWithinBytes() {
        const std::uint64_t limit = m_request.limits.fileBytes;
        const std::uint64_t bytes =
            m_source.IsOpen() ? BytesToEnd(m_source.FirstByte()).value_or(0) : 0;
        if (bytes > limit)
            Fail(fmt::format("its {} bytes are above the limit of {}", bytes, limit));
        return bytes <= limit;
    }

    bool WantsSums() const { return !m_request.manifest.empty(); }

    bool SumSource() {
        if (!WantsSums() || !m_source.IsOpen())
            return true;
        m_sourceSum = Sha256Of(m_source.FirstByte());
        if (!m_sourceSum)
            FailWithReason("cannot be read", errno);
        return m_sourceSum.has_value();
    }

    /// Fails where not.
    bool IsSourceUnchanged() {
        if (!m_sourceSum)
            return true;
        const auto sum = Sha256Of(m_source.FirstByte());
        if (!sum)
            FailWithReason("cannot be read", errno);
        else if (sum != m_sourceSum)
            Fail("changed while it was turned");
        return sum == m_sourceSum;
    }

    /// The manifest's lines of the source and of what was written of it, none where no manifest is
    /// wanted; nothing when the file fails. The source is summed before the first look at it and
    /// behind the last one: what was turned is then what both found.
    std::optional<std::string> SumBoth(const std::wstring& written,
                                       const std::wstring& outputName) {
        if (!WantsSums())
            return std::string();
        if (!IsSourceUnchanged())
            return std::nullopt;
        const auto writtenSum = Sha256OfFile(written);
        if (!writtenSum) {
            FailWithReason("cannot be read back", errno);
            return std::nullopt;
        }
        const auto writtenLine =
            ManifestLine(*writtenSum, WithSeparator(m_request.targetFolder) + outputName);
        const auto sourceLine =
            m_sourceSum ? ManifestLine(*m_sourceSum, WithSeparator(m_request.sourceFolder) + m_name)
                        : std::string();
        if (!writtenLine || !sourceLine) {
            Fail("its name cannot stand in a manifest: it has no UTF-8 form");
            return std::nullopt;
        }
        return *sourceLine + *writtenLine;
    }

    bool FindSize() {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        const CTransferReport report;
        const Status status = m_source.Take(
            [&](std::istream& stream) { return m_loadKind.readStreamSize(stream, width, height); });
        if (!Failed(status) && !IsMapSize({width, height})) {
            Fail(fmt::format("its size {} x {} is above {} in one direction", width, height,
                             kLargestMapSide));
            return false;
        }
        const PixelSize& largest = m_request.limits.largestSize;
        if (!Failed(status) && (width > largest.width || height > largest.height)) {
            Fail(fmt::format("its size {} x {} is above the limit of {} x {}", width, height,
                             largest.width, largest.height));
            return false;
        }
        if (!m_request.size && (Failed(status) || report.HasReadFailed())) {
            for (std::string& problem : DescribeReadProblems(status, report))
                Fail(std::move(problem));
            return false;
        }
        if (!Failed(status))
            m_ownSize = {width, height};
        m_outcome.size = m_request.size.value_or(m_ownSize);
        return true;
    }

    /// Turns the file in its own elements; false where only a map can tell or write what it holds.
    bool TurnStored() {
        if (m_storedKind == nullptr || !m_source.IsOpen() || !IsPossibleMap(m_outcome.size))
            return false;
        if (!m_share.Holds(PixelsOf(m_outcome.size) * m_storedKind->elementBytes)) {
            FailForMemory();
            return true;
        }
        CWorkShare::CPart part(m_share, StoredBytes() + kSideBytes);
        if (m_interrupted)
            return true;
        const std::size_t threads =
            1 + part.Extend(kThreadBytes, std::min(m_share.ThreadsOfOne(), MostThreads()) - 1);
        const CTransferReport report;
        const SStoredLoad source = m_source.TakeOpen(
            [&](std::istream& stream) { return m_storedKind->load(stream, threads); });
        if (source.coef == nullptr)
            return false;
        if (!IsTurnable(source.status, report) || report.WasMemoryRefused())
            return true;
        const std::uint32_t code = m_request.angle.code;
        const CQuarterTurn turn(code, m_outcome.size.width, m_outcome.size.height);
        m_outcome.turnedSize = turn.TurnedSize();
        Save([&](const wchar_t* path) {
            COutputFile file;
            if (!OpenWritten(file, path, std::ios::out | std::ios::trunc))
                return m_storedKind->openFailed;
            const Status status = source.coef->WriteTurned(file, m_outcome.size, code, threads);
            CloseWritten(file);
            return status;
        });
        return true;
    }

    void TurnThroughMap() {
        // Both maps, and the larger of the file's own elements and those of the turned file.
        const PixelSize& size = m_outcome.size;
        const PixelSize turnedSize =
            CQuarterTurn(m_request.angle.code, size.width, size.height).TurnedSize();
        const CWorkShare::CPart part(
            m_share, PixelsOf(size) * (2 * kMapBytes + sizeof(SMatrixCoef)) + StoredBytes() +
                         std::max(LargestStoreBytes(m_ownSize), LargestStoreBytes(turnedSize)) +
                         kSideBytes);
        CChromaCorrectCoef source;
        if (m_interrupted || !Size(source) || !Load(source) || m_interrupted)
            return;
        CChromaCorrectCoef turned;
        const auto width = static_cast<std::int32_t>(m_outcome.size.width);
        const auto height = static_cast<std::int32_t>(m_outcome.size.height);
        TurnMap(source, width, height, m_request.angle.code, turned);
        source.Reset();
        if (!turned.IsEmpty() && !turned.HasStorage()) {
            Fail("not enough memory for the turned map");
            return;
        }
        m_outcome.turnedSize = {turned.Width(), turned.Height()};
        Save([&](const wchar_t* path) { return FindExportKind(m_name)->save(turned, path); });
    }

    /// So many that what they have on their way stays below the file's own pixels.
    std::size_t MostThreads() const {
        constexpr std::uint64_t kOwnBytes = std::uint64_t{16} << 20; // for each
        return static_cast<std::size_t>(2 + StoredBytes() / kOwnBytes);
    }

    /// The bytes of the file's own pixels in memory.
    std::uint64_t StoredBytes() const {
        return PixelsOf(m_ownSize) * (m_storedKind == nullptr ? 0 : m_storedKind->elementBytes);
    }

    /// Gives the map its memory; without any there is nothing that even a lenient run could write.
    bool Size(CChromaCorrectCoef& source) {
        source.Resize(static_cast<std::int32_t>(m_outcome.size.width),
                      static_cast<std::int32_t>(m_outcome.size.height));
        if (source.IsEmpty() || source.HasStorage())
            return true;
        FailForMemory();
        return false;
    }

    void FailForMemory() {
        Fail(fmt::format("not enough memory for {} x {} pixels", m_outcome.size.width,
                         m_outcome.size.height));
    }

    /// Loads the map; false when the file is not to be turned.
    bool Load(CChromaCorrectCoef& source) {
        const CTransferReport report;
        const Status status = m_source.Take(
            [&](std::istream& stream) { return m_loadKind.loadStream(source, stream); });
        return IsTurnable(status, report);
    }

    /// Tells what a load lacks; whether the file is turned all the same.
    bool IsTurnable(Status status, const CTransferReport& report) {
        for (std::string& problem : DescribeReadProblems(status, report))
            Fail(std::move(problem));
        if (m_source.HasOtherSize())
            Fail("its size changed while it was read");
        m_outcome.notes = DescribeReadNotes(report);
        return !m_outcome.HasFailed() || m_request.lenient;
    }

    /// Lets `write(path)` make the turned file.
    template <class Write>
    void Save(const Write& write) {
        if (m_interrupted)
            return;
        auto output = m_target.Begin(ExportName(m_name, m_request.angle.text));
        const CTransferReport report;
        const Status status = write(output->Path().c_str());
        if (std::string problem = DescribeWriteProblem(status, report); !problem.empty()) {
            Fail(std::move(problem));
            return;
        }
        auto lines = SumBoth(output->Path(), output->FinalName());
        if (!lines || !FindLosses())
            return;
        m_output = std::move(output);
        m_outcome.outputName = WideToShownUtf8(m_output->FinalName());
        m_outcome.manifestLines = *std::move(lines);
        if (IsLink(WithSeparator(m_request.sourceFolder) + m_name))
            m_outcome.notes.emplace_back("is a link: what it leads to was turned");
    }

    /// False when the source can no longer be read.
    bool FindLosses() {
        if (m_loadKind.describeStreamLosses == nullptr || !m_source.IsOpen())
            return true;
        const CTransferReport report;
        std::vector<std::string> losses = m_source.TakeOpen(m_loadKind.describeStreamLosses);
        if (report.HasReadFailed()) {
            for (std::string& problem : DescribeReadProblems(S_OK, report))
                Fail(std::move(problem));
            return false;
        }
        m_outcome.losses = std::move(losses);
        return true;
    }

    void Fail(std::string problem) { m_outcome.problems.push_back(std::move(problem)); }
    void FailWithReason(const char* problem, int error) { Fail(WithReason(problem, error)); }

    const SRotationRequest& m_request;
    const std::atomic<bool>& m_interrupted;
    CWorkShare& m_share;
    COutputFolder& m_target;
    const std::wstring& m_name;
    const SFileKind& m_loadKind;
    const SStoredKind* m_storedKind; ///< null when the file must go through a map
    CSourceFile m_source;
    std::optional<std::string> m_sourceSum; ///< of an open source, when a manifest is wanted
    PixelSize m_ownSize;                    ///< that the file tells, 0 × 0 when it tells none
    SFileOutcome m_outcome;
    std::unique_ptr<CTemporaryOutput> m_output; ///< once it is written
};

/// How many outputs are brought to the disk together, and told then.
constexpr std::size_t kFilesOfSync = 32;
/// How many of them at a time: the threads wait for the disk and take no processor.
constexpr std::size_t kSyncsAtOnce = 8;
/// How long a finished file waits for others where one thread does all the work.
constexpr std::chrono::milliseconds kLongestWait{200};
/// How many outputs may lie in the target folder without their names: those of one sync, and as many
/// that are turned meanwhile.
constexpr std::size_t kFilesAhead = 2 * kFilesOfSync;

/// Gives the outputs of turned files their names. What it has gone through is true on the disk, too.
class CKeeper {
  public:
    CKeeper(COutputFolder& target, const std::atomic<bool>& interrupted)
        : m_target(target), m_interrupted(interrupted) {}

    /// In the order of the files, which decides where two have one name.
    void Keep(std::vector<STurnedFile>& files) {
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

  private:
    /// The `errno` values of what did not reach the disk.
    std::vector<int> Sync(const std::vector<STurnedFile>& files) const {
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

    /// The files before this one have their names, whatever it lacks.
    bool KeepOrRefuse(STurnedFile& file, int error) {
        try {
            return Keep(file, error);
        } catch (const std::bad_alloc&) {
            Drop(file);
            file.isMemoryRefused = true;
            return false;
        }
    }

    bool Keep(STurnedFile& file, int error) {
        if (m_interrupted) { // asked once: what has its final name is also told of
            file.outcome.interrupted = true;
            Drop(file);
            return false;
        }
        if (error != 0) {
            Fail(file, DescribeSyncProblem(error));
            return false;
        }
        const SKeptOutput kept = m_target.Keep(*file.output);
        if (kept.isKept)
            return true;
        Fail(file, kept.sameEntryAs.empty() ? DescribeRenameProblem(kept.error)
                                            : DescribeSharedName(kept.sameEntryAs));
        return false;
    }

    static void Fail(STurnedFile& file, std::string problem) {
        Drop(file);
        file.outcome.problems.push_back(std::move(problem));
    }

    /// Nothing is told to be written.
    static void Drop(STurnedFile& file) {
        file.output.reset();
        file.outcome.outputName.clear();
        file.outcome.losses.clear();
        file.outcome.manifestLines.clear();
    }

    static std::string DescribeSharedName(const std::wstring& other) {
        return fmt::format("cannot be written: its name means the file {} in the target folder, "
                           "which this run wrote before",
                           WideToShownUtf8(other));
    }

    COutputFolder& m_target;
    const std::atomic<bool>& m_interrupted;
};

struct KnownFiles {
    bool isDenied = false;              ///< the folder may not be read
    int error = 0;                      ///< the `errno` value of what ended the listing early
    std::vector<std::wstring> names;    ///< sorted
    std::vector<std::string> unnamable; ///< of a known kind, but not valid UTF-8
};

KnownFiles FindKnownFiles(const std::wstring& folder) {
    KnownFiles known;
    const FolderListing listing = ListEntries(folder);
    known.isDenied = listing.error == EACCES && listing.entries.empty();
    known.error = listing.error;
    for (const FolderEntry& entry : listing.entries)
        if (entry.kind == EntryKind::File && FindLoadKind(entry.name) != nullptr)
            known.names.push_back(entry.name);
    std::sort(known.names.begin(), known.names.end());
    for (const std::string& raw : listing.unnamedByUtf8)
        if (FindLoadKind(std::wstring(raw.begin(), raw.end())) != nullptr)
            known.unnamable.push_back(raw);
    std::sort(known.unnamable.begin(), known.unnamable.end());
    return known;
}

/// Why the run cannot leave a manifest there; empty when it can, or none is wanted.
std::string FindManifestObstacle(const std::wstring& manifest) {
    if (manifest.empty())
        return {};
    const std::string shown = WideToShownUtf8(manifest);
    const std::wstring folder = FolderPart(manifest);
    const std::wstring name = manifest.substr(folder.size());
    if (PathExists(manifest))
        return fmt::format("the manifest {} exists already: choose another name", shown);
    if (!folder.empty() && !IsFolder(folder))
        return fmt::format("the folder of the manifest {} does not exist", shown);
    // A later run would take it for a cabinet.
    if (FindLoadKind(name) != nullptr)
        return fmt::format(
            "the manifest {} has the name of a coefficient file: choose another name", shown);
    return {};
}

/// Why nothing can be done; empty when the run can begin.
std::string FindObstacle(const SRotationRequest& request) {
    const std::string source = WideToShownUtf8(request.sourceFolder);
    const std::string target = WideToShownUtf8(request.targetFolder);
    if (!PathExists(request.sourceFolder))
        return fmt::format("the source folder {} does not exist", source);
    if (!IsFolder(request.sourceFolder))
        return fmt::format("the source {} is not a folder", source);
    if (!PathExists(request.targetFolder))
        return fmt::format("the target folder {} does not exist", target);
    if (!IsFolder(request.targetFolder))
        return fmt::format("the target {} is not a folder", target);
    if (IsSameEntry(request.sourceFolder, request.targetFolder))
        return "source and target are the same folder: choose another target, so that the source "
               "stays as it is";
    return FindManifestObstacle(request.manifest);
}

std::string FindObstacle(const SRotationRequest& request, const KnownFiles& known) {
    const std::size_t count = known.names.size() + known.unnamable.size();
    const std::string source = WideToShownUtf8(request.sourceFolder);
    if (known.isDenied)
        return fmt::format("the source folder {} may not be read", source);
    if (known.error != 0)
        return fmt::format("the source folder {} cannot be listed: {}", source,
                           SystemErrorText(known.error));
    if (count == 0)
        return fmt::format("there is no coefficient file in {}", source);
    if (request.wholeScreen && count != 1)
        return fmt::format("a whole screen is exactly one coefficient file, but {} holds {}",
                           source, count);
    return {};
}

/// Why `lines` are not the output's content, on the disk where that is wanted; empty when they are.
std::string WriteLines(const CTemporaryOutput& output, const std::string& lines, bool sync) {
    const CTransferReport report;
    COutputFile file;
    Status status = E_COEF_OPENFAILED;
    if (OpenWritten(file, output.Path().c_str(), std::ios::out | std::ios::trunc)) {
        file.write(lines.data(), static_cast<std::streamsize>(lines.size()));
        CloseWritten(file);
        status = S_OK;
    }
    std::string problem = DescribeWriteProblem(status, report);
    if (const int error = problem.empty() && sync ? output.Sync() : 0; error != 0)
        problem = DescribeSyncProblem(error);
    return problem;
}

/// Why the manifest does not stand; empty when it does.
std::string WriteManifest(const std::wstring& manifest, const std::string& lines, bool sync) {
    const std::wstring part = FolderPart(manifest);
    COutputFolder folder(part.empty() ? L"." : part, sync);
    const auto output = folder.Begin(manifest.substr(part.size()));
    std::string problem = WriteLines(*output, lines, sync);
    if (problem.empty())
        if (const SKeptOutput kept = folder.Keep(*output); !kept.isKept)
            problem = WithReason("cannot be given its name", kept.error);
    if (problem.empty())
        if (const int error = folder.SyncNames(); error != 0)
            problem = DescribeFolderSyncProblem(error);
    return problem.empty() ? problem
                           : fmt::format("the manifest {} {}", WideToShownUtf8(manifest), problem);
}

SFileOutcome UnnamableOutcome(const std::string& raw) {
    SFileOutcome outcome;
    for (const char c : raw)
        outcome.name += static_cast<unsigned char>(c) < 0x80
                            ? std::string(1, c)
                            : fmt::format("\\x{:02X}", static_cast<unsigned char>(c));
    outcome.problems.emplace_back("passed over: its name is not valid UTF-8");
    return outcome;
}

/// The turn of a folder whose files are known.
class CFolderRun {
  public:
    CFolderRun(const SRotationRequest& request, const std::atomic<bool>& interrupted,
               const KnownFiles& known, COutputFolder& target, CRotationListener& listener)
        : m_request(request),
          m_interrupted(interrupted),
          m_known(known),
          m_target(target),
          m_listener(listener),
          m_share(known.names.size(), request.jobs, FreeMemory()) {}
    ~CFolderRun() { CMemoryBudget::Process().GiveBackKept(); }
    CFolderRun(const CFolderRun&) = delete;
    CFolderRun& operator=(const CFolderRun&) = delete;

    SRotationOutcome Run() {
        for (const std::string& raw : m_known.unnamable)
            Deliver(UnnamableOutcome(raw));
        TurnAll();
        if (!m_manifestLines.empty())
            m_total.manifestError =
                WriteManifest(m_request.manifest, m_manifestLines, m_request.sync);
        const bool isDone = m_total.failed == 0 && m_total.manifestError.empty();
        if (m_interrupted)
            m_total.end = ERotationEnd::Interrupted;
        else
            m_total.end = isDone ? ERotationEnd::AllDone : ERotationEnd::SomeFailed;
        return m_total;
    }

  private:
    static std::uint64_t FreeMemory() {
        const CMemoryBudget& budget = CMemoryBudget::Process();
        return budget.Limit() - std::min(budget.Outstanding(), budget.Limit());
    }

    void TurnAll() {
        const auto turn = [this](std::size_t i) { return TurnFile(m_known.names[i]); };
        // A file that is done waits for the disk, never for the next one: one job has its thread, too.
        COrderedWork<STurnedFile, decltype(turn)> turned(m_known.names.size(), m_request.jobs, turn,
                                                         kFilesAhead, m_target.IsSynced() ? 1 : 2);
        CKeeper keeper(m_target, m_interrupted);
        std::size_t taken = 0;
        while (taken < m_known.names.size()) {
            std::vector<STurnedFile> files = TakeTogether(turned, m_known.names.size() - taken);
            keeper.Keep(files);
            DeliverAll(files, taken);
            taken += files.size();
        }
    }

    /// Tells of the files from number `first` on. Where memory is refused for the telling of one, the
    /// others are told all the same: those that have their names.
    void DeliverAll(const std::vector<STurnedFile>& files, std::size_t first) {
        bool isMemoryRefused = false;
        for (std::size_t i = 0; i < files.size(); ++i) {
            try {
                if (files[i].isMemoryRefused)
                    Deliver(RefusedOutcome(m_known.names[first + i]));
                else
                    Deliver(files[i].outcome);
            } catch (const std::bad_alloc&) {
                isMemoryRefused = true;
            }
        }
        if (isMemoryRefused)
            throw std::bad_alloc();
    }

    /// Throws nothing: on another thread there is nobody to catch it.
    STurnedFile TurnFile(const std::wstring& name) {
        STurnedFile file;
        try {
            file = CFileRotation(m_request, m_interrupted, m_share, m_target, name).Run();
        } catch (const std::bad_alloc&) {
            file.isMemoryRefused = true;
        }
        m_share.Finish();
        return file;
    }

    /// The next file, and those up to `most` that are finished with it, where they are synced.
    template <class Turned>
    std::vector<STurnedFile> TakeTogether(Turned& turned, std::size_t most) const {
        most = std::min(most, m_target.IsSynced() ? kFilesOfSync : 1);
        const auto begin = std::chrono::steady_clock::now();
        const auto isSoon = [&] {
            return turned.HasThreads() ? turned.IsReady()
                                       : std::chrono::steady_clock::now() - begin < kLongestWait;
        };
        std::vector<STurnedFile> files;
        do
            files.push_back(turned.Take());
        while (files.size() < most && isSoon());
        return files;
    }

    static SFileOutcome RefusedOutcome(const std::wstring& name) {
        SFileOutcome outcome;
        outcome.name = WideToShownUtf8(name);
        outcome.problems.emplace_back("not enough memory");
        return outcome;
    }

    void Deliver(const SFileOutcome& outcome) {
        m_total.written += outcome.outputName.empty() ? 0 : 1;
        m_total.failed += outcome.HasFailed() ? 1 : 0;
        if (!outcome.interrupted || outcome.HasFailed())
            m_listener.OnFile(outcome, ++m_done, m_known.names.size() + m_known.unnamable.size());
        m_manifestLines += outcome.manifestLines;
    }

    const SRotationRequest& m_request;
    const std::atomic<bool>& m_interrupted;
    const KnownFiles& m_known;
    COutputFolder& m_target;
    CRotationListener& m_listener;
    CWorkShare m_share;
    std::size_t m_done = 0;
    std::string m_manifestLines; ///< of the files that were told as written
    SRotationOutcome m_total;
};

SRotationOutcome NothingToDo(std::string why) {
    SRotationOutcome outcome;
    outcome.end = ERotationEnd::NothingToDo;
    outcome.error = std::move(why);
    return outcome;
}

} // namespace

SRotationOutcome RotateFolder(const SRotationRequest& request, const std::atomic<bool>& interrupted,
                              CRotationListener& listener) {
    if (std::string obstacle = FindObstacle(request); !obstacle.empty())
        return NothingToDo(std::move(obstacle));
    const KnownFiles known = FindKnownFiles(WithSeparator(request.sourceFolder));
    if (std::string obstacle = FindObstacle(request, known); !obstacle.empty()) {
        SRotationOutcome outcome = NothingToDo(std::move(obstacle));
        if (known.error != 0 && !known.isDenied)
            outcome.end = ERotationEnd::SomeFailed;
        return outcome;
    }
    COutputFolder target(request.targetFolder, request.sync);
    if (const int error = target.SyncNames(); error != 0)
        return NothingToDo(fmt::format("the target folder {} cannot be synced: {}",
                                       WideToShownUtf8(request.targetFolder),
                                       SystemErrorText(error)));
    target.RemoveAbandoned();
    return CFolderRun(request, interrupted, known, target, listener).Run();
}

} // namespace trevolt
