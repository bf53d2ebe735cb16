#include "trevolt/TransferReport.h"

#include <algorithm>
#include <limits>

namespace trevolt {
namespace {

thread_local CTransferReport* t_innermost = nullptr;

void AddUpToMost(std::uint64_t& sum, std::uint64_t count) {
    sum += std::min(count, std::numeric_limits<std::uint64_t>::max() - sum);
}

} // namespace

CTransferReport::CTransferReport() : m_outer(t_innermost) { t_innermost = this; }

CTransferReport::~CTransferReport() { t_innermost = m_outer; }

void CTransferReport::NoteWriteFailed() {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        report->m_writeFailed = true;
}

void CTransferReport::NoteReadFailed() {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        report->m_readFailed = true;
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
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        AddUpToMost(report->m_missingPixels, count);
}

void CTransferReport::NoteRepeatedPixels(std::uint64_t count) {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        AddUpToMost(report->m_repeatedPixels, count);
}

void CTransferReport::NoteMissingExtraWords(std::uint64_t count) {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        AddUpToMost(report->m_missingExtraWords, count);
}

void CTransferReport::NoteChunksOutside(std::uint32_t count) {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        report->m_chunksOutside += count;
}

void CTransferReport::NoteStrayBytes(std::uint64_t count) {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        report->m_strayBytes += count;
}

void CTransferReport::NoteForeignIndices(std::uint32_t count) {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        report->m_foreignIndices += count;
}

void CTransferReport::NoteFailedRead(Status status) {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        if (report->m_failedRead == S_OK)
            report->m_failedRead = status;
}

void CTransferReport::NoteTextFlaws(const CTextFlaws& flaws) {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        report->m_textFlaws.Add(flaws);
}

void CTransferReport::NoteCleanedPixels(std::uint64_t count) {
    for (CTransferReport* report = t_innermost; report != nullptr; report = report->m_outer)
        report->m_cleanedPixels += count;
}

} // namespace trevolt
