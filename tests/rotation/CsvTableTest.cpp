#include "app/rotation/CsvTable.h"

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

using Fields = std::vector<std::string>;

/// "line: field|field" a row.
std::vector<std::string> Rows(std::string_view text) {
    std::vector<std::string> rows;
    for (const SCsvRow& row : SplitCsv(text).rows) {
        std::string shown = std::to_string(row.line) + ":";
        for (const std::string& field : row.fields)
            shown += field + "|";
        rows.push_back(shown);
    }
    return rows;
}

TEST(CsvTable, SplitsLinesAndFields) {
    EXPECT_EQ(Rows(""), Fields{});
    EXPECT_EQ(Rows("a,1"), Fields{"1:a|1|"});
    EXPECT_EQ(Rows("a,1\nb,2\n"), (Fields{"1:a|1|", "2:b|2|"}));
    EXPECT_EQ(Rows("a,1\r\nb,2\r\n"), (Fields{"1:a|1|", "2:b|2|"}));
    EXPECT_EQ(Rows("\xEF\xBB\xBF"
                   "a,1\n"),
              Fields{"1:a|1|"});
    EXPECT_EQ(Rows("\n \n\r\na\n,\n"), (Fields{"4:a|", "5:||"}));
    EXPECT_EQ(Rows(" a b , 1,"), Fields{"1: a b | 1||"});
    EXPECT_EQ(Rows("a\rb,1"), Fields{"1:a\rb|1|"});
}

TEST(CsvTable, TakesQuotedFields) {
    EXPECT_EQ(Rows("\"a,b\",1\n"), Fields{"1:a,b|1|"});
    EXPECT_EQ(Rows("\"a\"\"b\",\"\"\n"), Fields{"1:a\"b||"});
    EXPECT_EQ(Rows("\"a\nb\",1\nc,2"), (Fields{"1:a\nb|1|", "3:c|2|"}));
    EXPECT_EQ(Rows("a\"b,1"), Fields{"1:a\"b|1|"});
}

TEST(CsvTable, NamesLinesThatAreWrong) {
    const SCsvTable table = SplitCsv("a,1\n\"b\"x,2\n\"c\nd,3");
    EXPECT_EQ(
        table.problems,
        (Fields{"line 2: text follows a closing quote: put two quotes for one",
                "line 3: a quote is not closed: put one behind the field, or two for one in it"}));
    ASSERT_EQ(table.rows.size(), 1U);
    EXPECT_EQ(table.rows[0].fields, (Fields{"a", "1"}));
}

TEST(CsvTable, SemicolonsBetweenFieldsAreToldAsSuch) {
    const std::string told =
        "fields are separated by commas, and this row has semicolons: save the "
        "table with commas between";
    EXPECT_EQ(SplitCsv("file;x;y\n\"a, b\";0;0\r\na;\"0\";0\n\"a\";\"0\"").problems,
              (Fields{"line 1: " + told, "line 2: " + told, "line 3: " + told, "line 4: " + told}));
    EXPECT_EQ(
        SplitCsv("\"a\"b;0\n\"a;b").problems,
        (Fields{"line 1: text follows a closing quote: put two quotes for one",
                "line 2: a quote is not closed: put one behind the field, or two for one in it"}));
    EXPECT_EQ(Rows("a;b,1\n\"a;b\"\n\"a;b\",\";\"\n"), (Fields{"1:a;b|1|", "2:a;b|", "3:a;b|;|"}));
}

TEST(CsvTable, TabsBetweenFieldsAreToldAsSuch) {
    EXPECT_EQ(
        SplitCsv("file\tx\n\"a\"\t0\n").problems,
        (Fields{"line 1: fields are separated by commas, and this row has tabs: save the table "
                "with commas between",
                "line 2: fields are separated by commas, and this row has tabs: save the table "
                "with commas between"}));
    EXPECT_EQ(Rows("a\tb,1\n"), Fields{"1:a\tb|1|"});
}

TEST(CsvTable, WhatIsNoTextIsToldOnce) {
    constexpr std::string_view kUtf16 = {"\xFF\xFE;\0\n\0", 6};
    for (const std::string_view text : {kUtf16, kUtf16.substr(2), std::string_view("a,1\n\0", 5)}) {
        EXPECT_EQ(SplitCsv(text).problems,
                  Fields{"holds zero bytes, as no table does: save it as text, in UTF-8"});
        EXPECT_TRUE(SplitCsv(text).rows.empty());
    }
}

TEST(CsvTable, TellsWhyAFileCannotBeRead) {
    const test::CTemporaryFolder folder;
    EXPECT_EQ(ReadCsv(folder.File(L"none")).problems,
              Fields{"cannot be opened: No such file or directory: give a file that can be read"});
    EXPECT_EQ(ReadCsv(folder.Path()).problems,
              Fields{"cannot be opened: Is a directory: give a file that can be read"});
    test::WriteText(folder.File(L"table"), "a,1\n");
    EXPECT_EQ(ReadCsv(folder.File(L"table")).rows.size(), 1U);
#ifdef __linux__
    const std::wstring shorterThanTold = L"/sys/devices/system/cpu/possible";
    ASSERT_TRUE(PathExists(shorterThanTold));
    EXPECT_EQ(ReadCsv(shorterThanTold).problems,
              Fields{"cannot be read whole: it ends before the size that the system tells of it: "
                     "give a copy"});
    // Files without a size, whose end can be sought or not.
    EXPECT_EQ(ReadCsv(L"/proc/sys/kernel/ostype").rows.at(0).fields, Fields{"Linux"});
    EXPECT_EQ(ReadCsv(L"/proc/version").problems, Fields{});
    EXPECT_EQ(ReadCsv(L"/proc/version").rows.at(0).fields.at(0).substr(0, 14), "Linux version ");
#endif
}

} // namespace
} // namespace trevolt
