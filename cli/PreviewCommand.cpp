#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "app/inspection/MapValueNames.h"
#include "app/inspection/Preview.h"
#include "cli/Commands.h"
#include "cli/JsonLine.h"
#include "cli/NumberText.h"
#include "cli/OptionGroup.h"
#include "cli/OptionValues.h"
#include "cli/RangeOption.h"
#include "cli/RunPrinter.h"
#include "cli/SharedOptions.h"
#include "cli/ShownText.h"
#include "cli/Sources.h"
#include "platform/FileSystem.h"
#include "platform/Process.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr const char* kPreviewNotes = R"(Examples:
  trevolt-cli preview measured/Cab_01.9fcoef cabinet.png
      shows how bright each pixel makes white
  trevolt-cli preview --turned 90 measured/Cab_01.9fcoef turn.png
      the same before and after a turn
  trevolt-cli preview --grid 4x3 measured wall.png
      the cabinets of a folder as they hang, row by row, at one scale

Exit states:
  0    the picture is written and shows all files
  1    some file is damaged, or the picture could not be written
  2    wrong usage, or nothing to do; nothing was written
  130  interrupted; nothing was written)";

struct SPreviewOptions {
    std::vector<std::string> sources;
    std::wstring picture;
    SMapView view;
    std::optional<EColourScale> scale;
    std::optional<SValueRange> range;
    std::uint32_t turnCode = 0;
    std::optional<SPreviewGrid> grid;
    int width = kPictureWidth;
    bool recursive = false;
    bool overwrite = false;
    bool noSync = false;
    bool json = false;
};

constexpr const char* kViewNames = "brightness|colour|m00|m01|m02|m10|m11|m12|m20|m21|m22|g0|g1|g2";

[[noreturn]] void RefuseValue(const std::string& problem) { throw std::invalid_argument(problem); }

SMapView ParseView(const std::string& text) {
    if (text == "brightness")
        return {EMapView::Brightness, 0};
    if (text == "colour")
        return {EMapView::White, 0};
    const auto* const name = std::find(kMapValueNames.begin(), kMapValueNames.end(), text);
    if (name == kMapValueNames.end())
        RefuseValue(fmt::format("{} is no view: give brightness, colour or a coefficient, m00 to "
                                "m22 or g0 to g2",
                                text));
    return {EMapView::Coefficient, static_cast<std::size_t>(name - kMapValueNames.begin())};
}

EColourScale ParseScale(const std::string& text) {
    if (text == "grey")
        return EColourScale::Grey;
    if (text != "false-colour")
        RefuseValue(fmt::format("{} is no scale: give false-colour or grey", text));
    return EColourScale::FalseColour;
}

SPreviewGrid ParseGrid(const std::string& text) {
    const auto [columns, rows] = NumberPair<int>(text, "xX");
    if (!columns || !rows || std::min(*columns, *rows) < 1)
        RefuseValue(fmt::format("{} is no grid: give COLUMNSxROWS", text));
    if (std::max(*columns, *rows) > kMostGridSide)
        RefuseValue(fmt::format("{} is above {} in one direction: give less", text, kMostGridSide));
    return {*columns, *rows};
}

int ParseWidth(const std::string& text) {
    constexpr int kLeast = 200;
    constexpr int kMost = 8192;
    const auto width = NumberOf<int>(text);
    if (!width || *width < kLeast || *width > kMost)
        RefuseValue(fmt::format("{} is no width: give {} to {} pixels", text, kLeast, kMost));
    return *width;
}

void AddPicture(CLI::App& command, SPreviewOptions& options) {
    COptionGroup group(command, "Picture");
    group
        .AddValue(
            "--view", kViewNames, options.view, ParseView,
            "What is shown: the brightness or the colour that pixels have for white, one "
            "coefficient of their matrices by its row and column, or one value of the virtual "
            "green, of kinds that hold it")
        .Default("brightness");
    group
        .AddValue("--scale", "false-colour|grey", options.scale, ParseScale,
                  "Colours of brightness or coefficient")
        .Default("false-colour");
    AddRange(group, options.range);
    const COption turned = group.AddValue(
        "--turned", "90|180|270", options.turnCode, ParseAngle,
        std::string("Show a single map before and after a clockwise turn in degrees") +
            kAngleForms);
    group
        .AddValue("--grid", "COLUMNSxROWS", options.grid, ParseGrid,
                  "How cabinets stand in the wall; they fill it row by row, Cab_2 before Cab_10")
        .Default("about square")
        .Excludes(turned);
    group
        .AddValue(
            "--width", "N", options.width, ParseWidth,
            "Pixels that the picture may be wide; what it shows is up to five eighths of that high")
        .Default(std::to_string(kPictureWidth));
}

void AddPreviewOptions(CLI::App& command, SPreviewOptions& options) {
    AddSources(command, "SOURCE", options.sources);
    const auto takePicture = [&options](const std::string& text) {
        options.picture = ParseFor("PICTURE", "a file", text, ParsePicturePath);
    };
    COptionGroup(command, kPlaces)
        .AddPlace("PICTURE", "FILE", takePicture, "PNG file for the picture; its folder must exist")
        .Required();
    AddPicture(command, options);
    COptionGroup inputs(command, "Inputs");
    inputs.AddFlag("--recursive,-r", options.recursive,
                   "Also show what lies in folders of the folders");
    AddOutputFlags(command, options.overwrite, options.noSync);
    AddJsonFlag(command, options.json);
}

ERotationEnd RunEndOf(EPreviewEnd end) {
    switch (end) {
    case EPreviewEnd::Written:
        return ERotationEnd::AllDone;
    case EPreviewEnd::SomeFailed:
        return ERotationEnd::SomeFailed;
    case EPreviewEnd::Interrupted:
        return ERotationEnd::Interrupted;
    case EPreviewEnd::Misused:
        break;
    }
    return ERotationEnd::NothingToDo;
}

/// As `--view` takes it.
const char* ViewName(const SMapView& view) {
    if (view.what == EMapView::Coefficient)
        return kMapValueNames[view.coefficient];
    return view.what == EMapView::White ? "colour" : "brightness";
}

/// The output's name is made before it stands, which is told also where no memory is left.
class CPreviewPrinter : public CPreviewListener {
  public:
    explicit CPreviewPrinter(const SPreviewRequest& request)
        : m_output(WideToShownUtf8(request.output.path)) {}

    virtual void OnEnd(const SPreviewOutcome& outcome, ERotationEnd end) = 0;

  protected:
    const std::string& Output() const { return m_output; }

  private:
    const std::string m_output;
};

class CPreviewLines : public CPreviewPrinter {
  public:
    using CPreviewPrinter::CPreviewPrinter;

    void OnFile(const SPreviewedFile& file) override {
        const std::string& shown = file.path.empty() ? file.name : file.path;
        for (const std::string& problem : file.problems)
            PrintLine(stderr, "{}: {}", shown, problem);
        for (const std::string& note : file.notes)
            PrintLine(stdout, "{}: {}", shown, note);
    }

    void OnEnd(const SPreviewOutcome& outcome, ERotationEnd end) override {
        for (const std::string& error : outcome.errors)
            Complain("{}", error);
        if (end == ERotationEnd::Interrupted)
            PrintLine(stdout, "interrupted, no picture written");
        if (outcome.values)
            PrintLine(stdout, "{}: {} x {} pixels, {} file{} shown, {} failed", Output(),
                      outcome.size.width, outcome.size.height, outcome.shown,
                      outcome.shown == 1 ? "" : "s", outcome.failed);
    }
};

struct SShownPicture {
    const SPreviewOutcome& outcome;
    const SMapView& view;
};

constexpr auto kPutPicture = [](CJsonLine& line, const SShownPicture& shown) {
    const SPreviewOutcome& outcome = shown.outcome;
    const SPaintedValues& values = *outcome.values;
    line.PutObject({{"size", SizeOrNull(outcome.size)},
                    {"columns", outcome.grid.columns},
                    {"rows", outcome.grid.rows},
                    {"view", ViewName(shown.view)},
                    {"scale_low", values.range.low},
                    {"scale_high", values.range.high},
                    {"cells", values.cells},
                    {"cells_below", values.below},
                    {"cells_above", values.above},
                    {"not_finite_pixels", values.notFinite}});
};

class CPreviewObjects : public CPreviewPrinter {
  public:
    explicit CPreviewObjects(const SPreviewRequest& request)
        : CPreviewPrinter(request), m_view(request.style.view) {}

    void OnFile(const SPreviewedFile& file) override {
        PrintObject({{"type", "file"},
                     {"name", file.name},
                     {"path", TextOrNull(file.path)},
                     {"status", file.problems.empty() ? "shown" : "failed"},
                     {"kind", TextOrNull(file.kind)},
                     {"own_size", SizeOrNull(file.size)},
                     {"minimum", file.found ? CJson(file.found->low) : CJson(nullptr)},
                     {"maximum", file.found ? CJson(file.found->high) : CJson(nullptr)},
                     {"not_finite_pixels", file.notFinite},
                     {"problems", file.problems},
                     {"notes", file.notes}});
    }

    void OnEnd(const SPreviewOutcome& outcome, ERotationEnd end) override {
        const bool isWritten = outcome.values.has_value();
        const SShownPicture picture{outcome, m_view};
        PrintSummary(end, ExitStatus(end),
                     {{"output", isWritten ? CJson(Output()) : CJson(nullptr)},
                      {"picture", isWritten ? CJson::Of(picture, kPutPicture) : CJson(nullptr)},
                      {"shown", isWritten ? outcome.shown : 0},
                      {"failed", outcome.failed},
                      {"errors", outcome.errors}});
    }

  private:
    const SMapView& m_view;
};

/// The last name in a path, whose separator at the end does not count.
std::wstring LastNameOf(const std::wstring& path) {
    const std::wstring name = WithoutSeparator(path);
    return name.substr(FolderPart(name).size());
}

/// The folder's name, or the picture's where there are several sources.
std::string TitleOf(const std::vector<std::wstring>& sources, const std::wstring& picture) {
    if (sources.size() == 1)
        return WideToShownUtf8(LastNameOf(sources.front()));
    const std::wstring name = LastNameOf(picture);
    return WideToShownUtf8(name.substr(0, name.rfind(L'.')));
}

void CheckTogether(const SPreviewOptions& options) {
    if (options.view.what == EMapView::White && options.scale)
        throw CUsageError(
            "--scale", "the colour for white has no other colours: leave it out, or give --view");
    if (options.turnCode != 0 && options.width < kNarrowestTurn)
        throw CUsageError(
            "--width",
            fmt::format("{} pixels have no room for both sides of a turn: give {} or more",
                        options.width, kNarrowestTurn));
}

void TellUnnamable(const std::vector<std::string>& names, CPreviewPrinter& printer) {
    for (const std::string& name : names) {
        SPreviewedFile file;
        file.name = name;
        file.problems.emplace_back(DescribeUnnamable(name));
        printer.OnFile(file);
    }
}

int Preview(const SPreviewOptions& options) {
    CheckTogether(options);
    const auto sources = ParseSources("SOURCE", options.sources);
    SCommandFiles found = FindCommandFiles(sources, options.recursive);
    const SPreviewRequest request{std::move(found.files),
                                  TitleOf(sources, options.picture),
                                  {options.picture, options.overwrite, !options.noSync},
                                  {options.view, options.scale.value_or(EColourScale::FalseColour),
                                   options.range, options.width, DefaultThreads()},
                                  options.turnCode,
                                  options.grid,
                                  found.unnamable.size()};
    std::unique_ptr<CPreviewPrinter> printer = std::make_unique<CPreviewLines>(request);
    if (options.json)
        printer = std::make_unique<CPreviewObjects>(request);
    TellUnnamable(found.unnamable, *printer);
    SPreviewOutcome outcome;
    outcome.errors = std::move(found.errors);
    ERotationEnd end = found.end;
    if (!request.files.empty()) {
        outcome = RunPreview(request, CatchInterrupts(), *printer);
        end = outcome.end == EPreviewEnd::Written ? found.end : RunEndOf(outcome.end);
    }
    outcome.failed += found.unnamable.size();
    printer->OnEnd(outcome, end);
    return ExitStatus(end);
}

} // namespace

void AddPreviewCommand(CLI::App& program, int& exitStatus) {
    const auto options = std::make_shared<SPreviewOptions>();
    CLI::App& command =
        AddCommand(program, "preview", "Show coefficient files in a picture", kPreviewNotes,
                   exitStatus, [options] { return Preview(*options); });
    AddPreviewOptions(command, *options);
}

} // namespace trevolt
