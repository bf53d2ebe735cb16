#include "app/inspection/ReportPage.h"

#include <array>
#include <cstdint>

#include <fmt/format.h>

#include "app/inspection/ColourScale.h"
#include "app/inspection/HtmlText.h"
#include "app/inspection/ReportStyle.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr const char* kNothing = "\u2013"; // an en dash

/// "1 file" or "2 files".
std::string Counted(std::size_t count, const char* one, const char* several) {
    return fmt::format("{} {}", count, count == 1 ? one : several);
}

std::string Files(std::size_t count) { return Counted(count, "file", "files"); }

struct SClock {
    std::chrono::year_month_day day;
    std::chrono::hh_mm_ss<std::chrono::seconds> time;
};

/// In UTC, which needs no table of zones and reads alike everywhere.
SClock ClockOf(TimePoint time) {
    const auto day = std::chrono::floor<std::chrono::days>(time);
    return {std::chrono::year_month_day(day),
            std::chrono::hh_mm_ss(std::chrono::floor<std::chrono::seconds>(time - day))};
}

std::string DayText(const SClock& clock) {
    return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(clock.day.year()),
                       static_cast<unsigned>(clock.day.month()),
                       static_cast<unsigned>(clock.day.day()));
}

std::string TimeText(const SClock& clock) {
    return fmt::format("{:02}:{:02}:{:02}", clock.time.hours().count(),
                       clock.time.minutes().count(), clock.time.seconds().count());
}

/// `shown` is what stands in it.
std::string TimeElement(const SClock& clock, const std::string& shown) {
    return fmt::format("<time datetime=\"{}T{}Z\">{}</time>", DayText(clock), TimeText(clock),
                       shown);
}

std::string DayAndTime(TimePoint time) {
    const SClock clock = ClockOf(time);
    return TimeElement(clock, fmt::format("{} {} UTC", DayText(clock), TimeText(clock)));
}

std::string SizeOrNothing(const PixelSize& size) {
    return size == PixelSize{} ? kNothing : fmt::format("{} \u00D7 {}", size.width, size.height);
}

std::string PathHtml(const std::wstring& path) { return Html(WideToShownUtf8(path)); }

// The summary.

std::string Title(const SReportedRun& run) {
    std::string title = "Turn of " + Files(run.planned);
    if (run.failed > 0)
        title += fmt::format(": {} failed", run.failed);
    if (run.outcome.end == ERotationEnd::Interrupted)
        title += ", interrupted";
    return title;
}

struct SVerdict {
    const char* look;
    std::string text;
};

SVerdict VerdictOf(const SReportedRun& run) {
    if (run.outcome.end == ERotationEnd::Interrupted)
        return {"bad",
                fmt::format("Interrupted: {} of {} came to an end.", run.told, Files(run.planned))};
    if (run.failed > 0)
        return {"bad", fmt::format("{} of {} failed.", run.failed, Files(run.planned))};
    if (run.outcome.end != ERotationEnd::AllDone)
        return {"bad", "The files are done, but not all that belongs to the run."};
    if (run.skipped > 0)
        return {"good", fmt::format("{} written, {} left as they were; none failed.",
                                    Files(run.written), run.skipped)};
    return {"good", run.planned == 1 ? "The file is done." : "All files are done."};
}

std::string CountTile(std::size_t count, const char* what, const char* look = "") {
    return fmt::format("<div class=\"tile {}\"><dt>{}</dt><dd>{}</dd></div>\n", look, what, count);
}

std::string Counts(const SReportedRun& run) {
    std::string html = "<dl class=\"counts\">\n";
    html += CountTile(run.written, "written");
    html += CountTile(run.failed, "failed", run.failed > 0 ? "bad" : "");
    if (run.skipped > 0)
        html += CountTile(run.skipped, "skipped");
    if (run.told < run.planned)
        html += CountTile(run.planned - run.told, "not reached");
    if (run.passedOver > 0)
        html += CountTile(run.passedOver, "passed over");
    return html + "</dl>\n";
}

/// `html` is markup.
std::string Fact(const char* what, const std::string& html) {
    return fmt::format("<div><dt>{}</dt><dd>{}</dd></div>\n", what, html);
}

std::string SourcesHtml(const SReportedRun& run) {
    std::string html;
    const std::vector<std::wstring>& sources = run.request.sources;
    for (std::size_t i = 0; i < sources.size() && i < kReportedAtMost; ++i)
        html += (i == 0 ? "<bdi>" : "\n<bdi>") + PathHtml(sources[i]) + "</bdi>";
    if (sources.size() > kReportedAtMost)
        html += fmt::format("\nand {} more", sources.size() - kReportedAtMost);
    return html;
}

std::string AngleHtml(const SRotationRequest& request) {
    if (request.angles.empty())
        return fmt::format("{}\u00B0 clockwise", 90 * request.angle.code);
    return fmt::format("each file by its own, from a table of {}",
                       Counted(request.angles.size(), "row", "rows"));
}

const char* ExistingText(EExistingOutput existing) {
    switch (existing) {
    case EExistingOutput::Replace:
        return "replaced";
    case EExistingOutput::Skip:
        return "kept, and their files are skipped";
    case EExistingOutput::Refuse:
        break;
    }
    return "kept, and their files fail";
}

/// The facts of options that are not as they are without a word.
std::string ChosenOptions(const SRotationRequest& request) {
    std::string html;
    if (request.recursive)
        html += Fact("Folders of the sources", "with those that lie in them");
    if (request.limits.fileBytes != SRotationLimits().fileBytes)
        html += Fact("Largest file", fmt::format("{} bytes", request.limits.fileBytes));
    if (request.limits.largestSize != SRotationLimits().largestSize)
        html += Fact("Largest map", SizeOrNothing(request.limits.largestSize));
    if (request.size)
        html += Fact("Size", SizeOrNothing(*request.size) + " for every map");
    if (request.lenient)
        html += Fact("Damaged files", "written from what could be read of them");
    if (request.keepExtras)
        html +=
            Fact("Extras of word files",
                 "kept" + (request.wall ? ", in a wall of " + SizeOrNothing(*request.wall) : ""));
    if (request.suffix)
        html += Fact("Names of outputs", "with <bdi>" + PathHtml(*request.suffix) + "</bdi>");
    if (request.verify)
        html += Fact("Outputs", "read back from the disk and compared");
    if (request.keepTimes)
        html += Fact("Times of outputs", "those of their sources");
    if (request.shard.count > 1)
        html += Fact("Part of the run",
                     fmt::format("{} of {}", request.shard.number, request.shard.count));
    if (!request.manifest.empty())
        html += Fact("Manifest", "<bdi>" + PathHtml(request.manifest) + "</bdi>");
    if (!request.sync)
        html += Fact("Disk", "not waited for: a power cut may cost outputs");
    return html;
}

std::string Facts(const SReportedRun& run) {
    std::string html = "<dl class=\"facts\">\n";
    html += Fact("Sources", SourcesHtml(run));
    html += Fact("Target", "<bdi>" + PathHtml(run.request.targetFolder) + "</bdi>");
    html += Fact("Turn", AngleHtml(run.request));
    html += Fact("Existing outputs", ExistingText(run.request.existing));
    html += ChosenOptions(run.request);
    html += Fact("Threads", fmt::format("{} at most", run.request.jobs));
    html += Fact("Started", DayAndTime(run.started));
    html += Fact("Took", ShownDuration(std::chrono::duration_cast<std::chrono::microseconds>(
                             run.ended - run.started)));
    html += Fact("Program", "trevolt-cli " + Html(run.version));
    return html + "</dl>\n";
}

std::string Alert(const std::string& text) {
    return text.empty() ? std::string()
                        : fmt::format("<p class=\"verdict bad\">{}</p>\n", Html(text));
}

/// The scale that the pictures have, as CSS takes it.
std::string ScaleColours() {
    constexpr int kSteps = 8;
    const CColourScale scale(EColourScale::FalseColour);
    std::vector<std::string> colours;
    for (int i = 0; i <= kSteps; ++i) {
        const SColour colour = scale.At(static_cast<double>(i) / kSteps);
        colours.push_back(
            fmt::format("#{:02x}{:02x}{:02x}", colour.red, colour.green, colour.blue));
    }
    return fmt::format("{}", fmt::join(colours, ","));
}

std::string PictureNote(const SReportedRun& run) {
    if (!run.hasPictures)
        return "<p>There are no pictures: those of so many files would be too large.</p>\n";
    return fmt::format(
        "<p>The pictures show how bright each pixel is made for white, in colours "
        "<span class=\"scale\" style=\"background-image:linear-gradient(to right,{})\"></span> "
        "from the smaller to the larger value that stands below each picture.</p>\n",
        ScaleColours());
}

// Links within the page.

bool HasOthers(const SReportedRun& run) { return run.told > run.failed; }

std::string Link(const char* id, const std::string& text) {
    return fmt::format("<li><a href=\"#{}\">{}</a></li>\n", id, text);
}

std::string Navigation(const SReportedRun& run) {
    std::string html = "<nav aria-label=\"On this page\">\n<ul>\n" + Link("summary", "Summary");
    if (run.failed > 0)
        html += Link("failed", fmt::format("Failed files ({})", run.failed));
    if (HasOthers(run))
        html += Link("files", fmt::format("{} files ({})", run.failed > 0 ? "Other" : "All",
                                          run.told - run.failed));
    if (run.passedOver > 0)
        html += Link("passed", fmt::format("Passed over ({})", run.passedOver));
    return html + "</ul>\n</nav>\n";
}

/// What failed, at the top of the page.
std::string JumpList(const SReportedRun& run) {
    if (run.failed == 0)
        return {};
    std::string html = "<nav aria-label=\"Failed files\">\n<ul class=\"jump\">\n";
    for (const SReportLink& link : run.links)
        html += fmt::format("<li><a href=\"#f{}\"><bdi>{}</bdi></a>: {}</li>\n", link.number,
                            Html(link.name), Html(link.problem));
    if (run.failed > run.links.size())
        html += fmt::format("<li>and {} more in the table</li>\n", run.failed - run.links.size());
    return html + "</ul>\n</nav>\n";
}

const char* FirstTable(const SReportedRun& run) {
    if (run.failed > 0)
        return "failed";
    return HasOthers(run) ? "files" : "summary";
}

// Rows.

const char* BadgeLook(const SFileOutcome& outcome) {
    if (outcome.HasFailed())
        return "bad";
    return outcome.skipped ? "mild" : "good";
}

const char* StatusText(const SFileOutcome& outcome) {
    if (outcome.HasFailed())
        return outcome.outputName.empty() ? "failed" : "failed, yet written";
    if (outcome.skipped)
        return "skipped";
    return outcome.angleCode == 0 ? "copied" : "turned";
}

std::string ListOf(const std::vector<std::string>& texts) {
    std::string html;
    for (const std::string& text : texts)
        html += "<li>" + Html(text) + "</li>";
    return html;
}

std::string StateCell(const SFileOutcome& outcome) {
    std::string remarks = ListOf(outcome.problems);
    if (outcome.skipped)
        remarks += "<li>its output exists already</li>";
    for (const std::string& loss : outcome.losses)
        remarks += "<li>lacks " + Html(loss) + "</li>";
    remarks += ListOf(outcome.notes);
    return fmt::format(
        "<td role=\"cell\" class=\"state\"><span class=\"badge {}\">{}</span>{}</td>\n",
        BadgeLook(outcome), StatusText(outcome), remarks.empty() ? "" : "<ul>" + remarks + "</ul>");
}

std::string NameCell(const SReportedFile& file) {
    const SFileOutcome& outcome = file.outcome;
    std::string html =
        fmt::format("<th scope=\"row\" role=\"rowheader\"><span class=\"number\">{}</span> "
                    "<bdi class=\"name\">{}</bdi>",
                    file.number, Html(outcome.name));
    if (!outcome.outputName.empty())
        html += "<span class=\"output\">to <bdi>" + Html(outcome.outputName) + "</bdi></span>";
    return html + "</th>\n";
}

/// A map before or after the turn.
struct SMapCell {
    const char* when;
    PixelSize size;
    const SThumbnail& picture;
};

std::string PictureHtml(const SMapCell& cell, const std::string& name) {
    const SThumbnail& picture = cell.picture;
    if (picture.png.empty())
        return {};
    return fmt::format("<img src=\"data:image/png;base64,{}\" width=\"{}\" height=\"{}\" "
                       "loading=\"lazy\" decoding=\"async\" alt=\"{} {} the turn: brightness {}\">",
                       Base64(picture.png), picture.width, picture.height, Html(name), cell.when,
                       Html(picture.range));
}

std::string MapCell(const SMapCell& cell, const std::string& name) {
    std::string html =
        fmt::format("<td role=\"cell\" data-is=\"{}\">{}<span class=\"size\">{}</span>", cell.when,
                    PictureHtml(cell, name), SizeOrNothing(cell.size));
    const std::string& told = cell.picture.png.empty() ? cell.picture.lack : cell.picture.range;
    if (!told.empty())
        html += "<span class=\"more\">" + Html(told) + "</span>";
    return html + "</td>\n";
}

std::string TurnCell(const SFileOutcome& outcome) {
    return fmt::format("<td role=\"cell\" data-is=\"turn\">{}</td>\n",
                       outcome.angleCode == 0 ? "none"
                                              : fmt::format("{}\u00B0", 90 * outcome.angleCode));
}

std::string TimeCell(const SReportedFile& file) {
    const SClock clock = ClockOf(file.finished);
    std::string html =
        "<td role=\"cell\" data-is=\"finished, UTC\">" + TimeElement(clock, TimeText(clock));
    if (!file.outcome.skipped)
        html += "<span class=\"more\">took " + ShownDuration(file.outcome.took) + "</span>";
    return html + "</td>\n";
}

std::string SumOf(const char* what, const std::string& sum) {
    return sum.empty() ? std::string() : fmt::format("<dt>{}</dt><dd>{}</dd>", what, sum);
}

std::string SumCell(const SFileOutcome& outcome) {
    const std::string sums =
        SumOf("source", outcome.sourceSum) + SumOf("output", outcome.outputSum);
    return fmt::format("<td role=\"cell\" class=\"sums\" data-is=\"SHA-256\">{}</td>\n",
                       sums.empty() ? kNothing : "<dl>" + sums + "</dl>");
}

struct SColumn {
    const char* look;
    const char* title;
};
constexpr std::array kColumns{SColumn{"file", "File"},  SColumn{"state", "Status"},
                              SColumn{"map", "Before"}, SColumn{"map", "After"},
                              SColumn{"turn", "Turn"},  SColumn{"time", "Finished, UTC"},
                              SColumn{"sum", "SHA-256"}};

// The end.

std::string PassedOver(const SReportedRun& run) {
    if (run.passedOver == 0)
        return {};
    std::string html = "<section aria-labelledby=\"passed\">\n<h2 id=\"passed\">Passed over</h2>\n"
                       "<ul class=\"passed\">\n";
    for (const SPassedOver& entry : run.entries)
        html += fmt::format("<li><bdi>{}</bdi>: {}</li>\n", Html(entry.name), Html(entry.reason));
    if (run.passedOver > run.entries.size())
        html += fmt::format("<li>and {} more</li>\n", run.passedOver - run.entries.size());
    return html + "</ul>\n</section>\n";
}

} // namespace

std::string ShownDuration(std::chrono::microseconds duration) {
    const std::int64_t milliseconds = duration.count() / 1000;
    const std::int64_t seconds = milliseconds / 1000;
    if (seconds == 0)
        return fmt::format("{} ms", milliseconds);
    if (seconds < 60)
        return fmt::format("{}.{:02} s", seconds, milliseconds % 1000 / 10);
    if (seconds < 3600)
        return fmt::format("{} min {} s", seconds / 60, seconds % 60);
    return fmt::format("{} h {} min", seconds / 3600, seconds % 3600 / 60);
}

std::string ReportBegin(const SReportedRun& run) {
    const std::string title = Title(run);
    const SVerdict verdict = VerdictOf(run);
    std::string html = fmt::format(
        R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; img-src data:; style-src 'unsafe-inline'">
<title>{0}</title>
<link rel="icon" href="data:,">
<style>{1}</style>
</head>
<body>
<a class="skip" href="#{2}">Skip to the files</a>
<header>
<h1>{0}</h1>
<p class="verdict {3}">{4}</p>
{5}</header>
<main>
<section aria-labelledby="summary">
<h2 id="summary">Summary</h2>
)",
        title, kReportStyle, FirstTable(run), verdict.look, Html(verdict.text),
        JumpList(run) + Navigation(run));
    for (const std::string& error : run.outcome.errors)
        html += Alert(error);
    html += Alert(run.outcome.manifestError);
    html += Counts(run) + Facts(run) + PictureNote(run) + "</section>\n";
    if (run.failed == 0)
        return html;
    return html + "<section aria-labelledby=\"failed\">\n<h2 id=\"failed\">Failed files</h2>\n";
}

std::string ReportTableBegin(EReportTable table, std::size_t rows) {
    const bool isFailed = table == EReportTable::Failed;
    std::string html = isFailed
                           ? std::string()
                           : "<section aria-labelledby=\"files\">\n<h2 id=\"files\">Files</h2>\n";
    html +=
        fmt::format("<table role=\"table\">\n<caption>{}, in the order of the run</caption>\n"
                    "<thead role=\"rowgroup\"><tr role=\"row\">",
                    isFailed ? Counted(rows, "file that failed", "files that failed")
                             : Counted(rows, "file without a failure", "files without a failure"));
    for (const SColumn& column : kColumns)
        html += fmt::format("<th scope=\"col\" role=\"columnheader\" class=\"{}\">{}</th>",
                            column.look, column.title);
    return html + "</tr></thead>\n<tbody role=\"rowgroup\">\n";
}

std::string ReportRow(const SReportedFile& file) {
    const SFileOutcome& outcome = file.outcome;
    const PixelSize turnedSize = outcome.outputName.empty() ? PixelSize() : outcome.turnedSize;
    return fmt::format("<tr id=\"f{}\" role=\"row\">", file.number) + NameCell(file) +
           StateCell(outcome) +
           MapCell({"before", outcome.ownSize, outcome.sourcePicture}, outcome.name) +
           MapCell({"after", turnedSize, outcome.outputPicture}, outcome.name) + TurnCell(outcome) +
           TimeCell(file) + SumCell(outcome) + "</tr>\n";
}

std::string ReportTableEnd() { return "</tbody>\n</table>\n</section>\n"; }

std::string ReportEnd(const SReportedRun& run) {
    return PassedOver(run) + fmt::format("</main>\n<footer><p>Written by trevolt-cli {} at {}.</p>"
                                         "</footer>\n</body>\n</html>\n",
                                         Html(run.version), DayAndTime(run.ended));
}

} // namespace trevolt
