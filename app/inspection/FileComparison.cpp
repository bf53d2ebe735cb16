#include "app/inspection/FileComparison.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "app/inspection/PngFile.h"
#include "app/rotation/CoefFile.h"
#include "platform/FileSystem.h"
#include "trevolt/CoefRotation.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr std::size_t kBesideDiagonal = 1; ///< a value that every full matrix has
constexpr std::size_t kVirtualGreen = 10;  ///< one that every kind with a virtual green has

class CFileComparison {
  public:
    CFileComparison(const SComparedFiles& files, std::size_t threads)
        : m_files(files),
          m_threads(threads),
          m_nameOfA(WideToShownUtf8(files.a)),
          m_nameOfB(WideToShownUtf8(files.b)) {}

    SFileComparison Run() {
        SCoefLoad a = Load(m_files.a, m_nameOfA);
        SCoefLoad b = Load(m_files.b, m_nameOfB);
        if (a.map != nullptr && m_files.turnOfA != 0)
            Turn(a);
        if (a.map != nullptr)
            m_found.sizeOfA = a.size;
        if (b.map != nullptr)
            m_found.sizeOfB = b.size;
        if (m_found.problems.empty() && a.size == b.size)
            Compare(a, b);
        return std::move(m_found);
    }

  private:
    SCoefLoad Load(const std::wstring& path, const std::string& name) {
        SCoefLoad load = LoadCoefFile(path);
        for (const std::string& problem : load.problems)
            m_found.problems.push_back(fmt::format("{}: {}", name, problem));
        for (const std::string& note : load.notes)
            m_found.notes.push_back(fmt::format("{}: {}", name, note));
        for (const std::string& loss : load.losses)
            m_found.notes.push_back(fmt::format("{}: {} is not compared", name, loss));
        return load;
    }

    void Turn(SCoefLoad& load) {
        auto turned = std::make_unique<CChromaCorrectCoef>();
        TurnMap(*load.map, static_cast<std::int32_t>(load.size.width),
                static_cast<std::int32_t>(load.size.height), m_files.turnOfA, *turned);
        if (!turned->IsEmpty() && !turned->HasStorage())
            m_found.problems.push_back(m_nameOfA + ": not enough memory for the turned map");
        load.size = CQuarterTurn(m_files.turnOfA, load.size.width, load.size.height).TurnedSize();
        load.map = std::move(turned);
    }

    void Compare(SCoefLoad& a, SCoefLoad& b) {
        m_found.difference = CompareMaps(*a.map, *b.map, ComparedValues(*a.kind, *b.kind),
                                         m_files.tolerance, m_threads);
        m_found.a = std::move(a.map);
        m_found.b = std::move(b.map);
    }

    MapValues ComparedValues(const SFileKind& a, const SFileKind& b) {
        const MapValues ofA = FormOfKind(a).Values();
        const MapValues ofB = FormOfKind(b).Values();
        NoteLack(ofA, ofB, m_nameOfA);
        NoteLack(ofB, ofA, m_nameOfB);
        const MapValues either = ofA | ofB;
        return ofA.test(kVirtualGreen) && ofB.test(kVirtualGreen) ? either : either & kWholeMatrix;
    }

    /// Tells what a file lacks that the other one has.
    void NoteLack(const MapValues& held, const MapValues& other, const std::string& name) {
        if (other.test(kBesideDiagonal) && !held.test(kBesideDiagonal))
            m_found.notes.push_back(
                name + ": has the diagonal of the matrix only: its other values count as 0");
        if (other.test(kVirtualGreen) && !held.test(kVirtualGreen))
            m_found.notes.push_back(
                name + ": has no virtual green: g0 to g2 of the other are not compared");
    }

    const SComparedFiles& m_files;
    const std::size_t m_threads;
    const std::string m_nameOfA;
    const std::string m_nameOfB;
    SFileComparison m_found;
};

std::string NamePart(const std::wstring& path) {
    return WideToShownUtf8(path.substr(FolderPart(path).size()));
}

SSheetText TextOf(const SFileComparison& comparison, const SComparedFiles& files) {
    const SCoefDifference& difference = *comparison.difference;
    const auto* const turn = std::find_if(kAngles.begin(), kAngles.end(), [&](const SAngle& angle) {
        return angle.code == files.turnOfA;
    });
    const std::string turned =
        turn == kAngles.end() ? "" : fmt::format(" turned by {}", WideToShownUtf8(turn->text));
    return {fmt::format("{}{} and {}", NamePart(files.a), turned, NamePart(files.b)),
            DifferenceText(difference, files.tolerance), "Largest difference of a pixel's values"};
}

} // namespace

SFileComparison CompareFiles(const SComparedFiles& files, std::size_t threads) {
    return CFileComparison(files, threads).Run();
}

std::string DifferenceText(const SCoefDifference& difference, double tolerance) {
    const std::string least = tolerance == 0 ? "" : fmt::format(" by more than {}", tolerance);
    if (difference.differing == 0)
        return fmt::format("no pixel differs{}: {} pixels", least, difference.pixels);
    return fmt::format("{} of {} pixels differ{}", difference.differing, difference.pixels, least);
}

SValuePicture PaintDifference(const SFileComparison& comparison, const SComparedFiles& files,
                              const std::optional<SValueRange>& range, std::size_t threads) {
    const CChromaCorrectCoef& a = *comparison.a;
    const CChromaCorrectCoef& b = *comparison.b;
    const auto readRow = [&](std::size_t y, float* row) {
        for (std::uint32_t x = 0; x < a.Width(); ++x) {
            const auto line = static_cast<std::int64_t>(y);
            row[x] = static_cast<float>(DistanceOf(a.ElementOrDefault(x, line),
                                                   b.ElementOrDefault(x, line),
                                                   comparison.difference->compared));
        }
    };
    SValuePictureStyle style;
    style.text = TextOf(comparison, files);
    style.range = range;
    style.fromZero = true;
    style.jobs = threads;
    return PaintValues({a.Width(), a.Height(), 1, readRow}, style);
}

std::string WriteDifferencePicture(const SFileComparison& comparison, const SComparedFiles& files,
                                   const SOutputFile& output,
                                   const std::optional<SValueRange>& range, std::size_t threads) {
    if (comparison.a->IsEmpty())
        return "there is no picture of maps without pixels";
    const SValuePicture painted = PaintDifference(comparison, files, range, threads);
    return WriteOutputFile(output, [&](const std::wstring& path) {
        return WritePngFile(painted.picture, path, threads);
    });
}

} // namespace trevolt
