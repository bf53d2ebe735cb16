#include "common/MassiveBuf.h"

#include <cstring>

#include <gtest/gtest.h>

#include "platform/FileStream.h"
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

using test::CTemporaryFolder;

void FillCounting(CMassiveBuf& buffer) {
    std::uint64_t n = 0;
    for (std::size_t i = 0; i < buffer.BlockCount(); ++i)
        for (std::size_t k = 0; k < buffer.BlockSize(i); ++k)
            buffer.Block(i)[k] = static_cast<std::byte>(n++ * 2654435761U >> 13);
}

std::vector<std::byte> Content(const CMassiveBuf& buffer) {
    std::vector<std::byte> all;
    for (std::uint64_t i = 0; i < buffer.ByteCount(); ++i)
        all.push_back(buffer.Block(
            static_cast<std::size_t>(i / buffer.BlockBytes()))[i % buffer.BlockBytes()]);
    return all;
}

TEST(MassiveBuf, AllocatesBlocksAndTrimsTheLast) {
    CMassiveBuf buffer(100);
    ASSERT_TRUE(buffer.Allocate(250));
    EXPECT_EQ(buffer.ByteCount(), 250U);
    ASSERT_EQ(buffer.BlockCount(), 3U);
    EXPECT_EQ(buffer.BlockSize(0), 100U);
    EXPECT_EQ(buffer.BlockSize(2), 50U);
    EXPECT_TRUE(buffer.Allocate(0));
    EXPECT_EQ(buffer.BlockCount(), 0U);
}

TEST(MassiveBuf, RoundTripsThroughAFrame) {
    const CTemporaryFolder folder;
    for (const std::uint64_t size : {0ULL, 1ULL, 99ULL, 100ULL, 101ULL, 12345ULL}) {
        CMassiveBuf buffer(100);
        ASSERT_TRUE(buffer.Allocate(size));
        FillCounting(buffer);
        std::fstream stream;
        ASSERT_TRUE(
            OpenFileStream(stream, folder.File(L"f").c_str(), std::ios::out | std::ios::trunc));
        EXPECT_EQ(buffer.CompressToFile(stream), S_OK);
        stream.close();
        ASSERT_TRUE(OpenFileStream(stream, folder.File(L"f").c_str(), std::ios::in));
        CMassiveBuf back(64);
        EXPECT_EQ(back.UncompressFromFile(stream, BytesToEnd(stream).value()), S_OK);
        EXPECT_EQ(Content(back), Content(buffer));
    }
}

} // namespace
} // namespace trevolt
