#include "app/inspection/Preview.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include <fmt/format.h>

#include "app/inspection/CoefPixels.h"
#include "app/inspection/MapValueNames.h"
#include "app/inspection/NaturalOrder.h"
#include "app/inspection/PngFile.h"
#include "app/rotation/CoefFile.h"
#include "app/rotation/ElementForms.h"
#include "platform/FileSystem.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

std::wstring LastName(const std::wstring& path) { return path.substr(FolderPart(path).size()); }

struct SToldSize {
    PixelSize size;                    ///< 0 × 0 where the file tells none
    std::vector<std::string> problems; ///< why it was not read
};

SToldSize ToldSize(const std::wstring& path) {
    const SFileKind* const kind = FindLoadKind(LastName(path));
    if (kind == nullptr) // which is told when it is loaded
        return {};
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    const CTransferReport report;
    const Status status = kind->readSize(path.c_str(), width, height);
    if (Failed(status) || report.HasReadFailed())
        return {{}, DescribeReadProblems(status, report)};
    const PixelSize size = SizeToldBy(*kind, width, height);
    return {DescribeMapSize(*kind, size).empty() ? size : PixelSize{}, {}};
}

/// Why the files of a kind have no such view; else nothing. What they lack of the matrix is 0 on a wall,
/// too; beside the matrix there is nothing to show.
std::string DescribeLackOfView(const SFileKind& kind, const SMapView& view) {
    const std::size_t place = view.coefficient;
    if (view.what != EMapView::Coefficient ||
        (FormOfKind(kind).Values() | kWholeMatrix).test(place))
        return {};
    return fmt::format("holds no {}: {} files do not have that value of the virtual green",
                       kMapValueNames[place], WideToShownUtf8(kind.extension));
}

SPreviewGrid SquareGrid(std::size_t files) {
    const int columns = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(files))));
    return {columns, static_cast<int>((files + static_cast<std::size_t>(columns) - 1) /
                                      static_cast<std::size_t>(columns))};
}

class CPreviewRun {
  public:
    CPreviewRun(const SPreviewRequest& request, const std::atomic<bool>& interrupted,
                CPreviewListener& listener)
        : m_request(request),
          m_interrupted(interrupted),
          m_listener(listener),
          m_files(request.files) {}

    SPreviewOutcome Run() {
        std::sort(m_files.begin(), m_files.end(),
                  [](const SCoefFileName& a, const SCoefFileName& b) {
                      return IsBeforeNaturally(a.Path(), b.Path());
                  });
        if (!ChooseGrid() || !CheckOutput())
            return std::move(m_outcome);
        if (IsSingle())
            ShowOne();
        else
            ShowWall();
        End();
        return std::move(m_outcome);
    }

  private:
    void Refuse(std::string error) { m_outcome.errors.push_back(std::move(error)); }

    bool CheckOutput() {
        std::vector<std::wstring> inputs;
        for (const SCoefFileName& file : m_files)
            inputs.push_back(file.Path());
        const std::string obstacle = DescribeOutputObstacle(m_request.output, inputs);
        if (obstacle.empty())
            return true;
        Refuse(fmt::format("{}: {}", OutputName(), obstacle));
        m_outcome.end = EPreviewEnd::SomeFailed;
        return false;
    }

    bool ChooseGrid() {
        m_outcome.grid = m_request.grid.value_or(SquareGrid(m_files.size()));
        const SPreviewGrid& grid = m_outcome.grid;
        if (m_request.turnCode != 0 && (m_files.size() > 1 || m_request.grid))
            Refuse(fmt::format("a turn is shown of a single file, and here are {}: give one",
                               m_files.size()));
        else if (m_files.size() >
                 static_cast<std::size_t>(grid.columns) * static_cast<std::size_t>(grid.rows))
            Refuse(fmt::format("{} files do not fit into a grid of {} x {}: give a larger one",
                               m_files.size(), grid.columns, grid.rows));
        else if (std::max(grid.columns, grid.rows) > kMostGridSide)
            Refuse(fmt::format("{} files are too many for one picture", m_files.size()));
        return m_outcome.errors.empty();
    }

    /// Loads a file; when it has a problem, `told` has that then.
    SCoefPixelLoad Load(const SCoefFileName& file, SPreviewedFile& told) {
        SCoefPixelLoad load = LoadCoefPixels(file.Path(), m_request.style.jobs);
        told.name = WideToShownUtf8(file.name);
        told.path = WideToShownUtf8(file.Path());
        told.size = load.size;
        told.problems = load.problems;
        told.notes = load.notes;
        if (load.kind == nullptr)
            return load;
        told.kind = WideToShownUtf8(load.kind->extension.substr(1));
        std::string lack = DescribeLackOfView(*load.kind, m_request.style.view);
        if (told.problems.empty() && !lack.empty())
            told.problems.push_back(std::move(lack));
        return load;
    }

    void Tell(const SPreviewedFile& file) {
        ++(file.problems.empty() ? m_outcome.shown : m_outcome.failed);
        m_listener.OnFile(file);
    }

    static void TakeFound(const SPaintedValues& values, SPreviewedFile& told) {
        told.found = values.found;
        told.notFinite = values.notFinite;
    }

    bool IsSingle() const {
        const bool isAlone = m_files.size() + m_request.unnamable == 1;
        return m_request.turnCode != 0 || (isAlone && !m_request.grid);
    }

    void ShowOne() {
        if (m_interrupted)
            return;
        SPreviewedFile told;
        const SCoefPixelLoad load = Load(m_files.front(), told);
        std::optional<SValuePicture> picture;
        if (m_interrupted) // nothing is known of the file's values
            return;
        if (told.problems.empty()) {
            picture = PaintMap(load.Pixels(), {told.name, told.kind}, m_request.style,
                               m_request.turnCode);
            TakeFound(picture->values, told);
        }
        Tell(told);
        if (picture && !m_interrupted)
            Write(*picture);
    }

    void ShowWall() {
        std::vector<SPreviewedFile> told;
        std::unique_ptr<CWallPicture> wall;
        try {
            wall = TakeFiles(told);
        } catch (const std::bad_alloc&) { // what was looked at is told all the same
            TellAll(told);
            throw;
        }
        TellAll(told);
        if (!m_interrupted && m_outcome.shown > 0)
            Write(wall->Paint(m_request.title, m_request.unnamable));
    }

    void TellAll(const std::vector<SPreviewedFile>& told) {
        for (const SPreviewedFile& file : told)
            Tell(file);
    }

    std::unique_ptr<CWallPicture> TakeFiles(std::vector<SPreviewedFile>& told) {
        std::vector<CWallPicture::SCabinet> cabinets;
        for (const SCoefFileName& file : m_files) {
            m_sizes.push_back(ToldSize(file.Path()));
            cabinets.push_back({WideToShownUtf8(LastName(file.name)), m_sizes.back().size});
        }
        auto wall = TakeWall(cabinets, told);
        if (!m_interrupted && ForgetUnreadSizes(cabinets, told))
            wall = TakeWall(cabinets, told);
        return wall;
    }

    /// Takes each file that has no problem yet.
    std::unique_ptr<CWallPicture> TakeWall(const std::vector<CWallPicture::SCabinet>& cabinets,
                                           std::vector<SPreviewedFile>& told) {
        const SPreviewGrid& grid = m_outcome.grid;
        auto wall =
            std::make_unique<CWallPicture>(cabinets, grid.columns, grid.rows, m_request.style);
        for (std::size_t i = 0; i < m_files.size() && !m_interrupted; ++i) {
            if (i < told.size() && !told[i].problems.empty())
                continue;
            SPreviewedFile file = TakeCabinet(*wall, i, cabinets[i].size);
            if (i < told.size())
                told[i] = std::move(file);
            else
                told.push_back(std::move(file));
        }
        return wall;
    }

    SPreviewedFile TakeCabinet(CWallPicture& wall, std::size_t i, const PixelSize& size) {
        SPreviewedFile told;
        const SCoefPixelLoad load = Load(m_files[i], told);
        if (!told.problems.empty())
            return told;
        if (told.size == size)
            TakeFound(wall.Take(i, load.Pixels()), told);
        else if (!m_sizes[i].problems.empty())
            told.problems = m_sizes[i].problems;
        else
            told.problems.emplace_back("its size changed while it was read");
        return told;
    }

    /// Whether a file that cannot be shown told a size that made all places larger: places are for what
    /// is shown.
    static bool ForgetUnreadSizes(std::vector<CWallPicture::SCabinet>& cabinets,
                                  const std::vector<SPreviewedFile>& told) {
        PixelSize shown;
        PixelSize unread;
        for (std::size_t i = 0; i < told.size(); ++i) {
            PixelSize& largest = told[i].problems.empty() ? shown : unread;
            largest = {std::max(largest.width, cabinets[i].size.width),
                       std::max(largest.height, cabinets[i].size.height)};
            if (!told[i].problems.empty())
                cabinets[i].size = {};
        }
        return shown != PixelSize{} && (unread.width > shown.width || unread.height > shown.height);
    }

    std::string OutputName() const { return WideToShownUtf8(m_request.output.path); }

    void Write(const SValuePicture& picture) {
        const std::string problem =
            WriteOutputFile(m_request.output, [&](const std::wstring& path) {
                return WritePngFile(picture.picture, path, m_request.style.jobs);
            });
        if (!problem.empty())
            return Refuse(fmt::format("{}: {}", OutputName(), problem));
        m_outcome.values = picture.values;
        m_outcome.size = {picture.picture.Width(), picture.picture.Height()};
    }

    void End() {
        if (m_interrupted && !m_outcome.values)
            m_outcome.end = EPreviewEnd::Interrupted;
        else if (m_outcome.failed > 0 || !m_outcome.values)
            m_outcome.end = EPreviewEnd::SomeFailed;
        else
            m_outcome.end = EPreviewEnd::Written;
    }

    const SPreviewRequest& m_request;
    const std::atomic<bool>& m_interrupted;
    CPreviewListener& m_listener;
    std::vector<SCoefFileName> m_files;
    std::vector<SToldSize> m_sizes; ///< of the files of a wall
    SPreviewOutcome m_outcome;
};

} // namespace

SPreviewOutcome RunPreview(const SPreviewRequest& request, const std::atomic<bool>& interrupted,
                           CPreviewListener& listener) {
    return CPreviewRun(request, interrupted, listener).Run();
}

} // namespace trevolt
