#include "common/FrameReader.h"

#include <cstring>
#include <sstream>
#include <utility>

#include <gtest/gtest.h>
#include <xxhash/xxhash.h>

#include "tests/support/BudgetLimit.h"
#include "tests/support/LzFrames.h"
#include "tests/support/Streams.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using namespace test;

constexpr std::size_t kThreads[] = {1, 2, 3, 8};
constexpr std::size_t kSmallBlock = std::size_t{64} << 10;

Bytes BufferBytes(const CMassiveBuf& buffer) {
    Bytes bytes(buffer.ByteCount());
    std::size_t at = 0;
    for (std::size_t i = 0; i < buffer.BlockCount() && at < bytes.size(); ++i) {
        const std::size_t count = std::min(buffer.BlockSize(i), bytes.size() - at);
        std::memcpy(&bytes[at], buffer.Block(i), count);
        at += count;
    }
    return bytes;
}

class CKeptContent final : public CContentSink {
  public:
    void Take(const std::byte* bytes, std::size_t count) noexcept override {
        m_bytes.insert(m_bytes.end(), bytes, bytes + count);
    }
    const Bytes& Taken() const { return m_bytes; }

  private:
    Bytes m_bytes;
};

/// What a read with so many threads makes of a stream that holds the bytes and no more; nothing when
/// it refuses them as damaged.
std::optional<Bytes> ReadBy(std::size_t threads, const Bytes& frame, std::uint32_t blockBytes) {
    CPipe pipe(frame);
    CMassiveBuf buffer(blockBytes);
    EXPECT_TRUE(buffer.Allocate(3));
    const Status status = buffer.UncompressFromFile(pipe, frame.size(), threads);
    if (status == S_OK)
        return BufferBytes(buffer);
    EXPECT_EQ(status, E_FAIL);
    EXPECT_EQ(buffer.BlockCount(), 0U);
    EXPECT_EQ(buffer.ByteCount(), 0U);
    return std::nullopt;
}

/// The same of a read piece by piece.
std::optional<Bytes> PiecesBy(std::size_t threads, const Bytes& frame) {
    CPipe pipe(frame);
    CKeptContent kept;
    const Status status = ReadFrame(pipe, frame.size(), threads, kept);
    if (status == S_OK)
        return kept.Taken();
    EXPECT_EQ(status, E_FAIL);
    return std::nullopt;
}

void ExpectReadAs(const Bytes& content, const Bytes& frame, const std::string& what) {
    for (const std::size_t threads : kThreads)
        EXPECT_TRUE(PiecesBy(threads, frame) == content) << what << " by " << threads << " threads";
    for (const std::size_t threads : kThreads)
        for (const std::uint32_t blockBytes : {1000U, 100000U, 9U << 20})
            EXPECT_TRUE(ReadBy(threads, frame, blockBytes) == content)
                << what << " by " << threads << " threads into " << blockBytes;
}

TEST(FrameReader, TakesEveryFormOfAFrame) {
    const Bytes content = MixedBytes((std::size_t{1} << 20) + 4321, 150000);
    for (const auto& [id, bytes] :
         {std::pair{LZ4F_max64KB, kSmallBlock}, std::pair{LZ4F_max256KB, 4 * kSmallBlock},
          std::pair{LZ4F_max1MB, 16 * kSmallBlock}, std::pair{LZ4F_max4MB, 64 * kSmallBlock}}) {
        for (const auto mode : {LZ4F_blockIndependent, LZ4F_blockLinked})
            for (const bool hasChecksums : {false, true})
                for (const bool hasSize : {false, true})
                    ExpectReadAs(
                        content,
                        FrameOf(content, {id, mode, hasChecksums, !hasChecksums, hasSize, bytes}),
                        std::to_string(bytes) + (hasSize ? " declared" : "") +
                            (mode == LZ4F_blockLinked ? " linked" : ""));
    }
}

// Blocks may hold less than their most: where one goes is known only when those before it are.
TEST(FrameReader, TakesBlocksOfAnySize) {
    const Bytes content = MixedBytes(1500000, 40000);
    for (const std::size_t blockBytes : {999U, 30011U, 65535U})
        for (const bool hasChecksums : {false, true})
            ExpectReadAs(content,
                         FrameOf(content, {LZ4F_max64KB, LZ4F_blockIndependent, hasChecksums, true,
                                           true, blockBytes}),
                         std::to_string(blockBytes));
    ExpectReadAs(Bytes(700000, std::byte{1}),
                 FrameOf(Bytes(700000, std::byte{1}),
                         {LZ4F_max256KB, LZ4F_blockIndependent, false, true, true, 50000}),
                 "shrinking");
}

TEST(FrameReader, TakesNothing) {
    ExpectReadAs({}, FrameOf({}, {}), "no content");
    ExpectReadAs(
        {},
        MakeBytes({0x04, 0x22, 0x4D, 0x18, 0x68, 0x40, 0, 0, 0, 0, 0, 0, 0, 0, 0x05, 0, 0, 0, 0}),
        "no content, declared");
}

/// A frame of several kinds of blocks that is small enough to be damaged everywhere.
Bytes SmallFrame(bool hasBlockChecksums, bool hasContentChecksum, LZ4F_blockMode_t mode) {
    Bytes content = Bytes(300, std::byte{5});
    for (const Bytes& part : {Noise(50), Bytes(200, std::byte{6}), Noise(20, 2)})
        content.insert(content.end(), part.begin(), part.end());
    return FrameOf(content, {LZ4F_max64KB, mode, hasBlockChecksums, hasContentChecksum, true, 100});
}

TEST(FrameReader, TellsDamageAnywhereAsLz4Does) {
    for (const auto& [hasBlockChecksums, hasContentChecksum, mode] :
         {std::tuple{false, true, LZ4F_blockIndependent},
          {true, false, LZ4F_blockIndependent},
          {false, false, LZ4F_blockIndependent},
          {false, true, LZ4F_blockLinked}}) {
        const Bytes whole = SmallFrame(hasBlockChecksums, hasContentChecksum, mode);
        const auto content = ContentOfFrame(whole, 570);
        ASSERT_TRUE(content.has_value());
        std::size_t refused = 0;
        for (std::size_t at = 0; at < whole.size(); ++at) {
            for (const int change : {0x01, 0x80, 0xFF}) {
                Bytes damaged = whole;
                damaged[at] ^= static_cast<std::byte>(change);
                auto expected = ContentOfFrame(damaged, 570);
                if (at < 15) // the header: what LZ4 takes of it may still be refused here
                    expected.reset();
                refused += expected ? 0 : 1;
                for (const std::size_t threads : {1U, 3U}) {
                    ASSERT_TRUE(ReadBy(threads, damaged, 64) == expected)
                        << "byte " << at << ", " << change << ", " << threads << " threads";
                    ASSERT_TRUE(PiecesBy(threads, damaged) == expected)
                        << "byte " << at << ", " << change << ", " << threads << " threads";
                }
            }
        }
        EXPECT_GT(refused, hasBlockChecksums || hasContentChecksum ? whole.size() * 2 : 15 * 3);
    }
}

TEST(FrameReader, RefusesEveryTruncationAndWhatFollows) {
    const Bytes whole = SmallFrame(true, true, LZ4F_blockIndependent);
    for (const std::size_t threads : {1U, 3U}) {
        for (std::size_t size = 0; size < whole.size(); ++size) {
            const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_FALSE(ReadBy(threads, cut, 64)) << size;
            EXPECT_FALSE(PiecesBy(threads, cut)) << size;
        }
        for (const int behind : {0, 1, 4, 100}) {
            Bytes longer = whole;
            longer.resize(whole.size() + static_cast<std::size_t>(behind));
            EXPECT_EQ(ReadBy(threads, longer, 64).has_value(), behind == 0);
            EXPECT_EQ(PiecesBy(threads, longer).has_value(), behind == 0);
        }
    }
}

TEST(FrameReader, TakesNoMoreOfTheStreamThanItIsTold) {
    const Bytes whole = SmallFrame(false, true, LZ4F_blockIndependent);
    for (const std::size_t threads : {1U, 3U}) {
        Bytes more = whole;
        more.resize(whole.size() + 50);
        std::istringstream stream = StreamBehindPrefix(more);
        CMassiveBuf buffer(100);
        EXPECT_EQ(buffer.UncompressFromFile(stream, whole.size(), threads), S_OK);
        EXPECT_EQ(stream.tellg(), static_cast<std::streamoff>(kPrefix.size() + whole.size()));
        EXPECT_TRUE(stream.good());
        // One byte fewer than the frame has is a truncated frame.
        std::istringstream again = StreamBehindPrefix(more);
        EXPECT_EQ(buffer.UncompressFromFile(again, whole.size() - 1, threads), E_FAIL);
        EXPECT_TRUE(again.good());
        EXPECT_LT(again.tellg(), static_cast<std::streamoff>(kPrefix.size() + whole.size()));
    }
}

Bytes WithHeader(std::initializer_list<int> header, std::initializer_list<int> blocks) {
    Bytes frame = MakeBytes({0x04, 0x22, 0x4D, 0x18});
    for (const Bytes& part : {MakeBytes(header), MakeBytes(blocks), MakeBytes({0, 0, 0, 0})})
        frame.insert(frame.end(), part.begin(), part.end());
    return frame;
}

TEST(FrameReader, TakesABlockThatEndsAsNoWriterEndsOneAsLz4Does) {
    // A match that begins less than twelve bytes before the end; blocks of up to 64 KiB.
    const Bytes frame =
        WithHeader({0x68, 0x40, 12, 0, 0, 0, 0, 0, 0, 0, 0x5D},
                   {12, 0, 0, 0, 0x10, 'A', 1, 0, 0x70, 'B', 'C', 'D', 'E', 'F', 'G', 'H'});
    const auto content = ContentOfFrame(frame, 12);
    ASSERT_EQ(content, MakeBytes({'A', 'A', 'A', 'A', 'A', 'B', 'C', 'D', 'E', 'F', 'G', 'H'}));
    for (const std::size_t threads : kThreads) {
        EXPECT_EQ(ReadBy(threads, frame, 64), content);
        EXPECT_EQ(PiecesBy(threads, frame), content);
    }
}

TEST(FrameReader, TakesABlockOfNothingAsLz4Does) {
    Bytes frame = WithHeader({0x68, 0x40, 2, 0, 0, 0, 0, 0, 0, 0, 0},
                             {1, 0, 0, 0, 0, 2, 0, 0, 0x80, 'A', 'B'});
    frame[14] = static_cast<std::byte>(XXH32(&frame[4], 10, 0) >> 8 & 0xFF);
    ASSERT_EQ(ContentOfFrame(frame, 2), MakeBytes({'A', 'B'}));
    for (const std::size_t threads : kThreads) {
        EXPECT_EQ(ReadBy(threads, frame, 64), MakeBytes({'A', 'B'}));
        EXPECT_EQ(PiecesBy(threads, frame), MakeBytes({'A', 'B'}));
    }
}

TEST(FrameReader, RefusesABlockThatIsLargerThanItsHeaderSays) {
    for (const std::size_t size : {kSmallBlock, kSmallBlock + 1}) {
        const Bytes content = Noise(size);
        Bytes frame = FrameOf(content, {LZ4F_max256KB});
        frame[5] = std::byte{0x40}; // blocks of up to 64 KiB
        frame[14] = static_cast<std::byte>(XXH32(&frame[4], 10, 0) >> 8 & 0xFF);
        for (const std::size_t threads : kThreads) {
            EXPECT_EQ(ReadBy(threads, frame, 1000).has_value(), size == kSmallBlock);
            EXPECT_EQ(PiecesBy(threads, frame).has_value(), size == kSmallBlock);
        }
    }
}

TEST(FrameReader, RefusesASkippableFrameThatHoldsTheEndOfAnother) {
    const Bytes skippable = MakeBytes({0x50, 0x2A, 0x4D, 0x18, 5, 0, 0, 0, 1, 0, 0, 0, 0x55});
    for (const std::size_t threads : kThreads)
        EXPECT_FALSE(ReadBy(threads, skippable, 1000).has_value());
}

TEST(FrameReader, SeesWhatFollowsAFrameThatFillsItsReads) {
    constexpr std::size_t kRead = std::size_t{1} << 20;
    Bytes frame = FrameOf(Noise(kRead - 12), {LZ4F_max4MB, LZ4F_blockLinked});
    ASSERT_EQ(frame.size(), kRead + 15); // and the header
    EXPECT_TRUE(ReadBy(1, frame, 4U << 20).has_value());
    frame.push_back(std::byte{0});
    EXPECT_FALSE(ReadBy(1, frame, 4U << 20).has_value());
}

TEST(FrameReader, SaysWhenABlockInWorkGetsNoMemory) {
    const Bytes content(300000, std::byte{4});
    SFrameForm form{LZ4F_max64KB};
    form.blockBytes = kSmallBlock;
    const Bytes frame = FrameOf(content, form);
    form.hasSize = false;
    const Bytes undeclared = FrameOf(content, form);
    const std::uint64_t held = CMemoryBudget::Process().Outstanding();
    for (const std::size_t threads : {1U, 3U}) {
        // None for the stored block, and none for a decoded one, which fits no block of the buffer.
        for (const std::uint64_t more : {std::size_t{0}, frame.size() * threads}) {
            const CTransferReport report;
            const CBudgetLimit limit(held + content.size() + more);
            CMassiveBuf buffer(1000);
            CPipe pipe(frame);
            EXPECT_EQ(buffer.UncompressFromFile(pipe, frame.size(), threads), E_OUTOFMEMORY);
            EXPECT_TRUE(report.WasMemoryRefused());
            EXPECT_EQ(CMemoryBudget::Process().Outstanding(), held);
        }
        const CTransferReport report;
        const CBudgetLimit none(held);
        CMassiveBuf buffer(1000);
        CPipe pipe(undeclared);
        EXPECT_EQ(buffer.UncompressFromFile(pipe, undeclared.size(), threads), E_OUTOFMEMORY);
        EXPECT_TRUE(report.WasMemoryRefused());
    }
}

// A sink gets content of any size by the memory for what is in work.
TEST(FrameReader, HoldsNoMoreOfAFrameThanItsPieces) {
    const Bytes content(3000000, std::byte{4});
    SFrameForm form{LZ4F_max64KB};
    form.blockBytes = kSmallBlock;
    const Bytes blocks = FrameOf(content, form);
    form.mode = LZ4F_blockLinked;
    const Bytes linked = FrameOf(content, form);
    const std::uint64_t held = CMemoryBudget::Process().Outstanding();
    const Bytes noise = Noise(3000000);
    const Bytes asItIs = FrameOf(noise, {});
    const auto statusWith = [&](std::uint64_t more, const Bytes& frame, std::size_t threads) {
        const CTransferReport report;
        const CBudgetLimit limit(held + more);
        CPipe pipe(frame);
        CKeptContent kept;
        const Status status = ReadFrame(pipe, frame.size(), threads, kept);
        EXPECT_EQ(report.WasMemoryRefused(), status == E_OUTOFMEMORY);
        EXPECT_EQ(kept.Taken() == (&frame == &asItIs ? noise : content), status == S_OK);
        EXPECT_EQ(CMemoryBudget::Process().Outstanding(), held);
        return status;
    };
    for (const std::size_t threads : {1U, 3U}) {
        EXPECT_EQ(statusWith(threads * (kSmallBlock + blocks.size()), blocks, threads), S_OK);
        EXPECT_EQ(statusWith(kSmallBlock, blocks, threads), E_OUTOFMEMORY);
        EXPECT_EQ(statusWith(0, blocks, threads), E_OUTOFMEMORY);
        EXPECT_EQ(statusWith(threads << 19, asItIs, threads), S_OK); // no more than 512 KiB each
        EXPECT_EQ(statusWith((1U << 19) - 1, asItIs, threads), E_OUTOFMEMORY);
    }
    EXPECT_EQ(statusWith((std::uint64_t{1} << 20) + linked.size(), linked, 1), S_OK);
    EXPECT_EQ(statusWith(std::uint64_t{1} << 20, linked, 1), E_OUTOFMEMORY);
    EXPECT_EQ(statusWith(0, linked, 1), E_OUTOFMEMORY);
}

TEST(FrameReader, ADamagedBlockEndsTheWorkOfAllThreads) {
    const Bytes content = MixedBytes(600000, 1000);
    SFrameForm form{LZ4F_max64KB};
    form.hasBlockChecksums = true;
    form.blockBytes = 1000;
    Bytes frame = FrameOf(content, form);
    frame[5000] ^= std::byte{1};
    for (int run = 0; run < 100; ++run)
        EXPECT_FALSE(ReadBy(8, frame, 900).has_value());
    for (int run = 0; run < 20; ++run)
        EXPECT_FALSE(PiecesBy(8, frame).has_value());
}

/// A frame whose first block takes a while, and whose second one is there at once, as it is.
Bytes LongAndShort(Bytes content) {
    for (const std::byte byte : Noise(1000))
        content.push_back(byte);
    SFrameForm form;
    form.hasBlockChecksums = true;
    return FrameOf(content, form);
}

// Wherever they wait: for their place, or, where the damaged block had its own, for the checksum.
TEST(FrameReader, ADamagedBlockEndsTheWaitOfThoseBehindIt) {
    Bytes packed = LongAndShort(MixedBytes(64 * kSmallBlock, 100000));
    Bytes asItIs = LongAndShort(Noise(64 * kSmallBlock));
    for (Bytes* const frame : {&packed, &asItIs}) {
        (*frame)[5000] ^= std::byte{1};
        for (int run = 0; run < 4; ++run) {
            EXPECT_FALSE(ReadBy(2, *frame, 9U << 20).has_value());
            EXPECT_FALSE(PiecesBy(2, *frame).has_value());
        }
    }
}

TEST(FrameReader, TheFirstBlockThatFailsTellsTheStatus) {
    const Bytes frame = LongAndShort(MixedBytes(64 * kSmallBlock, 100000));
    // None for the first block's content; the second one needs none, and fails since the first did.
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + frame.size() + 2000);
    for (int run = 0; run < 4; ++run) {
        CPipe pipe(frame);
        CKeptContent kept;
        EXPECT_EQ(ReadFrame(pipe, frame.size(), 2, kept), E_OUTOFMEMORY);
    }
}

TEST(FrameReader, TakesNoMemoryForWhatIsNotThere) {
    Bytes frame = FrameOf(MixedBytes(300000, 1000), {});
    frame.resize(2000); // enough for what the header declares
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + 3000);
    for (const std::size_t threads : kThreads)
        EXPECT_FALSE(PiecesBy(threads, frame).has_value());
}

TEST(FrameReader, TellsTheCallingThreadWhatAnotherIsRefused) {
    const Bytes content(600000, std::byte{4});
    SFrameForm form{LZ4F_max64KB};
    form.blockBytes = 1000;
    const Bytes frame = FrameOf(content, form);
    // Memory for most blocks in work, so that some thread or other is refused.
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + content.size() +
                             3 * (kSmallBlock + frame.size()));
    for (int run = 0; run < 100; ++run) {
        const CTransferReport report;
        CMassiveBuf buffer(900);
        CPipe pipe(frame);
        const Status status = buffer.UncompressFromFile(pipe, frame.size(), 8);
        EXPECT_EQ(status == E_OUTOFMEMORY, report.WasMemoryRefused());
    }
}

TEST(FrameReader, DecodesABlockThatFitsIntoItsPlaceWithoutMemoryOfItsOwn) {
    const Bytes content(50000, std::byte{4});
    SFrameForm form{LZ4F_max64KB};
    form.blockBytes = 30000;
    const Bytes frame = FrameOf(content, form);
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + content.size() +
                             frame.size());
    CMassiveBuf buffer(50000);
    CPipe pipe(frame);
    EXPECT_EQ(buffer.UncompressFromFile(pipe, frame.size()), S_OK);
    EXPECT_TRUE(BufferBytes(buffer) == content);
}

TEST(FrameReader, AStreamThrowsOnTheCallingThreadWhatItIsSetTo) {
    const Bytes whole = FrameOf(MixedBytes(400000, 50000), {LZ4F_max64KB});
    for (const std::size_t threads : {1U, 3U}) {
        CPipe broken({whole.begin(), whole.begin() + 150000}, true);
        broken.exceptions(std::ios::badbit);
        CMassiveBuf buffer(1000);
        EXPECT_THROW(DropStatus(buffer.UncompressFromFile(broken, whole.size(), threads)),
                     std::ios::failure);
        EXPECT_EQ(broken.exceptions(), std::ios::badbit);
        EXPECT_EQ(buffer.BlockCount(), 0U);
    }
}

} // namespace
} // namespace trevolt
