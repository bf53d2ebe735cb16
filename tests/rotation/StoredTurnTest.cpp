// Files turned in their own elements, beside the same files turned through maps as the dialog does it.
#include <atomic>
#include <bit>
#include <cstdint>
#include <random>

#include <gtest/gtest.h>

#include "app/rotation/StoredKinds.h"
#include "formats/BinaryCoefKind.h"
#include "platform/FileSystem.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/Streams.h"
#include "trevolt/CoefObjects.h"
#include "trevolt/CoefRotation.h"
#include "trevolt/FileKinds.h"
#include "trevolt/FolderRotation.h"

namespace trevolt {
namespace {

using namespace test;

/// Values of every kind that a float can hold: NaNs with payloads, infinities, denormals, what wraps.
class CWildPixels {
  public:
    SMatrixCoef operator()(std::int32_t /*x*/, std::int32_t /*y*/) {
        SMatrixCoef pixel;
        for (float& value : pixel.m)
            value = m_random() % 4 == 0
                        ? std::bit_cast<float>(static_cast<std::uint32_t>(m_random()))
                        : static_cast<float>(m_random() % 70000) / 65535.0F - 0.01F;
        return pixel;
    }

  private:
    std::minstd_rand m_random{7};
};

class CSilentListener : public CRotationListener {
  public:
    void OnFile(const SFileOutcome& outcome, std::size_t /*done*/, std::size_t /*count*/) override {
        problems.insert(problems.end(), outcome.problems.begin(), outcome.problems.end());
        size = outcome.size;
        turnedSize = outcome.turnedSize;
    }

    std::vector<std::string> problems;
    PixelSize size;
    PixelSize turnedSize;
};

class StoredTurn : public testing::Test {
  protected:
    StoredTurn() {
        m_request.sourceFolder = m_source.Path();
        m_request.targetFolder = m_target.Path();
    }

    /// Adds a file of the kind that its name tells, with wild values.
    void AddWild(const std::wstring& name, const PixelSize& size) {
        CChromaCorrectCoef map;
        map.Resize(static_cast<std::int32_t>(size.width), static_cast<std::int32_t>(size.height));
        PaintMap(map, CWildPixels());
        ASSERT_EQ(FindExportKind(name)->save(map, m_source.File(name).c_str()), S_OK);
    }

    bool IsTurnedInItsElements(const std::wstring& name) const {
        const SStoredKind* const kind = FindStoredKind(name);
        std::istringstream stream = StreamOf(ReadFile(m_source.File(name)));
        return kind != nullptr && kind->load(stream, 1) != nullptr;
    }

    /// The bytes that the dialog's way makes of the file: a map of the size, loaded, turned, saved.
    Bytes ThroughMaps(const std::wstring& name, const PixelSize& size) const {
        CChromaCorrectCoef map;
        map.Resize(static_cast<std::int32_t>(size.width), static_cast<std::int32_t>(size.height));
        DropStatus(
            FindLoadKind(name)->load(map, m_source.File(name).c_str())); // as the dialog does
        CChromaCorrectCoef turned;
        TurnMap(map, map.Width(), map.Height(), m_request.angle.code, turned);
        const CTemporaryFolder folder;
        const std::wstring path = folder.File(ExportName(name, m_request.angle.text));
        EXPECT_EQ(FindExportKind(name)->save(turned, path.c_str()), S_OK);
        return ReadFile(path);
    }

    /// Turns the one file of the source folder on `jobs` threads.
    Bytes Rotated(const std::wstring& name, std::size_t jobs) {
        m_request.jobs = jobs;
        m_listener = {};
        const SRotationOutcome outcome = RotateFolder(m_request, m_interrupted, m_listener);
        EXPECT_EQ(outcome.written, 1U) << outcome.error;
        return outcome.written == 1
                   ? ReadFile(m_target.File(ExportName(name, m_request.angle.text)))
                   : Bytes();
    }

    /// Both ways make the same bytes, by every angle and with one thread and three.
    void ExpectBothWays(const std::wstring& name, const PixelSize& ownSize) {
        for (const SAngle& angle : kAngles) {
            m_request.angle = angle;
            const PixelSize size = m_request.size.value_or(ownSize);
            SCOPED_TRACE(testing::Message()
                         << std::string(name.begin(), name.end()) << " of " << ownSize.width
                         << " x " << ownSize.height << " as " << size.width << " x " << size.height
                         << " by " << angle.code);
            const Bytes expected = ThroughMaps(name, size);
            for (const std::size_t jobs : {1U, 3U})
                ASSERT_TRUE(Rotated(name, jobs) == expected) << jobs;
            EXPECT_EQ(m_listener.size, size);
            EXPECT_EQ(m_listener.turnedSize,
                      CQuarterTurn(angle.code, size.width, size.height).TurnedSize());
        }
    }

    CTemporaryFolder m_source;
    CTemporaryFolder m_target;
    SRotationRequest m_request;
    std::atomic<bool> m_interrupted{false};
    CSilentListener m_listener;
};

/// Names of the eight kinds that store elements.
const std::vector<std::wstring>& StoredNames() {
    static const std::vector<std::wstring> names{L"a.9fcoef", L"a.3fcoef", L"a.9bcoef",
                                                 L"a.3bcoef", L"a.9wcoef", L"a.3wcoef",
                                                 L"a.4wcoef", L"a.12wcoef"};
    return names;
}

TEST_F(StoredTurn, MakesTheBytesOfTheMapsWay) {
    for (const std::wstring& name : StoredNames()) {
        for (const PixelSize& size :
             {PixelSize{1, 1}, {1, 19}, {256, 128}, {257, 129}, {130, 260}}) {
            AddWild(name, size);
            ASSERT_TRUE(IsTurnedInItsElements(name));
            ExpectBothWays(name, size);
            ASSERT_FALSE(HasFatalFailure());
        }
        ASSERT_TRUE(RemoveFile(m_source.File(name)));
    }
}

// A block of a grid holds 2^18 elements, a piece of a turned file 4 MiB.
TEST_F(StoredTurn, MakesTheBytesOfTheMapsWayOverBlocksAndPieces) {
    for (const std::wstring& name : StoredNames()) {
        const PixelSize size{513, 512};
        AddWild(name, size);
        ASSERT_TRUE(IsTurnedInItsElements(name));
        m_request.angle = kAngles[0];
        ASSERT_TRUE(Rotated(name, 2) == ThroughMaps(name, size))
            << std::string(name.begin(), name.end());
        ASSERT_TRUE(RemoveFile(m_source.File(name)));
    }
}

TEST_F(StoredTurn, CutsAndFillsAsAMapDoes) {
    for (const std::wstring& name : StoredNames()) {
        for (const PixelSize& size : {PixelSize{300, 140}, {200, 100}, {100, 200}, {261, 131}}) {
            AddWild(name, {260, 130});
            ASSERT_TRUE(IsTurnedInItsElements(name));
            m_request.size = size;
            ExpectBothWays(name, {260, 130});
            ASSERT_FALSE(HasFatalFailure());
        }
        ASSERT_TRUE(RemoveFile(m_source.File(name)));
    }
}

// What is no kind's own plain file: text, two extensions of which one loads and the other exports, a
// float file and a map's image under a word name.
TEST_F(StoredTurn, LeavesOtherFilesToTheMap) {
    const PixelSize size{40, 21};
    AddWild(L"a.cccoef", size);
    EXPECT_FALSE(IsTurnedInItsElements(L"a.cccoef"));
    ExpectBothWays(L"a.cccoef", size);
    ASSERT_TRUE(RemoveFile(m_source.File(L"a.cccoef")));
    AddWild(L"a.3bcoef", size);
    ASSERT_TRUE(ReplaceWith(m_source.File(L"a.3bcoef"), m_source.File(L"a.3bcoef.12wcoef")));
    EXPECT_FALSE(IsTurnedInItsElements(L"a.3bcoef.12wcoef"));
    ExpectBothWays(L"a.3bcoef.12wcoef", size);
}

TEST_F(StoredTurn, LeavesFloatFilesUnderWordNamesToTheMap) {
    const PixelSize size{40, 21};
    for (const auto& [words, floats] :
         {std::pair{L"a.9wcoef", L"a.9fcoef"}, {L"a.3wcoef", L"a.3fcoef"}}) {
        AddWild(floats, size);
        WriteFile(m_source.File(words), ReadFile(m_source.File(floats)));
        ASSERT_TRUE(RemoveFile(m_source.File(floats)));
        EXPECT_FALSE(IsTurnedInItsElements(words));
        ExpectBothWays(words, size);
        ASSERT_TRUE(RemoveFile(m_source.File(words)));
    }
}

/// A map's image of two pixels: a field that counts for nothing, the size, the elements and the gains,
/// each behind its length.
Bytes MapImage() {
    Bytes image(16);
    std::memcpy(image.data(), kRawMapMagic.data(), image.size());
    const Bytes fields = MakeBytes({0, 0, 0, 0, 2, 0, 1, 0, 96, 0, 0, 0, 0, 0, 0, 0});
    image.insert(image.end(), fields.begin(), fields.end());
    CWildPixels pixels;
    for (std::int32_t x = 0; x < 2; ++x) {
        const auto pixel = std::bit_cast<std::array<std::byte, 48>>(pixels(x, 0));
        image.insert(image.end(), pixel.begin(), pixel.end());
    }
    const Bytes gains = MakeBytes({8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    image.insert(image.end(), gains.begin(), gains.end());
    return image;
}

TEST_F(StoredTurn, LeavesMapImagesUnderWordNamesToTheMap) {
    for (const wchar_t* name : {L"a.9wcoef", L"a.3wcoef"}) {
        WriteFile(m_source.File(name), MapImage());
        EXPECT_FALSE(IsTurnedInItsElements(name));
        m_request.size = PixelSize{40, 21};
        m_request.lenient = true;
        ExpectBothWays(name, {40, 21});
        ASSERT_TRUE(RemoveFile(m_source.File(name)));
    }
}

TEST_F(StoredTurn, LeavesExtraWordFilesToTheMap) {
    const auto object = CreateCoefObject(EWordKind::Chroma);
    ASSERT_EQ(object->Create(20, 10), S_OK);
    ASSERT_EQ(SaveWholeStoreC(*object, m_source.File(L"a.9wcoef").c_str()), S_OK);
    EXPECT_FALSE(IsTurnedInItsElements(L"a.9wcoef"));
    ExpectBothWays(L"a.9wcoef", {20, 10});
}

TEST_F(StoredTurn, KeepsTheLayoutThatTheEndingDecides) {
    const std::wstring name = L"a.9wcoef.9wPCoef";
    AddWild(L"a.9wcoef", {20, 10});
    WriteFile(m_source.File(name), ReadFile(m_source.File(L"a.9wcoef")));
    ASSERT_TRUE(RemoveFile(m_source.File(L"a.9wcoef")));
    EXPECT_EQ(FindStoredKind(name), nullptr);
    ExpectBothWays(name, {20, 10});
}

TEST_F(StoredTurn, TakesOriginsAsTheMapDoes) {
    const auto object = CreateCoefObject(EWordKind::Brightness);
    ASSERT_EQ(object->Create(600, 400), S_OK);
    for (std::uint32_t y = 0; y < 400; y += 3)
        for (std::uint32_t x = 0; x < 600; ++x)
            object->SetPixelChannel(static_cast<std::int32_t>(x % 3), x, y,
                                    static_cast<float>(x * y % 1000) / 1000.0F, 0);
    const SPixelRect rect{37, 121, 350, 300};
    ASSERT_EQ(object->ExportCoef(m_source.File(L"a.3wcoef").c_str(), rect, nullptr, nullptr), S_OK);
    ASSERT_TRUE(IsTurnedInItsElements(L"a.3wcoef"));
    ExpectBothWays(L"a.3wcoef", {rect.Width(), rect.Height()});
    m_request.size = PixelSize{400, 150};
    ExpectBothWays(L"a.3wcoef", {rect.Width(), rect.Height()});
}

// A chunk is missing, or damaged: the strict way writes nothing, the lenient one what a map holds.
TEST_F(StoredTurn, LeavesWhatIsNotWholeToTheMap) {
    constexpr std::size_t kRecordAt = 168;
    constexpr std::size_t kRecordBytes = 20 + 9 * 4;
    struct SDamage {
        std::size_t at;
        std::size_t count;
        const char* problem;
    };
    AddWild(L"a.9wcoef", {300, 140});
    const Bytes whole = ReadFile(m_source.File(L"a.9wcoef"));
    for (const SDamage& damage :
         {SDamage{kRecordAt + 3 * kRecordBytes, kRecordBytes,
                  "is incomplete: 528 pixels have no data"},
          SDamage{kRecordAt + 20, 4, "is damaged: 1 of its chunks could not be read"}}) {
        Bytes file = whole;
        std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(damage.at), damage.count,
                    std::byte{0});
        WriteFile(m_source.File(L"a.9wcoef"), file);
        EXPECT_FALSE(IsTurnedInItsElements(L"a.9wcoef"));
        m_request.lenient = false;
        EXPECT_EQ(RotateFolder(m_request, m_interrupted, m_listener).written, 0U);
        ASSERT_FALSE(m_listener.problems.empty());
        EXPECT_EQ(m_listener.problems.back(), damage.problem);
        EXPECT_TRUE(m_target.Names().empty());
        m_request.lenient = true;
        ExpectBothWays(L"a.9wcoef", {300, 140});
        for (const std::wstring& name : m_target.Names())
            ASSERT_TRUE(RemoveFile(m_target.File(name)));
    }
}

TEST_F(StoredTurn, LeavesDamagedBodiesToTheMap) {
    for (const wchar_t* name : {L"a.9fcoef", L"a.3fcoef", L"a.9bcoef", L"a.3bcoef"}) {
        AddWild(name, {30, 14});
        Bytes file = ReadFile(m_source.File(name));
        file[file.size() - 1] ^= std::byte{1};
        WriteFile(m_source.File(name), file);
        EXPECT_FALSE(IsTurnedInItsElements(name));
        m_request.lenient = true;
        ExpectBothWays(name, {30, 14});
        EXPECT_EQ(
            m_listener.problems.back(),
            "cannot be read: E_FAIL (0x80004005): the content is damaged or does not match its "
            "header");
        ASSERT_TRUE(RemoveFile(m_source.File(name)));
    }
}

} // namespace
} // namespace trevolt
