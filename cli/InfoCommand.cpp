#include <algorithm>
#include <cmath>
#include <memory>
#include <thread>

#include "app/inspection/FileFacts.h"
#include "app/rotation/CoefFileSearch.h"
#include "cli/Commands.h"
#include "cli/JsonLine.h"
#include "cli/OptionGroup.h"
#include "cli/OptionValues.h"
#include "cli/ShownText.h"
#include "cli/Sources.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr const char* kInfoNotes = R"(Examples:
  trevolt-cli info measured/Cab_01.9wcoef
      tells what the file holds
  trevolt-cli info -r --json measured
      all files of a tree, for programs

Exit states:
  0    all files are whole
  1    some file is damaged or cannot be read; what could be read is told
  2    wrong usage, or nothing to do)";

struct SInfoOptions {
    std::vector<std::string> sources;
    bool recursive = false;
    bool json = false;
};

/// Upper case, two digits a byte.
std::string HexOf(const std::array<std::uint8_t, 16>& bytes) {
    return fmt::format("{:02X}", fmt::join(bytes, ""));
}

/// The owner's name up to the zeros at its end.
std::string NameOf(const SOwnerFacts& owner) {
    const auto end = std::find_if(owner.name.rbegin(), owner.name.rend(),
                                  [](std::uint8_t byte) { return byte != 0; });
    return Shown(std::string(owner.name.begin(), end.base()));
}

/// Never rounded up: 100 % are all.
std::string PercentOf(std::uint64_t part, std::uint64_t whole) {
    const std::uint64_t tenths = whole == 0 ? 0 : part * 1000 / whole;
    return fmt::format("{}.{} %", tenths / 10, tenths % 10);
}

std::uint64_t PixelsOf(const PixelSize& size) {
    return static_cast<std::uint64_t>(size.width) * static_cast<std::uint64_t>(size.height);
}

double RatioOf(const SFileFacts& facts) {
    return static_cast<double>(*facts.rawBytes) / static_cast<double>(*facts.storedBytes);
}

bool HasRatio(const SFileFacts& facts) {
    return facts.rawBytes && facts.storedBytes.value_or(0) > 0;
}

class CInfoPrinter {
  public:
    virtual ~CInfoPrinter() = default;
    CInfoPrinter(const CInfoPrinter&) = delete;
    CInfoPrinter& operator=(const CInfoPrinter&) = delete;

    virtual void OnFile(const std::string& name, const SFileFacts& facts) = 0;
    virtual void OnEnd(std::size_t files, std::size_t damaged, int exitStatus) = 0;

  protected:
    CInfoPrinter() = default;
};

/// Prints a block of lines a file, each behind the name of what it tells.
class CLineInfoPrinter final : public CInfoPrinter {
  public:
    void OnFile(const std::string& name, const SFileFacts& facts) override {
        PrintLine(stdout, "{}", name);
        PrintRow("kind", "{}", WideToShownUtf8(facts.kind->extension));
        if (facts.version)
            PrintRow("version", "{}", *facts.version);
        if (facts.size != PixelSize{})
            PrintRow("size", "{} x {} pixels", facts.size.width, facts.size.height);
        if (facts.words)
            PrintHeader(*facts.words);
        if (facts.covered)
            PrintRow("coverage", "{} of {} pixels, {}", *facts.covered, PixelsOf(facts.size),
                     PercentOf(*facts.covered, PixelsOf(facts.size)));
        PrintBytes(facts);
        if (facts.words && facts.words->storeDigest)
            PrintRow("digest", "{}", WideToShownUtf8(*facts.words->storeDigest));
        for (const std::string& problem : facts.problems)
            PrintRow("problem", "{}", problem);
        for (const std::string& note : facts.notes)
            PrintRow("note", "{}", note);
        if (facts.statistics)
            PrintStatistics(*facts.statistics);
        PrintText(stdout, "");
    }

    void OnEnd(std::size_t files, std::size_t damaged, int /*exitStatus*/) override {
        PrintLine(stdout, "{} {}, {} with problems", files, files == 1 ? "file" : "files", damaged);
    }

  private:
    template <class... Values>
    static void PrintRow(const char* what, fmt::format_string<Values...> form, Values&&... values) {
        PrintLine(stdout, "  {:<9} {}", what, fmt::format(form, std::forward<Values>(values)...));
    }

    static void PrintHeader(const SWordFileFacts& words) {
        PrintRow("origin", "({}, {})", words.originX, words.originY);
        PrintRow("chunks", "{}", words.chunks);
        PrintRow("extras", "{}", words.hasExtraWords ? "extra words" : "no extra words");
        if (words.owner)
            PrintRow("owner", "\"{}\", flag {}", NameOf(*words.owner), words.owner->flag);
    }

    static void PrintBytes(const SFileFacts& facts) {
        if (HasRatio(facts))
            PrintRow("stored", "{} bytes of {} raw, ratio {:.2f}", *facts.storedBytes,
                     *facts.rawBytes, RatioOf(facts));
        else if (facts.storedBytes)
            PrintRow("stored", "{} bytes", *facts.storedBytes);
    }

    static void PrintStatistics(const SCoefStatistics& statistics) {
        PrintRow("default", "{} of {} pixels, {}", statistics.defaults, statistics.pixels,
                 PercentOf(statistics.defaults, statistics.pixels));
        if (statistics.pixels == 0)
            return;
        PrintLine(stdout, "  {:<9}{:>13}{:>13}{:>13}{:>15}{:>13}", "value", "minimum", "mean",
                  "maximum", "outside 0..1", "no number");
        for (std::size_t k = 0; k < statistics.values.size(); ++k) {
            const SValueStatistics& value = statistics.values[k];
            if (statistics.wanted.test(k))
                PrintLine(stdout, "  {:<9}{:>13.6g}{:>13.6g}{:>13.6g}{:>15}{:>13}",
                          fmt::format("m[{}]", k), value.least, value.mean, value.greatest,
                          value.outside, value.nan);
        }
    }
};

/// Prints one object a file, and a summary (docs/info.md).
class CJsonInfoPrinter final : public CInfoPrinter {
  public:
    void OnFile(const std::string& name, const SFileFacts& facts) override {
        Json object{{"type", "file"},
                    {"name", name},
                    {"status", facts.problems.empty() ? "whole" : "damaged"},
                    {"kind", WideToShownUtf8(facts.kind->extension)},
                    {"content", facts.content == nullptr
                                    ? Json(nullptr)
                                    : Json(WideToShownUtf8(facts.content->extension))},
                    {"version", ValueOrNull(facts.version)},
                    {"size", SizeOrNull(facts.size)},
                    {"covered_pixels", ValueOrNull(facts.covered)},
                    {"stored_bytes", ValueOrNull(facts.storedBytes)},
                    {"raw_bytes", ValueOrNull(facts.rawBytes)},
                    {"ratio", HasRatio(facts) ? Json(RatioOf(facts)) : Json(nullptr)},
                    {"origin", nullptr},
                    {"chunks", nullptr},
                    {"extra_words", nullptr},
                    {"owner", nullptr},
                    {"store_digest", nullptr},
                    {"default_pixels", nullptr},
                    {"values", nullptr},
                    {"problems", facts.problems},
                    {"notes", facts.notes}};
        if (facts.words)
            AddHeader(*facts.words, object);
        if (facts.statistics)
            AddStatistics(*facts.statistics, object);
        PrintObject(object);
    }

    void OnEnd(std::size_t files, std::size_t damaged, int exitStatus) override {
        PrintObject({{"type", "summary"},
                     {"version", kJsonVersion},
                     {"exit_status", exitStatus},
                     {"files", files},
                     {"damaged", damaged}});
    }

  private:
    template <class Value>
    static Json ValueOrNull(const std::optional<Value>& value) {
        return value ? Json(*value) : Json(nullptr);
    }

    static void AddHeader(const SWordFileFacts& words, Json& object) {
        object["origin"] = {{"x", words.originX}, {"y", words.originY}};
        object["chunks"] = words.chunks;
        object["extra_words"] = words.hasExtraWords;
        if (words.owner)
            object["owner"] = {{"name", NameOf(*words.owner)},
                               {"bytes", HexOf(words.owner->name)},
                               {"flag", words.owner->flag}};
        if (words.storeDigest)
            object["store_digest"] = WideToShownUtf8(*words.storeDigest);
    }

    static void AddStatistics(const SCoefStatistics& statistics, Json& object) {
        object["default_pixels"] = statistics.defaults;
        Json values = Json::array();
        for (std::size_t k = 0; k < statistics.values.size(); ++k) {
            const SValueStatistics& value = statistics.values[k];
            if (statistics.wanted.test(k))
                values.push_back({{"value", fmt::format("m[{}]", k)},
                                  {"minimum", value.least}, // what is not finite becomes null
                                  {"mean", value.mean},
                                  {"maximum", value.greatest},
                                  {"outside", value.outside},
                                  {"nan", value.nan}});
        }
        object["values"] = std::move(values);
    }
};

int Info(const SInfoOptions& options) {
    const auto found = FindCommandFiles(ParseSources("FILE", options.sources), options.recursive);
    if (found.exitStatus != kExitAllDone && found.files.empty())
        return found.exitStatus;
    std::unique_ptr<CInfoPrinter> printer = std::make_unique<CLineInfoPrinter>();
    if (options.json)
        printer = std::make_unique<CJsonInfoPrinter>();
    std::size_t damaged = 0;
    for (const SCoefFileName& file : found.files) {
        const SFileFacts facts = FindFileFacts(file.Path(), DefaultThreads());
        damaged += facts.problems.empty() ? 0 : 1;
        printer->OnFile(WideToShownUtf8(file.Path()), facts);
    }
    const int exitStatus = damaged == 0 ? found.exitStatus : kExitSomeFailed;
    printer->OnEnd(found.files.size(), damaged, exitStatus);
    return exitStatus;
}

} // namespace

void AddInfoCommand(CLI::App& program, int& exitStatus) {
    const auto options = std::make_shared<SInfoOptions>();
    CLI::App* command = program.add_subcommand("info", "Tell what coefficient files hold");
    command->footer(kInfoNotes);
    command
        ->add_option("FILE", options->sources,
                     "Coefficient files, folders of them, or both; the program itself replaces "
                     "* and ? on Windows")
        ->type_name("PATH")
        ->group("Places")
        ->required();
    COptionGroup inputs(*command, "Inputs");
    inputs.AddFlag("--recursive,-r", options->recursive,
                   "Also tell of what lies in folders of the folders");
    COptionGroup report(*command, "Report");
    report.AddFlag("--json", options->json, "Print one JSON object a line, a summary last");
    command->callback([options, &exitStatus] { exitStatus = Info(*options); });
}

} // namespace trevolt
