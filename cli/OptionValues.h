// What the values of options say. Each function throws std::invalid_argument with what is wrong and
// what to give instead, without the option's name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "app/rotation/Composition.h"
#include "trevolt/PixelRect.h"
#include "trevolt/QuarterTurn.h"
#include "trevolt/RotationRun.h"

namespace trevolt {

inline constexpr std::size_t kMostJobs = 256;

/// The code of `kAngles` of "90", "180" or "270", with or without "°"; -90 and -180 are 270 and 180.
std::uint32_t ParseAngle(const std::string& text);

/// "WxH", each side from 1 to the largest of a map.
PixelSize ParseSize(const std::string& text);

/// "LEFT,TOP,RIGHT,BOTTOM" in whole pixels, right and bottom exclusive, with at least one pixel.
SPixelRect ParseRect(const std::string& text);

/// "FILE@X,Y" or "FILE@X,Y,ANGLE"; of several "@" the last one counts.
SPlacedFile ParsePlacedFile(const std::string& text);

/// Bytes as "500", "500K" or "2G".
std::uint64_t ParseBytes(const std::string& text);

/// 1 to `kMostJobs`.
std::size_t ParseJobs(const std::string& text);

/// "I/N", I from 1 to N.
SShard ParseShard(const std::string& text);

/// A path that is not empty and is UTF-8.
std::wstring ParsePath(const std::string& text);

/// The same of a page: its name ends in .html or .htm.
std::wstring ParsePagePath(const std::string& text);

/// The same of a picture: its name ends in .png.
std::wstring ParsePicturePath(const std::string& text);

/// What can stand in a name before its first dot on every system.
std::wstring ParseSuffix(const std::string& text);

} // namespace trevolt
