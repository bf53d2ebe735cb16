// Fingerprints on a machine that is set up to allow approved digests only, of which MD5 is none.

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include "calibuf/CaliOperation.h"
#include "platform/Md5.h"

namespace trevolt {
namespace {

/// Allows approved digests only, while it lives.
struct SApprovedDigestsOnly {
    SApprovedDigestsOnly() { EXPECT_EQ(EVP_default_properties_enable_fips(nullptr, 1), 1); }
    ~SApprovedDigestsOnly() { EXPECT_EQ(EVP_default_properties_enable_fips(nullptr, 0), 1); }
    SApprovedDigestsOnly(const SApprovedDigestsOnly&) = delete;
    SApprovedDigestsOnly& operator=(const SApprovedDigestsOnly&) = delete;
};

TEST(ForbiddenDigest, IsToldAndLeavesTheTextAlone) {
    CCaliOperation<SWordCoef> owner;
    ASSERT_EQ(owner.Buffer().Allocate(300, 1), S_OK);
    std::wstring text = L"before";
    {
        const SApprovedDigestsOnly only;
        EXPECT_FALSE(owner.Buffer().ComputeMD5(text));
        EXPECT_EQ(text, L"before");
        CMd5 md5;
        EXPECT_FALSE(md5.Add(nullptr, 0));
        EXPECT_FALSE(md5.WasMemoryRefused());
    }
    EXPECT_TRUE(owner.Buffer().ComputeMD5(text));
    EXPECT_EQ(text.size(), 32U);
}

} // namespace
} // namespace trevolt
