// Files that are written to, whose failures the thread's transfer report hears of.
#pragma once

#include <ios>

#include "platform/FileStream.h"

namespace trevolt {

/// Opens a file for writing; false, and the system's reason is noted, when it does not open.
bool OpenWritten(COutputFile& file, const wchar_t* path, std::ios::openmode mode);

/// Closes a file that was written to, and notes when it failed now or before, and why.
void CloseWritten(COutputFile& file);

} // namespace trevolt
