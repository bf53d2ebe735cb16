#include <memory>

#include <fmt/format.h>

#include "app/inspection/ConversionRun.h"
#include "app/inspection/NpyFile.h"
#include "cli/Commands.h"
#include "cli/JsonLine.h"
#include "cli/OptionGroup.h"
#include "cli/OptionValues.h"
#include "cli/RunPrinter.h"
#include "cli/SharedOptions.h"
#include "cli/ShownText.h"
#include "cli/Sources.h"
#include "platform/Process.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr const char* kConvertNotes = R"(Examples:
  trevolt-cli convert Cab_01.9fcoef Cab_01.9wcoef
      the floats of one cabinet as 16-bit words
  trevolt-cli convert Cab_01.9wcoef Cab_01.npy
      an array of (height, width, 12) float32, for NumPy
  trevolt-cli convert --own Cab_01.9wcoef words.npy
      its own words, an array of (height, width, 9) uint16
  trevolt-cli convert --to 9bcoef -r measured bytes
      every file of a folder and of those in it

Exit states:
  0    all files are converted, whatever their outputs cannot hold of them
  1    some file failed, or an output could not be written
  2    wrong usage, or nothing to do; nothing was written
  130  interrupted; what is told as converted is whole)";

struct SConvertOptions {
    std::vector<std::string> sources;
    SConversionRequest request;
    bool noSync = false;
    bool json = false;
};

SFormName ParseFormName(const std::string& text) {
    const auto word = Utf8ToWide(text);
    const auto form = word ? FindFormName(*word) : std::nullopt;
    if (!form)
        throw std::invalid_argument(
            fmt::format("\"{}\" is no kind: give one of its nine extensions, or npy", text));
    return *form;
}

class CLineConversion : public CConversionListener {
  public:
    /// One file is told as it was given, several by their names in their folders.
    explicit CLineConversion(bool isOfOne) : m_isOfOne(isOfOne) {}

    void OnFile(const SConvertedFile& file) override {
        const SConversion& conversion = file.conversion;
        const std::string& name = m_isOfOne ? file.path : file.name;
        for (const std::string& problem : conversion.problems)
            PrintLine(stderr, "{}: {}", name, problem);
        if (file.HasFailed())
            return;
        // Of an output that has its name it is told where no memory is left, too.
        if (file.isArray)
            PrintLine(stdout, "{} -> {}  ({} x {}, {} of ({}, {}, {}))", name, file.outputName,
                      conversion.size.width, conversion.size.height,
                      ArrayTypeName(conversion.form.value), conversion.size.height,
                      conversion.size.width, conversion.form.count);
        else
            PrintLine(stdout, "{} -> {}  ({} x {})", name, file.outputName, conversion.size.width,
                      conversion.size.height);
        for (const auto* told : {&conversion.losses, &conversion.notes})
            for (const std::string& text : *told)
                PrintLine(stdout, "{}: {}", name, text);
    }

  private:
    const bool m_isOfOne;
};

CJson ArrayOrNull(const SConvertedFile& file) {
    if (!file.isArray || file.conversion.form.count == 0)
        return nullptr;
    return CJson::Of(file.conversion, [](CJsonLine& line, const SConversion& made) {
        line.PutObject(
            {{"element", ArrayTypeName(made.form.value)},
             {"shape", CJson::Array({made.size.height, made.size.width, made.form.count})}});
    });
}

std::string_view OutputOf(const SConvertedFile& file) {
    return file.HasFailed() ? std::string_view() : file.outputName;
}

class CJsonConversion : public CConversionListener {
  public:
    void OnFile(const SConvertedFile& file) override {
        const SConversion& conversion = file.conversion;
        const SConversionLosses& lost = conversion.lost;
        PrintObject({{"type", "file"},
                     {"name", file.name},
                     {"path", TextOrNull(file.path)},
                     {"output", TextOrNull(OutputOf(file))},
                     {"status", file.HasFailed() ? "failed" : "converted"},
                     {"own_size", SizeOrNull(conversion.size)},
                     {"array", ArrayOrNull(file)},
                     {"lost",
                      {{"off_diagonal_pixels", lost.offDiagonalPixels},
                       {"beside_matrix_pixels", lost.besideMatrixPixels},
                       {"wrapped_values", lost.wrappedValues},
                       {"zeroed_values", lost.zeroedValues},
                       {"cleaned_values", lost.cleanedValues},
                       {"rounded_values", lost.roundedValues}}},
                     {"default_pixels", lost.defaultPixels},
                     {"problems", conversion.problems},
                     {"losses", conversion.losses},
                     {"notes", conversion.notes}});
    }
};

void PrintSummary(const SConversionOutcome& outcome) {
    PrintSummary(
        outcome.end, ExitStatus(outcome.end),
        {{"written", outcome.written}, {"failed", outcome.failed}, {"errors", outcome.errors}});
}

void PrintClosing(const SConversionOutcome& outcome) {
    for (const std::string& error : outcome.errors)
        Complain("{}", error);
    if (outcome.errors.empty())
        PrintLine(stdout, "{} file{} converted, {} failed{}", outcome.written,
                  outcome.written == 1 ? "" : "s", outcome.failed,
                  outcome.end == ERotationEnd::Interrupted ? ", interrupted" : "");
}

int Convert(SConvertOptions& options) {
    SConversionRequest& request = options.request;
    request.sources = ParseSources("SOURCE", options.sources);
    request.sync = !options.noSync;
    std::unique_ptr<CConversionListener> listener;
    if (options.json)
        listener = std::make_unique<CJsonConversion>();
    else
        listener = std::make_unique<CLineConversion>(!request.to);
    const SConversionOutcome outcome = RunConversion(request, CatchInterrupts(), *listener);
    if (options.json)
        PrintSummary(outcome);
    else
        PrintClosing(outcome);
    return ExitStatus(outcome.end);
}

void AddConvertPlaces(CLI::App& command, SConvertOptions& options) {
    COptionGroup places(command, kPlaces);
    places
        .AddPlaces("SOURCE", "PATH", options.sources,
                   "Coefficient file, or .npy file; with --to also several, and folders of them")
        .Required();
    const auto takeTarget = [&options](const std::string& text) {
        options.request.output = ParseFor("TARGET", "a path", text, ParsePath);
    };
    places
        .AddPlace("TARGET", "PATH", takeTarget,
                  "The file that it becomes, whose name tells the kind; with --to the folder for "
                  "the outputs, made when missing")
        .Required();
}

void AddConvertOptions(CLI::App& command, SConvertOptions& options) {
    AddConvertPlaces(command, options);
    SConversionRequest& request = options.request;
    COptionGroup conversion(command, "Conversion");
    const COption to = conversion.AddValue(
        "--to", "npy|9fcoef|3fcoef|9bcoef|3bcoef|9wcoef|3wcoef|4wcoef|12wcoef|cccoef", request.to,
        ParseFormName, "What all files become, several of them and folders too");
    conversion.AddFlag("--own", request.ownElements,
                       "Write .npy files of the values that the sources store, as words or bytes, "
                       "and not of the map's twelve float32");
    COptionGroup inputs(command, "Inputs");
    inputs
        .AddFlag(
            "--recursive,-r", request.recursive,
            "Also convert what lies in folders of the source folders; the target gets the same "
            "folders")
        .Needs(to);
    AddOutputFlags(command, request.replaces, options.noSync);
    AddJsonFlag(command, options.json);
}

} // namespace

void AddConvertCommand(CLI::App& program, int& exitStatus) {
    const auto options = std::make_shared<SConvertOptions>();
    CLI::App& command =
        AddCommand(program, "convert",
                   "Make coefficient files into other kinds, and to and from NumPy's arrays",
                   kConvertNotes, exitStatus, [options] { return Convert(*options); });
    AddConvertOptions(command, *options);
}

} // namespace trevolt
