#include "app/inspection/PngFile.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/rotation/AllocationLimit.h"
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

CPicture Checkered(int width, int height) {
    CPicture picture(width, height, {255, 255, 255});
    for (int y = 0; y < height; ++y)
        for (int x = y % 2; x < width; x += 2)
            picture.Set(x, y, {static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y), 7});
    return picture;
}

std::uint32_t BigEndianAt(const std::vector<std::uint8_t>& bytes, std::size_t at) {
    return std::uint32_t{bytes[at]} << 24 | std::uint32_t{bytes[at + 1]} << 16 |
           std::uint32_t{bytes[at + 2]} << 8 | bytes[at + 3];
}

TEST(PngFile, TellsThePicturesShape) {
    const std::vector<std::uint8_t> bytes = PngBytes(Checkered(300, 7));
    const std::vector<std::uint8_t> begin{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n',
                                          0,    0,   0,   13,  'I',  'H',  'D',  'R'};
    ASSERT_GT(bytes.size(), 33U);
    EXPECT_TRUE(std::equal(begin.begin(), begin.end(), bytes.begin()));
    EXPECT_EQ(BigEndianAt(bytes, 16), 300U);
    EXPECT_EQ(BigEndianAt(bytes, 20), 7U);
    EXPECT_EQ(bytes[24], 8); // bits
    EXPECT_EQ(bytes[25], 2); // red, green and blue
    const std::vector<std::uint8_t> end{'I', 'E', 'N', 'D', 0xAE, 0x42, 0x60, 0x82};
    EXPECT_TRUE(std::equal(end.rbegin(), end.rend(), bytes.rbegin()));
}

TEST(PngFile, IsTheSameForTheSamePicture) {
    EXPECT_EQ(PngBytes(Checkered(64, 48)), PngBytes(Checkered(64, 48)));
    EXPECT_NE(PngBytes(Checkered(64, 48)), PngBytes(Checkered(64, 49)));
}

TEST(PngFile, IsTheSameForEveryNumberOfThreads) {
    const CPicture picture = Checkered(700, 600); // more than one stripe
    const std::vector<std::uint8_t> one = PngBytes(picture);
    for (const std::size_t jobs : {2U, 5U})
        EXPECT_TRUE(PngBytes(picture, jobs) == one) << jobs;
}

TEST(PngFile, IsNoneWhereMemoryIsRefused) {
    const CPicture picture = Checkered(700, 600);
    const test::CAllocationLimit limit(500000); // less than a packed stripe may need
    EXPECT_THROW(PngBytes(picture, 2), std::bad_alloc);
}

TEST(PngFile, PacksPlainAreas) {
    EXPECT_LT(PngBytes(CPicture(1600, 1000, {255, 255, 255})).size(), 40000U);
}

TEST(PngFile, WritesItsBytes) {
    const test::CTemporaryFolder folder;
    const std::wstring path = folder.File(L"picture.png");
    test::WriteText(path, std::string(100000, 'x'));
    const CPicture picture = Checkered(20, 10);
    EXPECT_EQ(WritePngFile(picture, path), "");
    const std::string written = test::ReadText(path);
    EXPECT_EQ(std::vector<std::uint8_t>(written.begin(), written.end()), PngBytes(picture));
}

TEST(PngFile, TellsWhyItCouldNotBeWritten) {
    const test::CTemporaryFolder folder;
    EXPECT_EQ(WritePngFile(Checkered(2, 2), folder.File(L"missing/picture.png")).substr(0, 31),
              "the picture could not be writte");
}

} // namespace
} // namespace trevolt
