// The binary kinds turned in their stored elements, beside the way through a map.
#include "formats/StoredBinaryCoef.h"

#include <sstream>

#include <gtest/gtest.h>

#include "formats/BinaryCoefTransfer.h"
#include "tests/formats/BinaryFiles.h"
#include "tests/formats/DamagedInputs.h"
#include "tests/support/Streams.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using namespace test;

constexpr std::uint32_t kCodes[] = {1, 2, 3};

template <class Kind>
class StoredBinaryCoef : public CBinaryFiles<Kind> {
  protected:
    static SStoredLoad Load(const Bytes& file, std::size_t threads = 1) {
        std::istringstream stream = StreamBehindPrefix(file);
        return LoadStoredBinaryCoef<Kind>(stream, threads);
    }

    /// Null for a file that is not read.
    static std::unique_ptr<CStoredCoef> LoadWhole(const Bytes& file, std::size_t threads = 1) {
        SStoredLoad load = Load(file, threads);
        return Failed(load.status) ? nullptr : std::move(load.coef);
    }

    static Bytes Turned(const Bytes& file, const PixelSize& size, std::uint32_t code,
                        std::size_t threads, Status status = S_OK) {
        const auto [told, coef] = Load(file, threads);
        EXPECT_EQ(told, status);
        std::ostringstream stream;
        EXPECT_EQ(coef->WriteTurned(stream, size, code, threads), S_OK);
        return AsBytes(stream.str());
    }

    /// The same through a map that was sized before the file was read.
    static Bytes TurnedByMap(const Bytes& file, const PixelSize& size, std::uint32_t code,
                             Status status = S_OK) {
        CChromaCorrectCoef map;
        map.Resize(static_cast<std::int32_t>(size.width), static_cast<std::int32_t>(size.height));
        std::istringstream in = StreamOf(file);
        const Status told = ReadBinaryCoef<Kind>(map, in);
        EXPECT_EQ(Failed(told) ? told : S_OK, status);
        const CQuarterTurn turn(code, size.width, size.height);
        CChromaCorrectCoef turned;
        turned.Resize(static_cast<std::int32_t>(turn.TurnedSize().width),
                      static_cast<std::int32_t>(turn.TurnedSize().height));
        for (std::int64_t y = 0; y < size.height; ++y) {
            for (std::int64_t x = 0; x < size.width; ++x) {
                const PixelPosition to = turn.Turned(x, y);
                turned.SetElement(static_cast<std::int32_t>(to.x), static_cast<std::int32_t>(to.y),
                                  *map.FindElement(x, y));
            }
        }
        std::ostringstream out;
        EXPECT_EQ(WriteBinaryCoef<Kind>(turned, out, nullptr), S_OK);
        return AsBytes(out.str());
    }

    /// The same by the elements' bytes alone, of a file's whole picture.
    static Bytes TurnedByElements(const PixelSize& size, const Bytes& raw, std::uint32_t code) {
        constexpr std::size_t kBytes = Kind::kStoredBytes;
        const CQuarterTurn turn(code, size.width, size.height);
        const std::int64_t width = turn.TurnedSize().width;
        Bytes turned(raw.size());
        for (std::int64_t y = 0; y < size.height; ++y) {
            for (std::int64_t x = 0; x < size.width; ++x) {
                const PixelPosition to = turn.Turned(x, y);
                std::memcpy(&turned[static_cast<std::size_t>(to.y * width + to.x) * kBytes],
                            &raw[static_cast<std::size_t>(y * size.width + x) * kBytes], kBytes);
            }
        }
        return CBinaryFiles<Kind>::File(turn.TurnedSize(), turned);
    }
};

TYPED_TEST_SUITE(StoredBinaryCoef, BinaryKindTypes);

TYPED_TEST(StoredBinaryCoef, TurnsAsTheMapDoes) {
    for (const PixelSize& file : {PixelSize{1, 1}, {1, 9}, {9, 1}, {7, 5}, {16, 33}, {40, 17}}) {
        const Bytes bytes = this->File(file, this->WildBody(file));
        const PixelSize doubled{file.width * 2 + 1, file.height * 2 + 18};
        const PixelSize half{(file.width + 1) / 2, (file.height + 1) / 2};
        for (const PixelSize& size :
             {file, doubled, half, PixelSize{doubled.width, half.height},
              PixelSize{half.width, doubled.height}, PixelSize{1, 1},
              PixelSize{file.width + 1, file.height}, PixelSize{file.width, file.height + 1}}) {
            for (const std::uint32_t code : kCodes) {
                const Bytes expected = this->TurnedByMap(bytes, size, code);
                for (const std::size_t threads : {1U, 3U})
                    ASSERT_TRUE(this->Turned(bytes, size, code, threads) == expected)
                        << file.width << " x " << file.height << " as " << size.width << " x "
                        << size.height << " by " << code;
            }
        }
    }
}

TYPED_TEST(StoredBinaryCoef, TurnsEveryByteAndAFileWithoutPixels) {
    Bytes raw;
    for (std::size_t i = 0; i < 256 * TypeParam::kStoredBytes; ++i)
        raw.push_back(static_cast<std::byte>(i / TypeParam::kStoredBytes));
    const Bytes every = this->File({64, 4}, raw);
    const Bytes none = this->File({0, 5}, {});
    for (const std::uint32_t code : kCodes) {
        EXPECT_EQ(this->Turned(every, {64, 4}, code, 1), this->TurnedByMap(every, {64, 4}, code));
        EXPECT_EQ(this->Turned(none, {3, 2}, code, 1), this->TurnedByMap(none, {3, 2}, code));
    }
}

// Around 2^18 elements, where a grid's next block begins, and in several pieces of the frame.
TYPED_TEST(StoredBinaryCoef, TurnsAcrossBlocksAndPieces) {
    constexpr std::int64_t kSeveralPieces = (std::int64_t{9} << 20) / TypeParam::kStoredBytes / 400;
    for (const PixelSize& size :
         {PixelSize{512, 512}, {517, 511}, {65535, 5}, {400, kSeveralPieces}}) {
        const Bytes raw = this->WildBody(size);
        const auto coef = this->LoadWhole(this->File(size, raw), 2);
        ASSERT_NE(coef, nullptr);
        for (const std::uint32_t code : kCodes) {
            const std::string expected = AsText(this->TurnedByElements(size, raw, code));
            for (const std::size_t threads : {1U, 3U}) {
                std::ostringstream stream;
                EXPECT_EQ(coef->WriteTurned(stream, size, code, threads), S_OK);
                EXPECT_TRUE(stream.str() == expected)
                    << size.width << " x " << size.height << " by " << code;
            }
        }
    }
}

TYPED_TEST(StoredBinaryCoef, TakesEveryFormOfAFile) {
    constexpr PixelSize kSize{123, 77};
    const Bytes raw = this->WildBody(kSize);
    const Bytes expected = this->TurnedByElements(kSize, raw, 1);
    for (const auto mode : {LZ4F_blockIndependent, LZ4F_blockLinked})
        for (const bool hasSize : {false, true})
            for (const std::uint32_t version : {0U, 1U})
                for (const std::size_t threads : {1U, 3U}) {
                    const Bytes file = this->File(
                        kSize, raw, {LZ4F_max64KB, mode, true, true, hasSize, 20000}, version);
                    EXPECT_TRUE(this->Turned(file, kSize, 1, threads) == expected);
                }
}

TYPED_TEST(StoredBinaryCoef, TellsTheFilesSize) {
    const auto coef = this->LoadWhole(this->File({7, 5}, this->WildBody({7, 5})));
    ASSERT_NE(coef, nullptr);
    EXPECT_EQ(coef->Size(), (PixelSize{7, 5}));
}

// A body is taken whole or not at all; then every pixel is the default.
TYPED_TEST(StoredBinaryCoef, HoldsWhatAMapHoldsOfADamagedFile) {
    const Bytes whole = this->File({7, 5}, this->WildBody({7, 5}));
    for (const std::size_t threads : {1U, 3U}) {
        for (const BinaryInput& input : InputsFrom(whole, S_OK)) {
            SCOPED_TRACE(input.name);
            const CTransferReport report;
            EXPECT_EQ(this->Turned(input.bytes, {9, 4}, 1, threads, input.status),
                      this->TurnedByMap(input.bytes, {9, 4}, 1, input.status));
            EXPECT_FALSE(report.WasMemoryRefused());
        }
    }
    for (const BinaryKind& kind : kBinaryKinds) {
        Bytes other = whole;
        const Bytes header = Header(kind, 1, 7, 5);
        std::copy(header.begin(), header.end(), other.begin());
        EXPECT_EQ(this->Load(other).status,
                  kind.name == this->Named().name ? S_OK : E_COEF_BADFORMAT);
    }
    EXPECT_EQ(this->Load({}).status, E_COEF_BADFORMAT);
}

TYPED_TEST(StoredBinaryCoef, NeedsItsBodyAndAFewPieces) {
    constexpr std::size_t kPiece = std::size_t{4} << 20;
    const PixelSize size{400,
                         static_cast<std::int64_t>(6 * kPiece / TypeParam::kStoredBytes / 400)};
    const Bytes raw = this->WildBody(size);
    const Bytes file = this->File(size, raw);
    const std::uint64_t held = CMemoryBudget::Process().Outstanding();
    for (const std::size_t threads : {1U, 2U}) {
        // A piece is gathered in whole rows and packed into as much; one is being written, `threads`
        // are in work and two may wait. A block that is read takes no more.
        const std::uint64_t piece = 2 * kPiece + 2 * 65535;
        const CBudgetLimit limit(held + raw.size() + (threads == 1 ? 1 : threads + 3) * piece);
        EXPECT_FALSE(this->Turned(file, size, 2, threads).empty());
        EXPECT_EQ(CMemoryBudget::Process().Outstanding(), held);
    }
}

TYPED_TEST(StoredBinaryCoef, SaysWhenTheMemoryIsRefused) {
    const Bytes raw = this->WildBody({50, 40});
    const Bytes file = this->File({50, 40}, raw);
    const auto coef = this->LoadWhole(file);
    for (const std::size_t threads : {1U, 3U}) {
        const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + raw.size() - 1);
        {
            const CTransferReport report;
            EXPECT_EQ(this->Load(file, threads).status, E_OUTOFMEMORY);
            EXPECT_TRUE(report.WasMemoryRefused());
        }
        const CTransferReport report;
        std::ostringstream stream;
        EXPECT_EQ(coef->WriteTurned(stream, {50, 40}, 1, threads), E_FAIL);
        EXPECT_TRUE(report.WasMemoryRefused());
    }
    // More elements than a body may have, and nothing is written.
    const CTransferReport report;
    std::ostringstream stream;
    EXPECT_EQ(coef->WriteTurned(stream, {65535, 32769}, 1, 1), E_FAIL);
    EXPECT_TRUE(report.WasMemoryRefused());
    EXPECT_TRUE(stream.str().empty());
}

TYPED_TEST(StoredBinaryCoef, SaysWhenTheStreamFails) {
    const Bytes file = this->File({50, 40}, this->WildBody({50, 40}));
    const auto coef = this->LoadWhole(file);
    for (const std::size_t threads : {1U, 3U}) {
        for (const std::size_t room : {std::size_t{0}, std::size_t{23}, std::size_t{24},
                                       std::size_t{100}, file.size() / 2}) {
            CFullDisk full(room);
            const CTransferReport report;
            EXPECT_EQ(coef->WriteTurned(full, {50, 40}, 3, threads), E_FAIL);
            EXPECT_TRUE(full.bad());
            EXPECT_FALSE(report.WasMemoryRefused());
        }
    }
}

} // namespace
} // namespace trevolt
