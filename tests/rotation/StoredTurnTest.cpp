// Files turned in their own elements, beside the same files turned through maps as the dialog does it.
#include <atomic>
#include <bit>
#include <cstdint>
#include <cstring>
#include <random>

#include <gtest/gtest.h>

#include "app/rotation/StoredKinds.h"
#include "app/rotation/WordExtras.h"
#include "calibuf/CaliOperation.h"
#include "common/LittleEndian.h"
#include "formats/BinaryCoefKind.h"
#include "platform/FileSystem.h"
#include "tests/support/BudgetLimit.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/Streams.h"
#include "trevolt/CoefObjects.h"
#include "trevolt/CoefRotation.h"
#include "trevolt/FileKinds.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/RotationRun.h"
#include "trevolt/TransferProblems.h"

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
        notes.insert(notes.end(), outcome.notes.begin(), outcome.notes.end());
        size = outcome.size;
        turnedSize = outcome.turnedSize;
    }

    std::vector<std::string> problems;
    std::vector<std::string> notes;
    PixelSize size;
    PixelSize turnedSize;
};

/// In one call: the library's comparison of std::byte goes through them one by one.
bool IsSame(const Bytes& left, const Bytes& right) {
    return left.size() == right.size() &&
           (left.empty() || std::memcmp(left.data(), right.data(), left.size()) == 0);
}

class StoredTurn : public testing::Test {
  protected:
    StoredTurn() {
        m_request.sources = {m_source.Path()};
        m_request.existing = EExistingOutput::Replace; // tests run again and again
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
        return kind != nullptr && kind->load(stream, 1, {}).coef != nullptr;
    }

    /// What the way through a map tells of the file, and the bytes that it makes.
    struct SThroughMaps {
        std::vector<std::string> problems;
        Bytes turned;
    };

    /// A map of the size, loaded, turned, saved.
    SThroughMaps ThroughMaps(const std::wstring& name, const PixelSize& size) const {
        SThroughMaps result;
        CChromaCorrectCoef map;
        SWordExtras extras;
        map.Resize(static_cast<std::int32_t>(size.width), static_cast<std::int32_t>(size.height));
        {
            const CTransferReport report;
            std::istringstream stream = StreamOf(ReadFile(m_source.File(name)));
            if (!m_request.keepExtras) {
                const Status status = FindLoadKind(name)->loadStream(map, stream);
                result.problems = DescribeReadProblems(status, report);
            } else {
                const Status status =
                    LoadWordCoefFile(*FindWordKind(*FindLoadKind(name)), map, stream, extras);
                result.problems = DescribeReadProblems(status, report);
                for (std::string& problem : DescribeExtraWordProblems(report))
                    result.problems.push_back(std::move(problem));
            }
        }
        CChromaCorrectCoef turned;
        TurnMap(map, map.Width(), map.Height(), m_request.angle.code, turned);
        const CTemporaryFolder folder;
        const std::wstring path = folder.File(ExportName(name, m_request.angle.text));
        const Status saved = extras.header ? SaveWordCoefFile(*FindWordKind(*FindExportKind(name)),
                                                              turned, path.c_str(), extras,
                                                              m_request.angle.code, m_request.wall)
                                           : FindExportKind(name)->save(turned, path.c_str());
        EXPECT_EQ(saved, S_OK);
        result.turned = ReadFile(path);
        return result;
    }

    /// Turns the one file of the source folder on `jobs` threads.
    Bytes Rotated(const std::wstring& name, std::size_t jobs) {
        m_request.jobs = jobs;
        m_listener = {};
        const SRotationOutcome outcome = RunRotation(m_request, m_interrupted, m_listener);
        EXPECT_EQ(outcome.written, 1U) << testing::PrintToString(outcome.errors);
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
            const SThroughMaps expected = ThroughMaps(name, size);
            for (const std::size_t jobs : {1U, 3U}) {
                ASSERT_TRUE(IsSame(Rotated(name, jobs), expected.turned)) << jobs;
                EXPECT_EQ(m_listener.problems, expected.problems) << jobs;
            }
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
        ASSERT_TRUE(Rotated(name, 2) == ThroughMaps(name, size).turned)
            << std::string(name.begin(), name.end());
        ASSERT_TRUE(RemoveFile(m_source.File(name)));
    }
}

TEST_F(StoredTurn, CutsAndFillsAsAMapDoes) {
    for (const std::wstring& name : StoredNames()) {
        AddWild(name, {260, 130});
        ASSERT_TRUE(IsTurnedInItsElements(name));
        for (const PixelSize& size : {PixelSize{300, 140}, {200, 100}, {100, 200}, {261, 131}}) {
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

/// Of an object with content, in one file a writer: its whole store, rectangles, bands of which the
/// second is moved by 28 rows, and where there is one the layout with extra words.
constexpr std::array<const char*, 5> kWriters{"whole store", "rectangle", "whole rectangle",
                                              "bands", "extra words"};

/// `owner` has a name and, in its first byte, a flag; null for none.
Status WriteBy(const std::string& writer, CColorCorrectCoef& object, const wchar_t* path,
               const std::array<std::byte, 16>* owner = nullptr) {
    const std::byte* const name = owner == nullptr ? nullptr : owner->data();
    const auto* const flag = reinterpret_cast<const std::uint8_t*>(name);
    if (writer == "whole store")
        return object.ExportCoefDefault(path);
    if (writer == "rectangle")
        return object.ExportCoef(path, {37, 121, 290, 150}, name, flag);
    if (writer == "whole rectangle")
        return object.ExportCoef(path, {0, 0, 300, 156}, name, flag);
    if (writer == "extra words")
        return SaveWholeStoreC(object, path);
    constexpr SPixelRect kWhole{0, 0, 300, 156};
    std::uint64_t directory = 0;
    std::uint64_t data = 0;
    const Status status =
        object.ExportCoefEx(path, {0, 0, 300, 128}, kWhole, directory, data, 0, name, flag);
    return Failed(status) ? status
                          : object.ExportCoefEx(path, {0, 100, 300, 128}, kWhole, directory, data,
                                                28, name, flag);
}

TEST_F(StoredTurn, TakesAFileOfEveryWriterAsWhole) {
    const std::pair<EWordKind, const wchar_t*> kinds[]{
        {EWordKind::Chroma, L"a.9wcoef"},
        {EWordKind::Brightness, L"a.3wcoef"},
        {EWordKind::VirtualGreenBrightness, L"a.4wcoef"},
        {EWordKind::VirtualGreenChroma, L"a.12wcoef"}};
    for (const auto& [kind, name] : kinds) {
        const auto object = CreateCoefObject(kind);
        object->SetFileKind(2); // of the virtual-green kinds
        ASSERT_EQ(object->Create(300, 156), S_OK);
        for (std::uint32_t x = 0; x < 300; ++x)
            object->SetPixelChannel(0, x, x % 156, 0.25F, 0);
        for (const std::string writer : kWriters) {
            if (writer == "extra words" && kind != EWordKind::Chroma)
                continue;
            SCOPED_TRACE(writer + " of kind " + std::to_string(static_cast<int>(kind)));
            ASSERT_EQ(WriteBy(writer, *object, m_source.File(name).c_str()), S_OK);
            std::vector<std::string> notes;
            if (writer == "bands")
                notes = {"2 of its chunks have a block index that is not that of the place"};
            EXPECT_FALSE(Rotated(name, 2).empty());
            EXPECT_EQ(m_listener.problems, std::vector<std::string>{});
            EXPECT_EQ(m_listener.notes, notes);
            EXPECT_EQ(ThroughMaps(name, {8, 8}).problems, std::vector<std::string>{});
        }
        ASSERT_TRUE(RemoveFile(m_source.File(name)));
    }
}

/// An object of 300 × 156 pixels with content, also in its extra words where it has some.
std::unique_ptr<CColorCorrectCoef> MixedObject(EWordKind kind) {
    auto object = CreateCoefObject(kind);
    object->SetFileKind(2); // of the virtual-green kinds
    EXPECT_EQ(object->Create(300, 156), S_OK);
    std::minstd_rand random{11};
    for (std::uint32_t y = 0; y < 156; ++y)
        for (std::uint32_t x = 0; x < 300; ++x) {
            object->SetPixelChannel(static_cast<std::int32_t>(random() % 3), x, y,
                                    static_cast<float>(random() % 256) / 256.0F, 0);
            if (kind != EWordKind::Chroma)
                continue;
            EXPECT_EQ(object->SetPixelExtraWord(x, y, static_cast<std::uint16_t>(random() % 900)),
                      S_OK);
        }
    return object;
}

// By every angle, at the file's own size and others, with and without a wall.
TEST_F(StoredTurn, KeepsExtrasAsTheMapsWayDoes) {
    const std::pair<EWordKind, const wchar_t*> kinds[]{
        {EWordKind::Chroma, L"a.9wcoef"},
        {EWordKind::Brightness, L"a.3wcoef"},
        {EWordKind::VirtualGreenBrightness, L"a.4wcoef"},
        {EWordKind::VirtualGreenChroma, L"a.12wcoef"}};
    std::array<std::byte, 16> owner{};
    for (std::size_t i = 0; i < owner.size(); ++i)
        owner[i] = static_cast<std::byte>(7 * i + 5);
    m_request.keepExtras = true;
    std::size_t calls = 0;
    for (const auto& [kind, name] : kinds) {
        const auto object = MixedObject(kind);
        for (const std::string writer : kWriters) {
            if (writer == "extra words" && kind != EWordKind::Chroma)
                continue;
            const bool isPart = writer == "rectangle";
            const PixelSize own = isPart ? PixelSize{253, 29} : PixelSize{300, 156};
            ASSERT_EQ(WriteBy(writer, *object, m_source.File(name).c_str(), &owner), S_OK);
            ASSERT_TRUE(IsTurnedInItsElements(name));
            const std::optional<PixelSize> sizes[]{std::nullopt, PixelSize{40, 170},
                                                   PixelSize{310, 20}};
            SCOPED_TRACE(writer);
            m_request.size = sizes[calls % std::size(sizes)];
            m_request.wall = calls % 2 == 0 ? std::nullopt : std::optional(PixelSize{390, 333});
            ExpectBothWays(name, own);
            EXPECT_EQ(m_listener.problems, std::vector<std::string>{});
            ASSERT_FALSE(HasFatalFailure());
            ++calls;
        }
        ASSERT_TRUE(RemoveFile(m_source.File(name)));
    }
}

TEST_F(StoredTurn, KeepsExtrasOfAPartAtItsPlaceAsTheMapsWayDoes) {
    const auto object = MixedObject(EWordKind::Chroma);
    const std::wstring made = m_source.File(L"made.9wPCoef");
    ASSERT_EQ(object->ExportCoef(made.c_str(), {37, 121, 290, 150}, nullptr, nullptr), S_OK);
    ASSERT_TRUE(ReplaceWith(made, m_source.File(L"a.9wcoef")));
    m_request.keepExtras = true;
    ExpectBothWays(L"a.9wcoef", {253, 29});
    m_request.wall = PixelSize{600, 420};
    ExpectBothWays(L"a.9wcoef", {253, 29});
    m_request.size = PixelSize{260, 200};
    ExpectBothWays(L"a.9wcoef", {253, 29});
}

TEST_F(StoredTurn, TakesAnImageInAFileAsWhole) {
    CCaliOperation<S9WordCoef> owner;
    ASSERT_EQ(owner.Buffer().Allocate(300, 156), S_OK);
    Bytes image(static_cast<std::size_t>(owner.Buffer().MaxMemoryImageBytes()));
    std::uint64_t count = 0;
    ASSERT_EQ(owner.Buffer().SaveToMemory(image.data(), 0, 0, &count), S_OK);
    image.resize(static_cast<std::size_t>(count));
    WriteFile(m_source.File(L"a.9wcoef"), image);
    for (const bool keepsExtras : {false, true}) {
        m_request.keepExtras = keepsExtras;
        ExpectBothWays(L"a.9wcoef", {300, 156});
        EXPECT_EQ(m_listener.problems, std::vector<std::string>{});
    }
}

// ---- files that are not whole ----

// The layout of `.9wcoef` and `.3wcoef` files.
constexpr std::size_t kDirectoryAt = 168;
constexpr std::size_t kDirectoryOffsetAt = 86;

/// A word file whose bytes are changed field by field.
class CWordFileBytes {
  public:
    CWordFileBytes(Bytes& file, const std::wstring& name)
        : m_file(file),
          m_recordBytes(name.ends_with(L".9wcoef") || name.ends_with(L".3wcoef") ? 56 : 68) {}

    std::uint32_t Count() const { return Get(36); }
    void Set(std::size_t at, std::uint32_t value) {
        StoreLittle<std::uint32_t>(m_file.data() + at, value);
    }
    std::uint32_t Get(std::size_t at) const {
        return LoadLittle<std::uint32_t>(m_file.data() + at);
    }
    /// Where the field at `offset` of a record stands.
    std::size_t At(std::size_t record, std::size_t offset) const {
        return kDirectoryAt + record * m_recordBytes + offset;
    }
    void Move(std::size_t record, std::uint32_t x, std::uint32_t y) {
        Set(At(record, 4), x);
        Set(At(record, 8), y);
    }
    void Clear(std::size_t record) {
        std::fill_n(m_file.begin() + static_cast<std::ptrdiff_t>(At(record, 0)), m_recordBytes,
                    std::byte{0});
    }
    void CutTo(std::size_t count) { m_file.resize(std::min(m_file.size(), count)); }
    std::size_t Size() const { return m_file.size(); }

  private:
    Bytes& m_file;
    std::size_t m_recordBytes;
};

struct SWordDamage {
    const char* name;
    void (*change)(CWordFileBytes& file);
};

/// Of a file of 259 × 130 pixels: whole blocks or parts of them at (0, 0), (0, 128), (256, 0) and
/// (256, 128), in this order.
constexpr SWordDamage kWordDamages[]{
    {"none", [](CWordFileBytes&) {}},
    {"first chunk damaged", [](CWordFileBytes& f) { f.Set(f.At(0, 20), 0); }},
    {"last chunk damaged", [](CWordFileBytes& f) { f.Set(f.At(3, 20), 0); }},
    {"impossible chunk", [](CWordFileBytes& f) { f.Set(f.At(1, 12), 257); }},
    {"chunk past every size", [](CWordFileBytes& f) { f.Set(f.At(1, 16), 0xFFFFFFFF); }},
    {"no first chunk", [](CWordFileBytes& f) { f.Clear(0); }},
    {"no last chunk", [](CWordFileBytes& f) { f.Clear(3); }},
    {"no chunks", [](CWordFileBytes& f) { f.Set(36, 0); }},
    {"more chunks than bytes", [](CWordFileBytes& f) { f.Set(36, 0x7FFFFFFF); }},
    {"second over the first", [](CWordFileBytes& f) { f.Move(1, 100, 50); }},
    {"first over the others", [](CWordFileBytes& f) { f.Move(0, 60, 60); }},
    {"behind the width", [](CWordFileBytes& f) { f.Move(3, 300, 0); }},
    {"behind the blocks", [](CWordFileBytes& f) { f.Move(3, 512, 0); }},
    {"behind the grid", [](CWordFileBytes& f) { f.Move(2, 0xFFFFFFFF, 0xFFFFFFFF); }},
    {"before the origin",
     [](CWordFileBytes& f) {
         f.Set(20, 2);
         f.Set(24, 1);
     }},
    {"cut to the directory", [](CWordFileBytes& f) { f.CutTo(f.At(4, 0)); }},
    {"cut in the directory", [](CWordFileBytes& f) { f.CutTo(f.At(3, 9)); }},
    {"cut in the first chunk", [](CWordFileBytes& f) { f.CutTo(f.At(4, 0) + 100); }},
    {"cut in the last chunk", [](CWordFileBytes& f) { f.CutTo(f.Size() - 1); }},
};

class StoredDamage : public StoredTurn {
  protected:
    void WriteSource(const std::wstring& name, const Bytes& file) {
        WriteFile(m_source.File(name), file);
    }

    /// The strict way tells the same as the map's and writes nothing of what is not whole; the lenient
    /// one writes the same.
    void ExpectBothToldAndWritten(const std::wstring& name, const PixelSize& size) {
        const SThroughMaps expected = ThroughMaps(name, size);
        const bool isWhole = expected.problems.empty();
        m_request.jobs = m_calls % 2 == 0 ? 1 : 3;
        m_request.lenient = false;
        m_listener = {};
        EXPECT_EQ(RunRotation(m_request, m_interrupted, m_listener).written, isWhole ? 1U : 0U);
        EXPECT_EQ(m_listener.problems, expected.problems);
        EXPECT_EQ(m_target.Names().empty(), !isWhole);
        m_request.lenient = true;
        EXPECT_TRUE(Rotated(name, 4 - m_request.jobs) == expected.turned);
        EXPECT_EQ(m_listener.problems, expected.problems);
        ASSERT_TRUE(RemoveFile(m_target.File(ExportName(name, m_request.angle.text))));
    }

    /// By an angle that goes on from call to call, at the file's own size and three others.
    void ExpectDamageBothWays(const std::wstring& name, const PixelSize& size, const char* damage) {
        SCOPED_TRACE(testing::Message() << std::string(name.begin(), name.end()) << ", " << damage);
        const PixelSize sizes[]{size, {300, 140}, {130, 200}, {20, 10}};
        const PixelSize& other = sizes[m_calls % std::size(sizes)];
        m_request.angle = kAngles[m_calls++ % kAngles.size()];
        m_request.size = other == size ? std::nullopt : std::optional(other);
        ExpectBothToldAndWritten(name, other);
    }

    std::size_t m_calls = 0;
};

TEST_F(StoredDamage, OfWordFilesIsToldAndWrittenAsByAMap) {
    const PixelSize size{259, 130};
    for (const wchar_t* name : {L"a.9wcoef", L"a.3wcoef", L"a.4wcoef", L"a.12wcoef"}) {
        AddWild(name, size);
        const Bytes whole = ReadFile(m_source.File(name));
        for (const SWordDamage& damage : kWordDamages) {
            Bytes file = whole;
            CWordFileBytes fields(file, name);
            damage.change(fields);
            WriteSource(name, file);
            ASSERT_NE(FindStoredKind(name), nullptr);
            ExpectDamageBothWays(name, size, damage.name);
            ASSERT_FALSE(HasFatalFailure());
        }
        ASSERT_TRUE(RemoveFile(m_source.File(name)));
    }
}

TEST_F(StoredDamage, OfBinaryFilesIsToldAndWrittenAsByAMap) {
    const PixelSize size{30, 14};
    for (const wchar_t* name : {L"a.9fcoef", L"a.3fcoef", L"a.9bcoef", L"a.3bcoef"}) {
        AddWild(name, size);
        const Bytes whole = ReadFile(m_source.File(name));
        for (const std::size_t at : {std::size_t{22}, std::size_t{24}, std::size_t{40},
                                     whole.size() / 2, whole.size() - 1}) {
            Bytes file = whole;
            file[at] ^= std::byte{1};
            WriteSource(name, file);
            const PixelSize own{30, at == 22 ? 15 : 14};
            ExpectDamageBothWays(name, own, "a bit");
            file.resize(at);
            WriteSource(name, file);
            m_request.size = size;
            ExpectBothToldAndWritten(name, size);
            ASSERT_FALSE(HasFatalFailure());
        }
        ASSERT_TRUE(RemoveFile(m_source.File(name)));
    }
}

TEST_F(StoredDamage, OfHeadersIsToldAndWrittenAsByAMap) {
    m_request.size = PixelSize{20, 10};
    for (const std::wstring& name : StoredNames()) {
        AddWild(name, {20, 10});
        const Bytes whole = ReadFile(m_source.File(name));
        for (const std::size_t count : {0U, 15U, 16U, 23U, 100U}) {
            WriteSource(name,
                        Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(count)));
            SCOPED_TRACE(count);
            ExpectBothToldAndWritten(name, {20, 10});
        }
        ASSERT_TRUE(RemoveFile(m_source.File(name)));
    }
}

/// A file with extra words of 259 × 130 pixels.
Bytes ExtraWordFile(const CTemporaryFolder& folder) {
    const auto object = CreateCoefObject(EWordKind::Chroma);
    EXPECT_EQ(object->Create(259, 130), S_OK);
    for (std::uint32_t x = 0; x < 259; ++x)
        object->SetPixelChannel(static_cast<std::int32_t>(x % 9), x, x % 130, 0.25F, 0);
    EXPECT_EQ(SaveWholeStoreC(*object, folder.File(L"extra").c_str()), S_OK);
    return ReadFile(folder.File(L"extra"));
}

class StoredExtraDamage : public StoredDamage, public testing::WithParamInterface<bool> {
  protected:
    StoredExtraDamage() { m_request.keepExtras = GetParam(); }
};

INSTANTIATE_TEST_SUITE_P(LostAndKept, StoredExtraDamage, testing::Bool());

TEST_P(StoredExtraDamage, OfEitherPartIsToldAsByAMap) {
    const CTemporaryFolder folder;
    const Bytes whole = ExtraWordFile(folder);
    const std::wstring name = L"a.9wcoef";
    for (const SWordDamage& damage : kWordDamages) {
        Bytes file = whole;
        CWordFileBytes fields(file, name);
        damage.change(fields);
        WriteSource(name, file);
        ExpectDamageBothWays(name, {259, 130}, damage.name);
    }
    Bytes longer = whole;
    longer.resize(whole.size() + 5);
    WriteSource(name, longer);
    ExpectDamageBothWays(name, {259, 130}, "bytes behind it");
    EXPECT_EQ(m_listener.problems,
              std::vector<std::string>{"is damaged: 5 bytes lie behind its last chunk"});
    const auto extraAt = LoadLittle<std::uint32_t>(whole.data() + kDirectoryOffsetAt);
    const auto damaged = [&](std::size_t at, std::uint32_t value) {
        Bytes file = whole;
        CWordFileBytes(file, name).Set(at, value);
        WriteSource(name, file);
        ExpectDamageBothWays(name, {259, 130}, "extra words");
    };
    damaged(kDirectoryOffsetAt, 167);
    damaged(kDirectoryOffsetAt, 168);
    damaged(kDirectoryOffsetAt, 0xFFFFFFFF);
    damaged(extraAt + 20, 0);          // the first chunk's only plane
    damaged(extraAt + 3 * 24 + 20, 0); // and that of the last
    damaged(extraAt + 4, 7);           // the first chunk's place
    damaged(extraAt + 2 * 24 + 8, 1);  // and another's
    damaged(extraAt + 24 + 14, 0);     // no rows
}

// But for origins and sizes that are too large: those are named before the pixels are looked at.
TEST_P(StoredExtraDamage, OfAnyByteIsToldAsByAMap) {
    const auto object = MixedObject(EWordKind::Chroma);
    const std::wstring made = m_source.File(L"made.9wPCoef");
    ASSERT_EQ(object->ExportCoef(made.c_str(), {250, 120, 270, 135}, nullptr, nullptr), S_OK);
    const Bytes whole = ReadFile(made);
    ASSERT_TRUE(RemoveFile(made));
    std::minstd_rand random{23};
    const auto extraAt = LoadLittle<std::uint32_t>(whole.data() + kDirectoryOffsetAt);
    const std::pair<std::size_t, std::size_t> parts[]{
        {16, 20}, {28, 90}, {168, 168 + 4 * 56}, {extraAt, extraAt + 4 * 24}, {0, whole.size()}};
    for (std::size_t call = 0; call < 40; ++call) {
        const auto& [begin, end] = parts[call % std::size(parts)];
        const std::size_t at = begin + random() % (end - begin);
        const bool isOrigin = at >= 20 && at < 28;
        if (isOrigin || at == 30 || at == 31 || at == 34 || at == 35)
            continue;
        Bytes file = whole;
        file[at] ^= static_cast<std::byte>(1 + random() % 255);
        WriteSource(L"a.9wcoef", file);
        m_request.size = PixelSize{20, 15};
        m_request.angle = kAngles[call % kAngles.size()];
        SCOPED_TRACE(at);
        ExpectBothToldAndWritten(L"a.9wcoef", {20, 15});
        ASSERT_FALSE(HasFailure());
    }
}

// Of a file that memory did not suffice for, not even a lenient run makes one of defaults.
TEST_F(StoredDamage, IsNotTakenForMemoryThatWasRefused) {
    m_request.lenient = true;
    m_request.size = PixelSize{8, 8};
    for (const wchar_t* name : {L"a.9wcoef", L"a.3bcoef"}) {
        AddWild(name, {300, 200});
        const std::uint64_t stored = std::uint64_t{300} * 200 * FindStoredKind(name)->elementBytes;
        const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + stored - 1);
        m_listener = {};
        EXPECT_EQ(RunRotation(m_request, m_interrupted, m_listener).written, 0U);
        EXPECT_EQ(m_listener.problems,
                  std::vector<std::string>{"not enough memory to read it whole"});
        ASSERT_TRUE(RemoveFile(m_source.File(name)));
    }
}

// Less memory than two maps take is enough for whatever is of a kind's own.
TEST_F(StoredDamage, IsTurnedWithoutMaps) {
    const PixelSize size{300, 200};
    constexpr std::uint64_t kTwoMaps = std::uint64_t{2} * 300 * 200 * (48 + 4);
    const auto expectTurned = [&](const std::wstring& name) {
        const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + kTwoMaps - 1);
        for (const std::size_t jobs : {1U, 2U})
            EXPECT_FALSE(Rotated(name, jobs).empty()) << std::string(name.begin(), name.end());
        ASSERT_TRUE(RemoveFile(m_source.File(name)));
    };
    m_request.lenient = true;
    for (const std::wstring& name : StoredNames()) {
        if (name == L"a.9fcoef") // one that is written in one piece takes three of its bodies
            continue;
        AddWild(name, size);
        const Bytes whole = ReadFile(m_source.File(name));
        expectTurned(name);
        WriteSource(name, Bytes(whole.begin(), whole.end() - 1));
        expectTurned(name);
    }
    AddWild(L"a.9wcoef", size);
    Bytes file = ReadFile(m_source.File(L"a.9wcoef"));
    CWordFileBytes(file, L"a.9wcoef").Clear(3);
    WriteSource(L"a.9wcoef", file);
    expectTurned(L"a.9wcoef");
    const auto object = CreateCoefObject(EWordKind::Chroma);
    ASSERT_EQ(object->Create(300, 200), S_OK);
    for (const bool keepsExtras : {false, true}) {
        ASSERT_EQ(SaveWholeStoreC(*object, m_source.File(L"a.9wcoef").c_str()), S_OK);
        m_request.keepExtras = keepsExtras;
        expectTurned(L"a.9wcoef");
    }
}

} // namespace
} // namespace trevolt
