// Tables of mounted files for tests: their texts read as files, and their rows shown.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/TestFiles.h"

namespace trevolt::test {

using TableProblems = std::vector<std::string>;

/// What `read` makes of a file with the text.
template <class Read>
auto ReadTableText(Read read, std::string_view text) {
    const CTemporaryFolder folder;
    WriteText(folder.File(L"table.csv"), text);
    return read(folder.File(L"table.csv"));
}

/// The rows of a table without a problem as `show` shows them, each with a blank behind.
template <class Table, class Show>
std::wstring ShownRows(const Table& table, Show show) {
    EXPECT_EQ(table.problems, TableProblems{});
    std::wstring rows;
    for (const auto& row : table.rows)
        rows += show(row) + L" ";
    return rows;
}

/// A file that is not there is told by the system's reason.
template <class Read>
void ExpectMissingFileIsTold(Read read) {
    const CTemporaryFolder folder;
    EXPECT_EQ(
        read(folder.File(L"none")).problems,
        TableProblems{"cannot be opened: No such file or directory: give a file that can be read"});
}

} // namespace trevolt::test
