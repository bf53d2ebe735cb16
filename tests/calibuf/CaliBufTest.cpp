#include "calibuf/CaliBuf.h"

#include "calibuf/WordElementKind.h"
#include "tests/calibuf/StoreSupport.h"
#include "tests/support/BudgetLimit.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using namespace test;

template <class T>
class CaliBufOf : public ::testing::Test {
  protected:
    CCaliOperation<T> m_owner;
    CCaliBuf& m_store = m_owner.Buffer();
};
TYPED_TEST_SUITE(CaliBufOf, AllElements);

std::vector<std::uint32_t> Used(const CCaliBuf& store) {
    return {store.UsedBlocks().begin(), store.UsedBlocks().end()};
}

/// For `CBudgetLimit`: so many bytes more than what is outstanding.
std::uint64_t Left(std::uint64_t bytes) { return CMemoryBudget::Process().Outstanding() + bytes; }

TEST(CaliBuf, StartsAsAnEmptyMatrixStore) {
    const auto store = CCaliBuf::Create();
    EXPECT_EQ(store->BytesInUse(), 0U);
    EXPECT_EQ(store->ElemSize(), 18U);
    EXPECT_EQ(store->PlaneCount(), 9U);
    EXPECT_EQ(store->Width(), 0U);
    EXPECT_EQ(store->Height(), 0U);
    EXPECT_EQ(store->SizeLimit(), 0x7FFFFFFFFFFFFFFFU);
    EXPECT_TRUE(store->UsedBlocks().empty());
    for (std::uint32_t index = 0; index < kGridBlocks; ++index)
        ASSERT_EQ(store->Block(index), nullptr);
}

TEST(CaliBuf, KindsHaveTheirSizesPlanesAndDefaults) {
    const auto facts = [](const WordElementKind& kind) {
        return std::array{std::uint32_t{kind.elemSize}, kind.wordCount, kind.planeCount};
    };
    EXPECT_EQ(facts(kWordElementKind<SWordCoef>), (std::array{2U, 1U, 1U}));
    EXPECT_EQ(facts(kWordElementKind<S3WordCoef>), (std::array{6U, 3U, 9U}));
    EXPECT_EQ(facts(kWordElementKind<S4WordCoef>), (std::array{8U, 4U, 12U}));
    EXPECT_EQ(facts(kWordElementKind<S9WordCoef>), (std::array{18U, 9U, 9U}));
    EXPECT_EQ(facts(kWordElementKind<S12WordCoef>), (std::array{24U, 12U, 12U}));
    constexpr std::uint16_t F = 0xFFFF;
    using Words = std::array<std::uint16_t, kMaxWords>;
    EXPECT_EQ(kWordElementKind<SWordCoef>.defaultWords, (Words{0}));
    EXPECT_EQ(kWordElementKind<S3WordCoef>.defaultWords, (Words{F, F, F}));
    EXPECT_EQ(kWordElementKind<S4WordCoef>.defaultWords, (Words{F, F, F, F}));
    EXPECT_EQ(kWordElementKind<S9WordCoef>.defaultWords, (Words{F, 0, 0, 0, F, 0, 0, 0, F}));
    EXPECT_EQ(kWordElementKind<S12WordCoef>.defaultWords,
              (Words{F, 0, 0, 0, 0, F, F, 0, 0, 0, 0, F}));
    EXPECT_EQ(FindWordElementKind(10), nullptr);
}

TYPED_TEST(CaliBufOf, EmptySizesLeaveNoBlock) {
    EXPECT_EQ(this->m_store.Allocate(300, 0), S_OK);
    EXPECT_TRUE(this->m_store.UsedBlocks().empty());
    EXPECT_EQ(this->m_store.Width(), 300U);
    EXPECT_EQ(this->m_store.Allocate(0, 300), S_OK);
    EXPECT_TRUE(this->m_store.UsedBlocks().empty());
    EXPECT_EQ(this->m_store.Width(), 0U);
    EXPECT_EQ(this->m_store.Height(), 300U);
    EXPECT_EQ(this->m_store.BytesInUse(), 0U);
}

TYPED_TEST(CaliBufOf, AllocatesCoveringBlocksRowByRow) {
    ASSERT_EQ(this->m_store.Allocate(257, 129), S_OK);
    EXPECT_EQ(Used(this->m_store), (std::vector<std::uint32_t>{0, 1, 512, 513}));
    EXPECT_EQ(this->m_store.BytesInUse(), 4 * (24 + sizeof(TypeParam) * 32768));
    EXPECT_EQ(CountUnlikeDefault(this->m_owner), 0);
    const BlockRecord* last = this->m_store.Block(513);
    ASSERT_NE(last, nullptr);
    EXPECT_EQ(last->nIndex, 513U);
    EXPECT_EQ(last->nX, 256U);
    EXPECT_EQ(last->nY, 128U);
    EXPECT_EQ(last->nBytes, sizeof(TypeParam) * 32768);
    ASSERT_EQ(this->m_store.Allocate(256, 128), S_OK);
    EXPECT_EQ(Used(this->m_store), (std::vector<std::uint32_t>{0}));
    EXPECT_EQ(this->m_store.Block(513), nullptr);
}

TYPED_TEST(CaliBufOf, ClearKeepsTheSize) {
    ASSERT_EQ(this->m_store.Allocate(257, 129), S_OK);
    this->m_store.Clear();
    EXPECT_TRUE(this->m_store.UsedBlocks().empty());
    EXPECT_EQ(this->m_store.Block(0), nullptr);
    EXPECT_EQ(this->m_store.BytesInUse(), 0U);
    EXPECT_EQ(this->m_store.Width(), 257U);
    EXPECT_EQ(this->m_store.Height(), 129U);
}

TEST(CaliBuf, SizesPastTheGridChangeNothing) {
    CCaliOperation<SWordCoef> owner;
    CCaliBuf& store = owner.Buffer();
    ASSERT_EQ(store.Allocate(10, 20), S_OK);
    EXPECT_EQ(store.Allocate(131073, 1), E_COEF_INVALIDARG);
    EXPECT_EQ(store.Allocate(1, 65537), E_COEF_INVALIDARG);
    EXPECT_EQ(store.Allocate(0xFFFFFFFF, 0xFFFFFFFF), E_COEF_INVALIDARG);
    EXPECT_EQ(Used(store), (std::vector<std::uint32_t>{0}));
    EXPECT_EQ(store.Width(), 10U);
    EXPECT_EQ(store.Height(), 20U);
}

TEST(CaliBuf, ReachesTheLastColumnAndRowOfTheGrid) {
    CCaliOperation<SWordCoef> owner;
    ASSERT_EQ(owner.Buffer().Allocate(131072, 1), S_OK);
    EXPECT_EQ(owner.Buffer().UsedBlocks().size(), 512U);
    EXPECT_NE(owner.Find(131071, 127), nullptr);
    EXPECT_EQ(owner.Find(131072, 0), nullptr); // not block 512, the first of the next row
    ASSERT_EQ(owner.Buffer().Allocate(1, 65536), S_OK);
    EXPECT_EQ(Used(owner.Buffer()).back(), 511U * 512);
    EXPECT_NE(owner.Find(255, 65535), nullptr);
    EXPECT_EQ(owner.Find(0, 65536), nullptr);
    EXPECT_EQ(owner.Find(0xFFFFFFFF, 0xFFFFFFFF), nullptr);
}

TEST(CaliBuf, SizeLimitStopsWithTheBlocksBefore) {
    CCaliOperation<S9WordCoef> owner;
    CCaliBuf& store = owner.Buffer();
    const std::uint64_t block = 24 + 18 * 32768;
    store.SetSizeLimit(2 * block);
    EXPECT_EQ(store.Allocate(600, 10), E_COEF_SIZELIMIT);
    EXPECT_EQ(Used(store), (std::vector<std::uint32_t>{0, 1}));
    EXPECT_EQ(store.BytesInUse(), 2 * block);
    EXPECT_EQ(store.Width(), 600U);
    EXPECT_EQ(store.Allocate(512, 10), S_OK);
    store.SetSizeLimit(2 * block - 1);
    EXPECT_EQ(store.Allocate(512, 10), E_COEF_SIZELIMIT);
    EXPECT_EQ(Used(store), (std::vector<std::uint32_t>{0}));
    store.SetSizeLimit(0xFFFFFFFFFFFFFFFF);
    EXPECT_EQ(store.Allocate(512, 10), S_OK);
}

TEST(CaliBuf, RefusedMemoryIsAStatusAndIsNoted) {
    CCaliOperation<S9WordCoef> owner;
    CCaliBuf& store = owner.Buffer();
    const CBudgetLimit left(Left(2 * 18 * 32768 + 100));
    const CTransferReport report;
    EXPECT_EQ(store.AllocateBlock(0, 0, 0), S_OK);
    EXPECT_EQ(store.AllocateBlock(7, 7 * 256, 0), S_OK);
    EXPECT_FALSE(report.WasMemoryRefused());
    EXPECT_EQ(store.AllocateBlock(3, 3 * 256, 0), E_FAIL);
    EXPECT_TRUE(report.WasMemoryRefused());
    EXPECT_EQ(Used(store), (std::vector<std::uint32_t>{0, 7}));
    EXPECT_EQ(store.BytesInUse(), 2U * (24 + 18 * 32768));
    EXPECT_EQ(store.Block(3), nullptr);
}

TEST(CaliBuf, RefusedMemoryLeavesTheBlocksBefore) {
    CCaliOperation<S9WordCoef> owner;
    CCaliBuf& store = owner.Buffer();
    const CBudgetLimit left(Left(2 * 18 * 32768 + 100));
    EXPECT_EQ(store.Allocate(131072, 65536), E_FAIL);
    EXPECT_EQ(Used(store), (std::vector<std::uint32_t>{0, 1}));
    EXPECT_EQ(store.BytesInUse(), 2U * (24 + 18 * 32768));
    EXPECT_EQ(store.Width(), 131072U);
    EXPECT_EQ(store.Height(), 65536U);
    EXPECT_EQ(CountUnlikeDefault(owner), 0);
}

TEST(CaliBuf, TellsWhetherTheBudgetHoldsAnArea) {
    CCaliOperation<S9WordCoef> owner;
    const CBudgetLimit left(Left(2 * 18 * 32768));
    EXPECT_TRUE(owner.Buffer().HasRoomFor(0, 65536));
    EXPECT_TRUE(owner.Buffer().HasRoomFor(512, 128));
    EXPECT_FALSE(owner.Buffer().HasRoomFor(513, 128));
    EXPECT_FALSE(owner.Buffer().HasRoomFor(512, 129));
    EXPECT_FALSE(owner.Buffer().HasRoomFor(131072, 65536));
    EXPECT_FALSE(owner.Buffer().HasRoomFor(131073, 0));
    EXPECT_FALSE(owner.Buffer().HasRoomFor(0, 65537));
    EXPECT_TRUE(owner.Buffer().UsedBlocks().empty());
}

TEST(CaliBuf, AnotherElementDropsTheBlocksAndListsTwelveSizesAtMost) {
    CCaliOperation<SWordCoef> owner;
    CCaliBuf& store = owner.Buffer();
    ASSERT_EQ(store.Allocate(300, 1), S_OK);
    store.SetElement(24, 99);
    EXPECT_TRUE(store.UsedBlocks().empty());
    EXPECT_EQ(store.Block(0), nullptr);
    EXPECT_EQ(store.BytesInUse(), 0U);
    EXPECT_EQ(store.ElemSize(), 24);
    EXPECT_EQ(store.PlaneCount(), 12U);
}

TEST(CaliBuf, BlocksAreGivenBackToTheBudget) {
    const std::uint64_t before = CMemoryBudget::Process().Outstanding();
    {
        CCaliOperation<S4WordCoef> owner;
        ASSERT_EQ(owner.Buffer().Allocate(500, 100), S_OK);
        EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before + 2 * 8 * 32768);
    }
    EXPECT_EQ(CMemoryBudget::Process().Outstanding(), before);
}

TEST(CaliBuf, AllocateBlockRefusesBadAndTakenIndices) {
    CCaliOperation<S3WordCoef> owner;
    CCaliBuf& store = owner.Buffer();
    EXPECT_EQ(store.AllocateBlock(262144, 0, 0), E_COEF_INVALIDARG);
    EXPECT_EQ(store.AllocateBlock(0, 511 * 256 + 1, 0), E_COEF_INVALIDARG);
    EXPECT_EQ(store.AllocateBlock(0, 0, 511 * 128 + 1), E_COEF_INVALIDARG);
    EXPECT_EQ(store.AllocateBlock(262143, 511 * 256, 511 * 128), S_OK);
    EXPECT_EQ(store.AllocateBlock(262143, 511 * 256, 511 * 128), E_COEF_INVALIDARG);
    EXPECT_EQ(Used(store), (std::vector<std::uint32_t>{262143}));
    EXPECT_NE(owner.Find(131071, 65535), nullptr);
}

TEST(CaliBuf, FillBlockDefaultNeedsABlockOfAKnownKind) {
    const auto store = CCaliBuf::Create();
    EXPECT_EQ(store->FillBlockDefault(0), E_COEF_NOBUFFER);
    EXPECT_EQ(store->FillBlockDefault(262144), E_COEF_NOBUFFER);
    store->SetElement(10, 9);
    ASSERT_EQ(store->AllocateBlock(0, 0, 0), S_OK);
    EXPECT_EQ(store->FillBlockDefault(0), E_FAIL);
    EXPECT_EQ(store->Allocate(1, 1), E_FAIL);
    EXPECT_EQ(Used(*store), (std::vector<std::uint32_t>{0})); // the block stays, not filled
}

TEST(CaliBuf, FillBlockDefaultRestoresABlock) {
    CCaliOperation<S12WordCoef> owner;
    ASSERT_EQ(owner.Buffer().Allocate(300, 10), S_OK);
    FillPattern(owner);
    EXPECT_EQ(owner.Buffer().FillBlockDefault(0), S_OK);
    EXPECT_EQ(owner.Buffer().FillBlockDefault(1), S_OK);
    EXPECT_EQ(CountUnlikeDefault(owner), 0);
}

TYPED_TEST(CaliBufOf, CopiesRectanglesOutAndIn) {
    ASSERT_EQ(this->m_store.Allocate(300, 200), S_OK);
    FillPattern(this->m_owner);
    const SPixelRect rect{260, 130, 267, 133}; // 7 × 3 in block 513
    std::vector<TypeParam> packed(7 * 3);
    this->m_store.CopyRectOut(513, rect, reinterpret_cast<std::byte*>(packed.data()));
    for (std::uint32_t i = 0; i < packed.size(); ++i)
        EXPECT_EQ(packed[i].w, (PatternElement<TypeParam>(260 + i % 7, 130 + i / 7).w));
    // Columns 2 to 4 of the packed rows 1 and 2 go to another corner.
    const SPixelRect to{0, 0, 3, 2};
    EXPECT_EQ(this->m_store.CopyRectIn(0, reinterpret_cast<const std::byte*>(packed.data()), to,
                                       7 + 2, 7),
              S_OK);
    EXPECT_EQ(CountUnlikePattern(this->m_owner, 3, 0, 256, 128), 0);
    EXPECT_EQ(CountUnlikePattern(this->m_owner, 0, 2, 256, 128), 0);
    for (std::uint32_t y = 0; y < 2; ++y)
        for (std::uint32_t x = 0; x < 3; ++x)
            EXPECT_EQ(this->m_owner.Find(x, y)->w, (PatternElement<TypeParam>(262 + x, 131 + y).w));
}

TEST(CaliBuf, CopiesRefuseWhatIsNotThere) {
    CCaliOperation<SWordCoef> owner;
    CCaliBuf& store = owner.Buffer();
    ASSERT_EQ(store.Allocate(10, 10), S_OK);
    std::vector<std::byte> bytes(64, std::byte{0x5A});
    const std::vector<std::byte> before = bytes;
    EXPECT_EQ(store.CopyRectIn(1, bytes.data(), {256, 0, 258, 2}, 0, 2), E_COEF_NOBUFFER);
    EXPECT_EQ(store.CopyRectIn(262144, bytes.data(), {0, 0, 2, 2}, 0, 2), E_COEF_NOBUFFER);
    EXPECT_EQ(store.CopyRectIn(0, nullptr, {0, 0, 2, 2}, 0, 2), E_COEF_NOBUFFER);
    EXPECT_EQ(store.CopyRectIn(0, bytes.data(), {0, 5, 2, 5}, 0, 2), S_OK);
    EXPECT_EQ(store.CopyRectIn(0, bytes.data(), {0, 5, 2, 4}, 0, 2), S_OK);
    EXPECT_EQ(store.CopyRectIn(0, bytes.data(), {-1, 0, 1, 1}, 0, 2), E_COEF_INVALIDARG);
    EXPECT_EQ(store.CopyRectIn(0, bytes.data(), {255, 0, 257, 1}, 0, 2), E_COEF_INVALIDARG);
    EXPECT_EQ(store.CopyRectIn(0, bytes.data(), {0, 127, 1, 129}, 0, 2), E_COEF_INVALIDARG);
    EXPECT_EQ(CountUnlikeDefault(owner), 0);
    store.CopyRectOut(1, {256, 0, 258, 2}, bytes.data());
    store.CopyRectOut(262144, {0, 0, 2, 2}, bytes.data());
    store.CopyRectOut(0, {3, 3, 3, 5}, bytes.data());
    store.CopyRectOut(0, {3, 5, 5, 5}, bytes.data());
    store.CopyRectOut(0, {255, 0, 257, 1}, bytes.data());
    store.CopyRectOut(0, {0, 0, 2, 2}, nullptr);
    EXPECT_EQ(bytes, before);
}

/// 300 × 10 pixels, where the data of block 1 is not there.
class CaliBufWithoutData : public ::testing::Test {
  protected:
    CaliBufWithoutData() {
        EXPECT_EQ(m_store.Allocate(300, 10), S_OK);
        FillPattern(m_owner);
        m_file = RectFile(m_store, {0, 0, 300, 10});
        m_store.Block(1)->pData = nullptr;
    }

    CCaliOperation<S3WordCoef> m_owner;
    CCaliBuf& m_store = m_owner.Buffer();
    Bytes m_file; ///< of the whole area, from before
};

TEST_F(CaliBufWithoutData, IsTakenAsWithoutTheBlock) {
    std::vector<std::byte> bytes(64, std::byte{0x5A});
    const std::vector<std::byte> before = bytes;
    EXPECT_EQ(m_store.FindElement(256, 0), nullptr);
    EXPECT_EQ(m_store.FillBlockDefault(1), E_COEF_NOBUFFER);
    EXPECT_EQ(m_store.CopyRectIn(1, bytes.data(), {256, 0, 258, 2}, 0, 2), E_COEF_NOBUFFER);
    m_store.CopyRectOut(1, {256, 0, 258, 2}, bytes.data());
    EXPECT_EQ(bytes, before);
}

TEST_F(CaliBufWithoutData, HasNoDigest) {
    std::wstring text = L"old";
    EXPECT_FALSE(m_store.ComputeMD5(text));
    EXPECT_EQ(text, L"old");
}

TEST_F(CaliBufWithoutData, IsWrittenAsWithoutTheBlock) {
    const Bytes rect = RectFile(m_store, {0, 0, 300, 10});
    EXPECT_EQ(RecordAt(rect, 9, 0), RecordAt(m_file, 9, 0));
    EXPECT_EQ(RecordAt(rect, 9, 1), SChunkRecord{});
    EXPECT_EQ(rect.size(), 168U + 2 * 56 + RecordAt(m_file, 9, 0).totalSize);
    std::stringstream band = StreamBehind({.width = 300, .height = 10, .recordCount = 2});
    std::uint64_t directoryAt = 0;
    std::uint64_t dataAt = 0;
    EXPECT_EQ(
        m_store.WriteBandChunks(band, {0, 0, 300, 10}, {0, 0, 300, 10}, directoryAt, dataAt, 0, 0),
        S_OK);
    EXPECT_EQ(BytesOf(band), rect);
    // As the last block of the whole store it gives the result, and its record stays zero.
    std::stringstream all = StreamBehind({});
    EXPECT_EQ(m_store.WriteAllChunks(all), E_COEF_NOBUFFER);
    const Bytes file = BytesOf(all);
    EXPECT_EQ(RecordAt(file, 9, 0).width, 256U);
    EXPECT_EQ(RecordAt(file, 9, 1), SChunkRecord{});
    EXPECT_EQ(file.size(), 168U + 2 * 56 + RecordAt(file, 9, 0).totalSize);
    Bytes image(static_cast<std::size_t>(m_store.MaxMemoryImageBytes()));
    std::uint64_t size = 0;
    EXPECT_EQ(m_store.SaveToMemory(image.data(), 0, 0, &size), E_COEF_NOBUFFER);
    EXPECT_EQ(size, file.size());
}

TEST_F(CaliBufWithoutData, ChunksOnItAreSkipped) {
    EXPECT_EQ(ReadAt(m_store, m_file, 0, 0), S_OK);
    EXPECT_EQ(m_store.LastRead(), (SChunkCounts{.read = 1, .skipped = 1}));
    // A chunk as wide as a block, which would be decoded in its place.
    CCaliOperation<S3WordCoef> source;
    ASSERT_EQ(source.Buffer().Allocate(256, 128), S_OK);
    const Bytes whole = RectFile(source.Buffer(), {0, 0, 256, 128});
    EXPECT_EQ(ReadAt(m_store, whole, 256, 0), S_OK);
    EXPECT_EQ(m_store.LastRead(), (SChunkCounts{.skipped = 1}));
    // A chunk over both blocks, then one over this one and others that are not there.
    EXPECT_EQ(ReadAt(m_store, whole, 10, 0), S_OK);
    EXPECT_EQ(m_store.LastRead(), (SChunkCounts{.read = 1}));
    EXPECT_EQ(CountUnlikePattern(m_owner, 0, 0, 10, 10), 0);
    EXPECT_EQ(m_owner.Find(10, 0)->w, S3WordCoef{}.w);
    EXPECT_EQ(ReadAt(m_store, whole, 300, 0), S_OK);
    EXPECT_EQ(m_store.LastRead(), (SChunkCounts{.skipped = 1}));
}

std::wstring Digest(const CCaliBuf& store) {
    std::wstring text = L"old";
    EXPECT_TRUE(store.ComputeMD5(text));
    return text;
}

/// Digests by md5sum of the blocks' bytes, written by another program.
struct KnownDigests {
    const wchar_t* fresh;   ///< 1 × 1
    const wchar_t* filled;  ///< 300 × 140 with the pattern
    const wchar_t* smaller; ///< 200 × 100 with the pattern
};

template <class T>
KnownDigests Known();
template <>
KnownDigests Known<SWordCoef>() {
    return {L"FCD6BCB56C1689FCEF28B57C22475BAD", L"18EE09612D3232ABE24F1E17A06A059A",
            L"52EB5609FE45D183B34922F7410F7CF8"};
}
template <>
KnownDigests Known<S3WordCoef>() {
    return {L"0139C6C3C75532C50E37D60A395D9831", L"D0D249684CDC1B0D4A2D64BEBCA294A9",
            L"E5346FD828FE72E66A6E93A1910E8AF7"};
}
template <>
KnownDigests Known<S4WordCoef>() {
    return {L"09A1D434DBD7197E7C3AF8A7C28CA38B", L"7B1DC3D5D2EF19E4E7CD8A93519DC2FC",
            L"678DBB480832A7A17864AD0DF5849713"};
}
template <>
KnownDigests Known<S9WordCoef>() {
    return {L"1564DBE0B0FE5B2E9BCCFBFDECA01305", L"6369A4C0AA35CA99A878700B8FE98E7F",
            L"E251D354698ED286D462489D33BF9C77"};
}
template <>
KnownDigests Known<S12WordCoef>() {
    return {L"868A6C14E9636265DAC4672699277457", L"0D894B2ADFA4C21C9965FEB160F8EF02",
            L"D96E671AA0A3C2E205B8351A918D7156"};
}

TYPED_TEST(CaliBufOf, DigestIsThatOfTheBlocksBytes) {
    const KnownDigests known = Known<TypeParam>();
    EXPECT_EQ(Digest(this->m_store), L"D41D8CD98F00B204E9800998ECF8427E"); // of no data
    ASSERT_EQ(this->m_store.Allocate(1, 1), S_OK);
    EXPECT_EQ(Digest(this->m_store), known.fresh);
    ASSERT_EQ(this->m_store.Allocate(300, 140), S_OK);
    FillPattern(this->m_owner);
    EXPECT_EQ(Digest(this->m_store), known.filled);
    ASSERT_EQ(this->m_store.Allocate(200, 100), S_OK);
    FillPattern(this->m_owner);
    EXPECT_EQ(Digest(this->m_store), known.smaller);
}

TEST(CaliBuf, DigestFollowsTheOrderOfAllocation) {
    CCaliOperation<SWordCoef> a;
    CCaliOperation<SWordCoef> b;
    for (const std::uint32_t index : {0U, 1U}) {
        ASSERT_EQ(a.Buffer().AllocateBlock(index, index * 256, 0), S_OK);
        ASSERT_EQ(b.Buffer().AllocateBlock(1 - index, (1 - index) * 256, 0), S_OK);
    }
    for (CCaliOperation<SWordCoef>* owner : {&a, &b})
        for (const std::uint32_t index : {0U, 1U})
            ASSERT_EQ(owner->Buffer().FillBlockDefault(index), S_OK);
    EXPECT_EQ(Digest(a.Buffer()), Digest(b.Buffer())); // all zero
    a.Find(0, 0)->w[0] = 1;
    b.Find(0, 0)->w[0] = 1;
    EXPECT_NE(Digest(a.Buffer()), Digest(b.Buffer()));
}

} // namespace
} // namespace trevolt
