#include "app/rotation/Cropping.h"

#include <algorithm>
#include <new>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "app/rotation/CoefFile.h"
#include "app/rotation/ConversionLosses.h"
#include "app/rotation/MapRegion.h"
#include "app/rotation/Obstacles.h"
#include "app/rotation/OutputFolder.h"
#include "platform/FileSystem.h"
#include "trevolt/FileKinds.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

const SFileKind* KindOfPiece(const SCropPiece& piece) {
    return FindExportKind(piece.name.substr(FolderPart(piece.name).size()));
}

/// Whether one of the folders in a name is "..".
bool LeavesItsFolder(const std::wstring& name) {
    for (std::wstring folder = FolderPart(name); !folder.empty(); folder = FolderPart(folder)) {
        folder.pop_back(); // its separator
        if (folder.substr(FolderPart(folder).size()) == L"..")
            return true;
    }
    return false;
}

/// Whether a name begins at a root, by the rules of any system: tables go from one to another.
bool BeginsAtRoot(const std::wstring& name) {
    const auto isSeparator = [&](std::size_t i) {
        return i < name.size() && (name[i] == L'/' || name[i] == L'\\');
    };
    const bool hasDrive = name.size() > 1 && name[1] == L':';
    const bool areDrivesKnown = kPathSeparator == L'\\'; // "C:a" is in that drive's own folder
    return isSeparator(0) || (hasDrive && (areDrivesKnown || isSeparator(2)));
}

/// Why a piece of this name would not lie below the target folder; else nothing.
std::string DescribePlaceOutside(const std::wstring& name) {
    const char* advice = nullptr;
    if (BeginsAtRoot(name))
        advice = "name it relative to that";
    else if (LeavesItsFolder(name))
        advice = "name it without ..";
    else
        return {};
    return fmt::format("the output {} is not below the target folder: {}", WideToShownUtf8(name),
                       advice);
}

class CCropper {
  public:
    CCropper(const SCropRequest& request, const std::atomic<bool>& interrupted)
        : m_request(request),
          m_interrupted(interrupted),
          m_inputs(request.kept),
          m_target(TargetOf(request), request.sync) {
        m_result.input = WideToShownUtf8(request.input);
        for (const SCropPiece& piece : request.pieces)
            m_result.pieces.emplace_back().name = WideToShownUtf8(piece.name);
        m_inputs.push_back(request.input);
    }

    SCropping Run() {
        CheckNames();
        if (End(!m_result.errors.empty(), ECompositionEnd::Refused) ||
            End(!HasPlace(), ECompositionEnd::SomeFailed))
            return std::move(m_result);
        SCoefLoad load = LoadCoefFile(m_request.input);
        m_result.size = load.size;
        m_result.problems = std::move(load.problems);
        m_result.notes = std::move(load.notes);
        m_result.losses = std::move(load.losses);
        const bool isDamaged = !m_result.problems.empty();
        const bool hasPixels = load.map != nullptr && !load.map->IsEmpty();
        if (End(isDamaged, ECompositionEnd::SomeFailed) && !(hasPixels && m_request.lenient))
            return std::move(m_result);
        CheckRects();
        if (End(!m_result.errors.empty(), ECompositionEnd::Refused))
            return std::move(m_result);
        if (MakeTarget())
            WriteAll(load);
        return std::move(m_result);
    }

  private:
    static std::wstring TargetOf(const SCropRequest& request) {
        return request.targetFolder.empty() ? L"." : request.targetFolder;
    }

    bool End(bool isEnded, ECompositionEnd end) {
        if (isEnded)
            m_result.end = end;
        return isEnded;
    }

    void CheckNames() {
        if (std::string problem = DescribeInputObstacle(m_request.input); !problem.empty())
            m_result.errors.push_back(std::move(problem));
        CObstacles obstacles(m_result.errors);
        for (const SCropPiece& piece : m_request.pieces)
            if (std::string outside = DescribePlaceOutside(piece.name); !outside.empty())
                obstacles.Add(piece.origin + outside);
            else if (std::string problem = DescribeOutputName(piece.name); !problem.empty())
                obstacles.Add(piece.origin + problem);
    }

    /// Whether any piece can come to stand, as far as that is seen without writing: reading the input
    /// may take long.
    bool HasPlace() {
        if (m_request.makesFolders)
            return !HasTargetFailed(m_target.Refusal());
        std::vector<std::string> obstacles;
        for (const SCropPiece& piece : m_request.pieces)
            if (std::string obstacle = DescribeObstacle(piece); !obstacle.empty())
                obstacles.push_back(std::move(obstacle));
        if (obstacles.empty() || obstacles.size() != m_request.pieces.size())
            return true;
        for (std::size_t i = 0; i < obstacles.size(); ++i)
            m_result.pieces[i].problem = std::move(obstacles[i]);
        return false;
    }

    std::string DescribeObstacle(const SCropPiece& piece) const {
        return DescribeOutputObstacle(
            {WithSeparator(TargetOf(m_request)) + piece.name, m_request.replaces, m_request.sync},
            m_inputs);
    }

    void CheckRects() {
        CObstacles obstacles(m_result.errors);
        for (const SCropPiece& piece : m_request.pieces)
            if (const SPixelRect& rect = piece.rect;
                rect.Width() < 1 || rect.Height() < 1 || !IsWithin(rect, m_result.size))
                obstacles.Add(fmt::format(
                    "{}the rectangle {} of {} is not in the map of {} x {}: {}", piece.origin,
                    ShownRect(rect), WideToShownUtf8(piece.name), m_result.size.width,
                    m_result.size.height,
                    piece.origin.empty() ? "choose another rectangle" : "correct the row"));
    }

    bool MakeTarget() {
        RemoveAbandoned();
        return !End(HasTargetFailed(m_request.makesFolders ? m_target.Make() : 0),
                    ECompositionEnd::SomeFailed);
    }

    /// Tells why the target folder takes no piece; false where there is no such `errno` value.
    bool HasTargetFailed(int error) {
        if (error != 0)
            m_result.errors.push_back(fmt::format("the folder {} {}",
                                                  WideToShownUtf8(TargetOf(m_request)),
                                                  DescribeRefusedFolder(error)));
        return error != 0;
    }

    /// Also in the folders of the pieces.
    void RemoveAbandoned() const {
        std::set<std::wstring> below{L""};
        for (const SCropPiece& piece : m_request.pieces)
            below.insert(FolderPart(piece.name));
        for (const std::wstring& one : below)
            if (IsFolder(WithSeparator(TargetOf(m_request)) + one))
                m_target.RemoveAbandoned(one);
    }

    void WriteAll(const SCoefLoad& load) {
        try {
            for (std::size_t i = 0; i < m_request.pieces.size() && !m_interrupted; ++i)
                Write(load, m_request.pieces[i], m_result.pieces[i]);
        } catch (const std::bad_alloc&) { // what has its name is told all the same
            m_result.isMemoryRefused = true;
        }
        if (const int error = m_target.SyncNames(); error != 0)
            FailWritten(error);
        const bool isEachWritten = std::all_of(m_result.pieces.begin(), m_result.pieces.end(),
                                               [](const auto& piece) { return piece.isWritten; });
        if (!isEachWritten)
            m_result.end =
                m_interrupted ? ECompositionEnd::Interrupted : ECompositionEnd::SomeFailed;
    }

    /// Their names may not be on the disk.
    void FailWritten(int error) {
        for (SPieceOutcome& piece : m_result.pieces) {
            if (!piece.isWritten)
                continue;
            piece.isWritten = false;
            piece.losses.clear();
            piece.problem = DescribeFolderSyncProblem(error);
        }
    }

    void Write(const SCoefLoad& load, const SCropPiece& piece, SPieceOutcome& outcome) {
        const SFileKind& kind = *KindOfPiece(piece);
        outcome.size = TurnedBy(piece.code, {piece.rect.Width(), piece.rect.Height()});
        outcome.problem = MakeFolderOf(piece);
        if (outcome.problem.empty())
            outcome.problem = DescribeObstacle(piece);
        if (!outcome.problem.empty())
            return;
        // Whatever needs memory comes before the piece has its name: what has it is told.
        std::vector<std::string> losses;
        if (!HoldsAllOf(FormOfKind(*load.kind), FormOfKind(kind)))
            losses = DescribeLosses(*load.map, piece.rect, kind);
        std::string note = DescribeDefaultsBeside(FormOfKind(*load.kind), kind);
        outcome.problem =
            WriteOutput(m_target, piece.name, m_request.replaces, [&](const std::wstring& path) {
                return WriteMapPiece(*load.map, piece.rect, piece.code, kind, path);
            });
        outcome.isWritten = outcome.problem.empty();
        if (!outcome.isWritten)
            return;
        outcome.losses = std::move(losses);
        NoteOnce(std::move(note));
    }

    /// What is told of the source and not of each piece.
    void NoteOnce(std::string note) {
        std::vector<std::string>& notes = m_result.notes;
        if (!note.empty() && std::find(notes.begin(), notes.end(), note) == notes.end())
            notes.push_back(std::move(note));
    }

    std::string MakeFolderOf(const SCropPiece& piece) const {
        const std::wstring below = FolderPart(piece.name);
        const int error = m_request.makesFolders && !below.empty() ? m_target.Make(below) : 0;
        return error == 0 ? std::string() : "its folder " + DescribeRefusedFolder(error);
    }

    const SCropRequest& m_request;
    const std::atomic<bool>& m_interrupted;
    std::vector<std::wstring> m_inputs; ///< which no piece replaces
    COutputFolder m_target;
    SCropping m_result;
};

} // namespace

SScreenPieces PiecesOfScreen(const std::vector<SPlacedFile>& files,
                             const std::optional<PixelSize>& cabinet) {
    SScreenPieces screen;
    for (const SPlacedFile& file : files) {
        const SPlacedOutcome measured = MeasurePlaced(file, cabinet);
        for (const std::string& problem : measured.problems)
            screen.problems.push_back(
                fmt::format("{}{}: {}", file.origin, WideToShownUtf8(file.name), problem));
        const std::uint32_t back = file.code == 0 ? 0 : CQuarterTurn::BackCode(file.code);
        screen.pieces.push_back({file.name, measured.rect, back, file.origin});
    }
    return screen;
}

SCropping CropFile(const SCropRequest& request, const std::atomic<bool>& interrupted) {
    return CCropper(request, interrupted).Run();
}

} // namespace trevolt
