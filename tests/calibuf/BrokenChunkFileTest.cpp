// Chunk files whose bytes cannot be read to their end, through the readers of streams.
#include <functional>

#include <gtest/gtest.h>

#include "tests/calibuf/StoreSupport.h"
#include "tests/support/FailingFile.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using test::Bytes;
using test::CFailingFile;

constexpr std::uint32_t kSide = 6;

template <class T>
class BrokenChunkFileOf : public ::testing::Test {
  protected:
    using Read = std::function<Status(CCaliBuf&, std::istream&)>;

    /// A read that does not get all of the file is told, by its status or by the chunks that failed.
    void ExpectEveryLackTold(const Read& read, bool hasShrunk) const {
        CCaliOperation<T> target;
        ASSERT_EQ(target.Buffer().Allocate(kSide, kSide), S_OK);
        for (std::size_t readable = 0; readable <= m_file.size(); ++readable) {
            SCOPED_TRACE(readable);
            CFailingFile stream(m_file, readable, hasShrunk);
            const CTransferReport report;
            const Status status = read(target.Buffer(), stream);
            const bool isWhole = readable == m_file.size();
            EXPECT_EQ(!Failed(status) && report.FailedChunks() == 0, isWhole);
            EXPECT_EQ(stream.fail(), !isWhole);
        }
    }

    const Bytes m_file = [] {
        CCaliOperation<T> source;
        EXPECT_EQ(source.Buffer().Allocate(kSide, kSide), S_OK);
        test::FillPattern(source);
        return test::RectFile(source.Buffer(), {0, 0, kSide, kSide});
    }();
};
TYPED_TEST_SUITE(BrokenChunkFileOf, test::AllElements);

TYPED_TEST(BrokenChunkFileOf, IsToldByTheReaderOfRectangles) {
    for (const bool hasShrunk : {false, true})
        this->ExpectEveryLackTold(
            [](CCaliBuf& store, std::istream& stream) {
                return store.ReadRectChunks(stream, 0, 0, 0, 0);
            },
            hasShrunk);
}

/// Not of single words, whose directory the reader of bands finds elsewhere.
template <class T>
class BrokenBandFileOf : public BrokenChunkFileOf<T> {};
using PixelElements = ::testing::Types<S3WordCoef, S4WordCoef, S9WordCoef, S12WordCoef>;
TYPED_TEST_SUITE(BrokenBandFileOf, PixelElements);

TYPED_TEST(BrokenBandFileOf, IsToldByTheReaderOfBands) {
    for (const bool hasShrunk : {false, true})
        this->ExpectEveryLackTold(
            [](CCaliBuf& store, std::istream& stream) {
                return store.ReadBandChunks(stream, 0, 0, 0, kGridBlocks);
            },
            hasShrunk);
}

} // namespace
} // namespace trevolt
