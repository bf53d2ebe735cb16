#include <algorithm>
#include <cmath>
#include <memory>
#include <thread>

#include "app/inspection/FileFacts.h"
#include "app/inspection/MapValueNames.h"
#include "app/rotation/CoefFileSearch.h"
#include "cli/Commands.h"
#include "cli/JsonLine.h"
#include "cli/OptionGroup.h"
#include "cli/OptionValues.h"
#include "cli/RunPrinter.h"
#include "cli/SharedOptions.h"
#include "cli/ShownText.h"
#include "cli/Sources.h"
#include "common/ShownCharacters.h"
#include "platform/Process.h"
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
  2    wrong usage, or nothing to do
  130  interrupted; what is told of a file is whole)";

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

/// What is left of a damaged file says nothing of how well it was packed.
bool HasRatio(const SFileFacts& facts) {
    return facts.rawBytes && facts.storedBytes.value_or(0) > 0 && facts.problems.empty();
}

/// Pixels of which nothing was read have default values, too, and would be counted.
bool HasDefaults(const SFileFacts& facts) { return facts.statistics && facts.problems.empty(); }

struct SInfoFile {
    std::string name; ///< below its source folder
    std::string path; ///< that opens it; empty where its name is not valid UTF-8
};

struct SInfoOutcome {
    ERotationEnd end = ERotationEnd::AllDone;
    std::vector<std::string> errors; ///< why nothing could be done
    std::size_t whole = 0;
    std::size_t failed = 0;
};

class CInfoPrinter {
  public:
    virtual ~CInfoPrinter() = default;
    CInfoPrinter(const CInfoPrinter&) = delete;
    CInfoPrinter& operator=(const CInfoPrinter&) = delete;

    virtual void OnFile(const SInfoFile& file, const SFileFacts& facts) = 0;
    virtual void OnEnd(const SInfoOutcome& outcome) = 0;

  protected:
    CInfoPrinter() = default;
};

/// Prints a block of lines a file, each behind the name of what it tells.
class CLineInfoPrinter final : public CInfoPrinter {
  public:
    void OnFile(const SInfoFile& file, const SFileFacts& facts) override {
        PrintLine(stdout, "{}", file.path.empty() ? file.name : file.path);
        if (facts.kind != nullptr)
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
        if (HasDefaults(facts))
            PrintRow("default", "{} of {} pixels, {}", facts.statistics->defaults,
                     facts.statistics->pixels,
                     PercentOf(facts.statistics->defaults, facts.statistics->pixels));
        if (facts.statistics)
            PrintStatistics(*facts.statistics);
        PrintText(stdout, "");
    }

    void OnEnd(const SInfoOutcome& outcome) override {
        for (const std::string& error : outcome.errors)
            Complain("{}", error);
        const std::size_t files = outcome.whole + outcome.failed;
        const bool isInterrupted = outcome.end == ERotationEnd::Interrupted;
        if (files != 0 || isInterrupted)
            PrintLine(stdout, "{} {}, {} with problems{}", files, files == 1 ? "file" : "files",
                      outcome.failed, isInterrupted ? ", interrupted" : "");
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
            PrintRow("stored", "{} byte{}", *facts.storedBytes, *facts.storedBytes == 1 ? "" : "s");
    }

    static void PrintStatistics(const SCoefStatistics& statistics) {
        PrintLine(stdout, "  {:<9}{:>13}{:>13}{:>13}{:>15}{:>13}", "value", "minimum", "mean",
                  "maximum", "outside 0..1", "no number");
        for (std::size_t k = 0; k < statistics.values.size(); ++k) {
            const SValueStatistics& value = statistics.values[k];
            if (statistics.wanted.test(k))
                PrintLine(stdout, "  {:<9}{:>13.6g}{:>13.6g}{:>13.6g}{:>15}{:>13}",
                          kMapValueNames[k], value.least, value.mean, value.greatest, value.outside,
                          value.nan);
        }
    }
};

/// Prints one object a file, and a summary (docs/info.md).
class CJsonInfoPrinter final : public CInfoPrinter {
  public:
    void OnFile(const SInfoFile& file, const SFileFacts& facts) override {
        const auto& words = facts.words;
        const std::string kind = KindName(facts.kind);
        const std::string content = KindName(facts.content);
        const SOwnerTexts owner = TextsOf(facts);
        const std::string digest = DigestOf(facts);
        PrintObject(
            {{"type", "file"},
             {"name", file.name},
             {"path", TextOrNull(file.path)},
             {"status", facts.problems.empty() ? "whole" : "failed"},
             {"kind", TextOrNull(kind)},
             {"content", TextOrNull(content)},
             {"format_version", ValueOrNull(facts.version)},
             {"own_size", SizeOrNull(facts.size)},
             {"covered_pixels", ValueOrNull(facts.covered)},
             {"stored_bytes", ValueOrNull(facts.storedBytes)},
             {"raw_bytes", ValueOrNull(facts.rawBytes)},
             {"ratio", HasRatio(facts) ? CJson(RatioOf(facts)) : CJson(nullptr)},
             {"origin", words ? CJson::Of(*words, kPutOrigin) : CJson(nullptr)},
             {"chunks", words ? CJson(words->chunks) : CJson(nullptr)},
             {"extra_words", words ? CJson(words->hasExtraWords) : CJson(nullptr)},
             {"owner", words && words->owner ? CJson::Of(owner, kPutOwner) : CJson(nullptr)},
             {"store_digest", TextOrNull(digest)},
             {"default_pixels",
              HasDefaults(facts) ? CJson(facts.statistics->defaults) : CJson(nullptr)},
             {"values",
              facts.statistics ? CJson::Of(*facts.statistics, kPutStatistics) : CJson(nullptr)},
             {"problems", facts.problems},
             {"notes", facts.notes}});
    }

    void OnEnd(const SInfoOutcome& outcome) override {
        PrintSummary(
            outcome.end, ExitStatus(outcome.end),
            {{"whole", outcome.whole}, {"failed", outcome.failed}, {"errors", outcome.errors}});
    }

  private:
    struct SOwnerTexts {
        std::string name;
        std::string bytes;
        std::uint8_t flag = 0;
    };

    /// Of no owner empty.
    static SOwnerTexts TextsOf(const SFileFacts& facts) {
        if (!facts.words || !facts.words->owner)
            return {};
        const SOwnerFacts& owner = *facts.words->owner;
        return {NameOf(owner), HexOf(owner.name), owner.flag};
    }

    static std::string DigestOf(const SFileFacts& facts) {
        return facts.words && facts.words->storeDigest ? WideToShownUtf8(*facts.words->storeDigest)
                                                       : std::string();
    }

    static constexpr auto kPutOrigin = [](CJsonLine& line, const SWordFileFacts& words) {
        line.PutObject({{"x", words.originX}, {"y", words.originY}});
    };

    static constexpr auto kPutOwner = [](CJsonLine& line, const SOwnerTexts& owner) {
        line.PutObject({{"name", owner.name}, {"bytes", owner.bytes}, {"flag", owner.flag}});
    };

    static constexpr auto kPutStatistics = [](CJsonLine& line, const SCoefStatistics& statistics) {
        CJsonElements elements(line);
        for (std::size_t k = 0; k < statistics.values.size(); ++k) {
            const SValueStatistics& value = statistics.values[k];
            if (statistics.wanted.test(k))
                elements.Add({{"value", kMapValueNames[k]},
                              {"minimum", value.least}, // what is not finite becomes null
                              {"mean", value.mean},
                              {"maximum", value.greatest},
                              {"outside_pixels", value.outside},
                              {"nan_pixels", value.nan}});
        }
        elements.End();
    };
};

class CInfo {
  public:
    explicit CInfo(const SInfoOptions& options) : m_options(options) {
        if (options.json)
            m_printer = std::make_unique<CJsonInfoPrinter>();
        else
            m_printer = std::make_unique<CLineInfoPrinter>();
    }

    int Run() {
        const std::atomic<bool>& interrupted = CatchInterrupts();
        SCommandFiles found =
            FindCommandFiles(ParseSources("FILE", m_options.sources), m_options.recursive);
        m_outcome.end = found.end;
        m_outcome.errors = std::move(found.errors);
        for (const std::string& name : found.unnamable)
            TellUnnamable(name);
        for (const SCoefFileName& file : found.files) {
            if (interrupted)
                break;
            Tell({WideToShownUtf8(file.name), WideToShownUtf8(file.Path())},
                 FindFileFacts(file.Path(), DefaultThreads()));
        }
        if (interrupted)
            m_outcome.end = ERotationEnd::Interrupted;
        m_printer->OnEnd(m_outcome);
        return ExitStatus(m_outcome.end);
    }

  private:
    void TellUnnamable(const std::string& name) {
        SFileFacts facts;
        facts.problems.emplace_back(DescribeUnnamable(name));
        Tell({name, {}}, facts);
    }

    void Tell(const SInfoFile& file, const SFileFacts& facts) {
        m_printer->OnFile(file, facts);
        if (facts.problems.empty()) {
            ++m_outcome.whole;
            return;
        }
        ++m_outcome.failed;
        m_outcome.end = ERotationEnd::SomeFailed;
    }

    const SInfoOptions& m_options;
    std::unique_ptr<CInfoPrinter> m_printer;
    SInfoOutcome m_outcome;
};

} // namespace

void AddInfoCommand(CLI::App& program, int& exitStatus) {
    const auto options = std::make_shared<SInfoOptions>();
    CLI::App& command = AddCommand(program, "info", "Tell what coefficient files hold", kInfoNotes,
                                   exitStatus, [options] { return CInfo(*options).Run(); });
    AddSources(command, "FILE", options->sources);
    COptionGroup inputs(command, "Inputs");
    inputs.AddFlag("--recursive,-r", options->recursive,
                   "Also tell of what lies in folders of the folders");
    AddJsonFlag(command, options->json);
}

} // namespace trevolt
