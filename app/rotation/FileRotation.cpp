#include "app/rotation/FileRotation.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "app/rotation/CoefFile.h"
#include "app/rotation/Manifest.h"
#include "app/rotation/OutputFile.h"
#include "app/rotation/SourceFile.h"
#include "app/rotation/StoredKinds.h"
#include "app/rotation/WordExtras.h"
#include "coef/WordObjects.h"
#include "common/WrittenFile.h"
#include "platform/FileStream.h"
#include "platform/FileSystem.h"
#include "platform/SystemError.h"
#include "trevolt/FileKinds.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

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
/// How much of a source is copied at a time.
constexpr std::size_t kCopyBytes = std::size_t{256} << 10;
/// A map's bytes a pixel: an element and a gain.
constexpr std::uint64_t kMapBytes = sizeof(SMatrixCoef) + sizeof(float);

/// `name` without the folders before it.
std::wstring NamePart(const std::wstring& name) { return name.substr(name.rfind(L'/') + 1); }

/// One file's way from the source folder to its output, which has yet to get its name.
class CFileRotation {
  public:
    CFileRotation(const SRotationRequest& request, const std::atomic<bool>& interrupted,
                  CWorkShare& share, COutputFolder& target, const SPlannedTurn& planned)
        : m_request(request),
          m_interrupted(interrupted),
          m_share(share),
          m_target(target),
          m_planned(planned),
          m_name(NamePart(planned.name)),
          m_loadKind(*FindLoadKind(m_name)),
          m_storedKind(FindStoredKind(m_name)),
          m_extrasKind(request.keepExtras && !IsCopy() ? FindWordKind(m_loadKind) : std::nullopt) {}

    STurnedFile Run() {
        const auto begin = std::chrono::steady_clock::now();
        m_outcome.name = WideToShownUtf8(m_planned.name);
        m_outcome.angleCode = m_planned.angle.code;
        if (!IsOutputTaken())
            Turn();
        m_outcome.interrupted = m_interrupted && m_output == nullptr;
        m_outcome.took = std::chrono::duration_cast<std::chrono::microseconds>(
            std::chrono::steady_clock::now() - begin);
        if (m_request.thumbnail && !m_interrupted)
            TakePictures();
        return {std::move(m_outcome), std::move(m_output), false,
                m_request.keepTimes ? m_planned.Path() : std::wstring()};
    }

  private:
    void Turn() {
        if (m_interrupted)
            return;
        m_source.Open(m_planned.Path());
        if (!IsWithinBytes() || !SumSource() || !FindSize() || !HasPlaceForOrigin())
            return;
        if (!TurnStored())
            TurnThroughMap();
        if (m_request.verify && m_output != nullptr && !IsRightOnDisk())
            Drop();
    }

    /// What comes to stand there meanwhile is seen when the output gets its name.
    bool IsOutputTaken() {
        if (!m_planned.isTaken)
            return false;
        m_outcome.skipped = m_planned.isSkipped;
        if (m_outcome.skipped)
            return true;
        const std::string name = WideToShownUtf8(m_planned.outputName);
        if (std::string obstacle = DescribeIrreplaceable(OutputPath(), name); !obstacle.empty()) {
            Fail(std::move(obstacle));
            return true;
        }
        if (m_request.existing == EExistingOutput::Replace)
            return false;
        Fail(DescribeExistingOutput(name));
        return true;
    }

    std::wstring OutputPath() const {
        return WithSeparator(m_request.targetFolder) + m_planned.outputName;
    }

    bool IsWithinBytes() {
        const std::uint64_t limit = m_request.limits.fileBytes;
        if (!m_source.IsOpen() || limit == SRotationLimits{}.fileBytes)
            return true;
        const auto bytes = BytesToEnd(m_source.FirstByte());
        if (!bytes)
            FailWithReason("its bytes cannot be counted, which are limited",
                           m_source.SystemError());
        else if (*bytes > limit)
            Fail(fmt::format("its {} bytes are above the limit of {}", *bytes, limit));
        return bytes && *bytes <= limit;
    }

    /// Empty, with the cause told, where there is none.
    std::string SumOfSource() {
        SSum sum = Sha256Of(m_source.FirstByte());
        sum.error = m_source.SystemError(); // also of the seek to the first byte
        if (!sum.IsThere())
            Fail(DescribeLackOfSum(sum, "cannot be read", "its SHA-256 sum"));
        return std::move(sum.digits);
    }

    /// The same of what was written.
    std::string SumOfOutput(const std::wstring& written) {
        SSum sum = Sha256OfFile(written);
        if (!sum.IsThere())
            Fail(DescribeLackOfSum(sum, "cannot be read back", "the SHA-256 sum of its output"));
        return std::move(sum.digits);
    }

    bool WantsSums() const {
        return (m_request.sums || !m_request.manifest.empty()) && !m_request.dryRun;
    }

    bool SumSource() {
        if (!WantsSums() || !m_source.IsOpen())
            return true;
        m_outcome.sourceSum = SumOfSource();
        return !m_outcome.sourceSum.empty();
    }

    /// Fails where not.
    bool IsSourceUnchanged() {
        if (m_outcome.sourceSum.empty())
            return true;
        const std::string sum = SumOfSource();
        if (!sum.empty() && sum != m_outcome.sourceSum)
            Fail("changed while it was turned");
        return sum == m_outcome.sourceSum;
    }

    /// Sums what was written, where that is wanted; false when the file fails. The source is summed
    /// before the first look at it and behind the last one: what was turned is then what both found.
    bool SumBoth(const std::wstring& written) {
        if (!WantsSums())
            return true;
        if (!IsSourceUnchanged())
            return false;
        m_outcome.outputSum = SumOfOutput(written);
        return !m_outcome.outputSum.empty() && (m_request.manifest.empty() || ListSums());
    }

    /// Makes the manifest's lines; false when the file fails.
    bool ListSums() {
        const auto writtenLine = ManifestLine(m_outcome.outputSum, OutputPath());
        const auto sourceLine = m_outcome.sourceSum.empty()
                                    ? std::string()
                                    : ManifestLine(m_outcome.sourceSum, m_planned.Path());
        if (!writtenLine || !sourceLine) {
            Fail("its name cannot stand in a manifest: it has no UTF-8 form");
            return false;
        }
        m_outcome.manifestLines = *sourceLine + *writtenLine;
        return true;
    }

    bool FindSize() {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        const CTransferReport report;
        const Status status = m_source.Take(
            [&](std::istream& stream) { return m_loadKind.readStreamSize(stream, width, height); });
        if (std::string problem =
                DescribeMapSize(m_loadKind, SizeToldBy(m_loadKind, width, height));
            !Failed(status) && !problem.empty()) {
            Fail(std::move(problem));
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
        m_outcome.ownSize = m_ownSize;
        m_outcome.size = m_request.size.value_or(m_ownSize);
        return true;
    }

    PixelSize TurnedSize() const {
        const PixelSize& size = m_outcome.size;
        return IsCopy() ? size
                        : CQuarterTurn(m_planned.angle.code, size.width, size.height).TurnedSize();
    }

    /// Fails where the file cannot keep its origin.
    bool HasPlaceForOrigin() {
        if (!m_extrasKind || !m_source.IsOpen())
            return true;
        std::string problem = m_source.TakeOpen([&](std::istream& stream) {
            return DescribeOriginProblem(*m_extrasKind, stream, m_outcome.size,
                                         m_planned.angle.code, m_request.wall);
        });
        const bool hasPlace = problem.empty();
        if (!hasPlace)
            Fail(std::move(problem));
        return hasPlace;
    }

    /// Turns the file in its own elements; false where only a map can tell or write what it holds.
    bool TurnStored() {
        if (m_storedKind == nullptr || !m_source.IsOpen() || !IsPossibleMap(m_outcome.size))
            return false;
        if (!m_share.Holds(PixelsOf(m_outcome.size) *
                           (m_storedKind->elementBytes + ExtraBytes()))) {
            FailForMemory();
            return true;
        }
        CWorkShare::CPart part(m_share, StoredBytes() + kSideBytes);
        if (m_interrupted)
            return true;
        const std::size_t threads =
            1 + part.Extend(kThreadBytes, std::min(m_share.ThreadsOfOne(), MostThreads()) - 1);
        const CTransferReport report;
        const SStoredLoad source = m_source.TakeOpen([&](std::istream& stream) {
            return m_storedKind->load(stream, threads, KeptExtras());
        });
        if (source.coef == nullptr)
            return false;
        if (!IsTurnable(source.status, report))
            return true;
        Save([&](const wchar_t* path) {
            return WriteOutput(path, m_storedKind->openFailed, [&](COutputFile& file) {
                return source.coef->WriteTurned(file, m_outcome.size, m_planned.angle.code,
                                                threads);
            });
        });
        return true;
    }

    bool IsCopy() const { return m_planned.angle.code == 0; }

    /// Writes the source's own bytes, damaged or not. That they did not all come is noted.
    Status CopySource(const wchar_t* path) {
        return WriteOutput(path, E_COEF_OPENFAILED, [&](COutputFile& file) {
            return m_source.TakeOpen([&](std::istream& source) {
                if (!CopyBytes(source, file))
                    CTransferReport::NoteReadFailed();
                return S_OK;
            });
        });
    }

    /// Whether as many were read as the source has.
    static bool CopyBytes(std::istream& source, std::ostream& copy) {
        const auto bytes = BytesToEnd(source);
        std::uint64_t copied = 0;
        std::vector<char> piece(kCopyBytes);
        while (source.read(piece.data(), static_cast<std::streamsize>(piece.size())) ||
               source.gcount() > 0) {
            copy.write(piece.data(), source.gcount());
            copied += static_cast<std::uint64_t>(source.gcount());
        }
        return !source.bad() && copied == bytes;
    }

    /// What `write(file)` answers, or `openFailed`.
    template <class Write>
    static Status WriteOutput(const wchar_t* path, Status openFailed, const Write& write) {
        COutputFile file;
        if (!OpenWritten(file, path, std::ios::out | std::ios::trunc))
            return openFailed;
        const Status status = write(file);
        CloseWritten(file);
        return status;
    }

    void TurnThroughMap() {
        // Both maps, and the larger of the file's own elements and those of the turned file.
        const PixelSize& size = m_outcome.size;
        const PixelSize turnedSize = TurnedSize();
        const CWorkShare::CPart part(
            m_share, PixelsOf(size) * (2 * kMapBytes + sizeof(SMatrixCoef)) + StoredBytes() +
                         std::max(LargestStoreBytes(m_ownSize), TurnedStoreBytes(turnedSize)) +
                         kSideBytes);
        CChromaCorrectCoef source;
        if (m_interrupted || !Size(source) || !Load(source) || m_interrupted)
            return;
        CChromaCorrectCoef turned;
        const auto width = static_cast<std::int32_t>(m_outcome.size.width);
        const auto height = static_cast<std::int32_t>(m_outcome.size.height);
        if (!IsCopy())
            TurnMap(source, width, height, m_planned.angle.code, turned);
        source.Reset();
        if (!turned.IsEmpty() && !turned.HasStorage()) {
            Fail("not enough memory for the turned map");
            return;
        }
        Save([&](const wchar_t* path) { return SaveMap(turned, path); });
    }

    Status SaveMap(const CChromaCorrectCoef& turned, const wchar_t* path) const {
        const SFileKind& kind = *FindExportKind(m_name);
        const auto wordKind = FindWordKind(kind); // as that of every file that was loaded as one
        if (m_extras.header && wordKind)
            return SaveWordCoefFile(*wordKind, turned, path, m_extras, m_planned.angle.code,
                                    m_request.wall);
        return kind.save(turned, path);
    }

    /// A store at a kept origin touches up to a block more in each direction.
    std::uint64_t TurnedStoreBytes(const PixelSize& size) const {
        return m_extrasKind
                   ? LargestStoreBytes({size.width + kBlockWidth, size.height + kBlockHeight})
                   : LargestStoreBytes(size);
    }

    /// So many that what they have on their way stays below the file's own pixels.
    std::size_t MostThreads() const {
        constexpr std::uint64_t kOwnBytes = std::uint64_t{16} << 20; // for each
        return static_cast<std::size_t>(2 + StoredBytes() / kOwnBytes);
    }

    /// The bytes of the file's own pixels in memory.
    std::uint64_t StoredBytes() const {
        return PixelsOf(m_ownSize) *
               ((m_storedKind == nullptr ? 0 : m_storedKind->elementBytes) + ExtraBytes());
    }

    SExtrasOfTurn KeptExtras() const { return {m_extrasKind.has_value(), m_request.wall}; }

    /// A pixel's bytes beside its own that a file may have and keep.
    std::uint64_t ExtraBytes() const { return m_extrasKind ? sizeof(SWordCoef) : 0; }

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
        for (std::string& problem : DescribeLackOfMemory(m_source, m_loadKind, m_outcome.size))
            Fail(std::move(problem));
    }

    /// Loads the map; false when the file is not to be turned.
    bool Load(CChromaCorrectCoef& source) {
        const CTransferReport report;
        const Status status = m_source.Take([&](std::istream& stream) {
            return m_extrasKind ? LoadWordCoefFile(*m_extrasKind, source, stream, m_extras)
                                : m_loadKind.loadStream(source, stream);
        });
        return IsTurnable(status, report);
    }

    /// Tells what a load lacks; whether the file is turned all the same. Memory that was refused says
    /// nothing of what could be read.
    bool IsTurnable(Status status, const CTransferReport& report) {
        for (std::string& problem : DescribeReadProblems(status, report))
            Fail(std::move(problem));
        if (m_extrasKind)
            for (std::string& problem : DescribeExtraWordProblems(report))
                Fail(std::move(problem));
        NameOtherSize();
        if (!m_outcome.HasFailed() && PixelsOf(m_ownSize) == 0)
            Fail(kNoPixels);
        m_outcome.notes = DescribeReadNotes(report);
        return !m_outcome.HasFailed() ||
               (m_request.lenient && !report.WasMemoryRefused() && PixelsOf(m_outcome.size) != 0);
    }

    void NameOtherSize() {
        if (m_source.HasOtherSize() && !std::exchange(m_isOtherSizeNamed, true))
            Fail("its size changed while it was read");
    }

    /// Names what a look at the source lacked behind its load; false where it cannot be used.
    bool IsReadWell(const CTransferReport& report) {
        NameOtherSize();
        if (!report.HasReadFailed())
            return !m_outcome.HasFailed() || m_request.lenient;
        for (std::string& problem : DescribeReadProblems(S_OK, report))
            Fail(std::move(problem));
        return false;
    }

    /// Lets `write(path)` make the turned file.
    template <class Write>
    void Save(const Write& write) {
        if (m_interrupted)
            return;
        m_outcome.turnedSize = TurnedSize();
        if (!m_request.dryRun && !WriteUnderWork(write))
            return;
        if (!FindLosses()) {
            Drop();
            return;
        }
        m_outcome.outputName = WideToShownUtf8(m_planned.outputName);
        NoteSize();
        if (m_source.IsOpen() && IsLink(m_planned.Path()))
            m_outcome.notes.emplace_back("is a link: what it leads to was taken");
        if (m_request.dryRun)
            TryName();
    }

    /// Fails where the output could not be given its name, as far as that is seen without doing it.
    void TryName() {
        const int error = RefusalOfName(OutputPath());
        if (error == 0)
            return;
        Drop();
        Fail(DescribeRenameProblem(error));
    }

    /// Whether the output is written, with all that belongs to it but its name.
    template <class Write>
    bool WriteUnderWork(const Write& write) {
        auto output = m_target.Begin(m_planned.outputName);
        const CTransferReport report;
        const std::wstring& path = output->Path();
        const Status status = IsCopy() ? CopySource(path.c_str()) : write(path.c_str());
        if (std::string problem = DescribeWriteProblem(status, report); !problem.empty()) {
            Fail(std::move(problem));
            return false;
        }
        if (!IsReadWell(report))
            return false;
        if (!SumBoth(path)) {
            m_outcome.outputSum.clear();
            return false;
        }
        m_output = std::move(output);
        return true;
    }

    /// Nothing is written.
    void Drop() {
        m_output.reset();
        m_outcome.outputName.clear();
        m_outcome.losses.clear();
        m_outcome.outputSum.clear();
        m_outcome.manifestLines.clear();
    }

    void NoteSize() {
        const PixelSize& own = m_outcome.ownSize;
        const PixelSize& used = m_outcome.size;
        if (IsCopy() || own == PixelSize{} || own == used)
            return;
        const std::uint64_t common =
            PixelsOf({std::min(own.width, used.width), std::min(own.height, used.height)});
        std::vector<std::string> changes;
        if (PixelsOf(own) > common)
            changes.push_back(fmt::format("{} of its pixels are cut off", PixelsOf(own) - common));
        if (PixelsOf(used) > common)
            changes.push_back(fmt::format("{} are filled with defaults", PixelsOf(used) - common));
        m_outcome.notes.push_back(
            fmt::format("its own size is {} x {}, it was turned at {} x {}: {}", own.width,
                        own.height, used.width, used.height, fmt::join(changes, ", ")));
    }

    /// Whether what the disk holds of the output is what was written, and can be read.
    bool IsRightOnDisk() {
        const std::size_t problems = m_outcome.problems.size();
        const std::wstring& path = m_output->Path();
        const std::string written = SumOfOutput(path);
        if (written.empty())
            return false;
        if (const int error = m_output->Sync(); error != 0) {
            Fail(DescribeSyncProblem(error));
            return false;
        }
        DropCachedPages(path);
        const std::string read = SumOfOutput(path);
        if (read == written)
            ReadBack(path);
        else if (!read.empty())
            Fail("what was read back is not what was written");
        return m_outcome.problems.size() == problems;
    }

    /// Names what the kind's own reader finds wrong with the output.
    void ReadBack(const std::wstring& path) {
        if (IsCopy() || &m_loadKind != FindExportKind(m_name))
            return; // as damaged as its source, or of a kind that its name does not tell
        CSourceFile output;
        output.Open(path);
        const CTransferReport report;
        const Status status = output.Take([&](std::istream& stream) {
            return m_storedKind ? LoadStored(stream) : LoadMap(stream);
        });
        for (const std::string& problem : DescribeReadProblems(status, report))
            Fail(fmt::format("read back from the disk: {}", problem));
    }

    Status LoadStored(std::istream& stream) {
        const CWorkShare::CPart part(m_share, PixelsOf(m_outcome.turnedSize) *
                                                      (m_storedKind->elementBytes + ExtraBytes()) +
                                                  kSideBytes);
        const SStoredLoad loaded = m_storedKind->load(stream, 1, KeptExtras());
        return loaded.coef == nullptr ? E_COEF_BADFORMAT : loaded.status;
    }

    Status LoadMap(std::istream& stream) {
        const PixelSize& size = m_outcome.turnedSize;
        const CWorkShare::CPart part(m_share, PixelsOf(size) * (kMapBytes + sizeof(SMatrixCoef)) +
                                                  kSideBytes);
        CChromaCorrectCoef map;
        map.Resize(static_cast<std::int32_t>(size.width), static_cast<std::int32_t>(size.height));
        return m_loadKind.loadStream(map, stream);
    }

    /// False when the source can no longer be read.
    bool FindLosses() {
        if (m_loadKind.describeStreamLosses == nullptr || !m_source.IsOpen() || IsCopy())
            return true;
        const CTransferReport report;
        std::vector<std::string> losses = m_source.TakeOpen([&](std::istream& stream) {
            return m_extrasKind ? DescribeUnkeptExtras(*m_extrasKind, stream)
                                : m_loadKind.describeStreamLosses(stream);
        });
        m_outcome.losses = std::move(losses);
        return IsReadWell(report);
    }

    void TakePictures() {
        m_outcome.sourcePicture = PictureOf(m_planned.Path(), &m_loadKind, m_ownSize);
        if (m_output != nullptr)
            m_outcome.outputPicture =
                PictureOf(m_output->Path(), FindLoadKind(NamePart(m_planned.outputName)),
                          m_outcome.turnedSize);
    }

    static SThumbnail NoPicture(const char* lack) {
        SThumbnail none;
        none.lack = lack;
        return none;
    }

    /// Of what can be read of a file; none of one whose size is not known.
    SThumbnail PictureOf(const std::wstring& path, const SFileKind* kind, const PixelSize& size) {
        if (kind == nullptr || size == PixelSize{})
            return {};
        const CWorkShare::CPart part(m_share, PixelsOf(size) * (kMapBytes + sizeof(SMatrixCoef)) +
                                                  LargestStoreBytes(size) + kSideBytes);
        try {
            const SCoefLoad load = LoadCoefFile(path, *kind);
            return load.isRead ? m_request.thumbnail(*load.map) : NoPicture("not read");
        } catch (const std::bad_alloc&) {
            return NoPicture("not enough memory");
        }
    }

    void Fail(std::string problem) { m_outcome.problems.push_back(std::move(problem)); }
    void FailWithReason(const char* problem, int error) { Fail(WithSystemReason(problem, error)); }

    const SRotationRequest& m_request;
    const std::atomic<bool>& m_interrupted;
    CWorkShare& m_share;
    COutputFolder& m_target;
    const SPlannedTurn& m_planned;
    const std::wstring m_name; ///< without folders
    const SFileKind& m_loadKind;
    const SStoredKind* m_storedKind;       ///< null when the file must go through a map
    std::optional<EWordKind> m_extrasKind; ///< of a word file whose extras are kept
    SWordExtras m_extras;                  ///< that a map's way has loaded
    CSourceFile m_source;
    bool m_isOtherSizeNamed = false;
    PixelSize m_ownSize; ///< that the file tells, 0 × 0 when it tells none
    SFileOutcome m_outcome;
    std::unique_ptr<CTemporaryOutput> m_output; ///< once it is written
};

} // namespace

STurnedFile TurnFile(const SRotationRequest& request, const std::atomic<bool>& interrupted,
                     CWorkShare& share, COutputFolder& target,
                     const SPlannedTurn& planned) noexcept {
    STurnedFile file;
    try {
        file = CFileRotation(request, interrupted, share, target, planned).Run();
    } catch (const std::bad_alloc&) {
        file.isMemoryRefused = true;
    }
    share.Finish();
    return file;
}

} // namespace trevolt
