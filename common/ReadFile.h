// Files that are read, whose failures the thread's transfer report hears of.
#pragma once

#include "platform/FileStream.h"

namespace trevolt {

/// Opens a file for reading; false, and the system's reason is noted, when it does not open.
bool OpenRead(CInputFile& file, const wchar_t* path);

/// Notes it when the system refused to read the file, or to seek in it, and why. Of a refused seek a
/// reader learns no more than that the bytes are not there.
void NoteIfRefused(const CInputFile& file);

} // namespace trevolt
