#include "platform/Sha256.h"

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

std::string HexSha256(std::string_view text, std::size_t pieceBytes) {
    CSha256 sha;
    const auto bytes = std::as_bytes(std::span(text));
    for (std::size_t at = 0; at < bytes.size(); at += pieceBytes)
        EXPECT_TRUE(sha.Add(bytes.data() + at, std::min(pieceBytes, bytes.size() - at)));
    std::array<std::uint8_t, 32> digest{};
    EXPECT_TRUE(sha.Finish(digest));
    std::string hex;
    for (const std::uint8_t byte : digest) {
        hex += "0123456789abcdef"[byte >> 4];
        hex += "0123456789abcdef"[byte & 15];
    }
    return hex;
}

// Digests by sha256sum: printf '' | sha256sum, printf abc | sha256sum, seq 1 1000 | sha256sum
TEST(Sha256, GivesTheDigestsOfSha256sum) {
    EXPECT_EQ(HexSha256("", 1), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(HexSha256("abc", 3),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    std::string lines;
    for (int i = 1; i <= 1000; ++i)
        lines += std::to_string(i) + "\n";
    for (const std::size_t pieceBytes : {1U, 55U, 56U, 63U, 64U, 65U, 1024U, 100000U})
        EXPECT_EQ(HexSha256(lines, pieceBytes),
                  "67d4ff71d43921d5739f387da09746f405e425b07d727e4c69d029461d1f051f");
}

TEST(Sha256, ADigestEndsOnce) {
    CSha256 sha;
    std::array<std::uint8_t, 32> digest{};
    EXPECT_TRUE(sha.Finish(digest));
    const auto before = digest;
    EXPECT_FALSE(sha.Add(nullptr, 0));
    EXPECT_FALSE(sha.Finish(digest));
    EXPECT_EQ(digest, before);
}

} // namespace
} // namespace trevolt
