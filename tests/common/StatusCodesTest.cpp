#include "trevolt/StatusCodes.h"

#include <set>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

TEST(StatusCodes, HaveTheirValues) {
    struct Row {
        Status status;
        std::uint32_t bits;
        const char* name;
    };
    std::set<std::uint32_t> seen;
    for (const Row& row :
         {Row{E_FAIL, 0x80004005, "E_FAIL"}, Row{E_POINTER, 0x80004003, "E_POINTER"},
          Row{E_HANDLE, 0x80070006, "E_HANDLE"}, Row{E_OUTOFMEMORY, 0x8007000E, "E_OUTOFMEMORY"},
          Row{E_COEF_INVALIDARG, 0xE0830000, "E_COEF_INVALIDARG"},
          Row{E_COEF_NOBUFFER, 0xE0830001, "E_COEF_NOBUFFER"},
          Row{E_COEF_NOTIMPL, 0xE0830002, "E_COEF_NOTIMPL"},
          Row{E_COEF_SIZELIMIT, 0xE0830004, "E_COEF_SIZELIMIT"},
          Row{E_COEF_BADFORMAT, 0xE0830010, "E_COEF_BADFORMAT"},
          Row{E_COEF_OPENFAILED, 0xE0830011, "E_COEF_OPENFAILED"},
          Row{E_COEF_BADTEXT, 0xE0830013, "E_COEF_BADTEXT"}}) {
        EXPECT_EQ(static_cast<std::uint32_t>(row.status), row.bits) << row.name;
        EXPECT_TRUE(Failed(row.status)) << row.name;
        EXPECT_STREQ(StatusName(row.status), row.name);
        EXPECT_STRNE(StatusMeaning(row.status), StatusMeaning(MakeStatus(0x80000001))) << row.name;
        EXPECT_TRUE(seen.insert(row.bits).second) << row.name;
    }
}

TEST(StatusCodes, EveryStatusThatIsNotNegativeIsSuccess) {
    for (const Status status : {S_OK, Status{1}, Status{0x7FFFFFFF}}) {
        EXPECT_FALSE(Failed(status));
        EXPECT_STREQ(StatusName(status), "S_OK");
    }
}

TEST(StatusCodes, DescribeThemselves) {
    EXPECT_EQ(DescribeStatus(E_COEF_BADFORMAT),
              "E_COEF_BADFORMAT (0xE0830010): not a file of this kind, or of a newer version");
    EXPECT_EQ(DescribeStatus(S_OK), "S_OK (0x00000000): success");
    EXPECT_EQ(DescribeStatus(MakeStatus(0x80000001)),
              "unknown status (0x80000001): unknown failure");
}

} // namespace
} // namespace trevolt
