#include "common/FrameWriter.h"

#include <atomic>
#include <cstring>
#include <mutex>
#include <set>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>
#include <lz4.h>

#include "tests/support/BudgetLimit.h"
#include "tests/support/LzFrames.h"
#include "tests/support/Streams.h"
#include "trevolt/MassiveBuf.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using namespace test;

constexpr std::size_t kPiece = std::size_t{4} << 20;

/// A source that gives the content in place, or every second piece in scratch.
FramePieceSource SourceOf(const Bytes& content) {
    return [&content](std::uint64_t offset, std::size_t count, CBudgetBlock& scratch) {
        if (offset / kPiece % 2 == 0)
            return &content[offset];
        scratch = CBudgetBlock(count + 10);
        std::memcpy(scratch.Data() + 10, &content[offset], count);
        return static_cast<const std::byte*>(scratch.Data() + 10);
    };
}

Bytes Written(const Bytes& content, std::size_t threads) {
    std::ostringstream stream;
    EXPECT_EQ(WriteFrame(stream, content.size(), threads, SourceOf(content)), S_OK);
    EXPECT_TRUE(stream.good());
    return AsBytes(stream.str());
}

TEST(FrameWriter, WritesTheFrameThatLz4MakesOfTheSamePieces) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{12}, std::size_t{13},
          std::size_t{1000}, std::size_t{65546}, std::size_t{65547}, kPiece - 1, kPiece, kPiece + 1,
          2 * kPiece + 77}) {
        for (const Bytes& content :
             {Noise(size), Bytes(size, std::byte{7}), MixedBytes(size, 70000)}) {
            const Bytes expected = FrameOf(content, {});
            for (const std::size_t threads : {0U, 1U, 2U, 5U})
                EXPECT_TRUE(Written(content, threads) == expected)
                    << size << " bytes, " << threads << " threads";
        }
    }
}

TEST(FrameWriter, StoresAsItIsWhatOnlyKeepsItsSize) {
    std::size_t kept = 0;
    for (std::size_t size = 20; size < 60; ++size) {
        for (std::size_t repeated = 4; repeated < 9; ++repeated) {
            Bytes content = Noise(size);
            std::memcpy(&content[repeated + 1], content.data(), repeated);
            std::array<char, 100> packed{};
            kept += LZ4_compress_default(reinterpret_cast<const char*>(content.data()),
                                         packed.data(), static_cast<int>(size),
                                         static_cast<int>(packed.size())) == static_cast<int>(size)
                        ? 1
                        : 0;
            EXPECT_EQ(Written(content, 1), FrameOf(content, {})) << size << ", " << repeated;
        }
    }
    EXPECT_GT(kept, 0U);
}

TEST(FrameWriter, AsksForEachPieceOnce) {
    constexpr std::uint64_t kSize = 7 * kPiece + 5;
    const Bytes zeros(kPiece);
    for (const std::size_t threads : {1U, 4U}) {
        std::mutex mutex;
        std::set<std::uint64_t> offsets;
        std::ostringstream stream;
        EXPECT_EQ(WriteFrame(stream, kSize, threads,
                             [&](std::uint64_t offset, std::size_t count, CBudgetBlock& scratch) {
                                 const std::lock_guard lock(mutex);
                                 EXPECT_EQ(offset % kPiece, 0U);
                                 EXPECT_EQ(count, offset == 7 * kPiece ? 5 : kPiece);
                                 EXPECT_FALSE(scratch);
                                 EXPECT_TRUE(offsets.insert(offset).second);
                                 return zeros.data();
                             }),
                  S_OK);
        EXPECT_EQ(offsets.size(), 8U);
        EXPECT_TRUE(ContentOfFrame(AsBytes(stream.str()), kSize).has_value());
    }
}

TEST(FrameWriter, KeepsNoMemoryAndAPieceForEachThread) {
    const Bytes content = MixedBytes(12 * kPiece, 100000);
    const std::uint64_t held = CMemoryBudget::Process().Outstanding();
    for (const std::size_t threads : {1U, 3U}) {
        // A piece is its content and what it is packed into.
        const CBudgetLimit limit(held + threads * (2 * kPiece + 10));
        EXPECT_EQ(Written(content, threads).size(), FrameOf(content, {}).size());
        EXPECT_EQ(CMemoryBudget::Process().Outstanding(), held);
    }
}

TEST(FrameWriter, FailsAndReportsWhenAPieceGetsNoMemory) {
    const Bytes content(5 * kPiece);
    for (const std::size_t threads : {1U, 3U}) {
        {
            const CTransferReport report;
            const CBudgetLimit none(CMemoryBudget::Process().Outstanding());
            std::ostringstream stream;
            EXPECT_EQ(WriteFrame(stream, content.size(), threads,
                                 [&](std::uint64_t offset, std::size_t, CBudgetBlock&) {
                                     return &content[offset];
                                 }),
                      E_FAIL);
            EXPECT_TRUE(report.WasMemoryRefused());
            EXPECT_EQ(stream.str().size(), 15U); // the header
        }
        const CTransferReport report;
        std::atomic<int> asked{0};
        std::ostringstream stream;
        EXPECT_EQ(WriteFrame(stream, 50 * kPiece, threads,
                             [&](std::uint64_t offset, std::size_t, CBudgetBlock&) {
                                 ++asked;
                                 return offset == kPiece ? nullptr : content.data();
                             }),
                  E_FAIL);
        EXPECT_TRUE(report.WasMemoryRefused());
        EXPECT_LT(asked, 12);
    }
}

/// Gives `content`, but not what begins at `refused`.
FramePieceSource SourceWithout(const Bytes& content, std::uint64_t refused) {
    return [&content, refused](std::uint64_t offset, std::size_t, CBudgetBlock&) {
        return offset == refused ? nullptr : &content[offset];
    };
}

TEST(FrameWriter, WritesWhatStandsBeforeAPieceWithoutMemory) {
    const Bytes content = Noise(5 * kPiece);
    const std::string before = AsText(FrameOf(content, {})).substr(0, 15 + 2 * (4 + kPiece));
    for (const std::size_t threads : {1U, 2U, 3U, 5U}) {
        const CTransferReport report;
        std::ostringstream stream;
        EXPECT_EQ(WriteFrame(stream, content.size(), threads, SourceWithout(content, 2 * kPiece)),
                  E_FAIL);
        EXPECT_TRUE(report.WasMemoryRefused());
        EXPECT_TRUE(stream.str() == before);
    }
}

// Whichever thread comes to its failure first.
TEST(FrameWriter, TellsTheFailureOfTheFirstPiece) {
    const Bytes content = Noise(5 * kPiece);
    for (const std::size_t threads : {1U, 2U, 3U, 5U}) {
        const CTransferReport report;
        CFullDisk full(kPiece);
        EXPECT_EQ(WriteFrame(full, content.size(), threads, SourceWithout(content, kPiece)),
                  E_FAIL);
        EXPECT_TRUE(full.bad());
        EXPECT_FALSE(report.WasMemoryRefused());
    }
}

TEST(FrameWriter, FailsOnAStreamThatRunsFull) {
    const Bytes content = MixedBytes(3 * kPiece, 3000000);
    const std::string frame = AsText(FrameOf(content, {}));
    for (const std::size_t threads : {1U, 3U}) {
        for (const std::size_t room :
             {std::size_t{0}, std::size_t{14}, std::size_t{15}, std::size_t{18}, std::size_t{19},
              kPiece, frame.size() / 2, frame.size() - 5, frame.size() - 4, frame.size() - 1}) {
            CFullDisk full(room);
            const CTransferReport report;
            EXPECT_EQ(WriteFrame(full, content.size(), threads, SourceOf(content)), E_FAIL);
            EXPECT_TRUE(full.bad());
            EXPECT_TRUE(frame.starts_with(full.Taken()));
            EXPECT_FALSE(report.WasMemoryRefused());
        }
        CFullDisk enough(frame.size());
        EXPECT_EQ(WriteFrame(enough, content.size(), threads, SourceOf(content)), S_OK);
        EXPECT_TRUE(enough.Taken() == frame);
    }
}

TEST(FrameWriter, AStreamThrowsOnTheCallingThreadWhatItIsSetTo) {
    const Bytes content = Noise(3 * kPiece);
    for (const std::size_t threads : {1U, 3U}) {
        CFullDisk full(kPiece);
        full.exceptions(std::ios::badbit);
        EXPECT_THROW(DropStatus(WriteFrame(full, content.size(), threads, SourceOf(content))),
                     std::ios::failure);
        EXPECT_EQ(full.exceptions(), std::ios::badbit);
    }
}

// The content of a buffer is cut as a whole: where its blocks end does not show.
TEST(FrameWriter, OfABufferKnowsNoBlocks) {
    const Bytes content = MixedBytes(2 * kPiece + 99, 100000);
    const Bytes expected = FrameOf(content, {});
    for (const std::uint32_t blockBytes : {1000U, 3U << 20, 4U << 20, 9U << 20}) {
        CMassiveBuf buffer(blockBytes);
        ASSERT_TRUE(buffer.Allocate(content.size()));
        for (std::size_t i = 0; i < buffer.BlockCount(); ++i)
            std::memcpy(buffer.Block(i), &content[i * blockBytes], buffer.BlockSize(i));
        std::ostringstream stream;
        EXPECT_EQ(buffer.CompressToFile(stream), S_OK);
        EXPECT_TRUE(AsBytes(stream.str()) == expected) << blockBytes;
    }
    CMassiveBuf buffer(1000);
    ASSERT_TRUE(buffer.Allocate(2000));
    const CTransferReport report;
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + 1999);
    std::ostringstream stream;
    EXPECT_EQ(buffer.CompressToFile(stream), E_FAIL);
    EXPECT_TRUE(report.WasMemoryRefused());
}

} // namespace
} // namespace trevolt
