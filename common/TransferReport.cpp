#include "common/TransferReport.h"

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

void CTransferReport::NoteMemoryRefused() {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        report->m_memoryRefused = true;
}

void CTransferReport::NoteFailedChunks(std::uint32_t count) {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        report->m_failedChunks += count;
}

void CTransferReport::NoteMissingPixels(std::uint64_t count) {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        report->m_missingPixels += count;
}

void CTransferReport::NoteFailedRead(Status status) {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        if (report->m_failedRead == S_OK)
            report->m_failedRead = status;
}

void CloseWritten(std::fstream& stream) {
    stream.close();
    if (!stream)
        CTransferReport::NoteWriteFailed();
}

} // namespace trevolt
