// How the files of a wall are mounted: a CSV table with a file and its angle a row.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "trevolt/RotationRun.h"

namespace trevolt {

/// The code of `kAngles` of an angle's text, 0 for no turn: 0, 90, 180 or 270, with or without "°";
/// -90 and -180 are 270 and 180. Nothing for any other text.
std::optional<std::uint32_t> AngleCode(std::string_view text);

struct SAngleTable {
    std::vector<SFileAngle> rows; ///< in the table's order
    /// What is wrong, each in plain words and with its line.
    std::vector<std::string> problems;
};

/// Reads a table (docs/angles.md): two fields a row, the file's name and its angle. A first row
/// "file,angle", in any case, is a heading. A file that is named twice is a problem, and so is a table
/// without a row.
SAngleTable ReadAngleTable(const std::wstring& path);

} // namespace trevolt
