// Sizes, modes, folders and settings on the real window.
#include <windows.h>

#include <commctrl.h>

#include "common/TextConversion.h"
#include "tests/win32/WindowFixture.h"

namespace trevolt {
namespace {

class TrevoltInput : public test::WindowFixture {
  protected:
    std::wstring LimitText(int highest) const {
        return WithNumbers(English(L"Trevolt_Edit_Limit"), 0, highest);
    }
    bool IsWholeTextSelected(int id) const {
        const LRESULT range = m_trevolt->Send(id, EM_GETSEL);
        return LOWORD(range) == 0 && HIWORD(range) == m_trevolt->Text(id).size();
    }

    /// Fails unless the balloon's stem ends in the edit's middle: the balloon lies over or under it.
    static void ExpectPointsAt(const RECT& balloon, HWND edit) {
        RECT place{};
        GetWindowRect(edit, &place);
        const LONG x = (place.left + place.right) / 2;
        const LONG y = (place.top + place.bottom) / 2;
        EXPECT_LE(balloon.left, x);
        EXPECT_GE(balloon.right, x);
        EXPECT_TRUE(std::abs(balloon.top - y) <= 2 || std::abs(balloon.bottom - y) <= 2)
            << balloon.top << " to " << balloon.bottom << ", edit at " << y;
    }

    /// The letter that a text's access key is: the small one of A to Z, others as they stand, since
    /// Wine takes only those in either form.
    static wchar_t AccessKey(const std::wstring& text) {
        return ToLowerAscii(text.substr(text.find(L'&') + 1, 1)).at(0);
    }
};

TEST_F(TrevoltInput, EveryFaultHasItsBalloonAtItsEdit) {
    struct SFault {
        const wchar_t* width;
        const wchar_t* height;
        int edit;
        std::wstring text;
    };
    const std::wstring numbers = English(L"Tools_Only_Numbers_Can_Input");
    const std::wstring integers = English(L"Tools_Only_Integer_Can_Input");
    const SFault faults[] = {
        {L"12a", L"1", kIdWidth, numbers},
        {L"1", L"-1", kIdHeight, numbers},
        {L"12.5", L"1", kIdWidth, integers},
        {L"", L"1", kIdWidth, integers},
        {L"1", L"12.5", kIdHeight, integers},
        {L"1", L"", kIdHeight, integers},
        {L"65536", L"1", kIdWidth, LimitText(65535)},
        {L"1", L"32769", kIdHeight, LimitText(32768)},
    };
    for (const SFault& fault : faults) {
        const auto& trevolt = Start();
        trevolt.Type(kIdWidth, fault.width);
        trevolt.Type(kIdHeight, fault.height);
        trevolt.Press(kIdHeight, VK_RETURN);
        ASSERT_TRUE(test::WaitUntil([&] { return trevolt.FindBalloon() != nullptr; }));
        const test::SBalloon balloon = trevolt.ReadBalloon();
        EXPECT_EQ(balloon.text, fault.text);
        EXPECT_EQ(balloon.edit, trevolt.Control(fault.edit));
        ExpectPointsAt(balloon.place, trevolt.Control(fault.edit));
        EXPECT_TRUE(IsWholeTextSelected(fault.edit));
    }
}

TEST_F(TrevoltInput, BalloonGoesWhenAnotherWindowBecomesActive) {
    const auto& trevolt = Start();
    trevolt.Type(kIdWidth, L"12a");
    trevolt.MoveFocus(kIdSource); // which has nothing to check when it loses the focus again
    EXPECT_NE(trevolt.WaitForBalloon(), L"");
    PostMessageW(trevolt.Window(), WM_SYSCOMMAND, 0x10, 0);
    const HWND about = trevolt.WaitForPopup();
    EXPECT_TRUE(test::WaitUntil([&] { return trevolt.FindBalloon() == nullptr; }));
    test::ClosePopup(about);
}

TEST_F(TrevoltInput, NoBalloonComesUpWhenTheUserGoesToAnotherProgram) {
    const auto& trevolt = Start();
    trevolt.Type(kIdWidth, L"12a");
    ASSERT_TRUE(trevolt.IsActive());
    SetForegroundWindow(GetDesktopWindow());
    EXPECT_TRUE(test::WaitUntil([&] { return IsWholeTextSelected(kIdWidth); })) << "checked";
    EXPECT_FALSE(trevolt.IsActive());
    EXPECT_EQ(trevolt.FindBalloon(), nullptr);
    EXPECT_EQ(Saved(kKeyCabinetWidth), L"12");
}

TEST_F(TrevoltInput, LimitsPassWithoutABalloon) {
    const auto& trevolt = Start();
    trevolt.Type(kIdWidth, L"65535");
    trevolt.Type(kIdHeight, L"32768");
    trevolt.Focus(kIdWidth);
    EXPECT_EQ(trevolt.FindBalloon(), nullptr);
    EXPECT_EQ(Saved(kKeyCabinetWidth), L"65535");
    EXPECT_EQ(Saved(kKeyCabinetHeight), L"32768");
}

TEST_F(TrevoltInput, LosingTheFocusCommits) {
    const auto& trevolt = Start();
    trevolt.Type(kIdHeight, L"1");
    trevolt.Type(kIdWidth, L"65536");
    EXPECT_EQ(trevolt.FindBalloon(), nullptr);
    trevolt.Focus(kIdHeight);
    EXPECT_EQ(trevolt.WaitForBalloon(), LimitText(65535));
    EXPECT_TRUE(trevolt.WaitForFocus(kIdHeight)) << "the user is not pulled back";
    EXPECT_EQ(Saved(kKeyCabinetWidth), L"65536");
}

TEST_F(TrevoltInput, SelectionIsSeenInTheFocusedEditAlone) {
    const auto& trevolt = Start();
    for (const int id : {kIdWidth, kIdHeight, kIdSource, kIdTarget})
        EXPECT_EQ(GetWindowLongW(trevolt.Control(id), GWL_STYLE) & ES_NOHIDESEL, 0) << id;
}

TEST_F(TrevoltInput, TypingTakesTheBalloonDown) {
    const auto& trevolt = Start();
    trevolt.Type(kIdWidth, L"12a");
    trevolt.Press(kIdWidth, VK_RETURN);
    EXPECT_EQ(trevolt.WaitForBalloon(), English(L"Tools_Only_Numbers_Can_Input"));
    trevolt.Send(kIdWidth, WM_CHAR, L'7');
    EXPECT_EQ(trevolt.Text(kIdWidth), L"7");
    EXPECT_EQ(trevolt.FindBalloon(), nullptr);
}

TEST_F(TrevoltInput, EnterNeitherStartsNorCloses) {
    SaveFolders(L"C:\\", L"C:\\");
    const auto& trevolt = Start();
    ASSERT_TRUE(trevolt.IsEnabled(kIdStart));
    trevolt.Type(kIdWidth, L"12");
    trevolt.Press(kIdWidth, VK_RETURN);
    PostMessageW(trevolt.Window(), WM_NEXTDLGCTL,
                 reinterpret_cast<WPARAM>(trevolt.Control(kIdStart)), TRUE);
    trevolt.Press(kIdStart, VK_RETURN);
    // Answered only after what was posted before: neither a message box nor an end came of it.
    trevolt.Focus(kIdHeight);
    EXPECT_FALSE(trevolt.HasEnded());
    EXPECT_TRUE(IsWindowEnabled(trevolt.Window()));
    EXPECT_EQ(Saved(kKeyCabinetWidth), L"12");
}

TEST_F(TrevoltInput, EnterPressesNothingFromOtherControls) {
    SaveFolders(L"C:\\", L"C:\\");
    const auto& trevolt = Start();
    for (const int id : {kIdByCabinet, kIdByScreen, kIdAngle, kIdSource, kIdTarget}) {
        trevolt.MoveFocus(kIdStart); // which would make it the button that Enter presses
        trevolt.MoveFocus(id);
        trevolt.Press(id, VK_RETURN);
        trevolt.Focus(kIdHeight);
        EXPECT_FALSE(trevolt.HasEnded()) << id;
        EXPECT_TRUE(IsWindowEnabled(trevolt.Window())) << "Start was pressed from " << id;
    }
}

TEST_F(TrevoltInput, AccessKeysReachTheirControlsInEveryLanguage) {
    constexpr std::pair<const wchar_t*, int> kKeys[] = {
        {L"Trevolt_1018", kIdByScreen},        {L"Trevolt_Screen_Width", kIdWidth},
        {L"Trevolt_Screen_Height", kIdHeight}, {L"Trevolt_1017", kIdByCabinet},
        {L"Trevolt_Cabinet_Width", kIdWidth},  {L"Trevolt_Cabinet_Height", kIdHeight},
        {L"Trevolt_1000", kIdAngle},           {L"Trevolt_1003", kIdSource},
        {L"Trevolt_1006", kIdTarget}};
    for (const auto& [language, file] : test::kLanguageCases) {
        const auto& trevolt = StartIn(language);
        int from = kIdByCabinet;
        for (const auto& [key, id] : kKeys) {
            trevolt.PressAlt(from, AccessKey(TextIn(file, key)));
            EXPECT_TRUE(trevolt.WaitForFocus(id))
                << WideToShownUtf8(file) << " " << WideToShownUtf8(key);
            from = id;
        }
        EXPECT_TRUE(trevolt.IsChecked(kIdByCabinet)) << WideToShownUtf8(file);
    }
}

TEST_F(TrevoltInput, AccessKeysPressTheButtons) {
    SaveFolders(L"C:\\", L"C:\\");
    const auto& trevolt = Start();
    for (const wchar_t* key : {L"Trevolt_1005", L"Trevolt_1013"}) {
        trevolt.PressAlt(kIdByCabinet, AccessKey(English(key)));
        test::ClosePopup(trevolt.WaitForPopup(), IDCANCEL);
    }
    trevolt.PressAlt(kIdByCabinet, AccessKey(English(L"Trevolt_1001")));
    const HWND box = trevolt.WaitForPopup();
    EXPECT_EQ(test::ReadMessageBox(box).text,
              English(L"Trevolt_Please_Input_Correct_Cabinet_Size"));
    test::ClosePopup(box);
}

TEST_F(TrevoltInput, ClosingWhileASizeIsTypedKeepsIt) {
    for (const std::wstring typed : {L"64", L"64a"})
        for (const bool byEscape : {false, true}) {
            const auto& trevolt = Start();
            trevolt.Type(kIdHeight, L"32");
            trevolt.Type(kIdWidth, typed);
            if (byEscape)
                trevolt.Press(kIdWidth, VK_ESCAPE);
            else
                trevolt.SendClose();
            EXPECT_EQ(trevolt.WaitForExitCode(), 0U);
            EXPECT_EQ(Saved(kKeyCabinetWidth), L"64");
            EXPECT_EQ(Saved(kKeyCabinetHeight), L"32");
            ASSERT_TRUE(RemoveFile(m_tree.SettingsFile()));
        }
}

TEST_F(TrevoltInput, NotificationOfAForeignAddressIsIgnored) {
    const auto& trevolt = Start();
    EXPECT_EQ(SendMessageW(trevolt.Window(), 0x746, kIdWidth, 0x1234), 0);
    EXPECT_FALSE(test::FileExists(m_tree.SettingsFile()));
}

TEST_F(TrevoltInput, ModesRememberTheirSizesAndSettingsAreReadAgain) {
    {
        auto& trevolt = Start();
        trevolt.Type(kIdWidth, L"128");
        trevolt.Type(kIdHeight, L"64");
        trevolt.Click(kIdByScreen);
        EXPECT_EQ(trevolt.Text(kIdWidth), L"0");
        EXPECT_EQ(trevolt.Text(kIdWidthLabel), English(L"Trevolt_Screen_Width"));
        EXPECT_EQ(trevolt.Text(kIdHeightLabel), English(L"Trevolt_Screen_Height"));
        trevolt.Type(kIdWidth, L"1920");
        trevolt.Type(kIdHeight, L"1080");
        trevolt.Click(kIdByCabinet);
        EXPECT_EQ(trevolt.Text(kIdWidth), L"128");
        EXPECT_EQ(trevolt.Text(kIdHeight), L"64");
        EXPECT_EQ(trevolt.Text(kIdWidthLabel), English(L"Trevolt_Cabinet_Width"));
        trevolt.Close();
    }
    const auto& again = Start();
    EXPECT_TRUE(again.IsChecked(kIdByCabinet));
    EXPECT_EQ(again.Text(kIdWidth), L"128");
    again.Click(kIdByScreen);
    EXPECT_EQ(again.Text(kIdWidth), L"1920");
    EXPECT_EQ(again.Text(kIdHeight), L"1080");
}

TEST_F(TrevoltInput, SettingsInTheOldCodePageKeepTheirLetters) {
    // The tests run on a system in English.
    const std::string old = "[coefInfo]\r\nOriCoefPath=C:\\M\xFCller\\Caf\xE9 \x80\\\r\n"
                            "TargetCoefPath=C:\\\xC5ngstr\xF6m\\\r\nBoxHeight=7\r\n";
    test::WriteText(m_tree.SettingsFile(), old);
    const auto& trevolt = Start();
    const std::wstring source = L"C:\\M\u00FCller\\Caf\u00E9 \u20AC\\";
    const std::wstring target = L"C:\\\u00C5ngstr\u00F6m\\";
    EXPECT_EQ(trevolt.Text(kIdSource), source);
    EXPECT_EQ(trevolt.Text(kIdTarget), target);
    EXPECT_EQ(trevolt.Text(kIdHeight), L"7");
    EXPECT_EQ(test::ReadText(m_tree.SettingsFile()), old) << "opening the window changes nothing";
    trevolt.Type(kIdWidth, L"5");
    EXPECT_EQ(test::ReadText(m_tree.SettingsFile()).substr(0, 2), "\xFF\xFE");
    EXPECT_EQ(Saved(kKeySourceFolder), source);
    EXPECT_EQ(Saved(kKeyTargetFolder), target);
    EXPECT_EQ(Saved(kKeyCabinetWidth), L"5");
    EXPECT_EQ(Saved(kKeyCabinetHeight), L"7");
}

TEST_F(TrevoltInput, NegativeSizesAreShownAndSavedAsZero) {
    Save(kKeyCabinetWidth, L"-3");
    const auto& trevolt = Start();
    EXPECT_EQ(trevolt.Text(kIdWidth), L"-3");
    trevolt.Type(kIdHeight, L"5");
    EXPECT_EQ(Saved(kKeyCabinetWidth), L"0");
    EXPECT_EQ(Saved(kKeyCabinetHeight), L"5");
}

TEST_F(TrevoltInput, StartNeedsBothFolders) {
    SaveFolders(L"D:\\\u7BB1\u4F53\\", L"");
    EXPECT_FALSE(Start().IsEnabled(kIdStart));
    EXPECT_EQ(m_trevolt->Text(kIdSource), L"D:\\\u7BB1\u4F53\\");
    SaveFolders(L"", L"D:\\\u76EE\u6807\\");
    EXPECT_FALSE(Start().IsEnabled(kIdStart));
    EXPECT_EQ(m_trevolt->Text(kIdSource), kPlaceholder);
    SaveFolders(L"D:\\\u7BB1\u4F53\\", L"D:\\\u76EE\u6807\\");
    EXPECT_TRUE(Start().IsEnabled(kIdStart));
    EXPECT_EQ(m_trevolt->Text(kIdTarget), L"D:\\\u76EE\u6807\\");
}

/// The shell's folder browser, worked through its tree.
class CFolderBrowser {
  public:
    CFolderBrowser(const test::CTrevoltProcess& trevolt, int button)
        : m_process(trevolt.Process()) {
        trevolt.ClickModal(button);
        m_window = trevolt.WaitForPopup();
        EXPECT_TRUE(test::WaitUntil([&] {
            EnumChildWindows(m_window, FindTree, reinterpret_cast<LPARAM>(&m_tree));
            return m_tree != nullptr && Root() != 0;
        }));
    }

    /// Selects the first item below the selected one (below the root at first) whose text holds
    /// `part`.
    void Select(const std::wstring& part) {
        const LRESULT parent = m_item == 0 ? Root() : m_item;
        SendMessageW(m_tree, TVM_EXPAND, TVE_EXPAND, parent);
        EXPECT_TRUE(test::WaitUntil([&] { return FindBelow(parent, part) != 0; }))
            << "not in the tree: " << WideToShownUtf8(part);
        m_item = FindBelow(parent, part);
        SendMessageW(m_tree, TVM_SELECTITEM, TVGN_CARET, m_item);
    }
    void SelectOnDriveC(const std::wstring& name) {
        for (const std::wstring& part : {std::wstring(L"Computer"), std::wstring(L"C:"), name})
            Select(part);
    }
    void Confirm() { test::ClosePopup(m_window, IDOK); }
    void ConfirmWithoutWaiting() { PostMessageW(GetDlgItem(m_window, IDOK), BM_CLICK, 0, 0); }
    void Cancel() { test::ClosePopup(m_window, IDCANCEL); }
    HWND Window() const { return m_window; }

    /// Waits until the tree's selected item reads `text`.
    bool WaitForSelected(const std::wstring& text) const {
        return test::WaitUntil([&] {
            const LRESULT item = SendMessageW(m_tree, TVM_GETNEXTITEM, TVGN_CARET, 0);
            return item != 0 && ItemText(item) == text;
        });
    }

  private:
    static BOOL CALLBACK FindTree(HWND child, LPARAM found) {
        wchar_t name[64]{};
        GetClassNameW(child, name, 64);
        if (lstrcmpiW(name, WC_TREEVIEWW) != 0)
            return TRUE;
        *reinterpret_cast<HWND*>(found) = child;
        return FALSE;
    }
    LRESULT Root() const { return SendMessageW(m_tree, TVM_GETNEXTITEM, TVGN_ROOT, 0); }
    LRESULT FindBelow(LRESULT parent, const std::wstring& part) const {
        LRESULT item = SendMessageW(m_tree, TVM_GETNEXTITEM, TVGN_CHILD, parent);
        while (item != 0 && ItemText(item).find(part) == std::wstring::npos)
            item = SendMessageW(m_tree, TVM_GETNEXTITEM, TVGN_NEXT, item);
        return item;
    }
    /// The tree writes an item's text into its own process, from where it is read.
    std::wstring ItemText(LRESULT treeItem) const {
        struct SRequest {
            TVITEMW item;
            wchar_t text[260];
        };
        const test::CRemoteMemory memory(m_process, sizeof(SRequest));
        SRequest request{};
        request.item.mask = TVIF_TEXT;
        request.item.hItem = reinterpret_cast<HTREEITEM>(treeItem);
        request.item.pszText = static_cast<SRequest*>(memory.Address())->text;
        request.item.cchTextMax = 260;
        memory.Write(request);
        SendMessageW(m_tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(memory.Address()));
        memory.Read(request);
        return request.text;
    }

    HANDLE m_process;
    HWND m_window = nullptr;
    HWND m_tree = nullptr;
    LRESULT m_item = 0;
};

/// A folder directly on the drive C:, which the tree reaches in a few steps.
class CDriveFolder {
  public:
    explicit CDriveFolder(const std::wstring& name) : m_path(L"C:\\" + name) {
        EXPECT_TRUE(CreateFolders(m_path));
    }
    ~CDriveFolder() { RemoveDirectoryW(m_path.c_str()); }
    CDriveFolder(const CDriveFolder&) = delete;
    CDriveFolder& operator=(const CDriveFolder&) = delete;

  private:
    std::wstring m_path;
};

TEST_F(TrevoltInput, BrowsesForBothFolders) {
    const CDriveFolder source(L"trevolt-\u7BB1\u4F53");
    const CDriveFolder target(L"trevolt-\u76EE\u6807");
    const auto& trevolt = Start();

    CFolderBrowser first(trevolt, kIdBrowseSource);
    first.SelectOnDriveC(L"trevolt-\u7BB1\u4F53");
    first.Confirm();
    EXPECT_EQ(trevolt.Text(kIdSource), L"C:\\trevolt-\u7BB1\u4F53\\");
    EXPECT_EQ(Saved(kKeySourceFolder), L"C:\\trevolt-\u7BB1\u4F53\\");
    EXPECT_EQ(trevolt.Text(kIdTarget), kPlaceholder);
    EXPECT_EQ(Saved(kKeyTargetFolder), L"");
    EXPECT_FALSE(trevolt.IsEnabled(kIdStart));

    CFolderBrowser second(trevolt, kIdBrowseTarget);
    second.SelectOnDriveC(L"trevolt-\u76EE\u6807");
    second.Confirm();
    EXPECT_EQ(trevolt.Text(kIdTarget), L"C:\\trevolt-\u76EE\u6807\\");
    EXPECT_EQ(Saved(kKeyTargetFolder), L"C:\\trevolt-\u76EE\u6807\\");
    EXPECT_TRUE(trevolt.IsEnabled(kIdStart));
}

TEST_F(TrevoltInput, BrowserOpensAtTheBoxesFolder) {
    const CDriveFolder folder(L"trevolt-\u7BB1\u4F53");
    SaveFolders(L"C:\\trevolt-\u7BB1\u4F53\\", L"");
    const auto& trevolt = Start();
    CFolderBrowser browser(trevolt, kIdBrowseSource);
    EXPECT_TRUE(browser.WaitForSelected(L"trevolt-\u7BB1\u4F53"));
    browser.Confirm();
    EXPECT_EQ(trevolt.Text(kIdSource), L"C:\\trevolt-\u7BB1\u4F53\\");
}

TEST_F(TrevoltInput, DriveKeepsItsOneBackslash) {
    const auto& trevolt = Start();
    CFolderBrowser browser(trevolt, kIdBrowseSource);
    browser.Select(L"Computer");
    browser.Select(L"C:");
    browser.Confirm();
    EXPECT_EQ(trevolt.Text(kIdSource), L"C:\\");
}

TEST_F(TrevoltInput, CancelledBrowsingChangesNothing) {
    const auto& trevolt = Start();
    CFolderBrowser browser(trevolt, kIdBrowseTarget);
    browser.Select(L"Computer");
    browser.Cancel();
    EXPECT_EQ(trevolt.Text(kIdTarget), kPlaceholder);
    EXPECT_EQ(Saved(kKeyTargetFolder), L"");
}

TEST_F(TrevoltInput, ItemWithoutAPathIsRefused) {
    const auto& trevolt = Start();
    CFolderBrowser browser(trevolt, kIdBrowseSource);
    browser.Select(L"Computer");
    browser.ConfirmWithoutWaiting();
    EXPECT_TRUE(test::WaitUntil([&] { return IsWindow(browser.Window()) == 0; }));
    const HWND box = trevolt.WaitForPopup();
    const test::SMessageBox seen = test::ReadMessageBox(box);
    EXPECT_EQ(seen.text, English(L"Trevolt_Invalid_Path_Select_Again"));
    EXPECT_EQ(seen.title, English(L"Trevolt_102"));
    EXPECT_EQ(seen.icon, test::EBoxIcon::Information);
    test::ClosePopup(box);
    EXPECT_EQ(trevolt.Text(kIdSource), kPlaceholder);
    EXPECT_EQ(Saved(kKeySourceFolder), L"");
}

} // namespace
} // namespace trevolt
