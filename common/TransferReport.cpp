#include "trevolt/TransferReport.h"

#include <algorithm>
#include <limits>

namespace trevolt {
namespace {

thread_local CTransferReport* t_innermost = nullptr;

} // namespace

CTransferReport::CTransferReport() : m_outer(t_innermost) { t_innermost = this; }

CTransferReport::~CTransferReport() { t_innermost = m_outer; }

void CTransferReport::NoteWriteFailed() {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        report->m_writeFailed = true;
}

void CTransferReport::NoteSystemError(int error) {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        if (report->m_systemError == 0)
            report->m_systemError = error;
}

void CTransferReport::NoteMemoryRefused() {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        report->m_memoryRefused = true;
}

void CTransferReport::NoteFailedChunks(std::uint32_t count) {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        report->m_failedChunks += count;
}

void CTransferReport::NoteMissingPixels(std::uint64_t count) {
    constexpr std::uint64_t kMostPixels = std::numeric_limits<std::uint64_t>::max();
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        report->m_missingPixels += std::min(count, kMostPixels - report->m_missingPixels);
}

void CTransferReport::NoteFailedRead(Status status) {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        if (report->m_failedRead == S_OK)
            report->m_failedRead = status;
}

} // namespace trevolt
