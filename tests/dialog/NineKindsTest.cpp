// All nine kinds from folder to folder, against what an independent program made of them.
#include <algorithm>
#include <array>

#include <gtest/gtest.h>

#include "app/dialog/TrevoltDlg.h"
#include "calibuf/ChunkLayout.h"
#include "platform/FileSystem.h"
#include "tests/dialog/MemoryView.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/TestFiles.h"
#include "trevolt/CoefRotation.h"
#include "trevolt/FileKinds.h"
#include "trevolt/RotationRun.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

using test::CTemporaryFolder;

constexpr std::array kCabinets{L"Cab_01.9fcoef", L"Cab_02.3fcoef", L"Cab_03.9bcoef",
                               L"Cab_04.3bcoef", L"Cab_05.cccoef", L"Cab_06.9wcoef",
                               L"Cab_07.3wcoef", L"Cab_08.4wcoef", L"Cab_09.12wcoef"};
constexpr std::int32_t kWidth = 40;
constexpr std::int32_t kHeight = 24;

std::wstring TurnedSample(const SAngle& angle, const std::wstring& name) {
    std::wstring folder = L"turned-" + std::wstring(angle.text);
    folder.pop_back(); // the degree sign
    return test::Sample(folder + L"/" + ExportName(name, angle.text));
}

void CopyCabinets(const CTemporaryFolder& folder) {
    for (const std::wstring name : kCabinets)
        test::WriteFile(folder.File(name), test::ReadFile(test::Sample(L"cabinet/" + name)));
}

void ExpectEqualMaps(const CChromaCorrectCoef& actual, const CChromaCorrectCoef& expected) {
    for (int y = 0; y < expected.Height(); ++y)
        for (int x = 0; x < expected.Width(); ++x)
            ASSERT_EQ(actual.FindElement(x, y)->m, expected.FindElement(x, y)->m) << x << ", " << y;
}

bool IsWordKind(const std::wstring& name) { return name.find(L"wcoef") != std::wstring::npos; }

/// Header, and the directory but for the compressed sizes.
void ExpectEqualChunkLayout(const test::Bytes& actual, const test::Bytes& expected,
                            std::uint32_t planeCount) {
    ASSERT_GE(actual.size(), kChunkHeaderBytes);
    EXPECT_TRUE(std::equal(actual.begin(), actual.begin() + kChunkHeaderBytes, expected.begin()));
    const std::uint32_t count = DecodeChunkHeader(expected.data()).recordCount;
    const std::size_t recordBytes = ChunkRecordBytes(planeCount);
    ASSERT_GE(actual.size(), kChunkHeaderBytes + count * recordBytes);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = kChunkHeaderBytes + i * recordBytes;
        const SChunkRecord a = DecodeChunkRecord(&actual[at], planeCount);
        const SChunkRecord e = DecodeChunkRecord(&expected[at], planeCount);
        EXPECT_EQ(std::tie(a.index, a.x, a.y, a.width, a.height),
                  std::tie(e.index, e.x, e.y, e.width, e.height));
    }
}

void ExpectTurnedAs(const std::wstring& file, const SAngle& angle, const std::wstring& name) {
    SCOPED_TRACE(WideToShownUtf8(file));
    const std::wstring sample = TurnedSample(angle, name);
    if (name.ends_with(L".cccoef")) {
        EXPECT_EQ(test::ReadText(file), test::ReadText(sample));
        return;
    }
    const SFileKind& kind = *FindLoadKind(name);
    const bool upright = angle.code == 2;
    CChromaCorrectCoef actual;
    CChromaCorrectCoef expected;
    for (CChromaCorrectCoef* map : {&actual, &expected})
        map->Resize(upright ? kWidth : kHeight, upright ? kHeight : kWidth);
    ASSERT_GE(kind.load(actual, file.c_str()), 0);
    ASSERT_GE(kind.load(expected, sample.c_str()), 0);
    ExpectEqualMaps(actual, expected);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    EXPECT_EQ(kind.readSize(file.c_str(), width, height), S_OK);
    EXPECT_EQ(width, actual.Width());
    EXPECT_EQ(height, actual.Height());
    if (IsWordKind(name)) {
        const bool virtualGreen = name.ends_with(L".4wcoef") || name.ends_with(L".12wcoef");
        ExpectEqualChunkLayout(test::ReadFile(file), test::ReadFile(sample), virtualGreen ? 12 : 9);
    }
}

class CQuietListener : public CRotationListener {
  public:
    void OnFile(const SFileOutcome& outcome, std::size_t, std::size_t) override {
        outcomes.push_back(outcome);
    }
    std::vector<SFileOutcome> outcomes;
};

/// Loads a sample into a map of the size and compares it with the pixels decoded beside it.
void ExpectDecoded(const std::wstring& sample, std::int32_t width, std::int32_t height) {
    SCOPED_TRACE(WideToShownUtf8(sample));
    CChromaCorrectCoef map;
    map.Resize(width, height);
    ASSERT_GE(FindLoadKind(sample)->load(map, test::Sample(sample).c_str()), 0);
    test::ExpectSamplePixels(map, sample + L".csv");
}

TEST(NineKinds, CabinetsLoadToTheirDecodedPixels) {
    for (const std::wstring name : kCabinets)
        ExpectDecoded(L"cabinet/" + name, kWidth, kHeight);
}

TEST(NineKinds, TheCommandLinesRunTurnsEveryCabinetAsExpected) {
    const CTemporaryFolder source;
    CopyCabinets(source);
    for (const SAngle& angle : kAngles) {
        const CTemporaryFolder target;
        CQuietListener listener;
        SRotationRequest request;
        request.sources = {source.Path()};
        request.targetFolder = target.Path();
        request.angle = angle;
        const SRotationOutcome outcome = RunRotation(request, false, listener);
        EXPECT_EQ(outcome.end, ERotationEnd::AllDone);
        EXPECT_EQ(outcome.written, kCabinets.size());
        EXPECT_EQ(target.Names().size(), kCabinets.size());
        for (const std::wstring name : kCabinets)
            ExpectTurnedAs(target.File(ExportName(name, angle.text)), angle, name);
    }
}

TEST(NineKinds, TheDialogsRunTurnsEveryCabinetAsExpected) {
    const CTemporaryFolder source;
    CopyCabinets(source);
    for (const SAngle& angle : kAngles) {
        const CTemporaryFolder target;
        test::CMemoryView view;
        view.SelectAngle(static_cast<std::int32_t>(angle.code), std::wstring(angle.text));
        CTranslate translate;
        CTrevoltDlg dialog(view, translate);
        dialog.Fields().sourceFolder = source.Path();
        dialog.Fields().targetFolder = target.Path();
        dialog.Fields().current = {kWidth, kHeight};
        dialog.OnStart();
        EXPECT_EQ(target.Names().size(), kCabinets.size());
        for (const std::wstring name : kCabinets)
            ExpectTurnedAs(target.File(ExportName(name, angle.text)), angle, name);
    }
}

TEST(NineKinds, AwkwardWordFilesLoadToTheirDecodedPixelsWhateverTheirOrigin) {
    // Loaded at position (0, 0), an area stored at an origin of its own moves to the left top.
    for (const wchar_t* name : {L"origin_1000_777.9wcoef", L"blocks_reversed.9wcoef"})
        ExpectDecoded(std::wstring(L"awkward/") + name, 300, 140);
}

TEST(NineKinds, AwkwardFilesAreNamedWithTheirStatus) {
    const CTemporaryFolder source;
    const CTemporaryFolder target;
    for (const std::wstring name : {L"blocks_reversed.9wcoef", L"crlf.cccoef", L"cut_short.9fcoef",
                                    L"origin_1000_777.9wcoef", L"version_2.9fcoef"})
        test::WriteFile(source.File(name), test::ReadFile(test::Sample(L"awkward/" + name)));
    CQuietListener listener;
    SRotationRequest request;
    request.sources = {source.Path()};
    request.targetFolder = target.Path();
    const SRotationOutcome outcome = RunRotation(request, false, listener);
    EXPECT_EQ(outcome.end, ERotationEnd::SomeFailed);
    EXPECT_EQ(outcome.written, 3U);
    EXPECT_EQ(outcome.failed, 2U);
    ASSERT_EQ(listener.outcomes.size(), 5U);
    EXPECT_EQ(listener.outcomes[2].problems,
              (std::vector<std::string>{"cannot be read: E_FAIL (0x80004005): the content is "
                                        "damaged or does not match its header"}));
    EXPECT_EQ(listener.outcomes[4].problems,
              (std::vector<std::string>{"cannot be read: E_COEF_BADFORMAT (0xE0830010): not a "
                                        "file of this kind, or of a newer version"}));
    EXPECT_EQ(listener.outcomes[3].losses, (std::vector<std::string>{"its origin (1000, 777)"}));
}

TEST(NineKinds, DamagedChunksAreReportedAndNotWritten) {
    const CTemporaryFolder source;
    const CTemporaryFolder target;
    test::Bytes bytes = test::ReadFile(test::Sample(L"awkward/blocks_reversed.9wcoef"));
    bytes[kChunkHeaderBytes + chunk_record::kPlaneSizes] ^= std::byte{1}; // sizes contradict
    test::WriteFile(source.File(L"a.9wcoef"), bytes);
    CQuietListener listener;
    SRotationRequest request;
    request.sources = {source.Path()};
    request.targetFolder = target.Path();
    RunRotation(request, false, listener);
    ASSERT_EQ(listener.outcomes.size(), 1U);
    EXPECT_EQ(listener.outcomes[0].problems,
              (std::vector<std::string>{"is damaged: 1 of its chunks could not be read"}));
    EXPECT_TRUE(target.Names().empty());

    request.lenient = true;
    const SRotationOutcome outcome = RunRotation(request, false, listener);
    EXPECT_EQ(outcome.end, ERotationEnd::SomeFailed);
    EXPECT_EQ(outcome.written, 1U);
    EXPECT_EQ(target.Names(), (std::vector<std::wstring>{L"a-90\u00B0.9wcoef"}));
}

TEST(NineKinds, ManySmallFilesGiveTheSameOutputsWithTwoJobs) {
    const CTemporaryFolder source;
    for (int copy = 0; copy < 12; ++copy)
        for (const std::wstring name : kCabinets)
            test::WriteFile(source.File(std::to_wstring(copy) + L"_" + name),
                            test::ReadFile(test::Sample(L"cabinet/" + name)));
    const CTemporaryFolder one;
    const CTemporaryFolder two;
    SRotationRequest request;
    request.sources = {source.Path()};
    CQuietListener first;
    CQuietListener second;
    request.targetFolder = one.Path();
    EXPECT_EQ(RunRotation(request, false, first).end, ERotationEnd::AllDone);
    request.targetFolder = two.Path();
    request.jobs = 2;
    EXPECT_EQ(RunRotation(request, false, second).end, ERotationEnd::AllDone);
    ASSERT_EQ(one.Names().size(), 108U);
    ASSERT_EQ(one.Names(), two.Names());
    for (const std::wstring& name : one.Names())
        ASSERT_EQ(test::ReadFile(one.File(name)), test::ReadFile(two.File(name)));
    ASSERT_EQ(first.outcomes.size(), second.outcomes.size());
    for (std::size_t i = 0; i < first.outcomes.size(); ++i)
        EXPECT_EQ(first.outcomes[i].name, second.outcomes[i].name);
}

} // namespace
} // namespace trevolt
