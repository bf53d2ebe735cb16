// Binary file streams on wide-character paths.
#pragma once

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>

namespace trevolt {

/// Opens `stream` in binary mode, with `mode` added, on `path`. False when the path is null, is a
/// folder, or does not open. Offsets and sizes are 64-bit on every system.
bool OpenFileStream(std::fstream& stream, const wchar_t* path, std::ios::openmode mode);

/// Bytes from the current position to the end of the stream, which keeps its position; nothing when
/// the stream cannot tell.
std::optional<std::uint64_t> BytesToEnd(std::istream& stream);

/// The file's bytes; nothing when it does not open, cannot be read or holds more than `limit`.
std::optional<std::string> ReadWholeFile(const std::wstring& path, std::uint64_t limit);

} // namespace trevolt
