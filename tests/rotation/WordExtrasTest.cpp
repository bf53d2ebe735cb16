// What word files hold beside their pixels' coefficients, when a turn keeps it.
#include "app/rotation/WordExtras.h"

#include <array>
#include <atomic>
#include <cstring>

#include <gtest/gtest.h>

#include "calibuf/ChunkLayout.h"
#include "coef/CNewChromaCorrectCoef.h"
#include "coef/StoredWordCoef.h"
#include "common/LittleEndian.h"
#include "platform/FileSystem.h"
#include "tests/support/BudgetLimit.h"
#include "tests/support/Streams.h"
#include "trevolt/CoefObjects.h"
#include "trevolt/CoefRotation.h"
#include "trevolt/FileKinds.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/RotationRun.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/WordCoefFile.h"

namespace trevolt {
namespace {

using namespace test;
using Texts = std::vector<std::string>;

constexpr std::array<std::uint8_t, 16> kOwnerName{'w', 'a', 'l', 'l', ' ', '7', 0,   1,
                                                  2,   3,   4,   5,   6,   7,   255, 254};
constexpr std::uint8_t kOwnerFlag = 9;

const std::byte* OwnerBytes() { return reinterpret_cast<const std::byte*>(kOwnerName.data()); }

/// Not of a part of the grid's blocks: four chunks, of which the first is the smallest.
constexpr SPixelRect kArea{250, 120, 250 + 40, 120 + 30};

std::uint16_t ExtraWordAt(std::int64_t x, std::int64_t y) {
    return static_cast<std::uint16_t>(1 + x + 1000 * y);
}

class CLastFile : public CRotationListener {
  public:
    void OnFile(const SFileOutcome& outcome, std::size_t /*done*/, std::size_t /*count*/) override {
        last = outcome;
    }
    SFileOutcome last;
};

class KeptExtras : public testing::Test {
  protected:
    KeptExtras() {
        m_request.sources = {m_source.Path()};
        m_request.existing = EExistingOutput::Replace; // tests run again and again
        m_request.targetFolder = m_target.Path();
        m_request.keepExtras = true;
    }

    /// A file of `kArea` with owner, origin and, of the chroma kind, extra words.
    Bytes FileWithExtras(EWordKind kind) {
        const auto object = CreateCoefObject(kind);
        object->SetFileKind(2); // of the virtual-green kinds
        EXPECT_EQ(object->Create(300, 160), S_OK);
        for (std::uint32_t y = 120; y < 150; ++y)
            for (std::uint32_t x = 250; x < 290; ++x) {
                object->SetPixelChannel(static_cast<std::int32_t>(y % 3), x, y,
                                        static_cast<float>(x % 32) / 64.0F, 0);
                if (kind != EWordKind::Chroma)
                    continue;
                EXPECT_EQ(object->SetPixelExtraWord(x, y, ExtraWordAt(x - 250, y - 120)), S_OK);
            }
        const std::wstring path = m_source.File(L"made.9wPCoef");
        EXPECT_EQ(object->ExportCoef(path.c_str(), kArea, OwnerBytes(), &kOwnerFlag), S_OK);
        Bytes file = ReadFile(path);
        EXPECT_TRUE(RemoveFile(path));
        return file;
    }

    /// Turns a file under a name, alone in its folder; nothing when it is not written.
    Bytes Turned(const std::wstring& name, const Bytes& file) {
        WriteFile(m_source.File(name), file);
        m_listener = {};
        const SRotationOutcome outcome = RunRotation(m_request, m_interrupted, m_listener);
        EXPECT_TRUE(RemoveFile(m_source.File(name)));
        const std::wstring path = m_target.File(ExportName(name, m_request.angle.text));
        if (outcome.written == 0) {
            EXPECT_EQ(m_target.Names(), std::vector<std::wstring>{});
            return {};
        }
        Bytes turned = ReadFile(path);
        EXPECT_TRUE(RemoveFile(path));
        return turned;
    }

    Bytes TurnedBy(std::uint32_t code, const std::wstring& name, const Bytes& file) {
        m_request.angle = kAngles[code - 1];
        return Turned(name, file);
    }

    const Texts& Problems() const { return m_listener.last.problems; }
    const Texts& Losses() const { return m_listener.last.losses; }

    CTemporaryFolder m_source;
    CTemporaryFolder m_target;
    SRotationRequest m_request;
    std::atomic<bool> m_interrupted{false};
    CLastFile m_listener;
};

SChunkHeader HeaderOf(const Bytes& file) {
    EXPECT_GE(file.size(), kChunkHeaderBytes);
    return file.size() < kChunkHeaderBytes ? SChunkHeader{} : DecodeChunkHeader(file.data());
}

PixelPosition OriginOf(const Bytes& file) {
    const SChunkHeader header = HeaderOf(file);
    return {header.originX, header.originY};
}

void Set(Bytes& file, std::size_t at, std::uint32_t value) {
    StoreLittle<std::uint32_t>(file.data() + at, value);
}

std::uint32_t Get(const Bytes& file, std::size_t at) {
    return LoadLittle<std::uint32_t>(file.data() + at);
}

/// The extra words of a file that a loaded object holds, row by row; the strict reader finds the file
/// whole.
std::vector<std::uint16_t> ExtraWordsOf(const Bytes& file) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"read.9wcoef");
    WriteFile(path, file);
    const SChunkHeader header = HeaderOf(file);
    CCNewChromaCorrectCoef object;
    EXPECT_EQ(object.Create(static_cast<std::uint16_t>(header.width),
                            static_cast<std::uint16_t>(header.height)),
              S_OK);
    const CTransferReport report;
    EXPECT_EQ(DescribeReadProblems(object.LoadCoef(path.c_str()), report), Texts{});
    EXPECT_EQ(DescribeExtraWordProblems(report), Texts{});
    EXPECT_EQ(DescribeReadNotes(report), Texts{});
    std::vector<std::uint16_t> words;
    for (std::uint32_t y = 0; y < header.height; ++y)
        for (std::uint32_t x = 0; x < header.width; ++x)
            words.push_back(object.FindExtraWord(x, y)->w[0]);
    return words;
}

/// What stands at (x, y) of the source, from 0, comes to `size`'s turned place; beyond 40 × 30 is 0.
std::vector<std::uint16_t> TurnedExtraWords(const PixelSize& size, std::uint32_t code) {
    const CQuarterTurn turn(code, size.width, size.height);
    std::vector<std::uint16_t> words(static_cast<std::size_t>(size.width * size.height));
    for (std::int64_t y = 0; y < size.height; ++y)
        for (std::int64_t x = 0; x < size.width; ++x) {
            const PixelPosition to = turn.Turned(x, y);
            words[static_cast<std::size_t>(to.y * turn.TurnedSize().width + to.x)] =
                x < 40 && y < 30 ? ExtraWordAt(x, y) : std::uint16_t{0};
        }
    return words;
}

constexpr EWordKind kAllKinds[]{EWordKind::Brightness, EWordKind::VirtualGreenBrightness,
                                EWordKind::Chroma, EWordKind::VirtualGreenChroma};

std::wstring WordNameOf(EWordKind kind) {
    switch (kind) {
    case EWordKind::Brightness:
        return L"Cab.3wcoef";
    case EWordKind::VirtualGreenBrightness:
        return L"Cab.4wcoef";
    case EWordKind::Chroma:
        return L"Cab.9wcoef";
    default:
        return L"Cab.12wcoef";
    }
}

TEST_F(KeptExtras, AreReadByValueFromTheTurnedFile) {
    const Bytes file = FileWithExtras(EWordKind::Chroma);
    for (const std::uint32_t code : {1U, 2U, 3U}) {
        const Bytes turned = TurnedBy(code, L"Cab.9wcoef", file);
        EXPECT_EQ(Problems(), Texts{});
        EXPECT_EQ(Losses(), Texts{});
        const SChunkHeader header = HeaderOf(turned);
        EXPECT_EQ(header.formatId, kChromaChunkFormat2);
        EXPECT_EQ(header.ownerData, kOwnerName);
        EXPECT_EQ(header.ownerFlag, kOwnerFlag);
        EXPECT_EQ(OriginOf(turned), (PixelPosition{250, 120}));
        EXPECT_EQ(header.width, code == 2 ? 40U : 30U);
        EXPECT_EQ(header.height, code == 2 ? 30U : 40U);
        EXPECT_EQ(ExtraWordsOf(turned), TurnedExtraWords({40, 30}, code));
    }
}

// Its first pixel comes to the right, its second one below it.
TEST_F(KeptExtras, ExtraWordsGoTheWayOfTheirPixels) {
    const Bytes turned = TurnedBy(1, L"Cab.9wcoef", FileWithExtras(EWordKind::Chroma));
    const std::vector<std::uint16_t> words = ExtraWordsOf(turned);
    ASSERT_EQ(words.size(), 1200U);
    EXPECT_EQ(words[29], 1);
    EXPECT_EQ(words[30 + 29], 2);
    EXPECT_EQ(words[28], 1001);
}

TEST_F(KeptExtras, WithoutBeingKeptAreLostAndNamed) {
    m_request.keepExtras = false;
    m_request.wall = PixelSize{1, 1}; // counts for nothing
    const Bytes turned = TurnedBy(1, L"Cab.9wcoef", FileWithExtras(EWordKind::Chroma));
    EXPECT_EQ(Losses(),
              (Texts{"its extra words", "its owner name and flag", "its origin (250, 120)"}));
    EXPECT_EQ(HeaderOf(turned).formatId, kChromaChunkFormat);
    EXPECT_EQ(HeaderOf(turned).ownerFlag, 0);
    EXPECT_EQ(OriginOf(turned), (PixelPosition{}));
}

TEST_F(KeptExtras, OfEveryKindComeBackWithTheTurnBack) {
    for (const EWordKind kind : kAllKinds) {
        const std::wstring name = WordNameOf(kind);
        const Bytes file = FileWithExtras(kind);
        for (const std::uint32_t code : {1U, 2U, 3U}) {
            const Bytes turned = TurnedBy(code, name, file);
            EXPECT_EQ(Losses(), Texts{});
            EXPECT_EQ(HeaderOf(turned).ownerData, kOwnerName);
            EXPECT_EQ(HeaderOf(turned).ownerFlag, kOwnerFlag);
            EXPECT_TRUE(TurnedBy(CQuarterTurn::BackCode(code), name, turned) == file)
                << static_cast<int>(kind) << " by " << code;
        }
        m_request.wall = PixelSize{1000, 700};
        const Bytes turned = TurnedBy(1, name, file);
        EXPECT_EQ(OriginOf(turned), (PixelPosition{700 - 120 - 30, 250}));
        m_request.wall = PixelSize{700, 1000};
        EXPECT_TRUE(TurnedBy(3, name, turned) == file) << static_cast<int>(kind);
        m_request.wall.reset();
    }
}

TEST_F(KeptExtras, OriginsAreTurnedWithTheWall) {
    const Bytes file = FileWithExtras(EWordKind::Brightness);
    const auto expectOrigin = [&](const PixelSize& wall, std::uint32_t code,
                                  const PixelPosition& origin) {
        m_request.wall = wall;
        EXPECT_EQ(OriginOf(TurnedBy(code, L"Cab.3wcoef", file)), origin)
            << wall.width << " x " << wall.height << " by " << code;
        EXPECT_EQ(Problems(), Texts{});
    };
    expectOrigin({1000, 700}, 1, {550, 250});
    expectOrigin({1000, 700}, 2, {710, 550});
    expectOrigin({1000, 700}, 3, {120, 710});
    // In the wall's last column and row.
    expectOrigin({290, 150}, 1, {0, 250});
    expectOrigin({290, 150}, 2, {0, 0});
    expectOrigin({290, 150}, 3, {120, 0});
}

// Where none is given the file says (0, 0), and that is a place like any other.
TEST_F(KeptExtras, TheWallsFirstCabinetIsTurnedToo) {
    Bytes file = FileWithExtras(EWordKind::Brightness);
    m_request.keepExtras = false;
    file = TurnedBy(2, L"Cab.3wcoef", file);
    ASSERT_EQ(OriginOf(file), (PixelPosition{}));
    m_request.keepExtras = true;
    m_request.wall = PixelSize{100, 60};
    EXPECT_EQ(OriginOf(TurnedBy(1, L"Cab.3wcoef", file)), (PixelPosition{30, 0}));
}

TEST_F(KeptExtras, AnOriginOutsideTheWallIsNamed) {
    const Bytes file = FileWithExtras(EWordKind::Chroma);
    for (const PixelSize& wall : {PixelSize{289, 150}, {290, 149}, {100, 100}}) {
        m_request.wall = wall;
        for (const bool lenient : {false, true}) {
            m_request.lenient = lenient;
            EXPECT_EQ(TurnedBy(1, L"Cab.9wcoef", file), Bytes{});
            EXPECT_EQ(
                Problems(),
                Texts{"its 40 x 30 pixels at its origin (250, 120) do not lie within the wall "
                      "of " +
                      std::to_string(wall.width) + " x " + std::to_string(wall.height)});
        }
    }
    // The pixels that are written count.
    m_request.wall = PixelSize{290, 150};
    m_request.size = PixelSize{41, 30};
    EXPECT_EQ(TurnedBy(1, L"Cab.9wcoef", file), Bytes{});
    EXPECT_EQ(Problems().size(), 1U);
    m_request.size = PixelSize{10, 5};
    EXPECT_EQ(OriginOf(TurnedBy(1, L"Cab.9wcoef", file)), (PixelPosition{150 - 120 - 5, 250}));
}

TEST_F(KeptExtras, AnOriginThatTheTurnedPixelsLeaveIsNamed) {
    // Chunks of 30 × 128 and 30 × 72 in the grid's last column.
    const auto object = CreateCoefObject(EWordKind::Brightness);
    ASSERT_EQ(object->Create(30, 200), S_OK);
    const std::wstring path = m_source.File(L"made");
    ASSERT_EQ(object->ExportCoef(path.c_str(), {0, 0, 30, 200}, nullptr, nullptr), S_OK);
    Bytes file = ReadFile(path);
    ASSERT_TRUE(RemoveFile(path));
    constexpr std::uint32_t kLeft = 131072 - 30;
    Set(file, chunk_header::kOriginX, kLeft);
    for (const std::size_t record : {168U, 168U + 56}) {
        Set(file, record + chunk_record::kX, kLeft);
        Set(file, record, Get(file, record) + 511);
    }
    EXPECT_EQ(OriginOf(TurnedBy(2, L"Cab.3wcoef", file)), (PixelPosition{kLeft, 0}));
    EXPECT_EQ(Problems(), Texts{});
    EXPECT_EQ(TurnedBy(1, L"Cab.3wcoef", file), Bytes{});
    EXPECT_EQ(Problems(), Texts{"its origin cannot be kept: 200 x 30 pixels at (131042, 0) reach "
                                "out of the 131072 x 65536 that a word file can place"});
    for (const std::int64_t height : {65537, 70000}) { // below the last row
        m_request.wall = PixelSize{131072, height};
        EXPECT_EQ(TurnedBy(2, L"Cab.3wcoef", file), Bytes{});
        EXPECT_EQ(Problems().size(), 1U);
    }
    m_request.wall = PixelSize{131072, 65536};
    EXPECT_EQ(OriginOf(TurnedBy(2, L"Cab.3wcoef", file)), (PixelPosition{0, 65336}));
}

TEST_F(KeptExtras, OwnerAndOriginAreKeptAlone) {
    for (const EWordKind kind : kAllKinds) {
        const std::wstring name = WordNameOf(kind);
        m_request.keepExtras = false;
        const Bytes plain = TurnedBy(2, name, FileWithExtras(kind));
        m_request.keepExtras = true;
        for (const bool hasFlag : {false, true}) {
            Bytes owned = plain;
            if (hasFlag)
                owned[chunk_header::kOwnerFlag] = std::byte{kOwnerFlag};
            else
                std::memcpy(&owned[chunk_header::kOwnerData], kOwnerName.data(), kOwnerName.size());
            const Bytes turned = TurnedBy(1, name, owned);
            EXPECT_EQ(Losses(), Texts{});
            SChunkHeader expected = HeaderOf(TurnedBy(1, name, plain));
            expected.ownerData = HeaderOf(owned).ownerData;
            expected.ownerFlag = HeaderOf(owned).ownerFlag;
            EXPECT_EQ(EncodeChunkHeader(HeaderOf(turned)), EncodeChunkHeader(expected));
        }
        Bytes placed = FileWithExtras(kind);
        std::fill_n(placed.begin() + chunk_header::kOwnerData, 17, std::byte{0});
        EXPECT_EQ(OriginOf(TurnedBy(1, name, placed)), (PixelPosition{250, 120}));
        EXPECT_EQ(Losses(), Texts{});
    }
}

TEST_F(KeptExtras, AFileWithoutAnyIsWrittenAsEver) {
    for (const EWordKind kind : kAllKinds) {
        const std::wstring name = WordNameOf(kind);
        m_request.keepExtras = false;
        const Bytes plain = TurnedBy(1, name, FileWithExtras(kind));
        for (const std::wstring& under : {name, name + L".9wPCoef"}) {
            m_request.keepExtras = false;
            const Bytes turned = TurnedBy(3, under, plain);
            m_request.keepExtras = true;
            EXPECT_TRUE(TurnedBy(3, under, plain) == turned) << static_cast<int>(kind);
            EXPECT_FALSE(turned.empty());
        }
    }
}

TEST_F(KeptExtras, ExtraWordsAreCutAndFilledWithTheirPixels) {
    const Bytes file = FileWithExtras(EWordKind::Chroma);
    for (const PixelSize& size : {PixelSize{10, 7}, {300, 200}, {50, 5}, {3, 140}})
        for (const std::uint32_t code : {1U, 2U, 3U}) {
            m_request.size = size;
            const Bytes turned = TurnedBy(code, L"Cab.9wcoef", file);
            EXPECT_EQ(ExtraWordsOf(turned), TurnedExtraWords(size, code));
            EXPECT_EQ(OriginOf(turned), (PixelPosition{250, 120}));
            EXPECT_EQ(Losses(), Texts{});
        }
}

// The layout with two stores goes by the name only where the source has no extra words.
TEST_F(KeptExtras, AreKeptUnderTheNameOfTheLayoutToo) {
    const Bytes file = FileWithExtras(EWordKind::Chroma);
    EXPECT_TRUE(TurnedBy(1, L"Cab.9wcoef.9wPCoef", file) == TurnedBy(1, L"Cab.9wcoef", file));
    EXPECT_EQ(Losses(), Texts{});
}

// The name tells the third extension in the load's order, and the second in the export's.
TEST_F(KeptExtras, OwnerAndOriginGoFromKindToKind) {
    const Bytes turned = TurnedBy(1, L"Cab.3wcoef.12wcoef", FileWithExtras(EWordKind::Brightness));
    EXPECT_EQ(Problems(), Texts{});
    EXPECT_EQ(Losses(), Texts{});
    EXPECT_EQ(HeaderOf(turned).fileKind, 2);
    EXPECT_EQ(HeaderOf(turned).ownerData, kOwnerName);
    EXPECT_EQ(HeaderOf(turned).ownerFlag, kOwnerFlag);
    EXPECT_EQ(OriginOf(turned), (PixelPosition{250, 120}));
}

// ---- extra words that are not whole ----

/// The first record of the part for extra words, of the chunk at (250, 120).
std::size_t ExtraRecordAt(const Bytes& file) { return Get(file, chunk_header::kDirectoryOffset); }

TEST_F(KeptExtras, ADamagedChunkOfExtraWordsIsNamedAndTheOthersAreKept) {
    Bytes file = FileWithExtras(EWordKind::Chroma);
    Set(file, ExtraRecordAt(file) + chunk_record::kPlaneSizes, 0);
    EXPECT_EQ(TurnedBy(2, L"Cab.9wcoef", file), Bytes{});
    const Texts told{"is damaged: 1 of its chunks could not be read"};
    EXPECT_EQ(Problems(), told);
    m_request.lenient = true;
    std::vector<std::uint16_t> expected = TurnedExtraWords({40, 30}, 2);
    for (std::size_t y = 22; y < 30; ++y) // of 6 × 8 words at the first corner, turned to the last
        for (std::size_t x = 34; x < 40; ++x)
            expected[y * 40 + x] = 0;
    EXPECT_EQ(ExtraWordsOf(TurnedBy(2, L"Cab.9wcoef", file)), expected);
    EXPECT_EQ(Problems(), told);
}

TEST_F(KeptExtras, PixelsWithoutAnExtraWordAreNamedWhereTheyAreKept) {
    Bytes file = FileWithExtras(EWordKind::Chroma);
    Set(file, ExtraRecordAt(file) + chunk_record::kX, 260); // onto its neighbour, 6 × 8
    EXPECT_EQ(TurnedBy(2, L"Cab.9wcoef", file), Bytes{});
    EXPECT_EQ(Problems(), Texts{"is incomplete: 48 pixels have no extra word"});
    EXPECT_EQ(TurnedBy(2, L"Cab.9wcoef.9wPCoef", file), Bytes{});
    EXPECT_EQ(Problems(), Texts{"is incomplete: 48 pixels have no extra word"});
    m_request.keepExtras = false;
    EXPECT_NE(TurnedBy(2, L"Cab.9wcoef", file), Bytes{});
    EXPECT_EQ(Problems(), Texts{});
    for (const bool areKept : {false, true}) {
        std::istringstream stream = StreamOf(file);
        const CTransferReport report;
        EXPECT_EQ(LoadStoredWordCoef(EWordKind::Chroma, stream, 1, {areKept, {}}).status, S_OK);
        EXPECT_EQ(report.MissingExtraWords(), 48U);
    }
}

TEST_F(KeptExtras, WithoutADirectoryOfExtraWordsOwnerAndOriginAreKept) {
    Bytes file = FileWithExtras(EWordKind::Chroma);
    Set(file, chunk_header::kDirectoryOffset, 0xFFFFFFFF);
    EXPECT_EQ(TurnedBy(1, L"Cab.9wcoef", file), Bytes{});
    EXPECT_EQ(Problems().size(), 1U);
    m_request.lenient = true;
    const Bytes turned = TurnedBy(1, L"Cab.9wcoef", file);
    EXPECT_EQ(HeaderOf(turned).ownerData, kOwnerName);
    EXPECT_EQ(OriginOf(turned), (PixelPosition{250, 120}));
    EXPECT_EQ(ExtraWordsOf(turned), std::vector<std::uint16_t>(1200));
}

// A lenient run writes defaults for it; what it holds is not that of the written kind.
TEST_F(KeptExtras, OfAFileOfAnotherKindAreLostAndNamed) {
    m_request.lenient = true;
    m_request.size = PixelSize{20, 10};
    const Texts losses{"its extra words", "its owner name and flag", "its origin (250, 120)"};
    const Bytes chroma = FileWithExtras(EWordKind::Chroma);
    EXPECT_EQ(OriginOf(TurnedBy(1, L"Cab.3wcoef", chroma)), (PixelPosition{}));
    EXPECT_EQ(Losses(), losses);
    Bytes green = FileWithExtras(EWordKind::VirtualGreenChroma);
    green[chunk_header::kFileKind] = std::byte{1};
    EXPECT_EQ(OriginOf(TurnedBy(1, L"Cab.12wcoef", green)), (PixelPosition{}));
    EXPECT_EQ(Losses(), (Texts{losses[1], losses[2]}));
    m_request.wall = PixelSize{20, 10}; // their origins count for nothing
    EXPECT_NE(TurnedBy(1, L"Cab.3wcoef", chroma), Bytes{});
    EXPECT_NE(TurnedBy(1, L"Cab.12wcoef", green), Bytes{});
}

// What stands where a word file has its origin is a part of the pixels.
TEST_F(KeptExtras, AFloatFileUnderAWordNameHasNone) {
    CChromaCorrectCoef map;
    map.Resize(40, 30);
    const std::wstring path = m_source.File(L"made.9fcoef");
    ASSERT_EQ(FindExportKind(path)->save(map, path.c_str()), S_OK);
    const Bytes file = ReadFile(path);
    ASSERT_TRUE(RemoveFile(path));
    ASSERT_GE(file.size(), kChunkHeaderBytes);
    m_request.wall = PixelSize{40, 30};
    const Bytes turned = TurnedBy(1, L"Cab.9wcoef", file);
    EXPECT_EQ(Problems(), Texts{});
    EXPECT_EQ(Losses(), Texts{});
    EXPECT_EQ(OriginOf(turned), (PixelPosition{}));
    m_request.keepExtras = false;
    EXPECT_TRUE(TurnedBy(1, L"Cab.9wcoef", file) == turned);
}

// ---- memory ----

TEST_F(KeptExtras, ScarceMemoryIsNotTakenForDamage) {
    m_request.lenient = true;
    const Bytes file = FileWithExtras(EWordKind::Chroma);
    m_request.size = PixelSize{2000, 1000};
    for (const wchar_t* name : {L"Cab.9wcoef", L"Cab.9wcoef.9wPCoef"}) {
        const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + 2000 * 1000 * 20 - 1);
        EXPECT_EQ(TurnedBy(1, name, file), Bytes{});
        EXPECT_EQ(Problems(), Texts{"not enough memory for 2000 x 1000 pixels"});
    }
    // The words alone would fit, and so would a file of the size that does not keep any.
    m_request.keepExtras = false;
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + 2000 * 1000 * 20 - 1);
    EXPECT_NE(TurnedBy(1, L"Cab.9wcoef", file), Bytes{});
}

// ---- the savers' answers ----

/// The stored way's answer, written at the stream's position.
Status WriteStored(const Bytes& file, std::ostream& stream,
                   const std::optional<PixelSize>& wall = {}) {
    std::istringstream source = StreamOf(file);
    const SStoredLoad load = LoadStoredWordCoef(EWordKind::Chroma, source, 1, {true, wall});
    EXPECT_EQ(load.status, S_OK);
    return load.coef->WriteTurned(stream, {40, 30}, 1, 1);
}

TEST_F(KeptExtras, StatusesOfTheStoredWay) {
    const Bytes file = FileWithExtras(EWordKind::Chroma);
    std::stringstream whole;
    ASSERT_EQ(WriteStored(file, whole), S_OK);
    EXPECT_EQ(whole.tellp(), static_cast<std::streamoff>(whole.str().size()));
    std::stringstream outside;
    EXPECT_EQ(WriteStored(file, outside, PixelSize{289, 150}), E_COEF_INVALIDARG);
    EXPECT_EQ(outside.str(), "");
    for (std::size_t room = 0; room < whole.str().size(); room += 61) {
        CFullDisk disk(room);
        EXPECT_EQ(WriteStored(file, disk), E_FAIL) << room;
    }
}

TEST_F(KeptExtras, ExtraWordsAreFoundInAStreamBehindOtherContent) {
    const Bytes file = FileWithExtras(EWordKind::Chroma);
    std::stringstream alone;
    ASSERT_EQ(WriteStored(file, alone), S_OK);
    std::stringstream stream;
    stream << std::string(1000, 'b');
    ASSERT_EQ(WriteStored(file, stream), S_OK);
    Bytes expected = AsBytes(alone.str());
    Set(expected, chunk_header::kDirectoryOffset,
        Get(expected, chunk_header::kDirectoryOffset) + 1000);
    EXPECT_TRUE(AsBytes(stream.str().substr(1000)) == expected);
}

// A header leads to the last byte of 4 GiB and no further.
TEST_F(KeptExtras, ExtraWordsThatNoHeaderLeadsToFailTheFile) {
    const Bytes file = FileWithExtras(EWordKind::Chroma);
    std::stringstream alone;
    ASSERT_EQ(WriteStored(file, alone), S_OK);
    Bytes expected = AsBytes(alone.str());
    const std::streamoff start =
        std::streamoff{0xFFFFFFFF} - Get(expected, chunk_header::kDirectoryOffset);
    CFarBuffer last(start);
    std::iostream reachable(&last);
    EXPECT_EQ(WriteStored(file, reachable), S_OK);
    Set(expected, chunk_header::kDirectoryOffset, 0xFFFFFFFF);
    EXPECT_TRUE(AsBytes(last.str()) == expected);
    CFarBuffer past(start + 1);
    std::iostream unreachable(&past);
    EXPECT_EQ(WriteStored(file, unreachable), E_FAIL);
}

TEST_F(KeptExtras, StatusesOfTheMapsWay) {
    const std::wstring path = m_target.File(L"out.9wcoef");
    CChromaCorrectCoef map;
    map.Resize(40, 30);
    SWordExtras extras;
    const auto save = [&](const wchar_t* to, const std::optional<PixelSize>& wall = {}) {
        return SaveWordCoefFile(EWordKind::Chroma, map, to, extras, 2, wall);
    };
    EXPECT_EQ(save(path.c_str()), E_COEF_INVALIDARG); // no header
    std::istringstream stream = StreamOf(FileWithExtras(EWordKind::Chroma));
    ASSERT_EQ(LoadWordCoefFile(EWordKind::Chroma, map, stream, extras), S_OK);
    EXPECT_EQ(save(nullptr), E_COEF_INVALIDARG);
    EXPECT_EQ(save(path.c_str(), PixelSize{289, 150}), E_COEF_INVALIDARG);
    EXPECT_FALSE(FileExists(path));
    EXPECT_EQ(save(m_target.File(L"none/out.9wcoef").c_str()), E_COEF_OPENFAILED);
    EXPECT_EQ(save(path.c_str(), PixelSize{290, 150}), S_OK);
    EXPECT_EQ(OriginOf(ReadFile(path)), (PixelPosition{}));
    map.Reset();
    EXPECT_EQ(save(path.c_str()), E_COEF_INVALIDARG);
    std::istringstream empty;
    EXPECT_EQ(LoadWordCoefFile(EWordKind::Chroma, map, empty, extras), E_COEF_BADFORMAT);
    EXPECT_FALSE(extras.header);
    EXPECT_EQ(extras.words, nullptr);
    EXPECT_TRUE(RemoveFile(path));
}

} // namespace
} // namespace trevolt
