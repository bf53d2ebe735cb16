#include "common/ReadFile.h"

#include "common/BrokenStream.h"

namespace trevolt {

bool OpenRead(CInputFile& file, const wchar_t* path) {
    if (file.Open(path))
        return true;
    CTransferReport::NoteSystemError(file.SystemError());
    return false;
}

void NoteIfRefused(const CInputFile& file) {
    NoteIfBroken(file);
    if (file.SystemError() == 0)
        return;
    CTransferReport::NoteReadFailed();
    CTransferReport::NoteSystemError(file.SystemError());
}

} // namespace trevolt
