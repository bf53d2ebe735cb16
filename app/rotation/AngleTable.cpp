#include "app/rotation/AngleTable.h"

#include <utility>

#include "app/rotation/MountingTable.h"

namespace trevolt {
namespace {

SMountingForm AngleForm() {
    using enum EMountingColumn;
    return {.needed = {File, Angle},
            .plain = {{File, Angle}, {File, X, Y, Angle}},
            .takesOthers = true,
            .heading = "file,angle",
            .rowAdvice = "give a file and its angle, with a comma between",
            .tableAdvice = "give a file and its angle a line"};
}

} // namespace

SAngleTable ReadAngleTable(const std::wstring& path) {
    SMountingTable read = ReadMountingTable(path, AngleForm());
    SAngleTable table{{}, std::move(read.problems)};
    for (SMountingRow& row : read.rows)
        table.rows.push_back({std::move(row.name), row.code, row.line});
    return table;
}

} // namespace trevolt
