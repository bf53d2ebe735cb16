// What a store does when its small allocations are refused, the ones that ask not to throw.
#include <new>

#include "tests/calibuf/StoreSupport.h"
#include "trevolt/TransferReport.h"

namespace {

/// How many more such allocations succeed before one is refused; negative refuses none.
int g_allocationsLeft = -1;

bool IsRefused() { return g_allocationsLeft >= 0 && g_allocationsLeft-- == 0; }

} // namespace

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    if (IsRefused())
        return nullptr;
    try {
        return ::operator new(bytes);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

namespace trevolt {
namespace {

using namespace test;

/// Refuses the allocation behind the next `before` ones.
class CRefusal {
  public:
    explicit CRefusal(int before) { g_allocationsLeft = before; }
    ~CRefusal() { g_allocationsLeft = -1; }
    CRefusal(const CRefusal&) = delete;
    CRefusal& operator=(const CRefusal&) = delete;
};

// A block whose record is refused is a success without a block.
TEST(RefusedAllocation, OfARecordIsASuccessWithoutABlock) {
    CCaliOperation<S3WordCoef> owner;
    CCaliBuf& store = owner.Buffer();
    {
        const CTransferReport report;
        const CRefusal refusal(0);
        EXPECT_EQ(store.AllocateBlock(5, 5 * 256, 0), S_OK);
        EXPECT_TRUE(report.WasMemoryRefused()) << "the status does not tell it";
    }
    EXPECT_EQ(store.Block(5), nullptr);
    EXPECT_TRUE(store.UsedBlocks().empty());
    EXPECT_EQ(store.BytesInUse(), 0U);
}

TEST(RefusedAllocation, OfARecordStopsTheStoreAtItsDefaultsAndKeepsTheBlocksBefore) {
    CCaliOperation<S3WordCoef> owner;
    CCaliBuf& store = owner.Buffer();
    {
        const CRefusal refusal(2);
        EXPECT_EQ(store.Allocate(600, 300), E_COEF_NOBUFFER);
    }
    EXPECT_TRUE(std::ranges::equal(store.UsedBlocks(), std::vector<std::uint32_t>{0, 1}));
    EXPECT_EQ(store.BytesInUse(), 2U * (24 + 6 * 32768));
    EXPECT_EQ(CountUnlikeDefault(owner), 0);
    EXPECT_EQ(store.Allocate(600, 300), S_OK);
    EXPECT_EQ(store.UsedBlocks().size(), 9U);
}

// Without its list of used blocks a store is empty and stays so.
TEST(RefusedAllocation, OfTheBlockListLeavesAnEmptyStore) {
    std::unique_ptr<CCaliBuf> store;
    {
        const CRefusal refusal(0);
        store = CCaliBuf::Create();
    }
    const CTransferReport report;
    EXPECT_TRUE(store->UsedBlocks().empty());
    EXPECT_EQ(store->AllocateBlock(0, 0, 0), E_FAIL);
    EXPECT_TRUE(report.WasMemoryRefused());
    EXPECT_EQ(store->Allocate(300, 200), E_FAIL);
    EXPECT_EQ(store->Block(0), nullptr);
    EXPECT_EQ(store->BytesInUse(), 0U);
    std::wstring digest;
    EXPECT_TRUE(store->ComputeMD5(digest));
    EXPECT_EQ(digest, L"D41D8CD98F00B204E9800998ECF8427E"); // of no data
    std::stringstream stream = StreamBehind({});
    EXPECT_EQ(store->WriteAllChunks(stream), S_OK);
    EXPECT_EQ(BytesOf(stream).size(), kChunkHeaderBytes);
    store->Clear();
}

} // namespace
} // namespace trevolt
