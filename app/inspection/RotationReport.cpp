#include "app/inspection/RotationReport.h"

#include <algorithm>
#include <new>
#include <utility>

#include <fmt/format.h>

#include "app/inspection/MapThumbnail.h"
#include "app/rotation/OutputFile.h"
#include "common/WrittenFile.h"
#include "platform/FileStream.h"
#include "platform/FileSystem.h"
#include "platform/SystemError.h"
#include "trevolt/StatusCodes.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/TransferReport.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr const char* kNoMemory = "not enough memory";
constexpr std::size_t kCopiedBytes = std::size_t{256} << 10;

std::wstring FolderOf(const std::wstring& path) {
    std::wstring folder = FolderPart(path);
    return folder.empty() ? L"." : folder;
}

/// Writes an output's file by `fill(file)`, which answers what went wrong beside its writing.
template <class Fill>
std::string WriteFileAt(const std::wstring& path, const Fill& fill) {
    const CTransferReport report;
    COutputFile file;
    if (!OpenWritten(file, path.c_str(), std::ios::out | std::ios::trunc))
        return DescribeWriteProblem(E_COEF_OPENFAILED, report);
    std::string problem = fill(file);
    CloseWritten(file);
    return problem.empty() ? DescribeWriteProblem(S_OK, report) : problem;
}

} // namespace

/// Rows of a table that wait in a file under work, which goes with them.
class CRotationReport::CRows {
  public:
    explicit CRows(std::unique_ptr<CTemporaryOutput> output) : m_output(std::move(output)) {
        const CTransferReport report;
        if (!OpenWritten(m_file, m_output->Path().c_str(), std::ios::out | std::ios::trunc))
            m_problem = DescribeWriteProblem(E_COEF_OPENFAILED, report);
    }

    std::size_t Count() const { return m_count; }

    void Add(const std::string& row) {
        m_file.write(row.data(), static_cast<std::streamsize>(row.size()));
        ++m_count;
    }

    /// No row comes any more. What went wrong, in plain words.
    std::string End() {
        if (!m_problem.empty())
            return m_problem;
        const CTransferReport report;
        CloseWritten(m_file);
        return m_problem = DescribeWriteProblem(S_OK, report);
    }

    /// What went wrong while they were read.
    std::string CopyTo(std::ostream& page) const {
        CInputFile rows;
        std::uint64_t left = 0;
        if (rows.Open(m_output->Path().c_str()))
            left = BytesToEnd(rows).value_or(0);
        std::vector<char> piece(kCopiedBytes);
        while (left > 0 && rows.good()) {
            rows.read(piece.data(),
                      static_cast<std::streamsize>(std::min<std::uint64_t>(left, kCopiedBytes)));
            page.write(piece.data(), rows.gcount());
            left -= static_cast<std::uint64_t>(rows.gcount());
        }
        if (rows.SystemError() == 0 && left == 0)
            return {};
        return WithSystemReason("its rows cannot be read back", rows.SystemError());
    }

  private:
    std::unique_ptr<CTemporaryOutput> m_output; // outlives the open file
    COutputFile m_file;
    std::size_t m_count = 0;
    std::string m_problem;
};

CRotationReport::CRotationReport(const SRotationRequest& request, std::string version)
    : m_request(request), m_run{request, m_outcome, std::move(version)} {}

CRotationReport::~CRotationReport() = default;

SThumbnail CRotationReport::Thumbnail(const CChromaCorrectCoef& map) const {
    return m_side == 0 ? SThumbnail() : MapThumbnail(map, m_side);
}

void CRotationReport::OnPlan(const SRotationPlan& plan) {
    m_hasBegun = true;
    try {
        Begin(plan);
    } catch (const std::bad_alloc&) {
        m_isMemoryRefused = true;
    }
}

void CRotationReport::OnFile(const SFileOutcome& outcome, std::size_t done, std::size_t /*count*/) {
    if (m_isMemoryRefused)
        return;
    try {
        Add(outcome, done);
    } catch (const std::bad_alloc&) {
        m_isMemoryRefused = true;
    }
}

std::string CRotationReport::Write(const SRotationOutcome& outcome) {
    if (!m_hasBegun)
        return {};
    m_outcome = outcome;
    m_run.ended = std::chrono::system_clock::now();
    const std::string problem = m_isMemoryRefused ? kNoMemory : WritePage();
    m_failed.reset();
    m_others.reset();
    return problem.empty()
               ? std::string()
               : fmt::format("the report {}: {}", WideToShownUtf8(m_request.report), problem);
}

void CRotationReport::Begin(const SRotationPlan& plan) {
    m_run.started = std::chrono::system_clock::now();
    m_run.planned = plan.turns.size() + plan.unnamable.size();
    m_side = ThumbnailSide(m_run.planned);
    m_run.hasPictures = m_side > 0;
    m_run.passedOver = plan.passedOver.size();
    m_run.entries.assign(plan.passedOver.begin(),
                         plan.passedOver.begin() + static_cast<std::ptrdiff_t>(std::min(
                                                       plan.passedOver.size(), kReportedAtMost)));
    COutputFolder folder(FolderOf(m_request.report), m_request.sync);
    const std::wstring name = m_request.report.substr(FolderPart(m_request.report).size());
    m_failed = std::make_unique<CRows>(folder.Begin(name));
    m_others = std::make_unique<CRows>(folder.Begin(name));
}

void CRotationReport::Add(const SFileOutcome& outcome, std::size_t number) {
    const std::string row = ReportRow({outcome, number, std::chrono::system_clock::now()});
    ++m_run.told;
    m_run.written += outcome.outputName.empty() ? 0 : 1;
    m_run.skipped += outcome.skipped ? 1 : 0;
    if (!outcome.HasFailed()) {
        m_others->Add(row);
        return;
    }
    m_failed->Add(row);
    ++m_run.failed;
    if (m_run.links.size() < kReportedAtMost)
        m_run.links.push_back({number, outcome.name, outcome.problems.front()});
}

std::string CRotationReport::WritePage() try {
    for (CRows* rows : {m_failed.get(), m_others.get()})
        if (std::string problem = rows->End(); !problem.empty())
            return problem;
    const bool replaces = m_request.existing == EExistingOutput::Replace;
    return WriteOutputFile({m_request.report, replaces, m_request.sync},
                           [this](const std::wstring& path) { return FillPage(path); });
} catch (const std::bad_alloc&) {
    return kNoMemory;
}

std::string CRotationReport::FillPage(const std::wstring& path) {
    return WriteFileAt(path, [this](std::ostream& page) {
        std::string problem;
        page << ReportBegin(m_run);
        for (const auto& [table, rows] : {std::pair(EReportTable::Failed, m_failed.get()),
                                          std::pair(EReportTable::Others, m_others.get())}) {
            if (rows->Count() == 0 || !problem.empty())
                continue;
            page << ReportTableBegin(table, rows->Count());
            problem = rows->CopyTo(page);
            page << ReportTableEnd();
        }
        page << ReportEnd(m_run);
        return problem;
    });
}

} // namespace trevolt
