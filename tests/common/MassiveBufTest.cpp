#include "trevolt/MassiveBuf.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include <gtest/gtest.h>

#include "platform/FileStream.h"
#include "tests/support/BudgetLimit.h"
#include "tests/support/BufferContent.h"
#include "tests/support/Streams.h"
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

using test::AsBytes;
using test::Bytes;
using test::CBudgetLimit;
using test::CFullDisk;
using test::Content;
using test::CPipe;
using test::CTemporaryFolder;
using test::MakeBytes;

void FillCounting(CMassiveBuf& buffer) {
    std::uint64_t n = 0;
    for (std::size_t i = 0; i < buffer.BlockCount(); ++i)
        for (std::size_t k = 0; k < buffer.BlockSize(i); ++k)
            buffer.Block(i)[k] = static_cast<std::byte>(n++ * 2654435761U >> 13);
}

Bytes TextBytes(std::string_view text) {
    Bytes bytes;
    for (const char c : text)
        bytes.push_back(static_cast<std::byte>(c));
    return bytes;
}

Bytes Joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

// The pieces of frames that hold the eight bytes ABCDEFGH.
const Bytes kMagic = MakeBytes({0x04, 0x22, 0x4D, 0x18});
const Bytes kEightBytesStored =
    Joined({MakeBytes({0x08, 0x00, 0x00, 0x80}), TextBytes("ABCDEFGH")});
const Bytes kChecksum = MakeBytes({0x19, 0x05, 0x57, 0x63}); // xxHash-32 of ABCDEFGH
const Bytes kEndMark = MakeBytes({0, 0, 0, 0});
// Descriptors: flags, block size, the fields that the flags name, and their checksum.
const Bytes kPlain = MakeBytes({0x60, 0x40, 0x82});
const Bytes kPlainFrame = Joined({kMagic, kPlain, kEightBytesStored, kEndMark});

class MassiveBufFrame : public testing::Test {
  protected:
    Status Read(const Bytes& bytes, CMassiveBuf& buffer) const {
        test::WriteFile(m_folder.File(L"f"), bytes);
        std::fstream stream;
        EXPECT_TRUE(OpenFileStream(stream, m_folder.File(L"f").c_str(), std::ios::in));
        return buffer.UncompressFromFile(stream, bytes.size());
    }

    void ExpectRead(const Bytes& bytes) const {
        CMassiveBuf buffer(64);
        EXPECT_EQ(Read(bytes, buffer), S_OK);
        EXPECT_EQ(Content(buffer), TextBytes("ABCDEFGH"));
    }

    void ExpectRefused(const Bytes& bytes) const {
        CMassiveBuf buffer(64);
        ASSERT_TRUE(buffer.Allocate(100));
        EXPECT_EQ(Read(bytes, buffer), E_FAIL);
        EXPECT_EQ(buffer.ByteCount(), 0U);
        EXPECT_EQ(buffer.BlockCount(), 0U);
    }

    CTemporaryFolder m_folder;
};

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

TEST(MassiveBuf, IsEmptyWhenMemoryIsRefused) {
    CMassiveBuf buffer(100);
    ASSERT_TRUE(buffer.Allocate(250));
    const CBudgetLimit limit(249);
    EXPECT_FALSE(buffer.Allocate(250));
    EXPECT_EQ(buffer.ByteCount(), 0U);
    EXPECT_EQ(buffer.BlockCount(), 0U);
    EXPECT_FALSE(buffer.Allocate(UINT64_MAX));
    EXPECT_TRUE(buffer.Allocate(249));
}

TEST(MassiveBuf, FillsWholePatterns) {
    CMassiveBuf buffer(60000);
    ASSERT_TRUE(buffer.Allocate(100002));
    const std::array<std::uint8_t, 12> pattern{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    buffer.FillWith(pattern.data(), pattern.size());
    const Bytes content = Content(buffer);
    for (std::size_t i = 0; i < content.size(); ++i)
        ASSERT_EQ(content[i], static_cast<std::byte>(pattern[i % 12])) << i;
    CMassiveBuf empty(12);
    empty.FillWith(pattern.data(), pattern.size());
    EXPECT_EQ(empty.ByteCount(), 0U);
}

TEST(MassiveBuf, CopiesBetweenBlockSizes) {
    CMassiveBuf source(100);
    ASSERT_TRUE(source.Allocate(1234));
    FillCounting(source);
    CMassiveBuf copy(64);
    ASSERT_TRUE(copy.CopyFrom(source));
    EXPECT_EQ(Content(copy), Content(source));
    ASSERT_TRUE(copy.CopyFrom(copy));
    EXPECT_EQ(Content(copy), Content(source));
    const CBudgetLimit limit(0);
    EXPECT_FALSE(copy.CopyFrom(source));
    EXPECT_EQ(copy.ByteCount(), 0U);
}

TEST(MassiveBuf, IsEmptyWhenMovedFrom) {
    const auto expectNothing = [](CMassiveBuf& from) {
        EXPECT_EQ(from.ByteCount(), 0U);
        EXPECT_EQ(from.BlockCount(), 0U);
        CMassiveBuf copy(64);
        ASSERT_TRUE(copy.Allocate(5));
        ASSERT_TRUE(copy.CopyFrom(from));
        EXPECT_EQ(copy.ByteCount(), 0U);
    };
    CMassiveBuf buffer(100);
    ASSERT_TRUE(buffer.Allocate(250));
    FillCounting(buffer);
    const Bytes content = Content(buffer);
    CMassiveBuf moved(std::move(buffer));
    expectNothing(buffer); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(Content(moved), content);
    CMassiveBuf other(64);
    ASSERT_TRUE(other.Allocate(10));
    other = std::move(moved);
    expectNothing(moved); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(other.BlockBytes(), 100U);
    EXPECT_EQ(Content(other), content);
    CMassiveBuf& same = other;
    other = std::move(same);
    EXPECT_EQ(Content(other), content);
    EXPECT_TRUE(moved.Allocate(10)); // and of use
}

TEST_F(MassiveBufFrame, WritesExactlyTheseBytes) {
    CMassiveBuf buffer(64);
    ASSERT_TRUE(buffer.Allocate(8));
    std::memcpy(buffer.Block(0), "ABCDEFGH", 8);
    std::fstream stream;
    ASSERT_TRUE(
        OpenFileStream(stream, m_folder.File(L"f").c_str(), std::ios::out | std::ios::trunc));
    ASSERT_EQ(buffer.CompressToFile(stream), S_OK);
    EXPECT_EQ(stream.tellp(), 35);
    stream.close();
    EXPECT_EQ(test::ReadFile(m_folder.File(L"f")),
              Joined({kMagic, MakeBytes({0x6C, 0x70, 8, 0, 0, 0, 0, 0, 0, 0, 0x5D}),
                      kEightBytesStored, kEndMark, kChecksum}));
}

TEST_F(MassiveBufFrame, WritesNothingAsAnEmptyFrame) {
    const CMassiveBuf empty(64);
    std::fstream stream;
    ASSERT_TRUE(
        OpenFileStream(stream, m_folder.File(L"f").c_str(), std::ios::out | std::ios::trunc));
    ASSERT_EQ(empty.CompressToFile(stream), S_OK);
    stream.close();
    const Bytes file = test::ReadFile(m_folder.File(L"f"));
    EXPECT_EQ(file, Joined({kMagic, MakeBytes({0x64, 0x70, 0xB9}), kEndMark,
                            MakeBytes({0x05, 0x5D, 0xCC, 0x02})}));
    CMassiveBuf back(64);
    ASSERT_TRUE(back.Allocate(10));
    EXPECT_EQ(Read(file, back), S_OK);
    EXPECT_EQ(back.ByteCount(), 0U);
}

TEST_F(MassiveBufFrame, StartsAndEndsWhereTheStreamStands) {
    CMassiveBuf buffer(100);
    ASSERT_TRUE(buffer.Allocate(1000));
    FillCounting(buffer);
    std::fstream stream;
    ASSERT_TRUE(
        OpenFileStream(stream, m_folder.File(L"f").c_str(), std::ios::out | std::ios::trunc));
    stream << "before";
    ASSERT_EQ(buffer.CompressToFile(stream), S_OK);
    const auto end = stream.tellp();
    stream << "behind";
    stream.close();
    ASSERT_TRUE(OpenFileStream(stream, m_folder.File(L"f").c_str(), std::ios::in));
    stream.seekg(6);
    CMassiveBuf back(7);
    ASSERT_EQ(back.UncompressFromFile(stream, static_cast<std::uint64_t>(end) - 6), S_OK);
    EXPECT_EQ(Content(back), Content(buffer));
    EXPECT_EQ(stream.tellg(), end);
}

TEST_F(MassiveBufFrame, RoundTripsEverySizeAroundItsEdges) {
    for (const std::uint64_t size : {0ULL, 1ULL, 99ULL, 100ULL, 101ULL, 12345ULL, (4ULL << 20) - 1,
                                     4ULL << 20, (4ULL << 20) + 1, (9ULL << 20) + 5}) {
        const auto blockBytes = size < 20000 ? 100U : 6U << 20;
        CMassiveBuf buffer(blockBytes);
        ASSERT_TRUE(buffer.Allocate(size));
        FillCounting(buffer);
        std::fstream stream;
        ASSERT_TRUE(
            OpenFileStream(stream, m_folder.File(L"f").c_str(), std::ios::out | std::ios::trunc));
        EXPECT_EQ(buffer.CompressToFile(stream), S_OK);
        stream.close();
        ASSERT_TRUE(OpenFileStream(stream, m_folder.File(L"f").c_str(), std::ios::in));
        CMassiveBuf back(size < 20000 ? 64U : 5U << 20);
        EXPECT_EQ(back.UncompressFromFile(stream, BytesToEnd(stream).value()), S_OK);
        EXPECT_EQ(back.ByteCount(), size);
        EXPECT_TRUE(Content(back) == Content(buffer)) << size;
    }
}

TEST_F(MassiveBufFrame, AcceptsEveryFormOfAStandardFrame) {
    ExpectRead(kPlainFrame);
    // Linked blocks.
    ExpectRead(Joined({kMagic, MakeBytes({0x40, 0x40, 0xC0}), kEightBytesStored, kEndMark}));
    // A checksum behind each block.
    ExpectRead(
        Joined({kMagic, MakeBytes({0x70, 0x40, 0xAD}), kEightBytesStored, kChecksum, kEndMark}));
    // Block and content checksums.
    ExpectRead(Joined({kMagic, MakeBytes({0x74, 0x40, 0xBD}), kEightBytesStored, kChecksum,
                       kEndMark, kChecksum}));
    // A content size.
    ExpectRead(Joined({kMagic, MakeBytes({0x68, 0x40, 8, 0, 0, 0, 0, 0, 0, 0, 0x70}),
                       kEightBytesStored, kEndMark}));
    // Two blocks: four bytes each.
    ExpectRead(Joined({kMagic, kPlain, MakeBytes({4, 0, 0, 0x80}), TextBytes("ABCD"),
                       MakeBytes({4, 0, 0, 0x80}), TextBytes("EFGH"), kEndMark}));
    // A compressed block: one run of eight literals.
    ExpectRead(
        Joined({kMagic, kPlain, MakeBytes({9, 0, 0, 0, 0x80}), TextBytes("ABCDEFGH"), kEndMark}));
}

TEST_F(MassiveBufFrame, RefusesEveryTruncation) {
    for (const Bytes& whole :
         {kPlainFrame, Joined({kMagic, MakeBytes({0x6C, 0x70, 8, 0, 0, 0, 0, 0, 0, 0, 0x5D}),
                               kEightBytesStored, kEndMark, kChecksum})})
        for (std::size_t size = 0; size < whole.size(); ++size)
            ExpectRefused({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
}

TEST_F(MassiveBufFrame, RefusesWhatFollowsTheFrame) {
    ExpectRefused(Joined({kPlainFrame, MakeBytes({0})}));
    ExpectRefused(Joined({kPlainFrame, kPlainFrame}));
    const Bytes skippable = MakeBytes({0x50, 0x2A, 0x4D, 0x18, 1, 0, 0, 0, 0x55});
    ExpectRefused(Joined({kPlainFrame, skippable}));
    ExpectRefused(Joined({skippable, kPlainFrame}));
    ExpectRefused(skippable);
}

TEST_F(MassiveBufFrame, RefusesDictionariesLegacyFramesAndReservedBits) {
    ExpectRefused(
        Joined({kMagic, MakeBytes({0x61, 0x40, 7, 0, 0, 0, 0xE3}), kEightBytesStored, kEndMark}));
    ExpectRefused(Joined({MakeBytes({0x02, 0x21, 0x4C, 0x18}), MakeBytes({9, 0, 0, 0, 0x80}),
                          TextBytes("ABCDEFGH")}));
    for (const Bytes& descriptor : {MakeBytes({0x62, 0x40, 0xF0}), MakeBytes({0x20, 0x40, 0x03}),
                                    MakeBytes({0xA0, 0x40, 0x0F}), MakeBytes({0x60, 0x30, 0xD4}),
                                    MakeBytes({0x60, 0x41, 0xBD})})
        ExpectRefused(Joined({kMagic, descriptor, kEightBytesStored, kEndMark}));
}

TEST_F(MassiveBufFrame, RefusesWrongChecksums) {
    Bytes wrong = kChecksum;
    wrong[0] ^= std::byte{1};
    ExpectRefused(
        Joined({kMagic, MakeBytes({0x64, 0x70, 0xB9}), kEightBytesStored, kEndMark, wrong}));
    ExpectRefused(
        Joined({kMagic, MakeBytes({0x70, 0x40, 0xAD}), kEightBytesStored, wrong, kEndMark}));
    ExpectRefused(Joined({kMagic, MakeBytes({0x60, 0x40, 0x83}), kEightBytesStored, kEndMark}));
}

TEST_F(MassiveBufFrame, RefusesADeclaredSizeThatIsNotTrue) {
    struct Row {
        std::array<int, 8> size;
        int checksum;
    };
    for (const Row& row : {Row{{0, 0, 0, 0, 0, 0, 0, 0}, 0x05}, Row{{7, 0, 0, 0, 0, 0, 0, 0}, 0xB0},
                           Row{{9, 0, 0, 0, 0, 0, 0, 0}, 0x6D},
                           Row{{255, 255, 255, 255, 255, 255, 255, 255}, 0xA7}}) {
        Bytes descriptor = MakeBytes({0x68, 0x40});
        for (const int byte : row.size)
            descriptor.push_back(static_cast<std::byte>(byte));
        descriptor.push_back(static_cast<std::byte>(row.checksum));
        ExpectRefused(Joined({kMagic, descriptor, kEightBytesStored, kEndMark}));
    }
}

// A declared size is believed up to 255 times the stored bytes: within that, memory may be asked
// for, beyond it none is.
TEST_F(MassiveBufFrame, AsksForNoMemoryThatTheBytesCannotJustify) {
    const CBudgetLimit limit(1000);
    CMassiveBuf buffer(64);
    const Bytes tail = Joined({kEightBytesStored, kEndMark}); // with 15 bytes before it: 31
    EXPECT_EQ(
        Read(Joined({kMagic, MakeBytes({0x68, 0x40, 0xE1, 0x1E, 0, 0, 0, 0, 0, 0, 0x20}), tail}),
             buffer),
        E_OUTOFMEMORY); // 255 · 31
    EXPECT_EQ(
        Read(Joined({kMagic, MakeBytes({0x68, 0x40, 0xE2, 0x1E, 0, 0, 0, 0, 0, 0, 0xC9}), tail}),
             buffer),
        E_FAIL); // one more
    EXPECT_EQ(buffer.ByteCount(), 0U);
}

TEST_F(MassiveBufFrame, AsksForNoMoreThanThatWithoutADeclaredSizeEither) {
    // What comes out, and what is read of the file behind the frame's header.
    const std::uint64_t most = 255 * kPlainFrame.size() + kPlainFrame.size() - 7;
    CMassiveBuf buffer(1U << 20);
    {
        const CBudgetLimit limit(most);
        EXPECT_EQ(Read(kPlainFrame, buffer), S_OK);
        EXPECT_EQ(buffer.ByteCount(), 8U);
    }
    const CBudgetLimit limit(most - 1);
    EXPECT_EQ(Read(kPlainFrame, buffer), E_OUTOFMEMORY);
}

TEST_F(MassiveBufFrame, EndsInAStatusWhenMemoryRunsOutWithoutADeclaredSize) {
    const CBudgetLimit limit(7);
    CMassiveBuf buffer(4);
    EXPECT_EQ(Read(kPlainFrame, buffer), E_OUTOFMEMORY);
    EXPECT_EQ(buffer.ByteCount(), 0U);
}

TEST_F(MassiveBufFrame, FailsOnAStreamThatDoesNotWrite) {
    CMassiveBuf buffer(64);
    ASSERT_TRUE(buffer.Allocate(8));
    std::fstream closed;
    EXPECT_EQ(buffer.CompressToFile(closed), E_FAIL);
    EXPECT_EQ(buffer.UncompressFromFile(closed, 8), E_FAIL);
    EXPECT_EQ(buffer.ByteCount(), 0U);
}

class MassiveBufRawImage : public testing::Test {
  protected:
    Status Read(const Bytes& bytes, CMassiveBuf& buffer) const {
        test::WriteFile(m_folder.File(L"raw"), bytes);
        std::fstream stream;
        EXPECT_TRUE(OpenFileStream(stream, m_folder.File(L"raw").c_str(), std::ios::in));
        return buffer.ReadFromFile(stream);
    }

    CTemporaryFolder m_folder;
};

TEST_F(MassiveBufRawImage, ReadsACountAndAsManyBytes) {
    const Bytes whole =
        Joined({MakeBytes({10, 0, 0, 0, 0, 0, 0, 0}), TextBytes("0123456789"), TextBytes("more")});
    CMassiveBuf buffer(4);
    ASSERT_EQ(Read(whole, buffer), S_OK);
    EXPECT_EQ(Content(buffer), TextBytes("0123456789"));
    EXPECT_EQ(buffer.BlockCount(), 3U);
    ASSERT_EQ(Read(MakeBytes({0, 0, 0, 0, 0, 0, 0, 0}), buffer), S_OK);
    EXPECT_EQ(buffer.ByteCount(), 0U);
}

TEST_F(MassiveBufRawImage, RefusesEveryTruncationAndFalseCounts) {
    const Bytes whole = Joined({MakeBytes({10, 0, 0, 0, 0, 0, 0, 0}), TextBytes("0123456789")});
    for (std::size_t size = 0; size < whole.size(); ++size) {
        CMassiveBuf buffer(4);
        ASSERT_TRUE(buffer.Allocate(5));
        EXPECT_EQ(Read({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)}, buffer),
                  E_FAIL);
        EXPECT_EQ(buffer.ByteCount(), 0U);
    }
    CMassiveBuf buffer(4);
    EXPECT_EQ(Read(Joined({Bytes(8, std::byte{0xFF}), TextBytes("0123456789")}), buffer), E_FAIL);
    const CBudgetLimit limit(9);
    EXPECT_EQ(Read(whole, buffer), E_OUTOFMEMORY);
    EXPECT_EQ(buffer.ByteCount(), 0U);
}

TEST_F(MassiveBufRawImage, IsReadFromWhereTheStreamStandsWhichThenStandsBehindIt) {
    std::istringstream stream(std::string("before") + std::string("\3\0\0\0\0\0\0\0", 8) +
                              "abcdef");
    stream.seekg(6);
    CMassiveBuf buffer(2);
    EXPECT_EQ(buffer.ReadFromFile(stream), S_OK);
    EXPECT_EQ(Content(buffer), TextBytes("abc"));
    EXPECT_EQ(stream.tellg(), 17);
    EXPECT_TRUE(stream.good());
}

TEST_F(MassiveBufRawImage, OfAStreamThatCannotBeSoughtIsRefused) {
    CPipe pipe(Joined({MakeBytes({3, 0, 0, 0, 0, 0, 0, 0}), TextBytes("abc")}));
    CMassiveBuf buffer(2);
    ASSERT_TRUE(buffer.Allocate(5));
    EXPECT_EQ(buffer.ReadFromFile(pipe), E_FAIL);
    EXPECT_EQ(buffer.ByteCount(), 0U);
}

TEST_F(MassiveBufFrame, NeedsNoStreamThatCanBeSought) {
    CMassiveBuf buffer(64);
    ASSERT_TRUE(buffer.Allocate(1000));
    FillCounting(buffer);
    CFullDisk disk(5000);
    ASSERT_EQ(buffer.CompressToFile(disk), S_OK);
    CPipe pipe(AsBytes(disk.Taken()));
    CMassiveBuf back(64);
    ASSERT_EQ(back.UncompressFromFile(pipe, disk.Taken().size()), S_OK);
    EXPECT_EQ(Content(back), Content(buffer));
    EXPECT_TRUE(pipe.good());
}

TEST_F(MassiveBufFrame, FailsOnAStreamThatRunsFullOrBreaks) {
    CMassiveBuf buffer(64);
    ASSERT_TRUE(buffer.Allocate(1000));
    FillCounting(buffer);
    std::ostringstream whole;
    ASSERT_EQ(buffer.CompressToFile(whole), S_OK);
    const Bytes frame = AsBytes(whole.str());
    for (std::size_t size = 0; size < frame.size(); ++size) {
        CFullDisk full(size);
        EXPECT_EQ(buffer.CompressToFile(full), E_FAIL);
        EXPECT_TRUE(full.bad());
        CPipe broken({frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>(size)}, true);
        CMassiveBuf back(64);
        EXPECT_EQ(back.UncompressFromFile(broken, frame.size()), E_FAIL);
        EXPECT_EQ(back.ByteCount(), 0U);
        EXPECT_TRUE(broken.bad());
    }
}

} // namespace
} // namespace trevolt
