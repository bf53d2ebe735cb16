// Where the files of a screen lie and how they are mounted: a CSV table with a file and its place a
// row, and its angle where it has one.
#pragma once

#include <string>

#include "app/rotation/MountingTable.h"

namespace trevolt {

/// Reads a table of `ReadMountingTable`'s: file, x and y a row, or file, x, y and angle.
SMountingTable ReadLayoutTable(const std::wstring& path);

} // namespace trevolt
