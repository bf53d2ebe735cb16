#include <charconv>
#include <cmath>
#include <map>
#include <memory>

#include "app/inspection/FileComparison.h"
#include "app/inspection/MapValueNames.h"
#include "cli/Commands.h"
#include "cli/JsonLine.h"
#include "cli/OptionGroup.h"
#include "cli/OptionValues.h"
#include "cli/RangeOption.h"
#include "cli/SharedOptions.h"
#include "cli/ShownText.h"
#include "cli/Sources.h"
#include "platform/FileSystem.h"
#include "platform/Process.h"
#include "trevolt/CoefRotation.h"
#include "trevolt/FileKinds.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr const char* kDiffNotes = R"(Examples:
  trevolt-cli diff measured/Cab_01.9fcoef other/Cab_01.9bcoef --tolerance 0.002
      whether bytes keep the values of floats to half a step
  trevolt-cli diff --turned 90 measured turned
      whether each file of turned is that of measured, turned by 90 degrees
  trevolt-cli diff a.9wcoef b.9wcoef --image apart.png
      a picture of where the values are apart, and how far

Exit states:
  0    all is the same
  1    something differs, or is on one side only
  2    trouble: a file is damaged or cannot be read, or wrong usage
  130  interrupted; what is told of a pair is whole)";

constexpr int kExitSame = 0;
constexpr int kExitDifferent = 1;

struct SDiffOptions {
    std::string a;
    std::string b;
    double tolerance = 0;
    std::uint32_t turn = 0;
    bool recursive = false;
    std::wstring image;
    std::optional<SValueRange> range; ///< of the image
    bool overwrite = false;
    bool noSync = false;
    bool json = false;
};

double ParseTolerance(const std::string& text) {
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || stop != end || !std::isfinite(value) || value < 0)
        throw std::invalid_argument(
            fmt::format("{} is no tolerance: give a number from 0 on, as 0.001", text));
    return value;
}

/// The text that `rotate` puts into the names of files that it turns by a known code.
std::wstring AngleText(std::uint32_t code) {
    for (const SAngle& angle : kAngles)
        if (angle.code == code)
            return std::wstring(angle.text);
    return {};
}

/// The name that the other side has for a file.
std::wstring CounterpartOf(const std::wstring& name, std::uint32_t turn) {
    const std::size_t folder = name.rfind(kFolderSlash) + 1; // npos + 1 is 0
    return turn == 0 ? name
                     : name.substr(0, folder) +
                           ExportName(std::wstring_view(name).substr(folder), AngleText(turn));
}

enum class EPairStatus { Same, Different, Failed, OnlyA, OnlyB };

EPairStatus StatusOf(const SFileComparison& comparison) {
    if (!comparison.problems.empty())
        return EPairStatus::Failed;
    return comparison.IsSame() ? EPairStatus::Same : EPairStatus::Different;
}

struct SDiffOutcome {
    ERotationEnd end = ERotationEnd::AllDone;
    std::vector<std::string> errors; ///< why nothing could be done
    std::size_t same = 0;
    std::size_t different = 0;
    std::size_t onOneSide = 0;
    std::size_t failed = 0;

    void Count(EPairStatus status) {
        switch (status) {
        case EPairStatus::Same:
            ++same;
            return;
        case EPairStatus::Different:
            ++different;
            return;
        case EPairStatus::Failed:
            ++failed;
            end = ERotationEnd::SomeFailed;
            return;
        case EPairStatus::OnlyA:
        case EPairStatus::OnlyB:
            ++onOneSide;
            return;
        }
    }
    bool IsInterrupted() const { return end == ERotationEnd::Interrupted; }
    int ExitStatus() const {
        if (IsInterrupted())
            return kExitInterrupted;
        if (end != ERotationEnd::AllDone)
            return kExitDiffTrouble;
        return different + onOneSide == 0 ? kExitSame : kExitDifferent;
    }
};

/// A file that is not compared, as it is told.
struct SSingleFile {
    std::string path;
    bool isOfA = false;
    std::string problem; ///< why; empty where the other side has no file for it
};

EPairStatus StatusOf(const SSingleFile& file) {
    if (!file.problem.empty())
        return EPairStatus::Failed;
    return file.isOfA ? EPairStatus::OnlyA : EPairStatus::OnlyB;
}

/// How two files are told that are compared.
struct SPairNames {
    std::string a;
    std::string b;
    std::string turned; ///< behind a
    std::string within; ///< the tolerance behind "the same", empty for none
    std::string beyond; ///< behind how many differ
};

SPairNames NamesOf(const SComparedFiles& files) {
    SPairNames names{WideToShownUtf8(files.a), WideToShownUtf8(files.b), {}, {}, {}};
    if (files.turnOfA != 0)
        names.turned = " turned by " + WideToShownUtf8(AngleText(files.turnOfA));
    if (files.tolerance != 0) {
        names.within = fmt::format(" within {}", files.tolerance);
        names.beyond = fmt::format(" by more than {}", files.tolerance);
    }
    return names;
}

class CDiffPrinter {
  public:
    virtual ~CDiffPrinter() = default;
    CDiffPrinter(const CDiffPrinter&) = delete;
    CDiffPrinter& operator=(const CDiffPrinter&) = delete;

    /// Takes no memory: of a picture that has its name it is told so, too.
    virtual void OnPair(const SComparedFiles& files, const SPairNames& names,
                        const SFileComparison& comparison) = 0;
    virtual void OnSingle(const SSingleFile& file) = 0;
    virtual void OnEnd(const SDiffOutcome& outcome, bool areFolders) = 0;

  protected:
    CDiffPrinter() = default;
};

class CLineDiffPrinter final : public CDiffPrinter {
  public:
    explicit CLineDiffPrinter(bool wantsPicture) : m_wantsPicture(wantsPicture) {}

    void OnPair(const SComparedFiles& /*files*/, const SPairNames& names,
                const SFileComparison& comparison) override {
        for (const std::string& problem : comparison.problems)
            PrintLine(stderr, "{}", problem);
        if (comparison.problems.empty())
            PrintAnswer(names, comparison);
        for (const std::string& note : comparison.notes)
            PrintLine(stdout, "  note: {}", note);
    }

    void OnSingle(const SSingleFile& file) override {
        if (!file.problem.empty())
            PrintLine(stderr, "{}: {}", file.path, file.problem);
        else
            PrintLine(stdout, "{}: the {} folder has no file for it", file.path,
                      file.isOfA ? "second" : "first");
    }

    void OnEnd(const SDiffOutcome& outcome, bool areFolders) override {
        for (const std::string& error : outcome.errors)
            Complain("{}", error);
        if (areFolders && outcome.errors.empty())
            PrintLine(stdout, "{} same, {} different, {} on one side only, {} with problems{}",
                      outcome.same, outcome.different, outcome.onOneSide, outcome.failed,
                      outcome.IsInterrupted() ? ", interrupted" : "");
        else if (outcome.IsInterrupted())
            PrintLine(stdout, "interrupted{}", m_wantsPicture ? ", no picture written" : "");
    }

  private:
    static void PrintAnswer(const SPairNames& names, const SFileComparison& comparison) {
        const auto& [a, b, turned, within, beyond] = names;
        if (!comparison.difference) {
            PrintLine(stdout, "{}{} and {} differ in size: {} x {} and {} x {} pixels", a, turned,
                      b, comparison.sizeOfA->width, comparison.sizeOfA->height,
                      comparison.sizeOfB->width, comparison.sizeOfB->height);
            return;
        }
        const SCoefDifference& difference = *comparison.difference;
        if (comparison.IsSame())
            PrintLine(stdout, "{}{} and {} are the same{}: {} pixels", a, turned, b, within,
                      difference.pixels);
        else
            PrintLine(stdout, "{}{} and {} differ: {} of {} pixels{}", a, turned, b,
                      difference.differing, difference.pixels, beyond);
        if (difference.differing != 0)
            PrintValues(difference);
    }

    static void PrintValues(const SCoefDifference& difference) {
        PrintLine(stdout, "  {:<7}{:>12}{:>13}{:>13}  {:<16}{:>13}", "value", "pixels", "mean",
                  "most", "at", "one no number");
        for (std::size_t k = 0; k < difference.values.size(); ++k) {
            const SValueDifference& value = difference.values[k];
            if (difference.compared.test(k))
                PrintLine(stdout, "  {:<7}{:>12}{:>13.6g}{:>13.6g}  {:<16}{:>13}",
                          kMapValueNames[k], value.differing, value.mean, value.most,
                          value.most > 0 ? fmt::format("({}, {})", value.mostAt.x, value.mostAt.y)
                                         : "-",
                          value.oneNan);
        }
    }

    const bool m_wantsPicture;
};

/// Prints one object a pair, and a summary (docs/diff.md).
class CJsonDiffPrinter final : public CDiffPrinter {
  public:
    void OnPair(const SComparedFiles& files, const SPairNames& names,
                const SFileComparison& comparison) override {
        const auto& difference = comparison.difference;
        PrintObject(
            {{"type", "pair"},
             {"a", names.a},
             {"b", names.b},
             {"status", NameOf(StatusOf(comparison))},
             {"angle", 90 * static_cast<int>(files.turnOfA)},
             {"tolerance", files.tolerance},
             {"size_a", SizeOrUnknown(comparison.sizeOfA)},
             {"size_b", SizeOrUnknown(comparison.sizeOfB)},
             {"pixels", difference ? CJson(difference->pixels) : CJson(nullptr)},
             {"different_pixels", difference ? CJson(difference->differing) : CJson(nullptr)},
             {"values", difference ? CJson::Of(*difference, kPutValues) : CJson(nullptr)},
             {"problems", comparison.problems},
             {"notes", comparison.notes}});
    }

    void OnSingle(const SSingleFile& file) override {
        PrintObject(
            {{"type", "pair"},
             {"a", file.isOfA ? CJson(file.path) : CJson(nullptr)},
             {"b", file.isOfA ? CJson(nullptr) : CJson(file.path)},
             {"status", NameOf(StatusOf(file))},
             {"angle", nullptr},
             {"tolerance", nullptr},
             {"size_a", nullptr},
             {"size_b", nullptr},
             {"pixels", nullptr},
             {"different_pixels", nullptr},
             {"values", nullptr},
             {"problems", file.problem.empty() ? CJson::Array() : CJson::Array({file.problem})},
             {"notes", CJson::Array()}});
    }

    void OnEnd(const SDiffOutcome& outcome, bool /*areFolders*/) override {
        PrintSummary(outcome.end, outcome.ExitStatus(),
                     {{"same", outcome.same},
                      {"different", outcome.different},
                      {"on_one_side", outcome.onOneSide},
                      {"failed", outcome.failed},
                      {"errors", outcome.errors}});
    }

  private:
    static const char* NameOf(EPairStatus status) {
        switch (status) {
        case EPairStatus::Same:
            return "same";
        case EPairStatus::Different:
            return "different";
        case EPairStatus::Failed:
            return "failed";
        case EPairStatus::OnlyA:
            return "only_a";
        case EPairStatus::OnlyB:
            break;
        }
        return "only_b";
    }

    static CJson SizeOrUnknown(const std::optional<PixelSize>& size) {
        return size ? SizeOf(*size) : CJson(nullptr);
    }

    static constexpr auto kPutPosition = [](CJsonLine& line, const PixelPosition& at) {
        line.PutObject({{"x", at.x}, {"y", at.y}});
    };

    static constexpr auto kPutValues = [](CJsonLine& line, const SCoefDifference& difference) {
        CJsonElements elements(line);
        for (std::size_t k = 0; k < difference.values.size(); ++k) {
            const SValueDifference& value = difference.values[k];
            if (difference.compared.test(k))
                elements.Add({{"value", kMapValueNames[k]},
                              {"different_pixels", value.differing},
                              {"one_nan_pixels", value.oneNan},
                              {"mean", value.mean}, // what is not finite becomes null
                              {"maximum", value.most},
                              {"maximum_at", value.most > 0 ? CJson::Of(value.mostAt, kPutPosition)
                                                            : CJson(nullptr)}});
        }
        elements.End();
    };
};

class CDiff {
  public:
    explicit CDiff(const SDiffOptions& options)
        : m_options(options),
          m_printer(std::make_unique<CLineDiffPrinter>(!options.image.empty())),
          m_imageName(WideToShownUtf8(options.image)) {
        if (options.json)
            m_printer = std::make_unique<CJsonDiffPrinter>();
    }

    int Run() {
        m_a = ParseFor("A", "a file or folder", m_options.a, ParsePath);
        m_b = ParseFor("B", "a file or folder", m_options.b, ParsePath);
        m_areFolders = IsFolder(m_a) && IsFolder(m_b);
        const SCommandFiles ofA = Find(m_a);
        const SCommandFiles ofB = Find(m_b);
        if (m_outcome.errors.empty())
            CheckPair();
        if (m_outcome.errors.empty())
            m_areFolders ? DiffFolders(ofA, ofB) : DiffPair(m_a, m_b);
        m_printer->OnEnd(m_outcome, m_areFolders);
        return m_outcome.ExitStatus();
    }

  private:
    SCommandFiles Find(const std::wstring& source) {
        SCommandFiles found = FindCommandFiles({source}, m_options.recursive);
        for (std::string& error : found.errors)
            Refuse(std::move(error), found.end);
        return found;
    }

    void Refuse(std::string error, ERotationEnd end = ERotationEnd::NothingToDo) {
        m_outcome.errors.push_back(std::move(error));
        m_outcome.end = end;
    }

    void CheckPair() {
        if (IsFolder(m_a) != IsFolder(m_b))
            Refuse(fmt::format("{} and {} are a file and a folder: give two files or two folders",
                               m_options.a, m_options.b));
        else if (!m_options.image.empty())
            CheckImage();
    }

    void CheckImage() {
        if (m_areFolders)
            return Refuse("--image is of two files: give no folders");
        const std::string obstacle = DescribeOutputObstacle(Image(), {m_a, m_b});
        if (!obstacle.empty())
            Refuse(fmt::format("{}: {}", m_imageName, obstacle));
    }

    SOutputFile Image() const { return {m_options.image, m_options.overwrite, !m_options.noSync}; }

    void DiffFolders(const SCommandFiles& ofA, const SCommandFiles& ofB) {
        TellUnnamable(ofA, m_a, true);
        TellUnnamable(ofB, m_b, false);
        std::map<std::wstring_view, const SCoefFileName*> unmatched;
        for (const SCoefFileName& file : ofB.files)
            unmatched.emplace(file.name, &file);
        for (const SCoefFileName& file : ofA.files) {
            if (m_interrupted)
                return Stop();
            const auto counterpart = unmatched.find(CounterpartOf(file.name, m_options.turn));
            if (counterpart == unmatched.end()) {
                TellSingle({WideToShownUtf8(file.Path()), true, {}});
                continue;
            }
            DiffPair(file.Path(), counterpart->second->Path());
            unmatched.erase(counterpart);
        }
        if (m_interrupted)
            return Stop();
        for (const auto& [name, file] : unmatched)
            TellSingle({WideToShownUtf8(file->Path()), false, {}});
    }

    void Stop() { m_outcome.end = ERotationEnd::Interrupted; }

    void TellUnnamable(const SCommandFiles& files, const std::wstring& folder, bool isOfA) {
        for (const std::string& name : files.unnamable)
            TellSingle(
                {WideToShownUtf8(WithSeparator(folder)) + name, isOfA, DescribeUnnamable(name)});
    }

    void TellSingle(const SSingleFile& file) {
        m_outcome.Count(StatusOf(file));
        m_printer->OnSingle(file);
    }

    void DiffPair(const std::wstring& a, const std::wstring& b) {
        const SComparedFiles files{a, b, m_options.turn, m_options.tolerance};
        const SPairNames names = NamesOf(files); // before the picture stands
        SFileComparison comparison = CompareFiles(files, DefaultThreads());
        const bool isInterrupted = m_interrupted;
        if (isInterrupted && !m_options.image.empty())
            return Stop();
        if (!m_options.image.empty())
            WriteImage(files, comparison);
        m_outcome.Count(StatusOf(comparison));
        m_printer->OnPair(files, names, comparison);
        if (isInterrupted)
            Stop();
    }

    /// What goes wrong is a problem of the comparison. Files of different sizes have no picture.
    void WriteImage(const SComparedFiles& files, SFileComparison& comparison) {
        if (!comparison.problems.empty())
            return;
        if (!comparison.difference) {
            comparison.notes.emplace_back("there is no picture of files that differ in size");
            return;
        }
        const std::string problem =
            WriteDifferencePicture(comparison, files, Image(), m_options.range, DefaultThreads());
        if (!problem.empty())
            comparison.problems.push_back(fmt::format("{}: {}", m_imageName, problem));
    }

    const SDiffOptions& m_options;
    const std::atomic<bool>& m_interrupted = CatchInterrupts();
    std::unique_ptr<CDiffPrinter> m_printer;
    const std::string m_imageName; ///< as it is told
    std::wstring m_a;
    std::wstring m_b;
    bool m_areFolders = false;
    SDiffOutcome m_outcome;
};

void AddOptions(CLI::App& command, SDiffOptions& options) {
    for (const auto& [name, value] : {std::pair{"A", &options.a}, std::pair{"B", &options.b}})
        COptionGroup(command, kPlaces)
            .AddPlace(name, "PATH", *value, "A coefficient file, or a folder of them")
            .Required();
    COptionGroup comparison(command, "Comparison");
    comparison
        .AddValue("--tolerance", "T", options.tolerance, ParseTolerance,
                  "How far values may be apart that count as the same")
        .Default("0");
    comparison.AddValue("--turned", "90|180|270", options.turn, ParseAngle,
                        std::string("Compare B with A after a clockwise turn in degrees") +
                            kAngleForms + "; of folders those files that rotate names so");
    comparison.AddFlag("--recursive,-r", options.recursive,
                       "Also compare what lies in folders of the folders");
    COptionGroup outputs(command, "Outputs");
    const COption image =
        outputs.AddValue("--image", "FILE", options.image, ParsePicturePath,
                         "New PNG file for a picture of how far the pixels are apart");
    AddRange(outputs, options.range).Needs(image);
    outputs.AddFlag("--overwrite", options.overwrite, kOverwriteHelp).Needs(image);
    outputs.AddFlag("--no-sync", options.noSync, kNoSyncHelp).Needs(image);
    AddJsonFlag(command, options.json);
}

} // namespace

void AddDiffCommand(CLI::App& program, int& exitStatus) {
    const auto options = std::make_shared<SDiffOptions>();
    CLI::App& command = AddCommand(
        program, kDiffCommand, "Compare coefficient files, of any kinds, or folders of them",
        kDiffNotes, exitStatus, [options] { return CDiff(*options).Run(); });
    AddOptions(command, *options);
}

} // namespace trevolt
