// The one reader of tables that tell how the files of a wall are mounted: CSV, a file a row with its
// angle, its place or both. Which of them a row must have is its caller's to say.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "trevolt/QuarterTurn.h"

namespace trevolt {

/// The code of `kAngles` of an angle's text, 0 for no turn: 0, 90, 180 or 270, with or without "°";
/// -90 and -180 are 270 and 180. Nothing for any other text.
std::optional<std::uint32_t> AngleCode(std::string_view text);

/// A coordinate's text in whole pixels, from minus to plus `kLargestMapSide`. Nothing for any other.
std::optional<std::int32_t> Coordinate(std::string_view text);

/// The columns that a table can have, in the order that they have without a heading.
enum class EMountingColumn { File, X, Y, Angle };
using MountingColumns = std::vector<EMountingColumn>;

/// What a table is read for.
struct SMountingForm {
    MountingColumns needed; ///< the others may be missing
    /// The columns of rows without a heading: one entry for each number of fields.
    std::vector<MountingColumns> plain;
    bool hasPlaces = false;   ///< whether x and y are looked at
    bool takesOthers = false; ///< whether "*" may stand for all files without a row
    const char* heading;      ///< that a table may have
    const char* rowAdvice;    ///< what a row is to have: "give ..."
    const char* tableAdvice;  ///< what a table without a row is to have: "give ..."
};

struct SMountingRow {
    std::wstring name;
    std::size_t line = 0;   ///< in the table, from 1
    PixelPosition place;    ///< (0, 0) where it is not looked at
    std::uint32_t code = 0; ///< of `kAngles`, 0 without an angle
};

struct SMountingTable {
    std::vector<SMountingRow> rows; ///< in the table's order
    /// What is wrong, each in plain words and with its line; behind ten of a sort how many more.
    std::vector<std::string> problems;
};

/// Reads a table (docs/angles.md). A first row of nothing but different columns' names, in any case
/// and order, "file" or "name" among them, is a heading. A file that is named twice is a problem, and
/// so is a table without a row.
SMountingTable ReadMountingTable(const std::wstring& path, const SMountingForm& form);

} // namespace trevolt
