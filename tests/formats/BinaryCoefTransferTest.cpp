// The binary kinds on streams beside files, by their types: each kind of the list has these tests.
#include "formats/BinaryCoefTransfer.h"

#include <array>
#include <sstream>
#include <utility>

#include <gtest/gtest.h>

#include "tests/formats/BinaryKinds.h"
#include "tests/formats/DamagedInputs.h"
#include "tests/support/BufferContent.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/Streams.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using namespace test;

constexpr std::int32_t kWidth = 5;
constexpr std::int32_t kHeight = 4;

CChromaCorrectCoef PaintedMap(std::int32_t width, std::int32_t height,
                              SMatrixCoef (*paint)(std::int32_t, std::int32_t)) {
    CChromaCorrectCoef map;
    map.Resize(width, height);
    PaintMap(map, paint);
    return map;
}

/// A grid of 9-float elements that is no copy of the map's pixels.
CMassiveGrid PreparedGrid() {
    CMassiveGrid grid(S9fCoefKind::kStoredBytes);
    EXPECT_TRUE(grid.Resize(kWidth, kHeight));
    for (std::uint32_t i = 0; i < grid.ElementCount(); ++i)
        std::memcpy(grid.Element(i), BytePixel(static_cast<std::int32_t>(i), 90).m.data(),
                    S9fCoefKind::kStoredBytes);
    return grid;
}

template <class Kind>
class BinaryCoefTransfer : public testing::Test {
  protected:
    const wchar_t* Path() const { return m_path.c_str(); }

    /// The file that the path form writes of the map.
    Bytes File(const CMassiveGrid* prepared = nullptr) const {
        EXPECT_EQ(WriteBinaryCoef<Kind>(m_map, Path(), prepared), S_OK);
        return ReadFile(m_path);
    }

    /// What a writer may be given as its prepared grid.
    std::array<const CMassiveGrid*, 2> Grids() const { return {nullptr, &m_prepared}; }

    CTemporaryFolder m_folder;
    std::wstring m_path = m_folder.File(L"file");
    CChromaCorrectCoef m_map = PaintedMap(kWidth, kHeight, BytePixel);
    CMassiveGrid m_prepared = PreparedGrid();
};

template <class /*unused*/, class... Kinds>
using TypesBehind = testing::Types<Kinds...>;
#define TREVOLT_TYPE(Kind) , Kind
using BinaryKinds = TypesBehind<void TREVOLT_EACH_BINARY_COEF_KIND(TREVOLT_TYPE)>;
#undef TREVOLT_TYPE
TYPED_TEST_SUITE(BinaryCoefTransfer, BinaryKinds);

/// What a read made of a painted map, and a size query of its outputs.
struct SOutcome {
    Status status = S_OK;
    Bytes colours;
    Bytes gains;
    Status sizeStatus = S_OK;
    std::uint32_t width = 7;
    std::uint32_t height = 9;

    friend bool operator==(const SOutcome&, const SOutcome&) = default;
};

template <class Kind>
SOutcome OutcomeOf(const CFileSource& source, const CFileSource& sizeSource, std::int32_t width,
                   std::int32_t height) {
    CChromaCorrectCoef map = PaintedMap(width, height, PatternPixel);
    SOutcome outcome;
    outcome.status = ReadBinaryCoef<Kind>(map, source);
    outcome.colours = Content(map.ColourGrid());
    outcome.gains = Content(map.GainGrid());
    outcome.sizeStatus = ReadBinaryCoefSize<Kind>(sizeSource, outcome.width, outcome.height);
    return outcome;
}

TYPED_TEST(BinaryCoefTransfer, AStreamGetsTheFilesBytesWhereItStands) {
    for (const CMassiveGrid* prepared : this->Grids()) {
        std::ostringstream stream;
        stream << kPrefix;
        EXPECT_EQ(WriteBinaryCoef<TypeParam>(this->m_map, stream, prepared), S_OK);
        EXPECT_TRUE(stream.good());
        stream << "behind";
        EXPECT_EQ(stream.str(), std::string(kPrefix) + AsText(this->File(prepared)) + "behind");
    }
}

TYPED_TEST(BinaryCoefTransfer, AStreamReadsAsItsFileWhateverItHolds) {
    for (const BinaryInput& input : InputsFrom(this->File(), TypeParam::kWholeMapRead)) {
        SCOPED_TRACE(input.name);
        WriteFile(this->m_path, input.bytes);
        // A map of the file's size, and one that has more columns and fewer rows.
        for (const auto& [width, height] : {std::pair{kWidth, kHeight}, std::pair{9, 2}}) {
            const SOutcome ofFile = OutcomeOf<TypeParam>(this->Path(), this->Path(), width, height);
            const bool isWhole = width == kWidth || Failed(input.status);
            EXPECT_EQ(ofFile.status, isWhole ? input.status : S_OK);
            std::istringstream stream = StreamOf(input.bytes);
            std::istringstream sizeStream = StreamOf(input.bytes);
            EXPECT_EQ(OutcomeOf<TypeParam>(stream, sizeStream, width, height), ofFile);
            std::istringstream behind = StreamBehindPrefix(input.bytes);
            std::istringstream sizeBehind = StreamBehindPrefix(input.bytes);
            EXPECT_EQ(OutcomeOf<TypeParam>(behind, sizeBehind, width, height), ofFile);
            const Bytes before = Content(PaintedMap(width, height, PatternPixel).ColourGrid());
            EXPECT_EQ(ofFile.colours == before, Failed(input.status));
        }
    }
}

TYPED_TEST(BinaryCoefTransfer, AStreamStandsBehindWhatWasTakenOfIt) {
    const Bytes file = this->File();
    std::istringstream stream = StreamBehindPrefix(file);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    EXPECT_EQ(ReadBinaryCoefSize<TypeParam>(stream, width, height), S_OK);
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.tellg(), static_cast<std::streamoff>(kPrefix.size() + kFileHeaderBytes));
    stream.seekg(static_cast<std::streamoff>(kPrefix.size()));
    EXPECT_EQ(ReadBinaryCoef<TypeParam>(this->m_map, stream), TypeParam::kWholeMapRead);
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.tellg(), static_cast<std::streamoff>(kPrefix.size() + file.size()));
}

TYPED_TEST(BinaryCoefTransfer, AStreamThatCannotBeSoughtGivesItsSizeAndNoMore) {
    const Bytes file = this->File();
    CPipe pipe(file);
    CPipe sizePipe(file);
    const SOutcome outcome = OutcomeOf<TypeParam>(pipe, sizePipe, kWidth, kHeight);
    EXPECT_EQ(outcome.status, E_FAIL);
    EXPECT_EQ(outcome.colours, Content(PaintedMap(kWidth, kHeight, PatternPixel).ColourGrid()));
    EXPECT_EQ(outcome.sizeStatus, S_OK);
    EXPECT_EQ(outcome.width, 5U);
    EXPECT_EQ(outcome.height, 4U);
    EXPECT_TRUE(sizePipe.good());
}

TYPED_TEST(BinaryCoefTransfer, AStreamThatHadFailedReadsAsOneWithoutBytes) {
    std::istringstream stream = StreamOf(this->File());
    std::istringstream sizeStream = StreamOf(this->File());
    stream.setstate(std::ios::failbit);
    sizeStream.setstate(std::ios::failbit);
    const SOutcome outcome = OutcomeOf<TypeParam>(stream, sizeStream, kWidth, kHeight);
    EXPECT_EQ(outcome.status, E_COEF_BADFORMAT);
    EXPECT_EQ(outcome.sizeStatus, E_COEF_BADFORMAT);
    EXPECT_EQ(outcome.width, 7U);
    EXPECT_EQ(outcome.height, 9U);
}

TYPED_TEST(BinaryCoefTransfer, AStreamThatRunsFullTellsAndTheReportDoesNot) {
    for (const CMassiveGrid* prepared : this->Grids()) {
        const std::string file = AsText(this->File(prepared));
        const bool isStatusDropped = prepared != nullptr && TypeParam::kTakesPreparedBody;
        for (std::size_t room = 0; room < file.size(); ++room) {
            CFullDisk full(room);
            const CTransferReport report;
            EXPECT_EQ(WriteBinaryCoef<TypeParam>(this->m_map, full, prepared),
                      isStatusDropped ? S_OK : E_FAIL);
            EXPECT_TRUE(full.bad());
            EXPECT_LE(full.Taken().size(), room);
            EXPECT_EQ(full.Taken(), file.substr(0, full.Taken().size()));
            EXPECT_FALSE(report.HasWriteFailed());
            EXPECT_EQ(report.SystemError(), 0);
        }
        CFullDisk enough(file.size());
        EXPECT_EQ(WriteBinaryCoef<TypeParam>(this->m_map, enough, prepared), S_OK);
        EXPECT_TRUE(enough.good());
        EXPECT_EQ(enough.Taken(), file);
    }
}

TYPED_TEST(BinaryCoefTransfer, AStreamIsNotTouchedWhereNoFileIs) {
    std::ostringstream stream;
    EXPECT_EQ(WriteBinaryCoef<TypeParam>(CChromaCorrectCoef(), stream, nullptr), E_COEF_INVALIDARG);
    EXPECT_EQ(WriteBinaryCoef<TypeParam>(CChromaCorrectCoef(), stream, &this->m_prepared),
              E_COEF_INVALIDARG);
    const CBudgetLimit none(0);
    for (const CMassiveGrid* prepared : this->Grids())
        EXPECT_EQ(WriteBinaryCoef<TypeParam>(this->m_map, stream, prepared), E_FAIL);
    EXPECT_TRUE(stream.good());
    EXPECT_TRUE(stream.str().empty());
}

TYPED_TEST(BinaryCoefTransfer, AMapWithoutStorageIsTheKindsOwnMatter) {
    CChromaCorrectCoef bare;
    {
        const CBudgetLimit none(0);
        bare.Resize(kWidth, kHeight);
    }
    std::ostringstream stream;
    EXPECT_EQ(WriteBinaryCoef<TypeParam>(bare, stream, nullptr),
              TypeParam::kNeedsStorage ? E_FAIL : S_OK);
    EXPECT_EQ(stream.str().empty(), TypeParam::kNeedsStorage);
    EXPECT_EQ(WriteBinaryCoef<TypeParam>(bare, static_cast<const wchar_t*>(nullptr), nullptr),
              E_COEF_INVALIDARG);
}

TYPED_TEST(BinaryCoefTransfer, ABodyThatGetsNoMemoryIsReported) {
    std::istringstream stream = StreamOf(this->File());
    const CTransferReport report;
    const CBudgetLimit none(0);
    EXPECT_EQ(ReadBinaryCoef<TypeParam>(this->m_map, stream), E_OUTOFMEMORY);
    EXPECT_TRUE(report.WasMemoryRefused());
    ExpectPixels(this->m_map, BytePixel);
}

class NamedBinaryCoef : public testing::TestWithParam<BinaryKind> {};
INSTANTIATE_TEST_SUITE_P(Kinds, NamedBinaryCoef, testing::ValuesIn(kBinaryKinds), KindName);

// The named functions on streams are those of the files' own kinds.
TEST_P(NamedBinaryCoef, HasItsStreamsBesideItsFiles) {
    const BinaryKind& kind = GetParam();
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"file");
    const CChromaCorrectCoef map = PaintedMap(kWidth, kHeight, BytePixel);
    const CMassiveGrid prepared = PreparedGrid();
    for (const CMassiveGrid* grid : {static_cast<const CMassiveGrid*>(nullptr), &prepared}) {
        ASSERT_EQ(kind.write(map, path.c_str(), grid), S_OK);
        std::ostringstream written;
        ASSERT_EQ(kind.writeStream(map, written, grid), S_OK);
        EXPECT_EQ(AsBytes(written.str()), ReadFile(path));

        CChromaCorrectCoef ofFile = PaintedMap(kWidth, kHeight, PatternPixel);
        CChromaCorrectCoef ofStream = PaintedMap(kWidth, kHeight, PatternPixel);
        std::istringstream stream(written.str());
        ASSERT_EQ(kind.read(ofFile, path.c_str()), kind.wholeMap);
        ASSERT_EQ(kind.readStream(ofStream, stream), kind.wholeMap);
        EXPECT_EQ(Content(ofStream.ColourGrid()), Content(ofFile.ColourGrid()));

        std::uint32_t width = 0;
        std::uint32_t height = 0;
        stream.seekg(0);
        ASSERT_EQ(kind.readStreamSize(stream, width, height), S_OK);
        EXPECT_EQ(width, 5U);
        EXPECT_EQ(height, 4U);
    }
}

} // namespace
} // namespace trevolt
