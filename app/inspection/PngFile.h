// Pictures as PNG files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/inspection/Picture.h"

namespace trevolt {

/// The bytes of a PNG file, the same for the same picture. Throws std::bad_alloc.
std::vector<std::uint8_t> PngBytes(const CPicture& picture);

/// Writes the bytes to a new or emptied file. What went wrong in plain words, empty when nothing did;
/// the file's content is undefined then.
std::string WritePngFile(const CPicture& picture, const std::wstring& path);

} // namespace trevolt
