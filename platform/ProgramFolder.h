// The folder that the running program's file lies in. May be called from any thread.
#pragma once

#include <string>

namespace trevolt {

/// The program file's full path up to and including its last separator; empty when the path cannot
/// be obtained. On Windows the path goes through the active code page and back, so a character that
/// the code page does not know comes out as its replacement; under the program's UTF-8 manifest
/// nothing is lost.
std::wstring GetModuleFolder();

#ifdef _WIN32
/// `text` converted to the active code page and back; empty when it cannot be converted.
std::wstring ThroughCodePage(const std::wstring& text);
#endif

} // namespace trevolt
