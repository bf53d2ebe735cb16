// Tables in text: a row a line, fields between commas, as spreadsheets export them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace trevolt {

struct SCsvRow {
    std::size_t line = 0; ///< where it begins, from 1
    std::vector<std::string> fields;
};

struct SCsvTable {
    std::vector<SCsvRow> rows;
    /// What is wrong, each in plain words and with its line, and behind ten how many more; a line that is
    /// wrong gives no row.
    std::vector<std::string> problems;
};

/// Splits UTF-8 text, with or without a byte order mark. Lines end with LF or CR LF, blank ones are
/// passed over. A field that begins with a quote ends with the next single one: commas and line ends
/// in it are the field's, two quotes are one. Elsewhere a quote is an ordinary character, and so are
/// blanks. A row with semicolons or tabs where its commas should be is told as such: one plain field that
/// has any, or one behind a closing quote. Text with zero bytes gives no row: UTF-16, or none at all.
SCsvTable SplitCsv(std::string_view text);

/// What a table's file may have at most: a row for each of half a million files with long names.
inline constexpr std::uint64_t kLargestCsvBytes = std::uint64_t{64} << 20;

/// The same of a file. One that cannot be read, or is larger than `kLargestCsvBytes`, gives no row
/// and a problem with the system's reason.
SCsvTable ReadCsv(const std::wstring& path);

} // namespace trevolt
