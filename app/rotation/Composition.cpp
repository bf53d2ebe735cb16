#include "app/rotation/Composition.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "app/rotation/CoefFile.h"
#include "app/rotation/ConversionLosses.h"
#include "app/rotation/LayoutTable.h"
#include "app/rotation/MapRegion.h"
#include "app/rotation/Obstacles.h"
#include "app/rotation/RectCover.h"
#include "app/rotation/StoredKinds.h"
#include "coef/WordObjects.h"
#include "platform/FileSystem.h"
#include "trevolt/FileKinds.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

std::string ShownSize(const PixelSize& size) {
    return fmt::format("{} x {}", size.width, size.height);
}

std::uint64_t CountOf(const PixelSize& size) {
    return static_cast<std::uint64_t>(size.width) * static_cast<std::uint64_t>(size.height);
}

/// Of a rectangle that is cut to a screen.
std::uint64_t CountOf(const SPixelRect& rect) {
    return CountOf(PixelSize{rect.Width(), rect.Height()});
}

std::wstring FileNameOf(const std::wstring& path) { return path.substr(FolderPart(path).size()); }

/// That the file tells; 0 × 0, with the problem told, where it tells none that a map can have.
PixelSize OwnSizeOf(const std::wstring& path, std::vector<std::string>& problems) {
    const SFileKind* const kind = FindLoadKind(FileNameOf(path));
    if (kind == nullptr) {
        problems.emplace_back("is no coefficient file by its name");
        return {};
    }
    if (KindOfEntry(path) == EntryKind::Other) { // a pipe would not come back
        problems.emplace_back("is neither a file nor a folder");
        return {};
    }
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    const CTransferReport report;
    const Status status = kind->readSize(path.c_str(), width, height);
    if (Failed(status) || report.HasReadFailed()) {
        problems = DescribeReadProblems(status, report);
        return {};
    }
    if (std::string problem = DescribeMapSize(*kind, SizeToldBy(*kind, width, height));
        !problem.empty())
        problems.push_back(std::move(problem));
    else if (width == 0 || height == 0)
        problems.emplace_back(kNoPixels);
    return problems.empty() ? PixelSize{width, height} : PixelSize{};
}

class CComposer {
  public:
    CComposer(const SCompositionRequest& request, const std::atomic<bool>& interrupted)
        : m_request(request), m_interrupted(interrupted) {
        m_result.output = WideToShownUtf8(request.output.path);
        m_result.files.resize(request.files.size());
    }

    SComposition Run() {
        FindKinds();
        if (HasErrors(ECompositionEnd::Refused))
            return std::move(m_result);
        FindRects();
        if (HasFailures())
            return std::move(m_result);
        FindSize();
        if (!HasErrors(ECompositionEnd::Refused))
            CheckPlaces();
        if (HasErrors(ECompositionEnd::Refused))
            return std::move(m_result);
        CheckOutput();
        if (!HasErrors(ECompositionEnd::SomeFailed))
            Compose();
        return std::move(m_result);
    }

  private:
    const std::string& NameOf(std::size_t i) const { return m_result.files[i].name; }

    bool HasErrors(ECompositionEnd end) {
        if (!m_result.errors.empty())
            m_result.end = end;
        return !m_result.errors.empty();
    }

    bool HasFailures() {
        const bool hasFailed = std::any_of(m_result.files.begin(), m_result.files.end(),
                                           [](const auto& file) { return !file.problems.empty(); });
        if (hasFailed)
            m_result.end = ECompositionEnd::SomeFailed;
        return hasFailed;
    }

    void FindKinds() {
        if (std::string problem = DescribeOutputName(m_request.output.path); !problem.empty())
            m_result.errors.push_back(std::move(problem));
        if (m_request.files.empty())
            m_result.errors.emplace_back("there is no file to put into a screen");
        CObstacles obstacles(m_result.errors);
        for (std::size_t i = 0; i < m_request.files.size(); ++i)
            if (std::string problem = DescribeInputObstacle(m_request.files[i].path);
                !problem.empty())
                obstacles.Add(m_request.files[i].origin + problem);
    }

    void FindRects() {
        for (std::size_t i = 0; i < m_request.files.size(); ++i)
            m_result.files[i] = MeasurePlaced(m_request.files[i]);
    }

    void FindSize() {
        PixelSize size = m_request.size.value_or(PixelSize{});
        if (!m_request.size)
            for (const SPlacedOutcome& file : m_result.files)
                size = {std::max<std::int64_t>(size.width, file.rect.right),
                        std::max<std::int64_t>(size.height, file.rect.bottom)};
        m_result.size = size;
        if (size.width < 1 || size.height < 1)
            m_result.errors.emplace_back("no pixel of any file lies in the screen");
        else if (size.width > kLargestMapSide || size.height > kLargestMapSide)
            m_result.errors.push_back(
                fmt::format("the files reach to {}, and a screen has at most {} in one direction",
                            ShownSize(size), kLargestMapSide));
        else if (const std::string tooMany = DescribePixelCount(size); !tooMany.empty())
            m_result.errors.push_back("a screen of " + tooMany);
    }

    void CheckPlaces() {
        for (const SPlacedOutcome& file : m_result.files)
            m_seen.push_back(CutTo(file.rect, m_result.size));
        if (m_request.allowOutside)
            NoteOutside();
        else
            CheckInside();
        if (!m_request.allowOverlap)
            CheckApart();
        m_result.uncovered = CountOf(m_result.size) - CoveredPixels(m_seen);
    }

    void NoteOutside() {
        for (std::size_t i = 0; i < m_seen.size(); ++i) {
            m_result.files[i].cut = CountOf(m_result.files[i].ownSize) - CountOf(m_seen[i]);
            if (CountOf(m_seen[i]) != 0)
                continue;
            m_result.files[i].isOutside = true;
            m_result.files[i].notes.push_back(
                fmt::format("lies wholly outside the screen of {}: none of its pixels is there",
                            ShownSize(m_result.size)));
        }
    }

    void CheckInside() {
        CObstacles obstacles(m_result.errors);
        for (std::size_t i = 0; i < m_result.files.size(); ++i)
            if (const SPixelRect& rect = m_result.files[i].rect; !IsWithin(rect, m_result.size))
                obstacles.Add(
                    fmt::format("{}{} takes {}, which is not all in the screen of {}: move "
                                "it, or allow what is outside to be cut",
                                m_request.files[i].origin, NameOf(i), ShownRect(rect),
                                ShownSize(m_result.size)));
    }

    void CheckApart() {
        CObstacles obstacles(m_result.errors);
        for (const SRectOverlap& overlap : FindOverlaps(m_seen))
            obstacles.Add(
                fmt::format("{}{} and {} overlap in {}: move one of them, or allow overlaps",
                            m_request.files[overlap.second].origin, NameOf(overlap.first),
                            NameOf(overlap.second), ShownRect(overlap.rect)));
    }

    void CheckOutput() {
        std::vector<std::wstring> inputs;
        for (const SPlacedFile& file : m_request.files)
            inputs.push_back(file.path);
        FailWith(DescribeOutputObstacle(m_request.output, inputs));
        const std::uint64_t bytes = ScreenBytes();
        if (!CMemoryBudget::Process().HasRoomFor(bytes))
            m_result.errors.push_back(
                fmt::format("not enough memory for a screen of {}: it takes {} MiB",
                            ShownSize(m_result.size), bytes >> 20));
    }

    void FailWith(const std::string& problem) {
        if (!problem.empty())
            m_result.errors.push_back(fmt::format("{}: {}", m_result.output, problem));
    }

    /// The screen's map, and what its writer makes of it.
    std::uint64_t ScreenBytes() const {
        const std::wstring name = FileNameOf(m_request.output.path);
        const std::uint64_t map = CountOf(m_result.size) * (sizeof(SMatrixCoef) + sizeof(float));
        if (FindWordKind(OutputKind()))
            return map + LargestStoreBytes(m_result.size);
        const SStoredKind* const stored = FindStoredKind(name);
        return map + CountOf(m_result.size) * (stored == nullptr ? 0 : stored->elementBytes);
    }

    void Compose() {
        CChromaCorrectCoef screen;
        screen.Resize(static_cast<std::int32_t>(m_result.size.width),
                      static_cast<std::int32_t>(m_result.size.height));
        if (!screen.HasStorage()) {
            m_result.errors.push_back(
                fmt::format("not enough memory for a screen of {}", ShownSize(m_result.size)));
            m_result.end = ECompositionEnd::SomeFailed;
            return;
        }
        for (std::size_t i = 0; i < m_request.files.size() && !m_interrupted; ++i)
            Put(m_request.files[i], m_result.files[i], m_seen[i], screen);
        if (m_request.allowOverlap)
            CountOverwritten();
        if (m_interrupted)
            m_result.end = ECompositionEnd::Interrupted;
        else if (!HasFailures() || m_request.lenient)
            Save(screen);
    }

    /// `seen` becomes empty where nothing of the file was put there.
    void Put(const SPlacedFile& file, SPlacedOutcome& outcome, SPixelRect& seen,
             CChromaCorrectCoef& screen) const {
        SPlacing placing = PlaceCoefFile(file.path, file.code, outcome.rect, screen);
        outcome.problems = std::move(placing.problems);
        if (!placing.isPut)
            seen = {};
        for (std::string& note : placing.notes)
            outcome.notes.push_back(std::move(note));
        outcome.losses = std::move(placing.losses);
        if (!placing.isPut)
            return;
        const SFileKind& kind = *FindLoadKind(FileNameOf(file.path));
        std::string note = DescribeDefaultsBeside(FormOfKind(kind), OutputKind());
        if (!note.empty() && !outcome.isOutside)
            outcome.notes.push_back(std::move(note));
    }

    void CountOverwritten() {
        const std::vector<std::uint64_t> topmost = TopmostPixels(m_seen);
        for (std::size_t i = 0; i < m_seen.size(); ++i)
            m_result.files[i].overwritten = CountOf(m_seen[i]) - topmost[i];
    }

    const SFileKind& OutputKind() const {
        return *FindExportKind(FileNameOf(m_request.output.path));
    }

    void Save(const CChromaCorrectCoef& screen) {
        // Whatever needs memory comes before the screen has its name: what has it is told.
        std::vector<std::string> losses;
        const SFileKind& kind = OutputKind();
        if (MayLoseAny(FormOfKind(kind)))
            losses = DescribeLosses(screen, {0, 0, screen.Width(), screen.Height()}, kind);
        FailWith(SaveCoefFile(screen, m_request.output));
        m_result.isWritten = !HasErrors(ECompositionEnd::SomeFailed);
        if (m_result.isWritten)
            m_result.losses = std::move(losses);
    }

    /// Where it cannot, no pixel of the screen needs to be looked at.
    bool MayLoseAny(const SElementForm& form) const {
        return std::any_of(m_request.files.begin(), m_request.files.end(),
                           [&](const SPlacedFile& file) {
                               const SFileKind& kind = *FindLoadKind(FileNameOf(file.path));
                               return !HoldsAllOf(FormOfKind(kind), form);
                           });
    }

    const SCompositionRequest& m_request;
    const std::atomic<bool>& m_interrupted;
    std::vector<SPixelRect> m_seen; ///< where each file lies in the screen
    SComposition m_result;
};

} // namespace

SLayoutFiles ReadLayoutFiles(const std::wstring& table, const std::wstring& folder) {
    SMountingTable read = ReadLayoutTable(table);
    SLayoutFiles layout{{}, std::move(read.problems)};
    const std::wstring base = folder.empty() ? FolderPart(table) : WithSeparator(folder);
    const std::string shown = WideToShownUtf8(table);
    for (SMountingRow& row : read.rows)
        layout.files.push_back({base + row.name, std::move(row.name), row.place, row.code,
                                fmt::format("{}: line {}: ", shown, row.line)});
    return layout;
}

SPlacedOutcome MeasurePlaced(const SPlacedFile& file, const std::optional<PixelSize>& size) {
    SPlacedOutcome outcome;
    outcome.name = WideToShownUtf8(file.name);
    outcome.ownSize = size ? *size : OwnSizeOf(file.path, outcome.problems);
    if (!outcome.problems.empty())
        return outcome;
    const PixelSize turned = TurnedBy(file.code, outcome.ownSize);
    outcome.rect = {static_cast<std::int32_t>(file.place.x),
                    static_cast<std::int32_t>(file.place.y),
                    static_cast<std::int32_t>(file.place.x + turned.width),
                    static_cast<std::int32_t>(file.place.y + turned.height)};
    return outcome;
}

SComposition ComposeScreen(const SCompositionRequest& request,
                           const std::atomic<bool>& interrupted) {
    return CComposer(request, interrupted).Run();
}

} // namespace trevolt
