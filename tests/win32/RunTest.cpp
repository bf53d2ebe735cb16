// Whole runs on the real window, with the sample cabinets.
#include <windows.h>

#include <commctrl.h>

#include "tests/win32/WindowFixture.h"
#include "trevolt/CoefRotation.h"
#include "trevolt/FileKinds.h"

namespace trevolt {
namespace {

using test::EBoxIcon;
using test::SMessageBox;

constexpr SMapSize kCabinetSize{40, 24};
constexpr std::size_t kKindCount = 9;
const std::wstring kCabinetNames[kKindCount] = {
    L"Cab_01.9fcoef", L"Cab_02.3fcoef", L"Cab_03.9bcoef", L"Cab_04.3bcoef", L"Cab_05.cccoef",
    L"Cab_06.9wcoef", L"Cab_07.3wcoef", L"Cab_08.4wcoef", L"Cab_09.12wcoef"};

class TrevoltRun : public test::WindowFixture {
  protected:
    void UseFolders() { SaveFolders(m_source.Path(), m_target.Path()); }
    void AddSample(const std::wstring& name) const {
        test::WriteFile(m_source.File(name), test::ReadFile(test::Sample(L"cabinet/" + name)));
    }
    void TypeSize(SMapSize size) const {
        m_trevolt->Type(kIdWidth, std::to_wstring(size.width));
        m_trevolt->Type(kIdHeight, std::to_wstring(size.height));
    }

    /// Presses Start, and reads and closes the message box that it ends with.
    SMessageBox StartAndRead() const {
        m_trevolt->ClickModal(kIdStart);
        const HWND box = m_trevolt->WaitForPopup();
        const SMessageBox seen = test::ReadMessageBox(box);
        test::ClosePopup(box);
        return seen;
    }

    /// Fails unless `name`, turned by the angle, stands in the target folder with the pixels of the
    /// project's turned sample.
    void ExpectTurned(const std::wstring& name, const SAngle& angle) const {
        const std::wstring turnedName = ExportName(name, angle.text);
        const std::wstring degrees(angle.text.substr(0, angle.text.size() - 1));
        const SMapSize size =
            angle.code == 2 ? kCabinetSize : SMapSize{kCabinetSize.height, kCabinetSize.width};
        const SFileKind& kind = *FindLoadKind(name);
        CChromaCorrectCoef turned;
        CChromaCorrectCoef expected;
        turned.Resize(size.width, size.height);
        expected.Resize(size.width, size.height);
        const std::wstring sample = test::Sample(L"turned-" + degrees + L"/" + turnedName);
        ASSERT_FALSE(Failed(kind.load(expected, sample.c_str()))) << WideToShownUtf8(sample);
        ASSERT_FALSE(Failed(kind.load(turned, m_target.File(turnedName).c_str())))
            << WideToShownUtf8(turnedName);
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                ASSERT_EQ(std::memcmp(turned.FindElement(x, y), expected.FindElement(x, y),
                                      sizeof(SMatrixCoef)),
                          0)
                    << WideToShownUtf8(turnedName) << " at " << x << ", " << y;
    }

    test::CTemporaryFolder m_source;
    test::CTemporaryFolder m_target;
};

TEST_F(TrevoltRun, TurnsAllKindsByCabinetAtEveryAngle) {
    UseFolders();
    for (const std::wstring& name : kCabinetNames)
        AddSample(name);
    const auto& trevolt = Start();
    TypeSize(kCabinetSize);
    std::vector<std::wstring> expectedNames;
    for (const SAngle& angle : kAngles) {
        trevolt.SelectAngle(static_cast<int>(angle.code) - 1);
        EXPECT_EQ(StartAndRead().text, English(L"Trevolt_Export_Finished"));
        for (const std::wstring& name : kCabinetNames) {
            ExpectTurned(name, angle);
            expectedNames.push_back(ExportName(name, angle.text));
        }
    }
    std::sort(expectedNames.begin(), expectedNames.end());
    EXPECT_EQ(m_target.Names(), expectedNames);
}

TEST_F(TrevoltRun, TurnsEveryKindAsWholeScreenAtEveryAngle) {
    UseFolders();
    const auto& trevolt = Start();
    trevolt.Click(kIdByScreen);
    TypeSize(kCabinetSize);
    for (const std::wstring& name : kCabinetNames) {
        AddSample(name);
        for (const SAngle& angle : kAngles) {
            trevolt.SelectAngle(static_cast<int>(angle.code) - 1);
            EXPECT_EQ(StartAndRead().text, English(L"Trevolt_Export_Finished"));
            ExpectTurned(name, angle);
        }
        ASSERT_TRUE(RemoveFile(m_source.File(name)));
    }
}

TEST_F(TrevoltRun, FoldersMayHaveChineseNames) {
    const std::wstring source = m_source.File(L"\u65CB\u8F6C\u524D\\");
    const std::wstring target = m_target.File(L"\u65CB\u8F6C\u540E\\");
    ASSERT_TRUE(CreateFolders(source));
    ASSERT_TRUE(CreateFolders(target));
    SaveFolders(source, target);
    test::WriteFile(source + L"\u7BB1\u4F53.9fcoef",
                    test::ReadFile(test::Sample(L"cabinet/Cab_01.9fcoef")));
    Start();
    TypeSize(kCabinetSize);
    EXPECT_EQ(StartAndRead().text, English(L"Trevolt_Export_Finished"));
    EXPECT_TRUE(test::FileExists(target + L"\u7BB1\u4F53-90\u00B0.9fcoef"));
}

TEST_F(TrevoltRun, NameKeepsItsCaseAndUnknownFilesAreIgnored) {
    UseFolders();
    test::WriteFile(m_source.File(L"Wall.A.9FCOEF"),
                    test::ReadFile(test::Sample(L"cabinet/Cab_01.9fcoef")));
    test::WriteText(m_source.File(L"notes.txt"), "x");
    Start();
    TypeSize(kCabinetSize);
    EXPECT_EQ(StartAndRead().text, English(L"Trevolt_Export_Finished"));
    EXPECT_EQ(m_target.Names(), (std::vector<std::wstring>{L"Wall-90\u00B0.A.9FCOEF"}));
}

TEST_F(TrevoltRun, ControlsAreDisabledAndTheBarStandsAt95UnderTheLastMessage) {
    UseFolders();
    AddSample(L"Cab_01.9fcoef");
    const auto& trevolt = Start();
    TypeSize(kCabinetSize);
    trevolt.ClickModal(kIdStart);
    const HWND box = trevolt.WaitForPopup();
    for (const int id : {kIdAngle, kIdBrowseSource, kIdBrowseTarget, kIdByCabinet, kIdByScreen,
                         kIdWidth, kIdHeight})
        EXPECT_FALSE(trevolt.IsEnabled(id)) << id;
    EXPECT_TRUE(trevolt.IsEnabled(kIdStart));
    EXPECT_FALSE(IsWindowEnabled(trevolt.Window())) << "the message box is modal";
    EXPECT_TRUE(trevolt.IsVisible(kIdProgress));
    EXPECT_EQ(trevolt.Send(kIdProgress, PBM_GETPOS), 95);
    EXPECT_EQ(trevolt.Send(kIdProgress, PBM_GETRANGE, TRUE), 0);
    EXPECT_EQ(trevolt.Send(kIdProgress, PBM_GETRANGE, FALSE), 100);
    test::ClosePopup(box);
    ASSERT_TRUE(test::WaitUntil([&] { return trevolt.IsEnabled(kIdHeight); }));
    for (const int id : {kIdAngle, kIdBrowseSource, kIdBrowseTarget, kIdByCabinet, kIdByScreen,
                         kIdWidth, kIdHeight, kIdStart})
        EXPECT_TRUE(trevolt.IsEnabled(id)) << id;
    EXPECT_FALSE(trevolt.IsVisible(kIdProgress));
    EXPECT_EQ(trevolt.Send(kIdProgress, PBM_GETPOS), 100);
}

TEST_F(TrevoltRun, ClosingUnderTheLastMessageEndsTheProgram) {
    UseFolders();
    AddSample(L"Cab_01.9fcoef");
    const auto& trevolt = Start();
    TypeSize(kCabinetSize);
    trevolt.ClickModal(kIdStart);
    trevolt.WaitForPopup();
    trevolt.SendClose();
    EXPECT_EQ(trevolt.WaitForExitCode(), 0U);
    EXPECT_EQ(m_target.Names(), (std::vector<std::wstring>{L"Cab_01-90\u00B0.9fcoef"}));
    EXPECT_EQ(Saved(kKeyCabinetWidth), L"40");
    EXPECT_EQ(Saved(kKeyCabinetHeight), L"24");
}

TEST_F(TrevoltRun, MissingSizesAreToldByMode) {
    UseFolders();
    const auto& trevolt = Start();
    SMessageBox seen = StartAndRead();
    EXPECT_EQ(seen.text, English(L"Trevolt_Please_Input_Correct_Cabinet_Size"));
    EXPECT_EQ(seen.title, English(L"Trevolt_102"));
    EXPECT_EQ(seen.icon, EBoxIcon::Exclamation);
    trevolt.Type(kIdWidth, L"40");
    EXPECT_EQ(StartAndRead().text, English(L"Trevolt_Please_Input_Correct_Cabinet_Size"));
    trevolt.Click(kIdByScreen);
    seen = StartAndRead();
    EXPECT_EQ(seen.text, English(L"Trevolt_Please_Input_Correct_Screen_Size"));
    EXPECT_EQ(seen.icon, EBoxIcon::Exclamation);
    trevolt.Type(kIdHeight, L"24");
    EXPECT_EQ(StartAndRead().text, English(L"Trevolt_Please_Input_Correct_Screen_Size"));
    EXPECT_FALSE(trevolt.IsVisible(kIdProgress));
}

TEST_F(TrevoltRun, FolderWithoutCoefficientFilesIsTold) {
    UseFolders();
    test::WriteText(m_source.File(L"notes.txt"), "x");
    Start();
    TypeSize(kCabinetSize);
    SMessageBox seen = StartAndRead();
    EXPECT_EQ(seen.text, English(L"Trevolt_Coef_File_Not_Found"));
    EXPECT_EQ(seen.icon, EBoxIcon::Exclamation);
    SaveFolders(m_source.File(L"missing\\"), m_target.Path());
    Start();
    TypeSize(kCabinetSize);
    EXPECT_EQ(StartAndRead().text, English(L"Trevolt_Coef_File_Not_Found"));
}

TEST_F(TrevoltRun, WholeScreenTakesOneFileOnly) {
    UseFolders();
    AddSample(L"Cab_01.9fcoef");
    AddSample(L"Cab_02.3fcoef");
    const auto& trevolt = Start();
    trevolt.Click(kIdByScreen);
    TypeSize(kCabinetSize);
    const SMessageBox seen = StartAndRead();
    EXPECT_EQ(seen.text, English(L"Trevolt_Make_Sure_File_Is_Only_One"));
    EXPECT_EQ(seen.icon, EBoxIcon::Exclamation);
    EXPECT_TRUE(m_target.Names().empty());
}

TEST_F(TrevoltRun, MissingTargetFolderIsTold) {
    SaveFolders(m_source.Path(), m_target.File(L"missing\\"));
    AddSample(L"Cab_01.9fcoef");
    Start();
    TypeSize(kCabinetSize);
    const SMessageBox seen = StartAndRead();
    EXPECT_EQ(seen.text, English(L"Trevolt_Export_Path_Not_Exist"));
    EXPECT_EQ(seen.icon, EBoxIcon::Question);
    EXPECT_TRUE(m_target.Names().empty());
}

TEST_F(TrevoltRun, MemoryThatDoesNotSufficeIsToldAndTheWindowIsThereAgain) {
    UseFolders();
    AddSample(L"Cab_01.9fcoef");
    const auto& trevolt = Start();
    TypeSize({65535, 40000}); // more pixels than any map may have
    const SMessageBox seen = StartAndRead();
    EXPECT_EQ(seen.text, English(L"Trevolt_Not_Enough_Memory"));
    EXPECT_EQ(seen.title, English(L"Trevolt_102"));
    EXPECT_EQ(seen.icon, EBoxIcon::Exclamation);
    EXPECT_TRUE(m_target.Names().empty());
    ASSERT_TRUE(test::WaitUntil([&] { return IsWindowEnabled(trevolt.Window()) != 0; }));
    for (const int id : {kIdAngle, kIdBrowseSource, kIdBrowseTarget, kIdByCabinet, kIdByScreen,
                         kIdWidth, kIdHeight, kIdStart})
        EXPECT_TRUE(trevolt.IsEnabled(id)) << id;
    EXPECT_FALSE(trevolt.IsVisible(kIdProgress));

    TypeSize(kCabinetSize);
    EXPECT_EQ(StartAndRead().text, English(L"Trevolt_Export_Finished"));
    ExpectTurned(L"Cab_01.9fcoef", kAngles[0]);
}

TEST_F(TrevoltRun, NoAngleMeansNothingToExport) {
    UseFolders();
    AddSample(L"Cab_01.9fcoef");
    const auto& trevolt = Start();
    TypeSize(kCabinetSize);
    trevolt.SelectAngle(-1);
    const SMessageBox seen = StartAndRead();
    EXPECT_EQ(seen.text, English(L"Trevolt_Export_Failed"));
    EXPECT_EQ(seen.icon, EBoxIcon::None);
    EXPECT_TRUE(m_target.Names().empty());
}

TEST_F(TrevoltRun, MessagesAndTheirButtonFollowTheStartLanguage) {
    UseFolders();
    AddSample(L"Cab_01.9fcoef");
    const auto& trevolt = StartIn(9);
    TypeSize(kCabinetSize);
    SMessageBox seen = StartAndRead();
    EXPECT_EQ(seen.text, TextIn(L"Multi_Spanish.ini", L"Trevolt_Export_Finished"));
    EXPECT_EQ(seen.button, L"Aceptar");
    EXPECT_EQ(seen.icon, EBoxIcon::None);
    // A later change reaches the messages; the library's own button keeps its language.
    trevolt.SendLanguage(0, 6);
    seen = StartAndRead();
    EXPECT_EQ(seen.text, TextIn(L"Multi_Korean.ini", L"Trevolt_Export_Finished"));
    EXPECT_EQ(seen.title, TextIn(L"Multi_Korean.ini", L"Trevolt_102"));
    EXPECT_EQ(seen.button, L"Aceptar");
}

} // namespace
} // namespace trevolt
