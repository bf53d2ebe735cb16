// How the files of a wall are mounted: a CSV table with a file and its angle a row.
#pragma once

#include <string>
#include <vector>

#include "trevolt/RotationRun.h"

namespace trevolt {

struct SAngleTable {
    std::vector<SFileAngle> rows; ///< in the table's order
    /// What is wrong, each in plain words and with its line.
    std::vector<std::string> problems;
};

/// Reads a table of `ReadMountingTable`'s with a file and its angle a row; places, which a layout has
/// besides, are passed over. "*" may stand for a file.
SAngleTable ReadAngleTable(const std::wstring& path);

} // namespace trevolt
