// The pixels of binary files as they come, beside those of the held body.
#include "formats/BinaryCoefPixels.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "formats/StoredBinaryCoef.h"
#include "tests/formats/BinaryFiles.h"
#include "tests/formats/DamagedInputs.h"
#include "tests/support/BudgetLimit.h"
#include "tests/support/FailingFile.h"
#include "tests/support/Streams.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using namespace test;

/// Keeps what it takes, and holds it to the runs that a sink is promised.
class CKeptPixels final : public CPixelSink {
  public:
    void TakeSize(const PixelSize& size) noexcept override {
        EXPECT_TRUE(m_pixels.empty());
        m_size = size;
    }
    void TakeRun(const SMatrixCoef* pixels, std::uint32_t count) noexcept override {
        const auto inRow = static_cast<std::int64_t>(m_pixels.size()) % m_size.width;
        EXPECT_EQ(count, std::min<std::int64_t>(kPixelRun, m_size.width - inRow));
        m_pixels.insert(m_pixels.end(), pixels, pixels + count);
    }

    const PixelSize& Size() const { return m_size; }
    const std::vector<SMatrixCoef>& Pixels() const { return m_pixels; }

  private:
    PixelSize m_size;
    std::vector<SMatrixCoef> m_pixels;
};

template <class Kind>
class BinaryCoefPixels : public CBinaryFiles<Kind> {
  protected:
    static Status Read(const Bytes& file, CPixelSink& sink, std::size_t threads = 1) {
        std::istringstream stream = StreamBehindPrefix(file);
        return ReadBinaryCoefPixels<Kind>(stream, threads, sink);
    }

    /// A file is read as its body is, with the same pixels where it is whole.
    static void ExpectAsHeld(const Bytes& file, std::size_t threads) {
        std::istringstream stream = StreamBehindPrefix(file);
        const SStoredLoad held = LoadStoredBinaryCoef<Kind>(stream, threads);
        CKeptPixels kept;
        EXPECT_EQ(Read(file, kept, threads), held.status);
        if (Failed(held.status))
            return;
        EXPECT_EQ(kept.Size(), held.coef->Size());
        const auto width = static_cast<std::uint32_t>(kept.Size().width);
        const auto height = static_cast<std::uint32_t>(kept.Size().height);
        ASSERT_EQ(kept.Pixels().size(), std::size_t{width} * height);
        std::vector<SMatrixCoef> row(width);
        for (std::uint32_t y = 0; y < height; ++y) {
            held.coef->CopyElements(0, y, width, row.data());
            for (std::uint32_t x = 0; x < width; ++x) // as bytes: some values are no numbers
                ASSERT_EQ(
                    std::memcmp(&kept.Pixels()[std::size_t{y} * width + x], &row[x], sizeof row[x]),
                    0)
                    << x << ", " << y;
        }
    }
};
TYPED_TEST_SUITE(BinaryCoefPixels, BinaryKindTypes);

TYPED_TEST(BinaryCoefPixels, AreThoseOfTheBody) {
    for (const PixelSize& size :
         {PixelSize{1, 1}, {1, 300}, {255, 3}, {256, 3}, {257, 3}, {600, 4}})
        for (const std::size_t blockBytes : {7U, 1000U, 65536U})
            for (const std::size_t threads : {1U, 3U})
                this->ExpectAsHeld(this->File(size, this->WildBody(size),
                                              {LZ4F_max64KB, LZ4F_blockIndependent, false, true,
                                               true, blockBytes}),
                                   threads);
    for (const bool hasSize : {false, true})
        this->ExpectAsHeld(this->File({600, 4}, this->WildBody({600, 4}),
                                      {LZ4F_max64KB, LZ4F_blockLinked, true, false, hasSize, 999}),
                           2);
    this->ExpectAsHeld(this->File({0, 5}, {}), 1);
}

TYPED_TEST(BinaryCoefPixels, OfADamagedFileAreToldAsItsBodyIs) {
    const Bytes whole = this->File({7, 5}, this->WildBody({7, 5}));
    for (const std::size_t threads : {1U, 3U})
        for (const BinaryInput& input : InputsFrom(whole, S_OK)) {
            SCOPED_TRACE(input.name);
            CKeptPixels kept;
            EXPECT_EQ(this->Read(input.bytes, kept, threads), input.status);
            EXPECT_LE(kept.Pixels().size(),
                      static_cast<std::size_t>(kept.Size().width * kept.Size().height));
            this->ExpectAsHeld(input.bytes, threads);
        }
    for (const PixelSize& other : {PixelSize{7, 4}, PixelSize{7, 6}, PixelSize{0, 5}}) {
        CKeptPixels kept;
        EXPECT_EQ(this->Read(this->File(other, this->WildBody({7, 5})), kept), E_FAIL);
        EXPECT_LE(kept.Pixels().size(), static_cast<std::size_t>(other.width * other.height));
    }
}

TYPED_TEST(BinaryCoefPixels, OfMoreThanABodyHasAreRefusedBeforeTheBodyIsRead) {
    for (const bool isTooLarge : {false, true}) {
        const PixelSize size{65535, isTooLarge ? 32769 : 32768};
        const Bytes file = this->File(size, this->WildBody({7, 5}));
        CKeptPixels kept;
        EXPECT_EQ(this->Read(file, kept), E_FAIL);
        EXPECT_EQ(kept.Size(), isTooLarge ? PixelSize{} : size);
        std::istringstream stream = StreamOf(file);
        EXPECT_EQ(LoadStoredBinaryCoef<TypeParam>(stream, 1).status, E_FAIL);
        EXPECT_EQ(std::streamoff{stream.tellg()} == 24, isTooLarge);
    }
}

// A body of several megabytes, and memory for one block of a frame on each thread.
TYPED_TEST(BinaryCoefPixels, TakeNoMoreMemoryThanTheBlocksInWork) {
    constexpr std::size_t kBlock = std::size_t{64} << 10;
    const PixelSize size{500,
                         static_cast<std::int64_t>(20 * kBlock / TypeParam::kStoredBytes / 500)};
    const Bytes file = this->File(size, this->WildBody(size),
                                  {LZ4F_max64KB, LZ4F_blockIndependent, false, true, true, kBlock});
    const std::uint64_t held = CMemoryBudget::Process().Outstanding();
    for (const std::size_t threads : {1U, 3U}) {
        const CTransferReport report;
        CKeptPixels kept;
        const CBudgetLimit limit(held + threads * 2 * kBlock);
        EXPECT_EQ(this->Read(file, kept, threads), S_OK);
        EXPECT_EQ(kept.Pixels().size(), static_cast<std::size_t>(size.width * size.height));
        EXPECT_FALSE(report.WasMemoryRefused());
        const CBudgetLimit none(held + kBlock - 1);
        CKeptPixels nothing;
        EXPECT_EQ(this->Read(file, nothing, threads), E_OUTOFMEMORY);
        EXPECT_TRUE(report.WasMemoryRefused());
    }
    EXPECT_EQ(CMemoryBudget::Process().Outstanding(), held);
}

TYPED_TEST(BinaryCoefPixels, TellEveryBreakOfTheStream) {
    const Bytes file = this->File({7, 5}, this->WildBody({7, 5}));
    for (const std::size_t threads : {1U, 3U})
        for (std::size_t readable = 0; readable <= file.size(); ++readable) {
            CFailingFile stream(file, readable);
            const CTransferReport report;
            CKeptPixels kept;
            const Status status = ReadBinaryCoefPixels<TypeParam>(stream, threads, kept);
            EXPECT_EQ(Failed(status), readable < file.size()) << readable;
            EXPECT_EQ(report.HasReadFailed(), readable < file.size()) << readable;
        }
}

} // namespace
} // namespace trevolt
