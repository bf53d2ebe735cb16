#include "app/rotation/AngleTable.h"

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "tests/rotation/MountingTables.h"

namespace trevolt {
namespace {

using Problems = test::TableProblems;

SAngleTable TableOf(std::string_view text) { return test::ReadTableText(ReadAngleTable, text); }

/// "file=code " a row.
std::wstring RowsOf(std::string_view text) {
    return test::ShownRows(TableOf(text), [](const SFileAngle& row) {
        return row.name + L"=" + std::to_wstring(row.code);
    });
}

TEST(AngleTable, ReadsEveryAngle) {
    EXPECT_EQ(RowsOf("a,0\nb,90\nc,180\nd,270\ne,-90\nf,-180\n"), L"a=0 b=1 c=2 d=3 e=3 f=2 ");
    EXPECT_EQ(RowsOf("a,0\u00B0\nb,90\u00B0\ne,-90\u00B0\n*,180 \n"), L"a=0 b=1 e=3 *=2 ");
}

TEST(AngleTable, TakesAHeadingInTheFirstRowOnly) {
    EXPECT_EQ(RowsOf("file,angle\na,90\n"), L"a=1 ");
    EXPECT_EQ(RowsOf("\xEF\xBB\xBF\r\n File , ANGLE\r\na,90\r\n"), L"a=1 ");
    EXPECT_EQ(TableOf("a,90\nfile,angle\n").problems,
              Problems{"line 2: angle is no angle: give 0, 90, 180, 270, -90 or -180"});
    EXPECT_EQ(RowsOf("file,90\n"), L"file=1 ");
    EXPECT_EQ(RowsOf("name,angle\na,90\n"), L"a=1 ");
    EXPECT_EQ(RowsOf("Angle,File\n90,a\n"), L"a=1 ");
    EXPECT_EQ(TableOf("file,file\n").problems,
              Problems{"line 1: file is no angle: give 0, 90, 180, 270, -90 or -180, or the "
                       "heading file,angle"});
}

TEST(AngleTable, AHeadingHasTwoColumnsAtLeast) {
    EXPECT_EQ(TableOf("file\na,90\n").problems,
              Problems{"line 1: has 1 field: give a file and its angle, with a comma between"});
}

TEST(AngleTable, TakesTheAnglesOfALayout) {
    EXPECT_EQ(RowsOf("file,x,y,angle\na,0,0,90\nb,160,0,0\n"), L"a=1 b=0 ");
    EXPECT_EQ(RowsOf("name,angle,y,x\na,90,0,0\n"), L"a=1 ");
    EXPECT_EQ(RowsOf("a,0,0,90\n*,,here,180\nc,270\n"), L"a=1 *=2 c=3 ");
    EXPECT_EQ(TableOf("file,x,y\na,0,0\n").problems,
              Problems{"line 1: the heading has no angle: give a file and its angle, with a comma "
                       "between"});
    EXPECT_EQ(TableOf("x,y,angle\n").problems,
              Problems{"line 1: has 3 fields: give a file and its angle, with a comma between"});
}

TEST(AngleTable, NamesRowsOfAnotherNumberOfFieldsThanTheHeading) {
    const SAngleTable table = TableOf("file,x,y,angle\na,90\nb,0,0,90\nc\n");
    EXPECT_EQ(table.problems,
              (Problems{"line 2: has 2 fields, and the heading has 4: give as many",
                        "line 4: has 1 field, and the heading has 4: give as many"}));
    ASSERT_EQ(table.rows.size(), 1U);
    EXPECT_EQ(table.rows[0].name, L"b");
}

TEST(AngleTable, KeepsNamesAsTheyStand) {
    EXPECT_EQ(RowsOf("\"a, b.3bcoef\",90\n c ,0\nwall/\u7BB1.3bcoef,180\n"),
              L"a, b.3bcoef=1  c =0 wall/\u7BB1.3bcoef=2 ");
}

TEST(AngleTable, HasOneRowForEachFileOfTheSystem) {
    const SAngleTable table = TableOf("Cab,90\ncAB,180\n");
    EXPECT_EQ(table.problems,
              kNamesIgnoreCase
                  ? Problems{"line 2: cAB stands in line 1 already: keep one of the two"}
                  : Problems{});
}

TEST(AngleTable, NamesEveryLineThatIsWrong) {
    const SAngleTable table = TableOf("a,90\nb,45\n\nc\nd,90,1\n,90\na,180\n\xFF,90\ne,0x5A\nf,\n"
                                      "\"g");
    EXPECT_EQ(table.problems,
              (Problems{"line 11: a quote is not closed: put one behind the field, or two for one "
                        "in it",
                        "line 2: 45 is no angle: give 0, 90, 180, 270, -90 or -180",
                        "line 4: has 1 field: give a file and its angle, with a comma between",
                        "line 5: has 3 fields: give a file and its angle, with a comma between",
                        "line 6: has no file: give its name, or * for all that have no row",
                        "line 7: a stands in line 1 already: keep one of the two",
                        "line 8: the file's name is not valid UTF-8: save the table as UTF-8",
                        "line 9: 0x5A is no angle: give 0, 90, 180, 270, -90 or -180",
                        "line 10: has no angle: give 0, 90, 180, 270, -90 or -180"}));
    ASSERT_EQ(table.rows.size(), 1U);
    EXPECT_EQ(table.rows[0].name, L"a");
}

TEST(AngleTable, OfSemicolonsIsToldAsSuch) {
    const std::string told = ": fields are separated by commas, and this row has semicolons: save "
                             "the table with commas between";
    EXPECT_EQ(TableOf("file;angle\na;90\n").problems, (Problems{"line 1" + told, "line 2" + told}));
    EXPECT_EQ(RowsOf("a;b,90\n"), L"a;b=1 ");
}

TEST(AngleTable, AFirstRowThatMayBeAHeadingIsToldWhatOneIs) {
    const std::string heading = ", or the heading file,angle";
    EXPECT_EQ(TableOf("file,angel\na,45\n").problems,
              (Problems{"line 1: angel is no angle: give 0, 90, 180, 270, -90 or -180" + heading,
                        "line 2: 45 is no angle: give 0, 90, 180, 270, -90 or -180"}));
    EXPECT_EQ(TableOf("file,angle\na, \n").problems,
              Problems{"line 2: has no angle: give 0, 90, 180, 270, -90 or -180"});
}

TEST(AngleTable, ManyFaultsOfOneSortAreToldOnceMore) {
    std::string rows;
    for (int i = 0; i < 10; ++i)
        rows += "a\n"; // no row
    EXPECT_EQ(TableOf(rows).problems.size(), 10U);
    rows += "a\na\n";
    for (int i = 0; i < 13; ++i)
        rows += "\"a\"x,90\n"; // not to be split
    const Problems problems = TableOf(rows).problems;
    ASSERT_EQ(problems.size(), 22U);
    EXPECT_EQ(problems[9], "line 22: text follows a closing quote: put two quotes for one");
    EXPECT_EQ(problems[10], "and 3 more like these");
    EXPECT_EQ(problems[20],
              "line 10: has 1 field: give a file and its angle, with a comma between");
    EXPECT_EQ(problems[21], "and 2 more like these");
}

TEST(AngleTable, RowsKnowTheirLines) {
    const SAngleTable table = TableOf("file,angle\n\na,90\n\"b\n\",0\nc,0\n");
    ASSERT_EQ(table.rows.size(), 3U);
    EXPECT_EQ(table.rows[0].line, 3U);
    EXPECT_EQ(table.rows[1].line, 4U);
    EXPECT_EQ(table.rows[2].line, 6U);
}

TEST(AngleTable, IsNothingWithoutARow) {
    for (const char* text : {"", "\n\n", "file,angle\n"})
        EXPECT_EQ(TableOf(text).problems,
                  Problems{"holds no row: give a file and its angle a line"});
}

TEST(AngleTable, ThatDoesNotOpenIsTold) { test::ExpectMissingFileIsTold(ReadAngleTable); }

} // namespace
} // namespace trevolt
