#include "platform/Md5.h"

#include <span>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

std::string HexDigest(std::string_view text, std::size_t pieceBytes) {
    CMd5 md5;
    const auto bytes = std::as_bytes(std::span(text));
    for (std::size_t at = 0; at < bytes.size(); at += pieceBytes)
        EXPECT_TRUE(md5.Add(bytes.data() + at, std::min(pieceBytes, bytes.size() - at)));
    std::array<std::uint8_t, 16> digest{};
    EXPECT_TRUE(md5.Finish(digest));
    std::string hex;
    for (const std::uint8_t byte : digest) {
        hex += "0123456789abcdef"[byte >> 4];
        hex += "0123456789abcdef"[byte & 15];
    }
    return hex;
}

// Digests by md5sum: printf '' | md5sum, printf abc | md5sum, seq 1 1000 | md5sum
TEST(Md5, GivesTheDigestsOfMd5sum) {
    EXPECT_EQ(HexDigest("", 1), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(HexDigest("abc", 3), "900150983cd24fb0d6963f7d28e17f72");
    std::string lines;
    for (int i = 1; i <= 1000; ++i)
        lines += std::to_string(i) + "\n";
    for (const std::size_t pieceBytes : {1U, 63U, 1024U, 1025U, 100000U})
        EXPECT_EQ(HexDigest(lines, pieceBytes), "53d025127ae99ab79e8502aae2d9bea6");
}

TEST(Md5, ADigestEndsOnce) {
    CMd5 md5;
    std::array<std::uint8_t, 16> digest{};
    EXPECT_TRUE(md5.Finish(digest));
    const auto before = digest;
    EXPECT_FALSE(md5.Add(nullptr, 0));
    EXPECT_FALSE(md5.Finish(digest));
    EXPECT_EQ(digest, before);
}

} // namespace
} // namespace trevolt
