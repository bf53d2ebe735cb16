#include "common/WrittenFile.h"

#include "trevolt/TransferReport.h"

namespace trevolt {

bool OpenWritten(COutputFile& file, const wchar_t* path, std::ios::openmode mode) {
    if (file.Open(path, mode))
        return true;
    CTransferReport::NoteSystemError(file.SystemError());
    return false;
}

void CloseWritten(COutputFile& file) {
    if (file.Close())
        return;
    CTransferReport::NoteWriteFailed();
    CTransferReport::NoteSystemError(file.SystemError());
}

} // namespace trevolt
