#include "trevolt/RotationRun.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include <fmt/xchar.h>

#include "app/rotation/FileRotation.h"
#include "app/rotation/Manifest.h"
#include "app/rotation/OutputFolder.h"
#include "common/LittleEndian.h"
#include "platform/FileStream.h"
#include "platform/FileSystem.h"
#include "platform/Process.h"
#include "tests/rotation/AllocationLimit.h"
#include "tests/support/CoefMaps.h"
#include "trevolt/BinaryCoefFile.h"
#include "trevolt/FileKinds.h"
#include "trevolt/TextCoefFile.h"
#include "trevolt/Utf8.h"

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/LeftoverFolder.h"
#endif

namespace trevolt {
namespace {

using namespace test;

using Names = std::vector<std::wstring>;

class CCollectingListener : public CRotationListener {
  public:
    void OnFile(const SFileOutcome& outcome, std::size_t done, std::size_t count) override {
        EXPECT_EQ(done, outcomes.size() + 1);
        EXPECT_LE(done, count);
        outcomes.push_back(outcome);
        if (afterFile)
            afterFile();
    }

    std::vector<SFileOutcome> outcomes;
    std::function<void()> afterFile;
};

std::string FirstOf(const std::vector<std::string>& errors) {
    return errors.empty() ? std::string() : errors.front();
}

void ExpectToldAlike(const std::vector<SFileOutcome>& told,
                     const std::vector<SFileOutcome>& expected) {
    ASSERT_EQ(told.size(), expected.size());
    for (std::size_t i = 0; i < told.size(); ++i) {
        EXPECT_EQ(told[i].name, expected[i].name);
        EXPECT_EQ(told[i].outputName, expected[i].outputName);
        EXPECT_EQ(told[i].turnedSize, expected[i].turnedSize);
        EXPECT_EQ(told[i].problems, expected[i].problems);
        EXPECT_EQ(told[i].losses, expected[i].losses);
        EXPECT_EQ(told[i].notes, expected[i].notes);
    }
}

class RotationRun : public testing::Test {
  protected:
    RotationRun() {
        m_request.sources = {m_source.Path()};
        m_request.targetFolder = m_target.Path();
        m_request.sync = false;                        // which takes long
        m_request.existing = EExistingOutput::Replace; // tests run again and again
    }

    /// Writes a file of the kind that its name tells, painted in whole 255ths.
    void AddFile(const std::wstring& name, std::int32_t width, std::int32_t height) const {
        CChromaCorrectCoef map;
        map.Resize(width, height);
        PaintMap(map, BytePixel);
        const SFileKind* kind = FindExportKind(name);
        ASSERT_NE(kind, nullptr);
        ASSERT_EQ(kind->save(map, m_source.File(name).c_str()), S_OK);
    }

    SRotationOutcome Run() {
        m_listener.outcomes.clear();
        return RunRotation(m_request, m_interrupted, m_listener);
    }

    void ExpectNothingToDo(const std::string& error) {
        const SRotationOutcome outcome = Run();
        EXPECT_EQ(outcome.end, ERotationEnd::NothingToDo);
        EXPECT_NE(FirstOf(outcome.errors).find(error), std::string::npos)
            << testing::PrintToString(outcome.errors);
        EXPECT_TRUE(m_listener.outcomes.empty());
        EXPECT_TRUE(m_target.Names().empty());
    }

    const SFileOutcome& Only() const {
        EXPECT_EQ(m_listener.outcomes.size(), 1U);
        return m_listener.outcomes.front();
    }

    void ExpectProblem(const std::string& line) const {
        EXPECT_EQ(Only().problems, std::vector<std::string>{line});
    }

    /// Writes the file and takes its last byte.
    void AddCutShort(const std::wstring& name, const SFileKind& kind) const {
        CChromaCorrectCoef map;
        map.Resize(4, 3);
        PaintMap(map, BytePixel);
        ASSERT_EQ(kind.save(map, m_source.File(name).c_str()), S_OK);
        Bytes file = ReadFile(m_source.File(name));
        file.pop_back();
        WriteFile(m_source.File(name), file);
    }

    CTemporaryFolder m_source;
    CTemporaryFolder m_target;
    SRotationRequest m_request;
    std::atomic<bool> m_interrupted{false};
    CCollectingListener m_listener;
};

TEST_F(RotationRun, TurnsEveryKnownFileInSortedOrder) {
    AddFile(L"b.9bcoef", 5, 3);
    AddFile(L"A.9FCOEF", 4, 2);
    AddFile(L"c.d.3fcoef", 3, 3);
    AddFile(L"a.3bcoef", 1, 7);
    WriteText(m_source.File(L"notes.txt"), "not one of them");
    ASSERT_TRUE(CreateFolders(m_source.File(L"folder.9fcoef")));
    ASSERT_TRUE(CreateFolders(m_source.File(L"deeper")));

    const SRotationOutcome outcome = Run();
    EXPECT_EQ(outcome.end, ERotationEnd::AllDone);
    EXPECT_EQ(outcome.written, 4U);
    EXPECT_EQ(outcome.failed, 0U);
    EXPECT_TRUE(outcome.errors.empty());
    EXPECT_EQ(m_target.Names(), (Names{L"A-90\u00B0.9FCOEF", L"a-90\u00B0.3bcoef",
                                       L"b-90\u00B0.9bcoef", L"c-90\u00B0.d.3fcoef"}));
    ASSERT_EQ(m_listener.outcomes.size(), 4U);
    EXPECT_EQ(m_listener.outcomes[0].name, "A.9FCOEF");
    EXPECT_EQ(m_listener.outcomes[0].outputName, "A-90\xC2\xB0.9FCOEF");
    EXPECT_EQ(m_listener.outcomes[0].size, (PixelSize{4, 2}));
    EXPECT_EQ(m_listener.outcomes[0].turnedSize, (PixelSize{2, 4}));
    EXPECT_EQ(m_listener.outcomes[1].name, "a.3bcoef");
    EXPECT_EQ(m_listener.outcomes[2].name, "b.9bcoef");
    EXPECT_EQ(m_listener.outcomes[3].name, "c.d.3fcoef");

    CChromaCorrectCoef turned;
    turned.Resize(3, 5);
    ASSERT_EQ(Read9bCoefFile(turned, m_target.File(L"b-90\u00B0.9bcoef").c_str()), S_OK);
    ExpectPixels(turned, [](std::int32_t x, std::int32_t y) { return BytePixel(y, 2 - x); });
}

TEST_F(RotationRun, KeepsMemoryForItsOwnFilesOnly) {
    for (const wchar_t* name : {L"a.9fcoef", L"b.9fcoef", L"c.9fcoef"})
        AddFile(name, 100, 60);
    std::uint64_t keptMidway = 0;
    m_listener.afterFile = [&] {
        keptMidway = std::max(keptMidway, CMemoryBudget::Process().Kept());
    };
    EXPECT_EQ(Run().written, 3U);
    EXPECT_GT(keptMidway, 0U);
    EXPECT_EQ(CMemoryBudget::Process().Kept(), 0U);
}

TEST_F(RotationRun, TurnsByEachAngle) {
    AddFile(L"a.9bcoef", 5, 3);
    m_request.angle = kAngles[1];
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    m_request.angle = kAngles[2];
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    EXPECT_EQ(m_target.Names(), (Names{L"a-180\u00B0.9bcoef", L"a-270\u00B0.9bcoef"}));
    CChromaCorrectCoef turned;
    turned.Resize(5, 3);
    ASSERT_EQ(Read9bCoefFile(turned, m_target.File(L"a-180\u00B0.9bcoef").c_str()), S_OK);
    ExpectPixels(turned, [](std::int32_t x, std::int32_t y) { return BytePixel(4 - x, 2 - y); });
    turned.Resize(3, 5);
    ASSERT_EQ(Read9bCoefFile(turned, m_target.File(L"a-270\u00B0.9bcoef").c_str()), S_OK);
    ExpectPixels(turned, [](std::int32_t x, std::int32_t y) { return BytePixel(4 - y, x); });
}

TEST_F(RotationRun, TurnsTheSamplesToTheGivenOnes) {
    for (const std::wstring name :
         {L"Cab_01.9fcoef", L"Cab_02.3fcoef", L"Cab_03.9bcoef", L"Cab_04.3bcoef"})
        WriteFile(m_source.File(name), ReadFile(Sample(L"cabinet/" + name)));
    for (const SAngle& angle : kAngles) {
        m_request.angle = angle;
        const SRotationOutcome outcome = Run();
        EXPECT_EQ(outcome.end, ERotationEnd::AllDone);
        EXPECT_EQ(outcome.written, 4U);
        const std::wstring folder =
            L"turned-" + std::wstring(angle.text.substr(0, angle.text.size() - 1)) + L"/";
        for (const SFileOutcome& file : m_listener.outcomes) {
            const std::wstring source(file.name.begin(), file.name.end());
            const std::wstring name = ExportName(source, angle.text);
            CChromaCorrectCoef written;
            CChromaCorrectCoef expected;
            written.Resize(static_cast<std::int32_t>(file.turnedSize.width),
                           static_cast<std::int32_t>(file.turnedSize.height));
            expected.Resize(written.Width(), written.Height());
            const SFileKind* kind = FindLoadKind(source);
            ASSERT_GE(kind->load(written, m_target.File(name).c_str()), 0);
            ASSERT_GE(kind->load(expected, Sample(folder + name).c_str()), 0);
            ExpectPixels(written, [&](std::int32_t x, std::int32_t y) {
                return *expected.FindElement(x, y);
            });
        }
    }
}

TEST_F(RotationRun, CutsAndFillsToAGivenSize) {
    AddFile(L"large.9bcoef", 10, 10);
    AddFile(L"small.9bcoef", 2, 9);
    m_request.size = PixelSize{8, 6};
    const SRotationOutcome outcome = Run();
    EXPECT_EQ(outcome.end, ERotationEnd::AllDone);
    CChromaCorrectCoef turned;
    turned.Resize(6, 8);
    ASSERT_EQ(Read9bCoefFile(turned, m_target.File(L"large-90\u00B0.9bcoef").c_str()), S_OK);
    ExpectPixels(turned, [](std::int32_t x, std::int32_t y) { return BytePixel(y, 5 - x); });
    ASSERT_EQ(Read9bCoefFile(turned, m_target.File(L"small-90\u00B0.9bcoef").c_str()), S_OK);
    ExpectPixels(turned, [](std::int32_t x, std::int32_t y) {
        return y < 2 ? BytePixel(y, 5 - x) : SMatrixCoef{};
    });
}

TEST_F(RotationRun, NamesWhatIsMissing) {
    ExpectNothingToDo("there is no coefficient file in");
    WriteText(m_source.File(L"notes.txt"), "x");
    ASSERT_TRUE(CreateFolders(m_source.File(L"x.9fcoef")));
    ExpectNothingToDo("there is no coefficient file in");
    AddFile(L"a.3bcoef", 2, 2);

    m_request.sources = {m_source.File(L"missing")};
    ExpectNothingToDo("the source " + WideToShownUtf8(m_source.File(L"missing")) +
                      " does not exist");
    m_request.sources = {m_source.File(L"notes.txt")};
    ExpectNothingToDo("notes.txt is no coefficient file by its name");
    m_request.sources = {L""};
    ExpectNothingToDo("does not exist");
    m_request.sources = {m_source.Path()};
    m_request.targetFolder = m_source.File(L"notes.txt");
    ExpectNothingToDo("is not a folder");
}

TEST_F(RotationRun, RefusesTheSameFolderUnderAnyName) {
    AddFile(L"a.3bcoef", 2, 2);
    ASSERT_TRUE(CreateFolders(m_source.File(L"sub")));
    const Names before = m_source.Names();
    for (const std::wstring& same :
         {m_source.Path(), m_source.File(L"."), m_source.File(L"sub/..")}) {
        m_request.targetFolder = same;
        const SRotationOutcome outcome = Run();
        EXPECT_EQ(outcome.end, ERotationEnd::NothingToDo);
        EXPECT_NE(FirstOf(outcome.errors).find("same folder"), std::string::npos)
            << testing::PrintToString(outcome.errors);
    }
    EXPECT_EQ(m_source.Names(), before);
}

TEST_F(RotationRun, AScreenIsExactlyOneFile) {
    m_request.wholeScreen = true;
    AddFile(L"a.3bcoef", 2, 2);
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    EXPECT_EQ(m_target.Names(), Names{L"a-90\u00B0.3bcoef"});
    ASSERT_TRUE(RemoveFile(m_target.File(L"a-90\u00B0.3bcoef")));
    AddFile(L"b.3bcoef", 2, 2);
    ExpectNothingToDo("holds 2: give one file");
}

TEST_F(RotationRun, NamesDamagedFilesAndTurnsTheOthers) {
    AddFile(L"a.9fcoef", 3, 3);
    WriteFile(m_source.File(L"b.9fcoef"), ReadFile(Sample(L"awkward/cut_short.9fcoef")));
    WriteFile(m_source.File(L"c.9fcoef"), ReadFile(Sample(L"awkward/version_2.9fcoef")));
    WriteText(m_source.File(L"d.3bcoef"), "");
    AddFile(L"e.9fcoef", 3, 3);

    const SRotationOutcome outcome = Run();
    EXPECT_EQ(outcome.end, ERotationEnd::SomeFailed);
    EXPECT_EQ(outcome.written, 2U);
    EXPECT_EQ(outcome.failed, 3U);
    EXPECT_EQ(m_target.Names(), (Names{L"a-90\u00B0.9fcoef", L"e-90\u00B0.9fcoef"}));
    ASSERT_EQ(m_listener.outcomes.size(), 5U);
    EXPECT_EQ(m_listener.outcomes[1].problems,
              (std::vector<std::string>{"cannot be read: E_FAIL (0x80004005): the content is "
                                        "damaged or does not match its header"}));
    for (const std::size_t i : {2U, 3U})
        EXPECT_EQ(m_listener.outcomes[i].problems,
                  (std::vector<std::string>{"cannot be read: E_COEF_BADFORMAT (0xE0830010): not a "
                                            "file of this kind, or of a newer version"}));
}

constexpr std::string_view kTextOf4x3 = "[T9COEF20]\nwidth=4\nheight=3\n"
                                        "1,1,0.5,0,0,0,0.5,0,0,0,0.5\n"
                                        "2,1,0.5,0,0,0,0.5,0,0,0,0.5\n";

TEST_F(RotationRun, ATextThatIsNotWholeIsNamedLineByLine) {
    WriteText(m_source.File(L"a.cccoef"), kTextOf4x3);
    WriteText(m_source.File(L"b.cccoef"), kTextOf4x3.substr(0, kTextOf4x3.size() - 1));
    WriteText(m_source.File(L"c.cccoef"), std::string(kTextOf4x3) + "2,1,1,0,0,0,1,0,0,0,1\n" +
                                              "3,1,1\n\n4,1,1,0,0,0,1,0,0,0,1\n");
    const std::vector<std::vector<std::string>> problems{
        {},
        {"is damaged: line 5 is the last and has no end"},
        {"is damaged: 2 lines are no whole data lines, the first is line 7",
         "is damaged: line 9 names a pixel outside the file's size",
         "is damaged: line 6 names a pixel that an earlier line names"}};
    for (const bool lenient : {false, true}) {
        m_request.lenient = lenient;
        const SRotationOutcome outcome = Run();
        EXPECT_EQ(outcome.end, ERotationEnd::SomeFailed);
        EXPECT_EQ(outcome.failed, 2U);
        EXPECT_EQ(outcome.written, lenient ? 3U : 1U);
        ASSERT_EQ(m_listener.outcomes.size(), 3U);
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_EQ(m_listener.outcomes[i].problems, problems[i]) << i;
    }
    CChromaCorrectCoef turned;
    turned.Resize(3, 4);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    ASSERT_EQ(ReadTextCoefFile(turned, m_target.File(L"c-90\u00B0.cccoef").c_str(), 0, 0, width,
                               height, false),
              S_OK);
    EXPECT_EQ(turned.FindElement(1, 1)->m[0], 0.5F);
    EXPECT_EQ(turned.FindElement(1, 2)->m[0], 1.0F); // the later line's, as the reader has it
}

TEST_F(RotationRun, CleanedPixelsAreANoteAndNoProblem) {
    WriteText(m_source.File(L"a.cccoef"), std::string(kTextOf4x3) + "3,2,2,0,0,0,1,0,0,0,1\n");
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    EXPECT_EQ(Only().notes, std::vector<std::string>{"cleaning changed 1 of its pixels"});
    WriteText(m_source.File(L"a.cccoef"), kTextOf4x3);
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    EXPECT_EQ(Only().notes, std::vector<std::string>{});
}

// What remains is whole lines; the reader takes it for all there is.
TEST_F(RotationRun, AFileThatChangesItsSizeMeanwhileIsNamed) {
    const std::string longer = std::string(kTextOf4x3) + "3,2,1,0,0,0,1,0,0,0,1\n";
    const std::size_t linesOfTheReader = std::size_t{1} << 18;
    const std::string shorter(kTextOf4x3);
    for (const bool grows : {false, true}) {
        const std::string& after = grows ? longer : shorter;
        WriteText(m_source.File(L"a.cccoef"), grows ? shorter : longer);
        const CAllocationEvent event(linesOfTheReader, [&] {
            std::fstream sameFile;
            EXPECT_TRUE(OpenFileStream(sameFile, m_source.File(L"a.cccoef").c_str(),
                                       std::ios::out | std::ios::trunc));
            sameFile << after;
        });
        EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
        EXPECT_TRUE(event.IsOver());
        ExpectProblem("its size changed while it was read");
        EXPECT_TRUE(m_target.Names().empty());
    }
}

TEST_F(RotationRun, LenientWritesWhatTheMapHolds) {
    AddFile(L"a.9fcoef", 3, 3);
    WriteFile(m_source.File(L"b.9fcoef"), ReadFile(Sample(L"awkward/cut_short.9fcoef")));
    m_request.lenient = true;
    const SRotationOutcome outcome = Run();
    EXPECT_EQ(outcome.end, ERotationEnd::SomeFailed);
    EXPECT_EQ(outcome.written, 2U);
    EXPECT_EQ(outcome.failed, 1U);
    CChromaCorrectCoef turned;
    turned.Resize(24, 40);
    PaintMap(turned, BytePixel);
    ASSERT_EQ(Read9fCoefFile(turned, m_target.File(L"b-90\u00B0.9fcoef").c_str()), 1);
    EXPECT_EQ(turned.FindElement(5, 5)->m[0], 1.0F);
    EXPECT_EQ(turned.FindElement(5, 5)->m[1], 0.0F);
}

TEST_F(RotationRun, LenientStandsOnDefaultsWhereOnlyTheSizeIsKnown) {
    WriteText(m_source.File(L"a.9bcoef"), "not one");
    m_request.lenient = true;
    EXPECT_EQ(Run().written, 0U); // without a size there is no map
    EXPECT_TRUE(Only().HasFailed());
    m_request.size = PixelSize{4, 2};
    const SRotationOutcome outcome = Run();
    EXPECT_EQ(outcome.written, 1U);
    EXPECT_EQ(outcome.failed, 1U);
    CChromaCorrectCoef turned;
    turned.Resize(2, 4);
    PaintMap(turned, PatternPixel);
    ASSERT_EQ(Read9bCoefFile(turned, m_target.File(L"a-90\u00B0.9bcoef").c_str()), S_OK);
    EXPECT_EQ(turned.FindElement(1, 3)->m[0], 1.0F);
}

TEST_F(RotationRun, AFileWithoutPixelsIsNotWritten) {
    AddFile(L"a.3bcoef", 1, 1);
    Bytes file = ReadFile(m_source.File(L"a.3bcoef"));
    file.resize(24);
    file[20] = file[22] = std::byte{0};
    const Bytes emptyFrame =
        MakeBytes({0x04, 0x22, 0x4D, 0x18, 0x64, 0x70, 0xB9, 0, 0, 0, 0, 0x05, 0x5D, 0xCC, 0x02});
    file.insert(file.end(), emptyFrame.begin(), emptyFrame.end());
    WriteFile(m_source.File(L"a.3bcoef"), file);
    for (const bool lenient : {false, true}) {
        m_request.lenient = lenient;
        m_request.size.reset();
        EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
        ExpectProblem("has no pixels");
        EXPECT_TRUE(m_target.Names().empty());
        m_request.size = PixelSize{3, 2};
        EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
        ExpectProblem("has no pixels");
        EXPECT_EQ(m_target.Names().size(), lenient ? 1U : 0U); // of defaults
    }
}

TEST_F(RotationRun, ASizeBeyondTheMemoryEndsCleanly) {
    AddFile(L"a.9fcoef", 3, 3);
    m_request.size = PixelSize{65535, 32768};
    const CBudgetLimit limit(std::uint64_t{1} << 30);
    for (const bool lenient : {false, true}) {
        m_request.lenient = lenient;
        EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
        ExpectProblem("not enough memory for 65535 x 32768 pixels");
        EXPECT_TRUE(m_target.Names().empty());
    }
}

// A word file's header can state sizes that no map has.
TEST_F(RotationRun, AMapSideEndsAt65535) {
    struct SCase {
        std::uint32_t width;
        std::uint32_t height;
        const char* problem;
    };
    for (const SCase& size :
         {SCase{65535, 3, "is incomplete: 196593 pixels have no data"},
          SCase{4, 65535, "is incomplete: 262128 pixels have no data"},
          SCase{65536, 3, "its size 65536 x 3 is above 65535 in one direction"},
          SCase{4, 65536, "its size 4 x 65536 is above 65535 in one direction"}}) {
        AddFile(L"a.3wcoef", 4, 3);
        Bytes file = ReadFile(m_source.File(L"a.3wcoef"));
        StoreLittle<std::uint32_t>(&file[28], size.width);
        StoreLittle<std::uint32_t>(&file[32], size.height);
        WriteFile(m_source.File(L"a.3wcoef"), file);
        EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
        ExpectProblem(size.problem);
    }
}

TEST_F(RotationRun, TheSourceIsGoneWhenTheOutputIsWritten) {
    AddFile(L"a.3bcoef", 300, 100); // and under a name of two kinds, so that it goes through a map
    ASSERT_TRUE(ReplaceWith(m_source.File(L"a.3bcoef"), m_source.File(L"a.3bcoef.4wcoef")));
    const std::uint64_t twoMaps = 2 * 300 * 100 * (48 + 4); // and no store beside them
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + twoMaps);
    EXPECT_EQ(Run().written, 1U);
}

TEST_F(RotationRun, ATurnedMapBeyondTheMemoryEndsCleanly) {
    AddFile(L"a.cccoef", 100, 100);
    const CBudgetLimit limit(100 * 100 * (48 + 4) + 40000); // one map, not two
    EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
    ExpectProblem("not enough memory for the turned map");
    EXPECT_TRUE(m_target.Names().empty());
}

TEST_F(RotationRun, AFileWhoseSmallMemoryIsRefusedIsNamedAndTheOthersGoOn) {
    AddFile(L"a.3bcoef", 4, 3);
    AddFile(L"b.cccoef", 4, 3); // whose reader takes memory for many lines at once
    const SRotationOutcome outcome = [&] {
        const CAllocationLimit limit(19000);
        return Run();
    }();
    EXPECT_EQ(outcome.end, ERotationEnd::SomeFailed);
    EXPECT_EQ(outcome.written, 1U);
    ASSERT_EQ(m_listener.outcomes.size(), 2U);
    EXPECT_EQ(m_listener.outcomes[1].name, "b.cccoef");
    EXPECT_EQ(m_listener.outcomes[1].problems, std::vector<std::string>{"not enough memory"});
}

#ifndef _WIN32 // where a stream's buffer is no larger than others
TEST_F(RotationRun, AFileThatGetsNoMemoryToBeOpenedIsNamed) {
    AddFile(L"a.3bcoef", 4, 3);
    const SRotationOutcome outcome = [&] {
        const CAllocationLimit limit(4096); // less than a stream's buffer
        return Run();
    }();
    EXPECT_EQ(outcome.end, ERotationEnd::SomeFailed);
    ExpectProblem("not enough memory");
}
#endif

TEST_F(RotationRun, AFileThatTheMemoryDoesNotReadWholeIsNamed) {
    AddFile(L"a.3bcoef", 100, 100);
    ASSERT_TRUE(ReplaceWith(m_source.File(L"a.3bcoef"), m_source.File(L"a.3bcoef.12wcoef")));
    const std::uint64_t map = 100 * 100 * (48 + 4);
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + map + 20000); // no body
    EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
    ExpectProblem("not enough memory to read it whole");
    EXPECT_TRUE(m_target.Names().empty());
}

// A float file, which goes through a map: there is room for that of the given size, and for its output.
TEST_F(RotationRun, AFileThatTheMemoryDoesNotReadWholeIsNotWrittenLeniently) {
    AddFile(L"a.3fcoef", 300, 300);
    ASSERT_TRUE(ReplaceWith(m_source.File(L"a.3fcoef"), m_source.File(L"a.3wcoef")));
    m_request.lenient = true;
    m_request.size = PixelSize{4, 3};
    {
        const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + 700000);
        EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
        ExpectProblem("not enough memory to read it whole");
        EXPECT_TRUE(m_target.Names().empty());
    }
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
}

// Read as one kind and written as another, whose block does not fit, or whose scratch does not.
TEST_F(RotationRun, AFileThatTheMemoryDoesNotWriteWholeIsNamed) {
    AddFile(L"a.3bcoef", 10, 10);
    ASSERT_TRUE(ReplaceWith(m_source.File(L"a.3bcoef"), m_source.File(L"a.3bcoef.12wcoef")));
    const std::uint64_t block = 256 * 128 * 24;
    for (const std::uint64_t room : {block - 1, block + 15000}) {
        const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + room);
        EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
        ExpectProblem("not enough memory to write it whole");
        EXPECT_TRUE(m_target.Names().empty());
    }
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    EXPECT_EQ(m_target.Names(), Names{L"a-90\u00B0.3bcoef.12wcoef"});
}

// The load's status is fine: the word kinds' objects hide what a float file could not give.
TEST_F(RotationRun, ADamagedFloatFileUnderAWordKindsNameIsNamed) {
    AddCutShort(L"a.9wcoef", *FindExportKind(L".9fcoef"));
    AddCutShort(L"b.3wcoef", *FindExportKind(L".3fcoef"));
    for (const bool lenient : {false, true}) {
        m_request.lenient = lenient;
        const SRotationOutcome outcome = Run();
        EXPECT_EQ(outcome.end, ERotationEnd::SomeFailed);
        EXPECT_EQ(outcome.failed, 2U);
        EXPECT_EQ(outcome.written, lenient ? 2U : 0U);
        ASSERT_EQ(m_listener.outcomes.size(), 2U);
        for (const SFileOutcome& file : m_listener.outcomes)
            EXPECT_EQ(file.problems, (std::vector<std::string>{
                                         "cannot be read: E_FAIL (0x80004005): the content is "
                                         "damaged or does not match its header"}));
        EXPECT_EQ(m_target.Names().size(), outcome.written);
    }
}

TEST_F(RotationRun, AFloatFileUnderAWordKindsNameLosesNothing) {
    AddFile(L"a.9fcoef", 5, 3);
    ASSERT_TRUE(ReplaceWith(m_source.File(L"a.9fcoef"), m_source.File(L"a.9wcoef")));
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    EXPECT_TRUE(Only().losses.empty());
}

TEST_F(RotationRun, PixelsWithoutDataAreCounted) {
    for (const std::wstring name : {L"a.9wcoef", L"b.3wcoef", L"c.4wcoef", L"d.12wcoef"}) {
        AddFile(name, 300, 20); // two chunks
        Bytes file = ReadFile(m_source.File(name));
        ASSERT_EQ(file[36], std::byte{2});
        file[32] = std::byte{21}; // one row more
        WriteFile(m_source.File(name), file);
    }
    for (const bool lenient : {false, true}) {
        m_request.lenient = lenient;
        const SRotationOutcome outcome = Run();
        EXPECT_EQ(outcome.failed, 4U);
        EXPECT_EQ(outcome.written, lenient ? 4U : 0U);
        ASSERT_EQ(m_listener.outcomes.size(), 4U);
        for (const SFileOutcome& file : m_listener.outcomes)
            EXPECT_EQ(file.problems,
                      (std::vector<std::string>{"is incomplete: 300 pixels have no data"}))
                << file.name;
        EXPECT_EQ(m_target.Names().size(), outcome.written);
    }
}

TEST_F(RotationRun, TellsKindsByTheNameAlone) {
    AddFile(L"a.3bcoef", 2, 3);
    const std::wstring folder = m_source.File(L"wall.9fcoef");
    ASSERT_TRUE(CreateFolders(folder));
    m_request.sources = {folder};
    ExpectNothingToDo("there is no coefficient file in");
    WriteText(WithSeparator(folder) + L"notes.txt", "x");
    ExpectNothingToDo("there is no coefficient file in");
    ASSERT_TRUE(ReplaceWith(m_source.File(L"a.3bcoef"), WithSeparator(folder) + L"a.3bcoef"));
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    EXPECT_EQ(m_target.Names(), Names{L"a-90\u00B0.3bcoef"});
}

TEST_F(RotationRun, AnExistingOutputIsKeptUnlessTold) {
    AddFile(L"a.3bcoef", 2, 3);
    AddFile(L"b.3bcoef", 2, 3);
    WriteText(m_target.File(L"a-90\u00B0.3bcoef"), "kept");
    m_request.existing = EExistingOutput::Refuse;
    SRotationOutcome outcome = Run();
    EXPECT_EQ(outcome.end, ERotationEnd::SomeFailed);
    EXPECT_EQ(outcome.written, 1U);
    EXPECT_EQ(outcome.failed, 1U);
    const std::vector<std::string> refused{
        "its output a-90\xC2\xB0.3bcoef exists already: overwrite it, or choose another target"};
    EXPECT_EQ(m_listener.outcomes[0].problems, refused);
    EXPECT_EQ(m_listener.outcomes[0].outputName, "");

    m_request.existing = EExistingOutput::Skip;
    outcome = Run();
    EXPECT_EQ(outcome.end, ERotationEnd::AllDone);
    EXPECT_EQ(outcome.written, 0U);
    EXPECT_EQ(outcome.skipped, 2U);
    EXPECT_TRUE(m_listener.outcomes[0].skipped);
    EXPECT_EQ(ReadText(m_target.File(L"a-90\u00B0.3bcoef")), "kept");

    m_request.existing = EExistingOutput::Replace;
    EXPECT_EQ(Run().written, 2U);
    EXPECT_NE(ReadText(m_target.File(L"a-90\u00B0.3bcoef")), "kept");
}

TEST_F(RotationRun, AnOutputThatComesMeanwhileIsKeptToo) {
    AddFile(L"a.3bcoef", 2, 3);
    AddFile(L"b.3bcoef", 2, 3);
    const std::wstring taken = m_target.File(L"b-90\u00B0.3bcoef");
    m_listener.afterFile = [&] { WriteText(taken, "kept"); };
    m_request.existing = EExistingOutput::Refuse;
    EXPECT_EQ(Run().failed, 1U);
    EXPECT_EQ(m_listener.outcomes[1].problems,
              std::vector<std::string>{"its output b-90\xC2\xB0.3bcoef exists already: overwrite "
                                       "it, or choose another target"});
    EXPECT_EQ(ReadText(taken), "kept");

    ASSERT_TRUE(RemoveFile(taken));
    ASSERT_TRUE(RemoveFile(m_target.File(L"a-90\u00B0.3bcoef")));
    m_request.existing = EExistingOutput::Skip;
    const SRotationOutcome outcome = Run();
    EXPECT_EQ(outcome.end, ERotationEnd::AllDone);
    EXPECT_EQ(outcome.written, 1U);
    EXPECT_EQ(outcome.skipped, 1U);
    EXPECT_EQ(ReadText(taken), "kept");
    EXPECT_EQ(m_target.Names().size(), 2U) << "nothing is left under work";
}

TEST_F(RotationRun, ADryRunTellsTheSameAndWritesNothing) {
    AddFile(L"a.3bcoef", 2, 3);
    AddCutShort(L"b.9fcoef", *FindLoadKind(L"b.9fcoef"));
    m_request.dryRun = true;
    m_request.targetFolder = m_target.File(L"missing");
    m_request.manifest = m_target.File(L"sums");
    SRotationOutcome dry = Run();
    const std::vector<SFileOutcome> told = m_listener.outcomes;
    EXPECT_EQ(m_target.Names(), Names{});
    m_request.dryRun = false;
    const SRotationOutcome done = Run();
    EXPECT_EQ(dry.end, done.end);
    EXPECT_EQ(dry.written, 1U);
    EXPECT_EQ(dry.failed, done.failed);
    ExpectToldAlike(told, m_listener.outcomes);
    EXPECT_EQ(told[0].outputName, "a-90\xC2\xB0.3bcoef");
}

TEST_F(RotationRun, AnAngleOfNothingCopies) {
    AddFile(L"a.9wcoef", 4, 3);
    AddFile(L"t.cccoef", 4, 3);
    m_request.angles = {{L"*", 0}};
    EXPECT_EQ(Run().written, 2U);
    EXPECT_EQ(ReadFile(m_target.File(L"a-0\u00B0.9wcoef")), ReadFile(m_source.File(L"a.9wcoef")));
    EXPECT_EQ(ReadFile(m_target.File(L"t-0\u00B0.cccoef")), ReadFile(m_source.File(L"t.cccoef")));
    EXPECT_EQ(m_listener.outcomes[0].turnedSize, (PixelSize{4, 3}));
    EXPECT_EQ(m_listener.outcomes[0].angleCode, 0U);

    AddCutShort(L"b.9fcoef", *FindLoadKind(L"b.9fcoef"));
    EXPECT_EQ(Run().failed, 1U) << "a damaged file is named, whatever becomes of it";
    EXPECT_FALSE(PathExists(m_target.File(L"b-0\u00B0.9fcoef")));
    m_request.lenient = true;
    EXPECT_EQ(Run().failed, 1U);
    EXPECT_EQ(ReadFile(m_target.File(L"b-0\u00B0.9fcoef")), ReadFile(m_source.File(L"b.9fcoef")));
}

TEST_F(RotationRun, TreesAreMirrored) {
    ASSERT_TRUE(CreateFolders(m_source.File(L"one/two")));
    AddFile(L"one/two/a.3bcoef", 2, 3);
    AddFile(L"b.3bcoef", 2, 3);
    m_request.recursive = true;
    m_request.targetFolder = m_target.File(L"new");
    for (const bool sync : {false, true}) {
        m_request.sync = sync;
        EXPECT_EQ(Run().end, ERotationEnd::AllDone);
        EXPECT_TRUE(PathExists(m_target.File(L"new/one/two/a-90\u00B0.3bcoef")));
        EXPECT_TRUE(PathExists(m_target.File(L"new/b-90\u00B0.3bcoef")));
    }
    EXPECT_EQ(m_listener.outcomes[1].name, "one/two/a.3bcoef");
    EXPECT_EQ(m_listener.outcomes[1].outputName, "one/two/a-90\xC2\xB0.3bcoef");
}

TEST_F(RotationRun, OutputsKeepTheTimesOfTheirSources) {
    AddFile(L"a.3bcoef", 2, 3);
    const auto then = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1000);
    const std::filesystem::path source(*ToNativePath(m_source.File(L"a.3bcoef")));
    const std::filesystem::path output(*ToNativePath(m_target.File(L"a-90\u00B0.3bcoef")));
    std::filesystem::last_write_time(source, then);
    EXPECT_EQ(Run().written, 1U);
    EXPECT_NE(std::filesystem::last_write_time(output), std::filesystem::last_write_time(source));
    m_request.keepTimes = true;
    EXPECT_EQ(Run().written, 1U);
    EXPECT_EQ(std::filesystem::last_write_time(output), std::filesystem::last_write_time(source));
}

TEST_F(RotationRun, AFileUnderWorkIsNeverOld) {
    AddFile(L"a.3bcoef", 2, 3);
    const std::filesystem::path source(*ToNativePath(m_source.File(L"a.3bcoef")));
    std::filesystem::last_write_time(source, std::filesystem::file_time_type::clock::now() -
                                                 std::chrono::hours(24 * 365));
    m_request.keepTimes = true;
    SRotationPlan plan = PlanRotation(m_request);
    COutputFolder target(m_target.Path(), false);
    CWorkShare share(1, 1, std::uint64_t{1} << 30);
    const STurnedFile file = TurnFile(m_request, m_interrupted, share, target, plan.turns.at(0));
    ASSERT_NE(file.output, nullptr);
    EXPECT_LT(AgeOf(file.output->Path()).value_or(std::chrono::seconds::max()),
              std::chrono::hours(1));
    EXPECT_EQ(file.timeOf, plan.turns[0].Path());
}

TEST_F(RotationRun, OnlyAFileIsSkipped) {
    AddFile(L"a.3bcoef", 2, 3);
    ASSERT_TRUE(CreateFolders(m_target.File(L"a-90\u00B0.3bcoef")));
    m_request.existing = EExistingOutput::Skip;
    EXPECT_EQ(Run().failed, 1U);
    ExpectProblem("its output a-90\xC2\xB0.3bcoef is a folder: choose another target");
}

TEST_F(RotationRun, OutputsAreReadBackWhenToldTo) {
    for (const SFileKind& kind : FileKinds())
        AddFile(L"a" + std::wstring(kind.extension), 40, 30);
    m_request.verify = true;
    const SRotationOutcome outcome = Run();
    EXPECT_EQ(outcome.end, ERotationEnd::AllDone);
    EXPECT_EQ(outcome.written, 9U);
    EXPECT_EQ(m_target.Names().size(), 9U);
}

TEST_F(RotationRun, ASizeThatCutsOrFillsIsToldForEachFile) {
    AddFile(L"large.9bcoef", 10, 10);
    AddFile(L"mixed.9bcoef", 10, 2);
    AddFile(L"same.9bcoef", 8, 6);
    AddFile(L"small.9bcoef", 2, 6);
    m_request.size = PixelSize{8, 6};
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    const std::array<std::vector<std::string>, 4> notes{
        {{"its own size is 10 x 10, it was turned at 8 x 6: 52 of its pixels are cut off"},
         {"its own size is 10 x 2, it was turned at 8 x 6: 4 of its pixels are cut off, 32 are "
          "filled "
          "with defaults"},
         {},
         {"its own size is 2 x 6, it was turned at 8 x 6: 36 are filled with defaults"}}};
    for (std::size_t i = 0; i < notes.size(); ++i)
        EXPECT_EQ(m_listener.outcomes[i].notes, notes[i]);
    EXPECT_EQ(m_listener.outcomes[0].ownSize, (PixelSize{10, 10}));
}

TEST_F(RotationRun, ReplacesAnEarlierOutput) {
    AddFile(L"a.3bcoef", 2, 3);
    WriteText(m_target.File(L"a-90\u00B0.3bcoef"), "old");
    WriteText(m_target.File(L"other.txt"), "stays");
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    EXPECT_NE(ReadText(m_target.File(L"a-90\u00B0.3bcoef")), "old");
    EXPECT_EQ(m_target.Names(), (Names{L"a-90\u00B0.3bcoef", L"other.txt"}));
}

TEST_F(RotationRun, AFailedFileLeavesAnEarlierOutput) {
    WriteText(m_source.File(L"a.3bcoef"), "damaged");
    WriteText(m_target.File(L"a-90\u00B0.3bcoef"), "old");
    EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
    EXPECT_EQ(ReadText(m_target.File(L"a-90\u00B0.3bcoef")), "old");
}

// In its own elements, whole or damaged, as through a map: what a kind's writer answers is told.
TEST_F(RotationRun, AnOutputThatDoesNotOpenIsToldByItsKind) {
    for (const auto& [name, status] : {std::pair{L"b.9fcoef", "E_COEF_OPENFAILED"},
                                       {L"b.9wcoef", "E_COEF_OPENFAILED"},
                                       {L"b.3wcoef", "E_HANDLE"},
                                       {L"b.4wcoef", "E_HANDLE"},
                                       {L"b.12wcoef", "E_HANDLE"}}) {
        for (const bool isWhole : {true, false}) {
            AddFile(L"a.3bcoef", 2, 3);
            AddFile(name, 2, 3);
            Bytes file = ReadFile(m_source.File(name));
            file.resize(file.size() - (isWhole ? 0 : 1));
            WriteFile(m_source.File(name), file);
            std::optional<CTemporaryFolder> target(std::in_place);
            m_request.targetFolder = target->Path();
            m_request.lenient = true;
            m_listener.afterFile = [&] { target.reset(); };
            EXPECT_EQ(Run().written, 1U);
            ASSERT_FALSE(m_listener.outcomes.back().problems.empty());
            EXPECT_EQ(m_listener.outcomes.back().problems.back().rfind(
                          std::string("cannot be written: ") + status + " (", 0),
                      0U)
                << m_listener.outcomes.back().problems.back();
            ASSERT_TRUE(RemoveFile(m_source.File(name)));
        }
    }
}

TEST_F(RotationRun, AFolderInTheOutputsPlaceIsReported) {
    AddFile(L"a.3bcoef", 2, 3);
    ASSERT_TRUE(CreateFolders(m_target.File(L"a-90\u00B0.3bcoef/inside")));
    EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
    ExpectProblem("its output a-90\xC2\xB0.3bcoef is a folder: choose another target");
    EXPECT_EQ(m_target.Names(), Names{L"a-90\u00B0.3bcoef"});
}

TEST_F(RotationRun, AnOutputWithoutItsNameLacksNothing) {
    const Bytes file = ReadFile(Sample(L"awkward/origin_1000_777.9wcoef"));
    WriteFile(m_source.File(L"a.9wcoef"), file);
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    EXPECT_EQ(Only().losses.size(), 1U);
    ASSERT_TRUE(RemoveFile(m_target.File(L"a-90\u00B0.9wcoef")));
    ASSERT_TRUE(CreateFolders(m_target.File(L"a-90\u00B0.9wcoef/inside")));
    EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
    EXPECT_TRUE(Only().outputName.empty());
    EXPECT_TRUE(Only().losses.empty());
}

TEST_F(RotationRun, GivesTheSameForAnyNumberOfJobs) {
    for (int i = 0; i < 12; ++i)
        AddFile(L"cab" + std::to_wstring(i) + L".9bcoef", 5 + i, 40 - i);
    WriteText(m_source.File(L"cab5x.9bcoef"), "damaged");
    EXPECT_EQ(Run().written, 12U);
    const std::vector<SFileOutcome> one = m_listener.outcomes;
    for (const std::size_t jobs : {2U, 5U, 50U}) {
        m_request.jobs = jobs;
        EXPECT_EQ(Run().written, 12U);
        ExpectToldAlike(m_listener.outcomes, one);
    }
    EXPECT_EQ(m_target.Names().size(), 12U);
}

TEST_F(RotationRun, SyncedOutputsAreTheSameAndToldAlike) {
    for (int i = 0; i < 40; ++i)
        AddFile(L"cab" + std::to_wstring(i) + L".3bcoef", 2 + i, 3);
    WriteText(m_source.File(L"cab5x.3bcoef"), "damaged");
    EXPECT_EQ(Run().written, 40U);
    const std::vector<SFileOutcome> unsynced = m_listener.outcomes;
    m_request.sync = true;
    for (const std::size_t jobs : {1U, 3U}) {
        m_request.jobs = jobs;
        const SRotationOutcome outcome = Run();
        EXPECT_EQ(outcome.written, 40U);
        EXPECT_EQ(outcome.failed, 1U);
        ExpectToldAlike(m_listener.outcomes, unsynced);
    }
    EXPECT_EQ(m_target.Names().size(), 40U);
}

TEST_F(RotationRun, WhatAListenerThrowsLeavesNothingBehind) {
    for (int i = 0; i < 12; ++i)
        AddFile(L"cab" + std::to_wstring(i) + L".3bcoef", 200, 300);
    m_listener.afterFile = [] { throw std::out_of_range("no more of it"); };
    for (const bool sync : {true, false})
        for (const std::size_t jobs : {1U, 3U}) {
            m_request.jobs = jobs;
            m_request.sync = sync;
            EXPECT_THROW(Run(), std::out_of_range);
            EXPECT_EQ(CMemoryBudget::Process().Kept(), 0U);
            const Names names = m_target.Names();
            ASSERT_FALSE(names.empty());
            EXPECT_EQ(names.front().rfind(L"cab0-90", 0), 0U) << "nothing under work";
        }
}

TEST_F(RotationRun, TellsThatItsListenerGotNoMemory) {
    AddFile(L"a.3bcoef", 4, 3);
    m_listener.afterFile = [] { throw std::bad_alloc(); };
    EXPECT_THROW(Run(), std::bad_alloc);
}

TEST_F(RotationRun, WhatAKilledRunLeftIsNoCabinet) {
    AddFile(L"a.3bcoef", 2, 3);
    COutputFolder killed(m_source.Path(), true);
    std::vector<std::unique_ptr<CTemporaryOutput>> left;
    for (const SFileKind& kind : FileKinds()) {
        left.push_back(killed.Begin(L"b" + std::wstring(kind.extension)));
        WriteText(left.back()->Path(), "half");
    }
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    EXPECT_EQ(m_target.Names(), Names{L"a-90\u00B0.3bcoef"});
}

TEST_F(RotationRun, WhatAKilledRunLeftInTheTargetIsRemoved) {
    AddFile(L"a.3bcoef", 2, 3);
    const std::wstring left =
        m_target.File(fmt::format(L".trevolt-{:x}-7ffffff0-1-1.tmp", ProcessRealm()));
    WriteText(left, "half");
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    EXPECT_EQ(m_target.Names(), Names{L"a-90\u00B0.3bcoef"});
    WriteText(left, "half");
    m_request.existing = EExistingOutput::Skip;
    EXPECT_EQ(Run().skipped, 1U) << "nothing is to be written any more";
    EXPECT_EQ(m_target.Names(), Names{L"a-90\u00B0.3bcoef"});
}

#ifndef _WIN32
TEST_F(RotationRun, WhatAKilledRunLeftIsRemovedWhereNothingElseFits) {
    const CLeftoverFolder target;
    AddFile(L"a.3bcoef", 2, 3);
    m_request.targetFolder = target.Path();
    m_request.dryRun = true;
    Run();
    EXPECT_TRUE(PathExists(target.Left()));
    m_request.dryRun = false;
    ExpectNothingToDo("cannot be made, written to or synced: File name too long: choose another");
    EXPECT_FALSE(PathExists(target.Left()));
}

TEST_F(RotationRun, ASideFileInATargetThatTheRunMakesHasANameThatTheSystemTakes) {
    AddFile(L"a.3bcoef", 2, 3);
    m_request.targetFolder = m_target.File(L"new");
    const std::wstring name = m_target.File(L"new/") + std::wstring(251, L'a');
    for (const bool dryRun : {true, false}) {
        m_request.dryRun = dryRun;
        m_request.report.clear();
        m_request.manifest = name + L".html";
        ExpectNothingToDo("is no name that the system takes: File name too long: choose another");
        m_request.manifest.clear();
        m_request.report = name + L".html";
        ExpectNothingToDo("is no name that the system takes: File name too long: choose another");
    }
    m_request.manifest = name + L".htm"; // 255 characters
    m_request.report.clear();
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    EXPECT_TRUE(FileExists(m_request.manifest));
}

TEST_F(RotationRun, AFifoIsNotReplaced) {
    AddFile(L"a.3bcoef", 2, 3);
    const std::wstring fifo = m_target.File(L"a-90\u00B0.3bcoef");
    ASSERT_EQ(mkfifo(ToNativePath(fifo)->c_str(), 0600), 0);
    for (const EExistingOutput existing :
         {EExistingOutput::Replace, EExistingOutput::Skip, EExistingOutput::Refuse}) {
        m_request.existing = existing;
        EXPECT_EQ(Run().failed, 1U);
        ExpectProblem(
            "its output a-90\xC2\xB0.3bcoef is neither a file nor a folder: choose another target");
        EXPECT_EQ(KindOfEntry(fifo), EntryKind::Other);
    }
}

TEST_F(RotationRun, ARefusedRunMakesNoFolder) {
    for (const wchar_t* name : {L"a", L"b"}) {
        ASSERT_TRUE(CreateFolders(m_source.File(name)));
        AddFile(name + std::wstring(L"/x.3bcoef"), 2, 3);
    }
    std::filesystem::create_symlink("nowhere", *ToNativePath(m_target.File(L"b")));
    m_request.recursive = true;
    for (const bool dryRun : {true, false}) {
        m_request.dryRun = dryRun;
        EXPECT_EQ(FirstOf(Run().errors), "the target folder " + WideToShownUtf8(m_target.Path()) +
                                             "b/ cannot be made, written to or synced: No such "
                                             "file or directory: choose another");
        EXPECT_EQ(m_target.Names(), Names{L"b"});
    }
}

TEST_F(RotationRun, WhatAKilledRunLeftBesideTheManifestIsRemovedToo) {
    const CLeftoverFolder beside;
    AddFile(L"a.3bcoef", 2, 3);
    m_request.manifest = beside.Path() + L"m";
    ExpectNothingToDo("where no file can be made: File name too long: choose another");
    EXPECT_FALSE(PathExists(beside.Left()));
}
#endif

TEST_F(RotationRun, AnOutputThatWouldReplaceAnotherOfTheRunIsNamed) {
    AddFile(L"a.3bcoef", 2, 3);
    AddFile(L"b.3bcoef", 4, 5);
    Bytes first;
    // As in a folder that does not tell the two names apart.
    m_listener.afterFile = [&] {
        if (m_listener.outcomes.size() > 1)
            return;
        first = ReadFile(m_target.File(L"a-90\u00B0.3bcoef"));
        std::filesystem::create_hard_link(
            std::filesystem::path(*ToNativePath(m_target.File(L"a-90\u00B0.3bcoef"))),
            std::filesystem::path(*ToNativePath(m_target.File(L"b-90\u00B0.3bcoef"))));
    };
    const SRotationOutcome outcome = Run();
    EXPECT_EQ(outcome.written, 1U);
    EXPECT_EQ(outcome.failed, 1U);
    EXPECT_EQ(m_listener.outcomes[1].problems,
              std::vector<std::string>{"cannot be written: its name means the file "
                                       "a-90\xC2\xB0.3bcoef in the target folder, which this run "
                                       "wrote before"});
    EXPECT_EQ(ReadFile(m_target.File(L"a-90\u00B0.3bcoef")), first);
    EXPECT_EQ(m_target.Names().size(), 2U);
}

TEST_F(RotationRun, ATargetInsideTheSourceAndOneAroundItAreOrdinaryFolders) {
    AddFile(L"a.3bcoef", 2, 3);
    const Bytes before = ReadFile(m_source.File(L"a.3bcoef"));
    m_request.targetFolder = m_source.File(L"inside.3bcoef");
    ASSERT_TRUE(CreateFolders(m_request.targetFolder));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Run().written, 1U);
        EXPECT_EQ(m_source.Names(), (Names{L"a.3bcoef", L"inside.3bcoef"}));
    }
    EXPECT_TRUE(PathExists(WithSeparator(m_request.targetFolder) + L"a-90\u00B0.3bcoef"));

    m_request.sources = {m_request.targetFolder};
    m_request.targetFolder = m_source.Path();
    EXPECT_EQ(Run().written, 1U);
    EXPECT_EQ(m_source.Names(),
              (Names{L"a-90\u00B0-90\u00B0.3bcoef", L"a.3bcoef", L"inside.3bcoef"}));
    EXPECT_EQ(ReadFile(m_source.File(L"a.3bcoef")), before);
}

TEST_F(RotationRun, HoldsMemoryOfTheFilesInWorkOnly) {
    for (int i = 0; i < 20; ++i)
        AddFile(L"cab" + std::to_wstring(i) + L".3bcoef", 100, 100);
    const std::uint64_t oneFile = 100 * 100 * (2 * (48 + 4) + 3 + 3);
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + oneFile);
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    EXPECT_EQ(m_target.Names().size(), 20U);
}

// The second file comes to its turn while the first has memory, since those between are refused
// quickly.
TEST_F(RotationRun, FilesThatFitOneByOneAreTurnedByAnyNumberOfJobs) {
    AddFile(L"a.3bcoef", 10, 10);
    AddFile(L"b.3wcoef", 4, 3);
    Bytes tooWide = ReadFile(m_source.File(L"b.3wcoef"));
    StoreLittle<std::uint32_t>(&tooWide[28], 65536);
    for (int i = 0; i < 100; ++i)
        WriteFile(m_source.File(L"b" + std::to_wstring(i) + L".3wcoef"), tooWide);
    ASSERT_TRUE(RemoveFile(m_source.File(L"b.3wcoef")));
    AddFile(L"c.3bcoef", 10, 10);
    m_request.size = PixelSize{6000, 5000};
    m_request.jobs = 2;
    const std::uint64_t turned = std::uint64_t{6000} * 5000 * 3;
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + turned + 4000000);
    EXPECT_EQ(Run().written, 2U);
    EXPECT_EQ(m_listener.outcomes.back().problems, std::vector<std::string>());
}

// A word file's pixels are put together in whole blocks, of which a narrow one fills little.
TEST_F(RotationRun, NarrowWordFilesThatFitOneByOneAreTurnedByAnyNumberOfJobs) {
    for (const wchar_t* name : {L"a.3bcoef", L"b.3bcoef"}) {
        AddFile(name, 1, 16384);
        ASSERT_TRUE(
            ReplaceWith(m_source.File(name), m_source.File(std::wstring(name) + L".12wcoef")));
    }
    m_request.angle = kAngles[1];
    m_request.jobs = 2;
    const std::uint64_t blocks = std::uint64_t{128} * 256 * 128 * 24;
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + blocks + 8000000);
    EXPECT_EQ(Run().written, 2U);
}

TEST_F(RotationRun, ThreadsTakeNoMemoryThatOneCanDoWithout) {
    AddFile(L"a.3bcoef", 10, 10);
    m_request.size = PixelSize{6000, 5000};
    const std::uint64_t turned = std::uint64_t{6000} * 5000 * 3;
    const CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + turned);
    for (const std::size_t jobs : {1U, 256U}) {
        m_request.jobs = jobs;
        EXPECT_EQ(Run().written, 1U);
        EXPECT_EQ(Only().problems, std::vector<std::string>());
    }
}

TEST_F(RotationRun, WritesNothingWhenInterruptedFromTheStart) {
    for (int i = 0; i < 9; ++i)
        AddFile(L"cab" + std::to_wstring(i) + L".3bcoef", 10, 10);
    m_interrupted = true;
    const SRotationOutcome outcome = Run();
    EXPECT_EQ(outcome.end, ERotationEnd::Interrupted);
    EXPECT_EQ(outcome.written, 0U);
    EXPECT_EQ(outcome.failed, 0U);
    EXPECT_TRUE(m_target.Names().empty());
}

// Many times over: the other threads are anywhere in their files when the run is interrupted.
TEST_F(RotationRun, TellsOfEveryOutputOfAnInterruptedRun) {
    for (int i = 0; i < 9; ++i)
        AddFile(L"cab" + std::to_wstring(i) + L".3bcoef", 10, 10);
    m_listener.afterFile = [&] { m_interrupted = true; };
    for (int round = 0; round < 50; ++round) {
        m_interrupted = false;
        m_request.sync = round % 10 == 0;
        m_listener.outcomes.clear();
        const SRotationOutcome outcome = Run();
        EXPECT_EQ(outcome.end, ERotationEnd::Interrupted);
        EXPECT_GE(outcome.written, 1U);
        const std::vector<std::wstring> names = m_target.Names(); // whole outputs, no temporary
        ASSERT_EQ(names.size(), outcome.written);
        ASSERT_EQ(m_listener.outcomes.size(), outcome.written);
        for (const std::wstring& name : names) {
            CChromaCorrectCoef map;
            map.Resize(10, 10);
            EXPECT_EQ(Read3bCoefFile(map, m_target.File(name).c_str()), S_OK);
            EXPECT_TRUE(RemoveFile(m_target.File(name)));
        }
    }
}

TEST_F(RotationRun, FilesOfMorePixelsThanTheLimitFail) {
    m_request.lenient = true;
    for (const wchar_t* name : {L"a.3bcoef", L"a.3wcoef", L"a.cccoef"}) {
        AddFile(name, 5, 3);
        for (const PixelSize& largest : {PixelSize{5, 3}, PixelSize{65535, 3}, PixelSize{5, 9}}) {
            m_request.limits.largestSize = largest;
            EXPECT_EQ(Run().end, ERotationEnd::AllDone);
        }
        ASSERT_TRUE(RemoveFile(m_target.File(ExportName(name, L"90\u00B0"))));
        for (const PixelSize& largest : {PixelSize{4, 3}, PixelSize{5, 2}, PixelSize{3, 5}}) {
            m_request.limits.largestSize = largest;
            EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
            ExpectProblem("its size 5 x 3 is above the limit of " + std::to_string(largest.width) +
                          " x " + std::to_string(largest.height));
        }
        EXPECT_EQ(m_target.Names(), Names{});
        ASSERT_TRUE(RemoveFile(m_source.File(name)));
    }
}

TEST_F(RotationRun, FilesOfMoreBytesThanTheLimitFail) {
    m_request.lenient = true;
    AddFile(L"a.3bcoef", 5, 3);
    const std::uint64_t bytes = ReadFile(m_source.File(L"a.3bcoef")).size();
    m_request.limits.fileBytes = bytes;
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    ASSERT_TRUE(RemoveFile(m_target.File(L"a-90\u00B0.3bcoef")));
    m_request.limits.fileBytes = bytes - 1;
    EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
    ExpectProblem("its " + std::to_string(bytes) + " bytes are above the limit of " +
                  std::to_string(bytes - 1));
    EXPECT_EQ(m_target.Names(), Names{});
}

#ifndef _WIN32
TEST_F(RotationRun, AFileWhoseBytesCannotBeCountedIsNotTakenForAShortOne) {
    m_request.lenient = true;
    m_request.size = PixelSize{2, 2};
    ASSERT_EQ(symlink("/proc/self/mem", ToNativePath(m_source.File(L"a.3bcoef"))->c_str()), 0);
    m_request.limits.fileBytes = 1000;
    EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
    ExpectProblem("its bytes cannot be counted, which are limited");
    EXPECT_EQ(m_target.Names(), Names{});
}
#endif

class ManifestOfRun : public RotationRun {
  protected:
    ManifestOfRun() { m_request.manifest = m_place.File(L"sums.txt"); }

    static std::string LineOf(const std::wstring& path) {
        return ManifestLine(Sha256OfFile(path).digits, path).value_or("no line");
    }
    /// What the manifest has of a source and its output.
    std::string LinesOf(const std::wstring& name) const {
        return LineOf(m_source.File(name)) +
               LineOf(m_target.File(ExportName(name, m_request.angle.text)));
    }

    CTemporaryFolder m_place;
};

TEST_F(ManifestOfRun, ListsEachOutputBehindItsSourceWhateverTheJobs) {
    Names names;
    for (const wchar_t* ending : {L".9bcoef", L".3wcoef", L".cccoef", L".9wcoef.9wPCoef"})
        for (const wchar_t* number : {L"1", L"2"}) {
            names.push_back(std::wstring(L"cab") + number + ending);
            AddFile(names.back(), 5, 3);
        }
    std::sort(names.begin(), names.end());
    for (const std::size_t jobs : {1U, 2U, 7U}) {
        m_request.jobs = jobs;
        const SRotationOutcome outcome = Run();
        EXPECT_EQ(outcome.end, ERotationEnd::AllDone);
        EXPECT_EQ(outcome.manifestError, "");
        std::string expected;
        for (const std::wstring& name : names)
            expected += LinesOf(name);
        EXPECT_EQ(m_place.Names(), Names{L"sums.txt"});
        EXPECT_EQ(ReadText(m_request.manifest), expected);
        ASSERT_TRUE(RemoveFile(m_request.manifest));
    }
}

TEST_F(ManifestOfRun, ListsNoFailedFile) {
    AddFile(L"a.3bcoef", 4, 3);
    AddCutShort(L"b.3bcoef", *FindExportKind(L"b.3bcoef"));
    WriteText(m_source.File(L"c.cccoef"), "no tag\n");
    EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
    EXPECT_EQ(ReadText(m_request.manifest), LinesOf(L"a.3bcoef"));
}

TEST_F(ManifestOfRun, ListsWhatALenientRunWrites) {
    AddCutShort(L"b.3bcoef", *FindExportKind(L"b.3bcoef"));
    m_request.lenient = true;
    EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
    EXPECT_EQ(ReadText(m_request.manifest), LinesOf(L"b.3bcoef"));
}

TEST_F(ManifestOfRun, IsNotWrittenWhereNothingIs) {
    AddCutShort(L"b.3bcoef", *FindExportKind(L"b.3bcoef"));
    EXPECT_EQ(Run().end, ERotationEnd::SomeFailed);
    EXPECT_EQ(m_place.Names(), Names{});
}

TEST_F(ManifestOfRun, ListsWhatAnInterruptedRunWrote) {
    for (const wchar_t* name : {L"a.3bcoef", L"b.3bcoef", L"c.3bcoef"})
        AddFile(name, 4, 3);
    m_listener.afterFile = [&] { m_interrupted = true; };
    EXPECT_EQ(Run().end, ERotationEnd::Interrupted);
    EXPECT_EQ(ReadText(m_request.manifest), LinesOf(L"a.3bcoef"));
}

TEST_F(ManifestOfRun, NoFileIsReplaced) {
    AddFile(L"a.3bcoef", 4, 3);
    WriteText(m_request.manifest, "kept");
    ExpectNothingToDo("sums.txt exists already: choose another name");
    EXPECT_EQ(ReadText(m_request.manifest), "kept");
    m_request.manifest = m_place.Path();
    ExpectNothingToDo("is a folder: give the name of a file");
}

TEST_F(ManifestOfRun, ItsFolderMustStand) {
    AddFile(L"a.3bcoef", 4, 3);
    m_request.manifest = m_place.File(L"no") + kPathSeparator + L"sums.txt";
    ExpectNothingToDo("which does not exist: make it, or choose another");
    m_request.manifest = m_place.File(L"no") + kPathSeparator;
    ExpectNothingToDo("which does not exist: make it, or choose another");
    WriteText(m_place.File(L"no"), "x");
    ExpectNothingToDo("which is no folder: choose another");
    ASSERT_TRUE(RemoveFile(m_place.File(L"no")));
    EXPECT_EQ(m_place.Names(), Names{});
}

TEST_F(ManifestOfRun, IsNeverTakenForACabinet) {
    AddFile(L"a.3bcoef", 4, 3);
    for (const wchar_t* name : {L"sums.9fcoef", L"sums.CCCOEF.txt"}) {
        m_request.manifest = m_place.File(name);
        ExpectNothingToDo("has the name of a coefficient file: choose another name");
    }
    m_request.manifest = m_source.File(L"sums");
    EXPECT_EQ(Run().written, 1U);
    EXPECT_EQ(m_source.Names(), (Names{L"a.3bcoef", L"sums"}));
    m_request.manifest = m_target.File(L"sums");
    EXPECT_EQ(Run().written, 1U);
    EXPECT_EQ(ReadText(m_target.File(L"sums")), LinesOf(L"a.3bcoef"));
}

TEST_F(ManifestOfRun, IsToldWhenItCannotBeWritten) {
    AddFile(L"a.3bcoef", 4, 3);
    const std::wstring folder = m_place.File(L"folder");
    m_request.manifest = folder + kPathSeparator + L"sums.txt";
    ASSERT_TRUE(CreateFolders(folder));
    const std::wstring away = m_place.File(L"away");
    m_listener.afterFile = [&] { EXPECT_TRUE(ReplaceWith(folder, away)); };
    SRotationOutcome outcome = Run();
    EXPECT_EQ(outcome.end, ERotationEnd::SomeFailed);
    EXPECT_EQ(outcome.failed, 0U);
    EXPECT_EQ(outcome.written, 1U);
    EXPECT_EQ(outcome.manifestError,
              "the manifest " + WideToShownUtf8(m_request.manifest) +
                  " cannot be written: E_COEF_OPENFAILED (0xE0830011): the file "
                  "could not be opened: No such file or directory");

    ASSERT_TRUE(CreateFolders(folder));
    m_listener.afterFile = [&] { EXPECT_TRUE(CreateFolders(m_request.manifest)); };
    outcome = Run();
    EXPECT_EQ(outcome.end, ERotationEnd::SomeFailed);
    const std::string told =
        "the manifest " + WideToShownUtf8(m_request.manifest) + " cannot be given its name: ";
    EXPECT_EQ(outcome.manifestError.substr(0, told.size()), told);
    const auto left = ListEntries(folder + kPathSeparator).entries;
    EXPECT_EQ(left.size(), 3U) << "'.', '..' and the folder in the manifest's place";
}

TEST_F(RotationRun, TellsSumsWhereTheyAreWanted) {
    AddFile(L"a.3bcoef", 4, 3);
    AddCutShort(L"b.3bcoef", *FindExportKind(L"b.3bcoef"));
    EXPECT_EQ(Run().written, 1U);
    EXPECT_EQ(m_listener.outcomes.at(0).sourceSum, "");
    EXPECT_EQ(m_listener.outcomes.at(0).outputSum, "");
    m_request.sums = true;
    EXPECT_EQ(Run().written, 1U);
    const SFileOutcome& turned = m_listener.outcomes.at(0);
    EXPECT_EQ(turned.sourceSum, Sha256OfFile(m_source.File(L"a.3bcoef")).digits);
    EXPECT_EQ(turned.outputSum, Sha256OfFile(m_target.File(L"a-90\u00B0.3bcoef")).digits);
    EXPECT_EQ(turned.manifestLines, "");
    const SFileOutcome& failed = m_listener.outcomes.at(1);
    EXPECT_EQ(failed.sourceSum, Sha256OfFile(m_source.File(L"b.3bcoef")).digits);
    EXPECT_EQ(failed.outputSum, "");
    m_request.dryRun = true;
    EXPECT_EQ(Run().written, 1U);
    EXPECT_EQ(m_listener.outcomes.at(0).sourceSum, "");
}

TEST_F(RotationRun, NoSumIsToldOfAnOutputThatDoesNotStand) {
    AddFile(L"a.3bcoef", 4, 3);
    AddFile(L"b.3bcoef", 4, 3);
    m_request.existing = EExistingOutput::Refuse;
    m_request.sums = true;
    m_listener.afterFile = [&] { WriteText(m_target.File(L"b-90\u00B0.3bcoef"), "mine"); };
    EXPECT_EQ(Run().failed, 1U);
    EXPECT_NE(m_listener.outcomes.at(0).outputSum, "");
    EXPECT_EQ(m_listener.outcomes.at(1).outputSum, "");
    EXPECT_NE(m_listener.outcomes.at(1).sourceSum, "");
}

TEST_F(RotationRun, TellsHowLongAFileTook) {
    AddFile(L"a.3bcoef", 300, 200);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(Run().written, 1U);
    EXPECT_GT(Only().took.count(), 0);
    EXPECT_LE(Only().took, std::chrono::steady_clock::now() - begin);
}

/// What a picture can tell of a map.
SThumbnail Pictured(const CChromaCorrectCoef& map) {
    return {fmt::format("{} x {}", map.Width(), map.Height()), 0, 0,
            fmt::format("{}", map.ElementOrDefault(0, 0).m[0])};
}

TEST_F(RotationRun, PicturesSourcesAndOutputs) {
    AddFile(L"a.9fcoef", 4, 3);
    AddFile(L"b.9wcoef", 5, 2);
    m_request.thumbnail = Pictured;
    m_request.jobs = 2;
    EXPECT_EQ(Run().written, 2U);
    ASSERT_EQ(m_listener.outcomes.size(), 2U);
    EXPECT_EQ(m_listener.outcomes[0].sourcePicture.png, "4 x 3");
    EXPECT_EQ(m_listener.outcomes[0].outputPicture.png, "3 x 4");
    EXPECT_EQ(m_listener.outcomes[0].sourcePicture.range, fmt::format("{}", BytePixel(0, 0).m[0]));
    EXPECT_EQ(m_listener.outcomes[0].outputPicture.range, fmt::format("{}", BytePixel(0, 2).m[0]));
    EXPECT_EQ(m_listener.outcomes[1].sourcePicture.png, "5 x 2");
    EXPECT_EQ(m_listener.outcomes[1].outputPicture.png, "2 x 5");
    m_request.size = PixelSize{8, 6};
    EXPECT_EQ(Run().written, 2U);
    EXPECT_EQ(m_listener.outcomes.at(0).sourcePicture.png, "4 x 3") << "its own size";
    EXPECT_EQ(m_listener.outcomes.at(0).outputPicture.png, "6 x 8");
}

TEST_F(RotationRun, PicturesWhatCanBeRead) {
    AddCutShort(L"a.3bcoef", *FindExportKind(L"a.3bcoef"));
    WriteText(m_source.File(L"b.3bcoef"), "no file of this kind");
    AddFile(L"c.3bcoef", 9, 9);
    m_request.limits.largestSize = {8, 8};
    m_request.thumbnail = Pictured;
    EXPECT_EQ(Run().failed, 3U);
    ASSERT_EQ(m_listener.outcomes.size(), 3U);
    EXPECT_EQ(m_listener.outcomes[0].sourcePicture.png, "") << "all its pixels would be defaults";
    EXPECT_EQ(m_listener.outcomes[0].sourcePicture.lack, "not read");
    EXPECT_EQ(m_listener.outcomes[0].outputPicture.png, "");
    EXPECT_EQ(m_listener.outcomes[1].sourcePicture.png, "");
    EXPECT_EQ(m_listener.outcomes[1].sourcePicture.lack, "") << "it has no size either";
    EXPECT_EQ(m_listener.outcomes[2].sourcePicture.png, "") << "its pixels are not to be read";
}

TEST_F(RotationRun, NoFileFailsByItsPicture) {
    AddFile(L"a.3bcoef", 4, 3);
    m_request.thumbnail = [](const CChromaCorrectCoef&) -> SThumbnail { throw std::bad_alloc(); };
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    EXPECT_EQ(Only().sourcePicture.png, "");
    EXPECT_EQ(Only().sourcePicture.lack, "not enough memory");
}

TEST_F(RotationRun, WhatDoesNotStandHasNoPicture) {
    AddFile(L"a.3bcoef", 4, 3);
    AddFile(L"b.3bcoef", 4, 3);
    m_request.existing = EExistingOutput::Refuse;
    m_request.thumbnail = Pictured;
    m_listener.afterFile = [&] { WriteText(m_target.File(L"b-90\u00B0.3bcoef"), "mine"); };
    EXPECT_EQ(Run().failed, 1U);
    EXPECT_EQ(m_listener.outcomes.at(1).sourcePicture.png, "4 x 3");
    EXPECT_EQ(m_listener.outcomes.at(1).outputPicture.png, "");
    m_listener.afterFile = nullptr;
    m_request.existing = EExistingOutput::Skip;
    EXPECT_EQ(Run().skipped, 2U);
    EXPECT_EQ(m_listener.outcomes.at(0).sourcePicture.png, "");
}

class ReportOfRun : public RotationRun {
  protected:
    ReportOfRun() {
        m_request.report = m_place.File(L"run.html");
        m_request.existing = EExistingOutput::Refuse;
        AddFile(L"a.3bcoef", 4, 3);
    }

    CTemporaryFolder m_place;
};

TEST_F(ReportOfRun, ReplacesAsOutputsDo) {
    WriteText(m_request.report, "kept");
    ExpectNothingToDo("run.html exists already: choose another name");
    m_request.existing = EExistingOutput::Skip;
    ExpectNothingToDo("run.html exists already: choose another name");
    m_request.existing = EExistingOutput::Replace;
    EXPECT_EQ(Run().written, 1U);
    EXPECT_EQ(ReadText(m_request.report), "kept") << "its writer is the listener";
}

TEST_F(ReportOfRun, AFolderIsNeverReplaced) {
    m_request.report = m_place.Path();
    m_request.existing = EExistingOutput::Replace;
    ExpectNothingToDo("is a folder: give the name of a file");
}

TEST_F(ReportOfRun, HasAPlaceAndANameOfItsOwn) {
    m_request.report = m_place.File(L"no") + kPathSeparator + L"run.html";
    ExpectNothingToDo("which does not exist: make it, or choose another");
    m_request.report = m_place.File(L"run.9fcoef.html");
    ExpectNothingToDo("has the name of a coefficient file: choose another name");
    const std::wstring folder = m_place.File(L"x");
    ASSERT_TRUE(CreateFolders(folder));
    const std::wstring around = folder + kPathSeparator + L".." + kPathSeparator;
    m_request.report = around + L"run.html";
    m_request.manifest = m_place.File(L"run.html");
    ExpectNothingToDo("the manifest and the report are both");
    m_request.manifest = around + L"run2.html";
    EXPECT_EQ(Run().written, 1U);
    m_request.existing = EExistingOutput::Replace;
    m_request.manifest = folder + kPathSeparator + L"run.html";
    EXPECT_EQ(Run().written, 1U) << "of one name in two folders";
}

TEST_F(RotationRun, WhatHasNoNameWhenTheRunIsInterruptedGetsNone) {
    for (int i = 0; i < 3; ++i)
        AddFile(L"cab" + std::to_wstring(i) + L".3bcoef", 10, 10);
    m_request.jobs = 3;
    m_listener.afterFile = [&] {
        while (m_target.Names().size() < 3) // the others are written by then, or about to be
            std::this_thread::yield();
        m_interrupted = true;
    };
    const SRotationOutcome outcome = Run();
    EXPECT_EQ(outcome.end, ERotationEnd::Interrupted);
    EXPECT_EQ(outcome.written, 1U);
    EXPECT_EQ(m_target.Names(), Names{L"cab0-90\u00B0.3bcoef"});
    EXPECT_EQ(m_listener.outcomes.size(), 1U);
}

#ifndef _WIN32
std::string Narrow(const std::wstring& path) { return ToNativePath(path).value(); }

TEST_F(RotationRun, PassesOverPipesDevicesAndLinksToFolders) {
    ASSERT_EQ(mkfifo(Narrow(m_source.File(L"pipe.9fcoef")).c_str(), 0600), 0);
    ASSERT_EQ(symlink("/dev/null", Narrow(m_source.File(L"device.9fcoef")).c_str()), 0);
    ASSERT_EQ(symlink("/", Narrow(m_source.File(L"folder.9fcoef")).c_str()), 0);
    ExpectNothingToDo("there is no coefficient file in");
}

TEST_F(RotationRun, FollowsLinksToFilesAndReportsThoseThatLeadNowhere) {
    const CTemporaryFolder elsewhere;
    CChromaCorrectCoef map;
    map.Resize(2, 2);
    ASSERT_EQ(Write3bCoefFile(map, elsewhere.File(L"real").c_str(), nullptr), S_OK);
    ASSERT_EQ(symlink(Narrow(elsewhere.File(L"real")).c_str(),
                      Narrow(m_source.File(L"a.3bcoef")).c_str()),
              0);
    ASSERT_EQ(symlink("nowhere", Narrow(m_source.File(L"b.3bcoef")).c_str()), 0);
    const SRotationOutcome outcome = Run();
    EXPECT_EQ(outcome.written, 1U);
    EXPECT_EQ(outcome.failed, 1U);
    ASSERT_EQ(m_listener.outcomes.size(), 2U);
    EXPECT_EQ(m_listener.outcomes[0].notes,
              std::vector<std::string>{"is a link: what it leads to was taken"});
    EXPECT_EQ(m_listener.outcomes[1].problems,
              (std::vector<std::string>{
                  "cannot be read: E_COEF_OPENFAILED (0xE0830011): the file could not be opened: "
                  "No such file or directory"}));
    m_request.lenient = true;
    m_request.size = PixelSize{3, 2};
    EXPECT_EQ(Run().written, 2U);
    ASSERT_EQ(m_listener.outcomes.size(), 2U);
    EXPECT_EQ(m_listener.outcomes[1].notes, std::vector<std::string>{}); // it leads to nothing
}

#ifdef __linux__
// The first page of a process is nobody's: its memory opens, and the first read fails.
TEST_F(RotationRun, TellsWhyAFileCannotBeRead) {
    for (const SFileKind& kind : FileKinds())
        ASSERT_EQ(symlink("/proc/self/mem",
                          Narrow(m_source.File(L"a" + std::wstring(kind.extension))).c_str()),
                  0);
    for (const auto& size : {std::optional<PixelSize>(), std::optional(PixelSize{4, 3})}) {
        m_request.size = size;
        const SRotationOutcome outcome = Run();
        EXPECT_EQ(outcome.written, 0U);
        EXPECT_EQ(outcome.failed, FileKinds().size());
        for (const SFileOutcome& file : m_listener.outcomes)
            EXPECT_EQ(file.problems, std::vector<std::string>{"cannot be read: Input/output error"})
                << file.name;
    }
}
#endif

TEST_F(RotationRun, ALinkInTheOutputsPlaceIsReplacedAndNotWrittenThrough) {
    AddFile(L"a.3bcoef", 2, 3);
    const Bytes before = ReadFile(m_source.File(L"a.3bcoef"));
    ASSERT_EQ(symlink(Narrow(m_source.File(L"a.3bcoef")).c_str(),
                      Narrow(m_target.File(L"a-90\u00B0.3bcoef")).c_str()),
              0);
    EXPECT_EQ(Run().end, ERotationEnd::AllDone);
    EXPECT_EQ(ReadFile(m_source.File(L"a.3bcoef")), before);
    EXPECT_NE(ReadFile(m_target.File(L"a-90\u00B0.3bcoef")), before);
}

// The system makes this file anew whenever it is read.
TEST_F(ManifestOfRun, ASourceThatChangesWhileItIsTurnedFails) {
    ASSERT_EQ(symlink("/proc/sys/kernel/random/uuid", Narrow(m_source.File(L"a.cccoef")).c_str()),
              0);
    m_request.size = PixelSize{2, 2};
    m_request.lenient = true;
    const std::string damage =
        "cannot be read: E_COEF_BADTEXT (0xE0830013): the first line is not a known tag";
    EXPECT_EQ(Run().written, 0U);
    EXPECT_EQ(Only().problems, (std::vector<std::string>{damage, "changed while it was turned"}));
    EXPECT_EQ(m_target.Names(), Names{});
    EXPECT_EQ(m_place.Names(), Names{});
    m_request.manifest.clear();
    EXPECT_EQ(Run().written, 1U);
    EXPECT_EQ(Only().problems, std::vector<std::string>{damage});
}

// The first page of a process's memory cannot be read.
TEST_F(ManifestOfRun, ASourceThatCannotBeReadToItsEndIsNamedWithTheReason) {
    ASSERT_EQ(symlink("/proc/self/mem", Narrow(m_source.File(L"a.cccoef")).c_str()), 0);
    m_request.size = PixelSize{2, 2};
    m_request.lenient = true;
    EXPECT_EQ(Run().written, 0U);
    ExpectProblem("cannot be read: Input/output error");
    EXPECT_EQ(m_target.Names(), Names{});
}

TEST_F(ManifestOfRun, ListsNoSourceThatDidNotOpen) {
    ASSERT_EQ(symlink("nowhere", Narrow(m_source.File(L"a.3bcoef")).c_str()), 0);
    m_request.size = PixelSize{2, 2};
    m_request.lenient = true;
    EXPECT_EQ(Run().written, 1U);
    EXPECT_EQ(ReadText(m_request.manifest), LineOf(m_target.File(L"a-90\u00B0.3bcoef")));
}

TEST_F(RotationRun, ReportsNamesThatAreNotUtf8) {
    AddFile(L"a.3bcoef", 2, 3);
    const std::string odd = Narrow(m_source.Path()) + "b\xFF.3bcoef";
    ASSERT_EQ(rename(Narrow(m_source.File(L"a.3bcoef")).c_str(), odd.c_str()), 0);
    AddFile(L"a.3bcoef", 2, 3);
    const SRotationOutcome outcome = Run();
    EXPECT_EQ(outcome.end, ERotationEnd::SomeFailed);
    EXPECT_EQ(outcome.written, 1U);
    EXPECT_EQ(outcome.failed, 1U);
    ASSERT_EQ(m_listener.outcomes.size(), 2U);
    EXPECT_EQ(m_listener.outcomes[0].name, "b\\xFF.3bcoef");
    EXPECT_EQ(m_listener.outcomes[0].problems,
              std::vector<std::string>{"passed over: its name is not valid UTF-8"});
}
#endif

} // namespace
} // namespace trevolt
