#include "app/inspection/ReportPage.h"

#include <gtest/gtest.h>

namespace trevolt {
namespace {

using std::chrono::microseconds;

constexpr TimePoint kNoon{std::chrono::seconds{1'800'014'405}}; // 2027-01-15 12:00:05

bool Holds(const std::string& page, const std::string& text) {
    return page.find(text) != std::string::npos;
}

SFileOutcome Turned() {
    SFileOutcome outcome;
    outcome.name = "row 1/a<b>.9fcoef";
    outcome.outputName = "row 1/a<b>-90\u00B0.9fcoef";
    outcome.angleCode = 1;
    outcome.ownSize = outcome.size = {4, 3};
    outcome.turnedSize = {3, 4};
    outcome.sourcePicture = {"PNG", 128, 96, "0 to 1"};
    outcome.outputPicture = {"png", 96, 128, "0 to 2"};
    outcome.sourceSum = "5a";
    outcome.outputSum = "6b";
    outcome.took = microseconds{12'999};
    return outcome;
}

TEST(ReportRow, OfATurnedFile) {
    EXPECT_EQ(
        ReportRow({Turned(), 7, kNoon}),
        "<tr id=\"f7\" role=\"row\"><th scope=\"row\" role=\"rowheader\"><span "
        "class=\"number\">7</span> "
        "<bdi class=\"name\">row 1/a&lt;b&gt;.9fcoef</bdi>"
        "<span class=\"output\">to <bdi>row 1/a&lt;b&gt;-90\u00B0.9fcoef</bdi></span></th>\n"
        "<td role=\"cell\" class=\"state\"><span class=\"badge good\">turned</span></td>\n"
        "<td role=\"cell\" data-is=\"before\"><img src=\"data:image/png;base64,UE5H\" "
        "width=\"128\" "
        "height=\"96\" loading=\"lazy\" decoding=\"async\" "
        "alt=\"row 1/a&lt;b&gt;.9fcoef before the turn: brightness 0 to 1\">"
        "<span class=\"size\">4 \u00D7 3</span><span class=\"more\">0 to 1</span></td>\n"
        "<td role=\"cell\" data-is=\"after\"><img src=\"data:image/png;base64,cG5n\" width=\"96\" "
        "height=\"128\" loading=\"lazy\" decoding=\"async\" "
        "alt=\"row 1/a&lt;b&gt;.9fcoef after the turn: brightness 0 to 2\">"
        "<span class=\"size\">3 \u00D7 4</span><span class=\"more\">0 to 2</span></td>\n"
        "<td role=\"cell\" data-is=\"turn\">90\u00B0</td>\n"
        "<td role=\"cell\" data-is=\"finished, UTC\"><time "
        "datetime=\"2027-01-15T12:00:05Z\">12:00:05"
        "</time><span class=\"more\">took 12 ms</span></td>\n"
        "<td role=\"cell\" class=\"sums\" data-is=\"SHA-256\"><dl><dt>source</dt><dd>5a</dd>"
        "<dt>output</dt><dd>6b</dd></dl></td>\n</tr>\n");
}

TEST(ReportRow, OfAFileThatFailed) {
    SFileOutcome outcome;
    outcome.name = "a\x1B.9fcoef";
    outcome.angleCode = 2;
    outcome.turnedSize = {3, 4}; // of an output that was given up
    outcome.problems = {"cannot be <read>", "twice"};
    outcome.losses = {"its owner"};
    outcome.notes = {"odd"};
    EXPECT_EQ(ReportRow({outcome, 1, kNoon}),
              "<tr id=\"f1\" role=\"row\"><th scope=\"row\" role=\"rowheader\"><span "
              "class=\"number\">1</span> "
              "<bdi class=\"name\">a\\x1B.9fcoef</bdi></th>\n"
              "<td role=\"cell\" class=\"state\"><span class=\"badge bad\">failed</span>"
              "<ul><li>cannot be &lt;read&gt;</li><li>twice</li><li>lacks its "
              "owner</li><li>odd</li></ul></td>\n"
              "<td role=\"cell\" data-is=\"before\"><span class=\"size\">\u2013</span></td>\n"
              "<td role=\"cell\" data-is=\"after\"><span class=\"size\">\u2013</span></td>\n"
              "<td role=\"cell\" data-is=\"turn\">180\u00B0</td>\n"
              "<td role=\"cell\" data-is=\"finished, UTC\"><time "
              "datetime=\"2027-01-15T12:00:05Z\">12:00:05"
              "</time><span class=\"more\">took 0 ms</span></td>\n"
              "<td role=\"cell\" class=\"sums\" data-is=\"SHA-256\">\u2013</td>\n</tr>\n");
}

TEST(ReportRow, TellsWhyThereIsNoPicture) {
    SFileOutcome outcome = Turned();
    outcome.sourcePicture = {};
    outcome.sourcePicture.lack = "not <read>";
    EXPECT_TRUE(Holds(ReportRow({outcome, 1, kNoon}),
                      "data-is=\"before\"><span class=\"size\">4 \u00D7 3</span>"
                      "<span class=\"more\">not &lt;read&gt;</span></td>"));
}

TEST(ReportRow, NamesWhatBecameOfAFile) {
    SFileOutcome outcome = Turned();
    outcome.angleCode = 0;
    EXPECT_TRUE(Holds(ReportRow({outcome, 1, kNoon}), "badge good\">copied<"));
    EXPECT_TRUE(Holds(ReportRow({outcome, 1, kNoon}), "data-is=\"turn\">none<"));
    outcome.problems = {"damaged"};
    EXPECT_TRUE(Holds(ReportRow({outcome, 1, kNoon}), "badge bad\">failed, yet written<"));
    outcome = {};
    outcome.skipped = true;
    const std::string row = ReportRow({outcome, 1, kNoon});
    EXPECT_TRUE(
        Holds(row, "badge mild\">skipped</span><ul><li>its output exists already</li></ul>"));
    EXPECT_FALSE(Holds(row, "took"));
}

TEST(ShownDuration, IsAsLongAsItMatters) {
    EXPECT_EQ(ShownDuration(microseconds{0}), "0 ms");
    EXPECT_EQ(ShownDuration(microseconds{999'999}), "999 ms");
    EXPECT_EQ(ShownDuration(microseconds{1'000'000}), "1.00 s");
    EXPECT_EQ(ShownDuration(microseconds{59'999'999}), "59.99 s");
    EXPECT_EQ(ShownDuration(microseconds{60'000'000}), "1 min 0 s");
    EXPECT_EQ(ShownDuration(microseconds{3'599'999'999}), "59 min 59 s");
    EXPECT_EQ(ShownDuration(microseconds{3'600'000'000}), "1 h 0 min");
    EXPECT_EQ(ShownDuration(microseconds{90'060'000'000}), "25 h 1 min");
}

class ReportBegins : public testing::Test {
  protected:
    ReportBegins() {
        m_request.sources = {L"wall <1>"};
        m_request.targetFolder = L"turned";
        m_run.planned = m_run.told = m_run.written = 3;
        m_run.started = kNoon;
        m_run.ended = kNoon + std::chrono::milliseconds{1500};
        m_run.hasPictures = true;
    }
    std::string Page() const { return ReportBegin(m_run); }
    void ExpectVerdict(const std::string& title, const std::string& verdict) const {
        EXPECT_TRUE(Holds(Page(), "<title>" + title + "</title>")) << title;
        EXPECT_TRUE(Holds(Page(), "<h1>" + title + "</h1>\n" + verdict)) << verdict;
    }

    SRotationRequest m_request;
    SRotationOutcome m_outcome;
    SReportedRun m_run{m_request, m_outcome, "1.2.3"};
};

TEST_F(ReportBegins, WithTheVerdict) {
    ExpectVerdict("Turn of 3 files", "<p class=\"verdict good\">All files are done.</p>\n");
    m_run.skipped = 1;
    m_run.written = 2;
    ExpectVerdict("Turn of 3 files",
                  "<p class=\"verdict good\">2 files written, 1 left as they were; "
                  "none failed.</p>\n");
    m_run.skipped = 0;
    m_run.failed = 1;
    m_outcome.end = ERotationEnd::SomeFailed;
    ExpectVerdict("Turn of 3 files: 1 failed",
                  "<p class=\"verdict bad\">1 of 3 files failed.</p>\n");
    m_outcome.end = ERotationEnd::Interrupted;
    m_run.told = 2;
    ExpectVerdict("Turn of 3 files: 1 failed, interrupted",
                  "<p class=\"verdict bad\">Interrupted: 2 of 3 files came to an end.</p>\n");
    EXPECT_TRUE(Holds(Page(), "<dt>not reached</dt><dd>1</dd>"));
}

TEST_F(ReportBegins, WithOneFile) {
    m_run.planned = m_run.told = m_run.written = 1;
    ExpectVerdict("Turn of 1 file", "<p class=\"verdict good\">The file is done.</p>\n");
}

TEST_F(ReportBegins, WithWhatEndedTheRun) {
    m_outcome.end = ERotationEnd::SomeFailed;
    m_outcome.errors = {"no <more>"};
    m_outcome.manifestError = "the manifest & all";
    ExpectVerdict("Turn of 3 files",
                  "<p class=\"verdict bad\">The files are done, but not all that "
                  "belongs to the run.</p>\n");
    EXPECT_TRUE(Holds(Page(), "<p class=\"verdict bad\">no &lt;more&gt;</p>\n"
                              "<p class=\"verdict bad\">the manifest &amp; all</p>\n"));
}

TEST_F(ReportBegins, WithTheRunsFacts) {
    const std::string facts =
        "<dl class=\"facts\">\n"
        "<div><dt>Sources</dt><dd><bdi>wall &lt;1&gt;</bdi></dd></div>\n"
        "<div><dt>Target</dt><dd><bdi>turned</bdi></dd></div>\n"
        "<div><dt>Turn</dt><dd>90\u00B0 clockwise</dd></div>\n"
        "<div><dt>Existing outputs</dt><dd>kept, and their files fail</dd></div>\n";
    const std::string times =
        "<div><dt>Threads</dt><dd>1 at most</dd></div>\n"
        "<div><dt>Started</dt><dd><time datetime=\"2027-01-15T12:00:05Z\">2027-01-15 12:00:05 UTC"
        "</time></dd></div>\n"
        "<div><dt>Took</dt><dd>1.50 s</dd></div>\n"
        "<div><dt>Program</dt><dd>trevolt-cli 1.2.3</dd></div>\n</dl>\n";
    EXPECT_TRUE(Holds(Page(), facts + times)) << Page();
    m_request.size = PixelSize{8, 6};
    m_request.lenient = m_request.keepExtras = m_request.verify = m_request.keepTimes = true;
    m_request.wall = PixelSize{80, 60};
    m_request.recursive = true;
    m_request.limits = {{300, 200}, 5000};
    m_request.suffix = L"c&w";
    m_request.shard = {2, 3};
    m_request.manifest = L"sums";
    m_request.sync = false;
    EXPECT_TRUE(Holds(
        Page(), facts +
                    "<div><dt>Folders of the sources</dt><dd>with those that lie in "
                    "them</dd></div>\n"
                    "<div><dt>Largest file</dt><dd>5000 bytes</dd></div>\n"
                    "<div><dt>Largest map</dt><dd>300 \u00D7 200</dd></div>\n"
                    "<div><dt>Size</dt><dd>8 \u00D7 6 for every map</dd></div>\n"
                    "<div><dt>Damaged files</dt><dd>written from what could be read of "
                    "them</dd></div>\n"
                    "<div><dt>Extras of word files</dt><dd>kept, in a wall of 80 \u00D7 60"
                    "</dd></div>\n"
                    "<div><dt>Names of outputs</dt><dd>with <bdi>c&amp;w</bdi></dd></div>\n"
                    "<div><dt>Outputs</dt><dd>read back from the disk and compared</dd></div>\n"
                    "<div><dt>Times of outputs</dt><dd>those of their sources</dd></div>\n"
                    "<div><dt>Part of the run</dt><dd>2 of 3</dd></div>\n"
                    "<div><dt>Manifest</dt><dd><bdi>sums</bdi></dd></div>\n"
                    "<div><dt>Disk</dt><dd>not waited for: a power cut may cost outputs"
                    "</dd></div>\n" +
                    times))
        << Page();
}

TEST_F(ReportBegins, WithTheFirstOfManySources) {
    m_request.sources.assign(kReportedAtMost + 2, L"cab");
    EXPECT_TRUE(Holds(Page(), "<bdi>cab</bdi>\nand 2 more</dd>"));
    m_request.sources.back() = L"last";
    EXPECT_FALSE(Holds(Page(), "last"));
}

TEST_F(ReportBegins, WithLinksToItsParts) {
    EXPECT_TRUE(Holds(Page(), "<a class=\"skip\" href=\"#files\">"));
    EXPECT_TRUE(Holds(Page(), "<li><a href=\"#summary\">Summary</a></li>\n"
                              "<li><a href=\"#files\">All files (3)</a></li>\n</ul>"));
    EXPECT_FALSE(Holds(Page(), "Failed files"));
    m_run.failed = 2;
    m_run.links = {{2, "a&b", "cannot <be>"}};
    m_run.passedOver = 5;
    EXPECT_TRUE(Holds(Page(), "<a class=\"skip\" href=\"#failed\">"));
    EXPECT_TRUE(Holds(Page(), "<nav aria-label=\"Failed files\">\n<ul class=\"jump\">\n"
                              "<li><a href=\"#f2\"><bdi>a&amp;b</bdi></a>: cannot &lt;be&gt;</li>\n"
                              "<li>and 1 more in the table</li>\n</ul>\n</nav>\n"));
    EXPECT_TRUE(Holds(Page(), "<li><a href=\"#failed\">Failed files (2)</a></li>\n"
                              "<li><a href=\"#files\">Other files (1)</a></li>\n"
                              "<li><a href=\"#passed\">Passed over (5)</a></li>\n"));
    m_run.failed = m_run.told;
    EXPECT_FALSE(Holds(Page(), "href=\"#files\"")) << "no other file";
    m_run.failed = 0;
    m_run.told = m_run.written = 0;
    EXPECT_TRUE(Holds(Page(), "<a class=\"skip\" href=\"#summary\">"));
}

TEST_F(ReportBegins, WithAWordOnPictures) {
    EXPECT_TRUE(Holds(Page(), "The pictures show how bright each pixel is"));
    m_run.hasPictures = false;
    EXPECT_TRUE(Holds(Page(), "There are no pictures"));
}

TEST_F(ReportBegins, AndEndsWithWhatWasPassedOver) {
    const std::string end =
        "</main>\n<footer><p>Written by trevolt-cli 1.2.3 at "
        "<time datetime=\"2027-01-15T12:00:06Z\">2027-01-15 12:00:06 UTC</time>.</p>"
        "</footer>\n</body>\n</html>\n";
    EXPECT_EQ(ReportEnd(m_run), end);
    m_run.passedOver = 3;
    m_run.entries = {{"x<y", "a folder"}};
    EXPECT_EQ(ReportEnd(m_run),
              "<section aria-labelledby=\"passed\">\n<h2 id=\"passed\">Passed over</h2>\n"
              "<ul class=\"passed\">\n<li><bdi>x&lt;y</bdi>: a folder</li>\n<li>and 2 more</li>\n"
              "</ul>\n</section>\n" +
                  end);
}

TEST(ReportTable, HasACaptionAndColumns) {
    const std::string columns =
        "<thead role=\"rowgroup\"><tr role=\"row\">"
        "<th scope=\"col\" role=\"columnheader\" class=\"file\">File</th>"
        "<th scope=\"col\" role=\"columnheader\" class=\"state\">Status</th>"
        "<th scope=\"col\" role=\"columnheader\" class=\"map\">Before</th>"
        "<th scope=\"col\" role=\"columnheader\" class=\"map\">After</th>"
        "<th scope=\"col\" role=\"columnheader\" class=\"turn\">Turn</th>"
        "<th scope=\"col\" role=\"columnheader\" class=\"time\">Finished, UTC</th>"
        "<th scope=\"col\" role=\"columnheader\" class=\"sum\">SHA-256</th>"
        "</tr></thead>\n<tbody role=\"rowgroup\">\n";
    EXPECT_EQ(
        ReportTableBegin(EReportTable::Failed, 1),
        "<table role=\"table\">\n<caption>1 file that failed, in the order of the run</caption>\n" +
            columns);
    EXPECT_EQ(
        ReportTableBegin(EReportTable::Others, 2),
        "<section aria-labelledby=\"files\">\n<h2 id=\"files\">Files</h2>\n<table role=\"table\">\n"
        "<caption>2 files without a failure, in the order of the run</caption>\n" +
            columns);
    EXPECT_EQ(ReportTableEnd(), "</tbody>\n</table>\n</section>\n");
}

} // namespace
} // namespace trevolt
