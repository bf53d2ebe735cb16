#include "app/rotation/LayoutTable.h"

namespace trevolt {
namespace {

SMountingForm LayoutForm() {
    using enum EMountingColumn;
    return {.needed = {File, X, Y},
            .plain = {{File, X, Y}, {File, X, Y, Angle}},
            .hasPlaces = true,
            .heading = "file,x,y,angle",
            .rowAdvice =
                "give a file, its x and its y, and its angle where it is turned, with commas "
                "between",
            .tableAdvice = "give a file, its x and its y a line"};
}

} // namespace

SMountingTable ReadLayoutTable(const std::wstring& path) {
    return ReadMountingTable(path, LayoutForm());
}

} // namespace trevolt
