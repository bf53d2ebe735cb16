#include "app/inspection/RotationReport.h"

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/TestFiles.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

using namespace test;

class RotationReport : public testing::Test {
  protected:
    RotationReport() {
        m_request.report = m_folder.File(L"run.html");
        m_request.sources = {L"wall"};
        m_request.targetFolder = L"turned";
        m_request.sync = false;
        m_plan.turns.resize(3);
    }

    static SFileOutcome Outcome(const std::string& name, const std::string& problem = {}) {
        SFileOutcome outcome;
        outcome.name = name;
        if (problem.empty())
            outcome.outputName = "out";
        else
            outcome.problems = {problem};
        return outcome;
    }

    std::string Write() { return m_report.Write(m_outcome); }
    std::string Page() const { return ReadText(m_request.report); }
    /// Where a text stands on the page.
    std::size_t At(const std::string& text) const {
        const std::size_t at = Page().find(text);
        EXPECT_NE(at, std::string::npos) << text;
        return at;
    }

    CTemporaryFolder m_folder;
    SRotationRequest m_request;
    SRotationOutcome m_outcome;
    SRotationPlan m_plan;
    CRotationReport m_report{m_request, "1.2.3"};
};

TEST_F(RotationReport, PutsFailedFilesFirst) {
    m_report.OnPlan(m_plan);
    m_report.OnFile(Outcome("good1"), 1, 3);
    m_report.OnFile(Outcome("bad", "broken"), 2, 3);
    m_report.OnFile(Outcome("good2"), 3, 3);
    EXPECT_EQ(m_folder.Names().size(), 2U) << "rows under work";
    EXPECT_EQ(Write(), "");
    EXPECT_EQ(m_folder.Names(), std::vector<std::wstring>{L"run.html"})
        << "rows go with the report";
    EXPECT_LT(At("<h2 id=\"failed\">"), At("<tr id=\"f2\""));
    EXPECT_LT(At("<tr id=\"f2\""), At("<h2 id=\"files\">"));
    EXPECT_LT(At("<h2 id=\"files\">"), At("<tr id=\"f1\""));
    EXPECT_LT(At("<tr id=\"f1\""), At("<tr id=\"f3\""));
    At("<dt>written</dt><dd>2</dd>");
    At("<dt>failed</dt><dd>1</dd>");
    EXPECT_TRUE(Page().ends_with("</body>\n</html>\n"));
}

TEST_F(RotationReport, HoldsRowsOfAnyLength) {
    m_report.OnPlan(m_plan);
    for (std::size_t i = 1; i <= 3; ++i)
        m_report.OnFile(Outcome(std::string(400'000, 'n') + std::to_string(i)), i, 3);
    EXPECT_EQ(Write(), "");
    for (const char* end : {"n1</bdi>", "n2</bdi>", "n3</bdi>", "</body>\n</html>\n"})
        At(end);
    EXPECT_GT(Page().size(), 1'200'000U);
}

TEST_F(RotationReport, LeavesOutTablesWithoutRows) {
    m_report.OnPlan(m_plan);
    EXPECT_EQ(Write(), "");
    EXPECT_EQ(Page().find("<table"), std::string::npos);
}

TEST_F(RotationReport, LinksTheFirstFailedFilesOnly) {
    m_report.OnPlan(m_plan);
    for (std::size_t i = 1; i <= kReportedAtMost + 5; ++i)
        m_report.OnFile(Outcome("f", "p"), i, 200);
    EXPECT_EQ(Write(), "");
    At("<a href=\"#f100\"><bdi>f</bdi></a>: p</li>\n<li>and 5 more in the table</li>");
    EXPECT_EQ(Page().find("href=\"#f101\""), std::string::npos);
    At("<tr id=\"f105\"");
}

TEST_F(RotationReport, TellsTheFirstEntriesThatWerePassedOver) {
    m_plan.passedOver.assign(kReportedAtMost + 1, {"entry", "a folder"});
    m_report.OnPlan(m_plan);
    EXPECT_EQ(Write(), "");
    At("<li><bdi>entry</bdi>: a folder</li>\n<li>and 1 more</li>");
}

TEST_F(RotationReport, IsNotWrittenOfARunThatDidNotBegin) {
    m_outcome.end = ERotationEnd::NothingToDo;
    EXPECT_EQ(Write(), "");
    EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(RotationReport, ReplacesAPageOnlyWhereOutputsDo) {
    m_report.OnPlan(m_plan);
    WriteText(m_request.report, "mine");
    const std::string shown = WideToShownUtf8(m_request.report);
    EXPECT_EQ(Write(),
              "the report " + shown + ": exists already: overwrite it, or choose another target");
    EXPECT_EQ(Page(), "mine");
    m_request.existing = EExistingOutput::Replace;
    CRotationReport other(m_request, "1.2.3");
    other.OnPlan(m_plan);
    EXPECT_EQ(other.Write(m_outcome), "");
    EXPECT_TRUE(Page().starts_with("<!DOCTYPE html>\n"));
}

TEST_F(RotationReport, TellsWhyItCannotBeWritten) {
    m_request.report = m_folder.File(L"no") + kPathSeparator + L"run.html";
    m_report.OnPlan(m_plan);
    m_report.OnFile(Outcome("a"), 1, 3);
    const std::string told = Write();
    const std::string begin =
        "the report " + WideToShownUtf8(m_request.report) + ": cannot be written: ";
    EXPECT_EQ(told.substr(0, begin.size()), begin);
    EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(RotationReport, MakesPicturesBySize) {
    CChromaCorrectCoef map;
    map.Resize(200, 100);
    EXPECT_EQ(m_report.Thumbnail(map).png, "") << "before the plan is known";
    m_report.OnPlan(m_plan);
    EXPECT_EQ(m_report.Thumbnail(map).width, 128U);
    m_plan.turns.clear();
    m_plan.unnamable.assign(20'000, "x");
    CRotationReport large(m_request, "1.2.3");
    large.OnPlan(m_plan);
    EXPECT_EQ(large.Thumbnail(map).png, "");
    EXPECT_EQ(large.Write(m_outcome), "");
    At("There are no pictures");
}

} // namespace
} // namespace trevolt
