// Pictures as PNG files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "app/inspection/Picture.h"

namespace trevolt {

/// The bytes of a PNG file, made by up to `jobs` threads and the same for every number of them. Throws
/// std::bad_alloc.
std::vector<std::uint8_t> PngBytes(const CPicture& picture, std::size_t jobs = 1);

/// Writes these bytes to a new or emptied file. What went wrong in plain words, empty when nothing did;
/// the file's content is undefined then.
std::string WritePngFile(const CPicture& picture, const std::wstring& path, std::size_t jobs = 1);

} // namespace trevolt
