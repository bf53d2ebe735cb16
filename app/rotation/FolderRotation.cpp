#include "trevolt/FolderRotation.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <new>
#include <random>

#include <fmt/format.h>

#include "app/rotation/Manifest.h"
#include "app/rotation/SourceFile.h"
#include "app/rotation/StoredKinds.h"
#include "app/rotation/WorkShare.h"
#include "coef/WordObjects.h"
#include "common/OrderedJobs.h"
#include "common/WrittenFile.h"
#include "platform/FileStream.h"
#include "platform/FileSystem.h"
#include "platform/Process.h"
#include "platform/SystemError.h"
#include "trevolt/FileKinds.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

/// A file under work in the target folder, removed unless it became the output.
class CTemporaryOutput {
  public:
    CTemporaryOutput(const std::wstring& folder, const std::wstring& outputName, std::size_t number)
        : m_final(folder + outputName),
          m_path(folder + L".trevolt-" + std::to_wstring(ProcessId()) + L"-" + RunMark() + L"-" +
                 std::to_wstring(number) + LastExtension(outputName)) {}
    ~CTemporaryOutput() {
        if (!m_kept)
            RemoveFile(m_path);
    }
    CTemporaryOutput(const CTemporaryOutput&) = delete;
    CTemporaryOutput& operator=(const CTemporaryOutput&) = delete;

    const std::wstring& Path() const { return m_path; }
    /// False when the output cannot be given its name; `errno` then tells as after `ReplaceWith`.
    bool Keep() {
        m_kept = ReplaceWith(m_path, m_final);
        return m_kept;
    }

  private:
    /// Keeps runs apart that share a target folder but not a list of processes.
    static const std::wstring& RunMark() {
        static const std::wstring mark = std::to_wstring(std::random_device{}());
        return mark;
    }
    static std::wstring LastExtension(const std::wstring& name) {
        const std::size_t dot = name.rfind(L'.');
        return dot == std::wstring::npos ? L"" : name.substr(dot);
    }

    std::wstring m_final;
    std::wstring m_path;
    bool m_kept = false;
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

/// One file's way from the source folder to the target folder.
class CFileRotation {
  public:
    CFileRotation(const SRotationRequest& request, const std::atomic<bool>& interrupted,
                  CWorkShare& share, const std::wstring& name, std::size_t number)
        : m_request(request),
          m_interrupted(interrupted),
          m_share(share),
          m_name(name),
          m_number(number),
          m_loadKind(*FindLoadKind(name)),
          m_storedKind(FindStoredKind(name)) {}

    SFileOutcome Run() {
        m_outcome.name = WideToShownUtf8(m_name);
        try {
            Turn();
        } catch (const std::bad_alloc&) {
            Fail("not enough memory");
        }
        m_outcome.interrupted = m_interrupted && m_outcome.outputName.empty();
        m_share.Finish();
        return m_outcome;
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

    /// Lets `write(path)` make the turned file and gives it its name.
    template <class Write>
    void Save(const Write& write) {
        if (m_interrupted)
            return;
        const std::wstring outputName = ExportName(m_name, m_request.angle.text);
        CTemporaryOutput output(WithSeparator(m_request.targetFolder), outputName, m_number);
        const CTransferReport report;
        const Status status = write(output.Path().c_str());
        if (std::string problem = DescribeWriteProblem(status, report); !problem.empty())
            Fail(std::move(problem));
        else if (auto lines = SumBoth(output.Path(), outputName); !lines)
            return;
        else if (m_interrupted) // asked once: what has its final name is also told of
            return;
        else if (!output.Keep())
            Fail(DescribeRenameProblem(errno));
        else
            NoteWritten(outputName, *std::move(lines));
    }

    void NoteWritten(const std::wstring& outputName, std::string manifestLines) {
        m_outcome.outputName = WideToShownUtf8(outputName);
        m_outcome.manifestLines = std::move(manifestLines);
        if (m_loadKind.describeStreamLosses != nullptr && m_source.IsOpen())
            m_outcome.losses = m_loadKind.describeStreamLosses(m_source.FirstByte());
    }

    void Fail(std::string problem) { m_outcome.problems.push_back(std::move(problem)); }
    void FailWithReason(const char* problem, int error) { Fail(WithReason(problem, error)); }

    const SRotationRequest& m_request;
    const std::atomic<bool>& m_interrupted;
    CWorkShare& m_share;
    const std::wstring& m_name;
    std::size_t m_number;
    const SFileKind& m_loadKind;
    const SStoredKind* m_storedKind; ///< null when the file must go through a map
    CSourceFile m_source;
    std::optional<std::string> m_sourceSum; ///< of an open source, when a manifest is wanted
    PixelSize m_ownSize;                    ///< that the file tells, 0 × 0 when it tells none
    SFileOutcome m_outcome;
};

struct KnownFiles {
    bool denied = false;                ///< the folder may not be read
    std::vector<std::wstring> names;    ///< sorted
    std::vector<std::string> unnamable; ///< of a known kind, but not valid UTF-8
};

KnownFiles FindKnownFiles(const std::wstring& folder) {
    KnownFiles known;
    const FolderListing listing = ListEntries(folder);
    known.denied = listing.denied;
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
    if (known.denied)
        return fmt::format("the source folder {} may not be read", source);
    if (count == 0)
        return fmt::format("there is no coefficient file in {}", source);
    if (request.wholeScreen && count != 1)
        return fmt::format("a whole screen is exactly one coefficient file, but {} holds {}",
                           source, count);
    return {};
}

/// Why the manifest does not stand; empty when it does.
std::string WriteManifest(const std::wstring& manifest, const std::string& lines,
                          std::size_t number) {
    const std::wstring folder = FolderPart(manifest);
    CTemporaryOutput output(folder, manifest.substr(folder.size()), number);
    const CTransferReport report;
    COutputFile file;
    Status status = E_COEF_OPENFAILED;
    if (OpenWritten(file, output.Path().c_str(), std::ios::out | std::ios::trunc)) {
        file.write(lines.data(), static_cast<std::streamsize>(lines.size()));
        CloseWritten(file);
        status = S_OK;
    }
    std::string problem = DescribeWriteProblem(status, report);
    if (problem.empty() && !output.Keep())
        problem = WithReason("cannot be given its name", errno);
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

} // namespace

SRotationOutcome RotateFolder(const SRotationRequest& request, const std::atomic<bool>& interrupted,
                              CRotationListener& listener) {
    SRotationOutcome total;
    total.end = ERotationEnd::NothingToDo;
    total.error = FindObstacle(request);
    if (!total.error.empty())
        return total;
    const KnownFiles known = FindKnownFiles(WithSeparator(request.sourceFolder));
    total.error = FindObstacle(request, known);
    if (!total.error.empty())
        return total;

    const std::size_t count = known.names.size() + known.unnamable.size();
    std::size_t done = 0;
    std::string manifestLines;
    const auto deliver = [&](const SFileOutcome& outcome) {
        manifestLines += outcome.manifestLines;
        total.written += outcome.outputName.empty() ? 0 : 1;
        total.failed += outcome.HasFailed() ? 1 : 0;
        if (!outcome.interrupted || outcome.HasFailed())
            listener.OnFile(outcome, ++done, count);
    };
    for (const std::string& raw : known.unnamable)
        deliver(UnnamableOutcome(raw));
    CMemoryBudget& budget = CMemoryBudget::Process();
    const std::uint64_t outstanding = std::min(budget.Outstanding(), budget.Limit());
    CWorkShare share(known.names.size(), request.jobs, budget.Limit() - outstanding);
    RunOrdered<SFileOutcome>(
        known.names.size(), request.jobs,
        [&](std::size_t i) {
            return CFileRotation(request, interrupted, share, known.names[i], i).Run();
        },
        deliver);
    budget.GiveBackKept();
    if (!manifestLines.empty())
        total.error = WriteManifest(request.manifest, manifestLines, known.names.size());
    const bool isDone = total.failed == 0 && total.error.empty();
    if (interrupted)
        total.end = ERotationEnd::Interrupted;
    else
        total.end = isDone ? ERotationEnd::AllDone : ERotationEnd::SomeFailed;
    return total;
}

} // namespace trevolt
