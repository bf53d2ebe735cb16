// The report of a run: an HTML page with a row for each file, those that failed first, written while
// the run goes on.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/inspection/ReportPage.h"
#include "trevolt/RotationRun.h"

namespace trevolt {

/// Hears of a run before whoever tells of it. Its memory does not grow with the number of files: rows
/// wait in files under work beside the page. While the run goes on it throws nothing; what goes wrong
/// is told at the end.
class CRotationReport : public CRotationListener {
  public:
    /// For the page `request.report`; the request must outlive the report.
    CRotationReport(const SRotationRequest& request, std::string version);
    ~CRotationReport() override;
    CRotationReport(const CRotationReport&) = delete;
    CRotationReport& operator=(const CRotationReport&) = delete;

    /// A picture of a map for the page. Any thread may ask for it once the plan is known.
    SThumbnail Thumbnail(const CChromaCorrectCoef& map) const;

    void OnPlan(const SRotationPlan& plan) override;
    void OnFile(const SFileOutcome& outcome, std::size_t done, std::size_t count) override;

    /// Writes the page, as outputs are written, when the run has ended as `outcome` tells. Why it does
    /// not stand, in plain words; empty when it does, and where the run did not begin, which has none.
    /// Throws std::bad_alloc.
    std::string Write(const SRotationOutcome& outcome);

  private:
    class CRows;

    void Begin(const SRotationPlan& plan);
    void Add(const SFileOutcome& outcome, std::size_t number);
    std::string WritePage();
    std::string FillPage(const std::wstring& path);

    const SRotationRequest& m_request;
    SRotationOutcome m_outcome; ///< as the page tells it
    SReportedRun m_run;
    int m_side = 0; ///< of pictures; 0 for none
    bool m_hasBegun = false;
    bool m_isMemoryRefused = false; ///< a flag: words for it would need memory, too
    std::unique_ptr<CRows> m_failed;
    std::unique_ptr<CRows> m_others;
};

} // namespace trevolt
