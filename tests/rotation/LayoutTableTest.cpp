#include "app/rotation/LayoutTable.h"

#include <gtest/gtest.h>

#include "tests/rotation/MountingTables.h"

namespace trevolt {
namespace {

using LayoutProblems = test::TableProblems;

SMountingTable LayoutOf(std::string_view text) {
    return test::ReadTableText(ReadLayoutTable, text);
}

/// "file=x,y,code " a row.
std::wstring LayoutRows(std::string_view text) {
    return test::ShownRows(LayoutOf(text), [](const SMountingRow& row) {
        return row.name + L"=" + std::to_wstring(row.place.x) + L"," +
               std::to_wstring(row.place.y) + L"," + std::to_wstring(row.code);
    });
}

TEST(LayoutTable, ReadsPlacesAndAngles) {
    EXPECT_EQ(LayoutRows("a,0,0\nb,160,90\n"), L"a=0,0,0 b=160,90,0 ");
    EXPECT_EQ(LayoutRows("a,0,0,0\nb,1,2,90\nc,3,4,180\u00B0\nd,5,6,-90\n"),
              L"a=0,0,0 b=1,2,1 c=3,4,2 d=5,6,3 ");
    EXPECT_EQ(LayoutRows("a,0,0\nb, -65535 ,65535,270\n"), L"a=0,0,0 b=-65535,65535,3 ");
}

TEST(LayoutTable, TakesColumnsFromAHeading) {
    EXPECT_EQ(LayoutRows("file,x,y,angle\na,1,2,90\n"), L"a=1,2,1 ");
    EXPECT_EQ(LayoutRows("\xEF\xBB\xBF Name , X, Y\r\na,1,2\r\n"), L"a=1,2,0 ");
    EXPECT_EQ(LayoutRows("angle,y,x,file\n180,7,8,a\n"), L"a=8,7,2 ");
    EXPECT_EQ(LayoutOf("file,y,angle\na,1,90\n").problems,
              LayoutProblems{"line 1: the heading has no x: give a file, its x and its y, and its "
                             "angle where it is turned, with commas between"});
    EXPECT_EQ(LayoutOf("file,x,angle\na,1,90\n").problems,
              LayoutProblems{"line 1: the heading has no y: give a file, its x and its y, and its "
                             "angle where it is turned, with commas between"});
    EXPECT_EQ(LayoutOf("a,0,0\nfile,x,y\n").problems,
              LayoutProblems{"line 2: x is no coordinate: give whole pixels from -65535 to 65535"});
}

TEST(LayoutTable, AFirstRowThatMayBeAHeadingIsToldWhatOneIs) {
    EXPECT_EQ(
        LayoutOf("file,left,top\na,0,\n").problems,
        (LayoutProblems{"line 1: left is no coordinate: give whole pixels from -65535 to 65535, "
                        "or the heading file,x,y,angle",
                        "line 2: has no coordinate: give whole pixels from -65535 to 65535"}));
}

TEST(LayoutTable, NamesEveryLineThatIsWrong) {
    const std::string fields = ": give a file, its x and its y, and its angle where it is turned, "
                               "with commas between";
    const std::string coordinate = " is no coordinate: give whole pixels from -65535 to 65535";
    EXPECT_EQ(
        LayoutOf("a,0,0\nb,1\nc,1,2,90,5\nd,1.5,2\ne,1,\nf,65536,0\ng,0,-65536\nh,+1,0\n").problems,
        (LayoutProblems{"line 2: has 2 fields" + fields, "line 3: has 5 fields" + fields,
                        "line 4: 1.5" + coordinate, "line 5: has no" + coordinate.substr(6),
                        "line 6: 65536" + coordinate, "line 7: -65536" + coordinate,
                        "line 8: +1" + coordinate}));
    const SMountingTable table =
        LayoutOf("a,0,0\ni,0,0,45\n*,0,0\n,0,0\na,1,1\n\xFF,0,0\nj,0x1,0\nk,0,0,\n");
    EXPECT_EQ(table.problems,
              (LayoutProblems{"line 2: 45 is no angle: give 0, 90, 180, 270, -90 or -180",
                              "line 3: * has no place: give every file a row of its own",
                              "line 4: has no file: give its name",
                              "line 5: a stands in line 1 already: keep one of the two",
                              "line 6: the file's name is not valid UTF-8: save the table as UTF-8",
                              "line 7: 0x1" + coordinate,
                              "line 8: has no angle: give 0, 90, 180, 270, -90 or -180"}));
    ASSERT_EQ(table.rows.size(), 1U);
    EXPECT_EQ(table.rows[0].name, L"a");
}

TEST(LayoutTable, IsNothingWithoutARow) {
    for (const char* text : {"", "\n\n", "file,x,y\n"})
        EXPECT_EQ(LayoutOf(text).problems,
                  LayoutProblems{"holds no row: give a file, its x and its y a line"});
    test::ExpectMissingFileIsTold(ReadLayoutTable);
}

} // namespace
} // namespace trevolt
