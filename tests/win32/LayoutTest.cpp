// What the window looks like: no text is cut off in any language, and pictures of every state for a
// person to look at (they lie beside the programs, in window-pictures). Run at 100, 150 and 200 %.
#include "tests/win32/WindowFixture.h"

namespace trevolt {
namespace {

/// The font of the dialog's template at the screen's resolution.
class CDialogFont {
  public:
    CDialogFont() {
        const int height = -MulDiv(9, static_cast<int>(GetDpiForSystem()), 72);
        m_font = CreateFontW(height, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0,
                             L"Segoe UI");
        m_context = CreateCompatibleDC(nullptr);
        m_former = SelectObject(m_context, m_font);
    }
    ~CDialogFont() {
        SelectObject(m_context, m_former);
        DeleteDC(m_context);
        DeleteObject(m_font);
    }
    CDialogFont(const CDialogFont&) = delete;
    CDialogFont& operator=(const CDialogFont&) = delete;

    /// Pixels that a label's text takes, its access key's mark not counted.
    SIZE Measure(const std::wstring& text) const {
        RECT box{};
        DrawTextW(m_context, text.c_str(), -1, &box, DT_CALCRECT | DT_SINGLELINE);
        return {box.right, box.bottom};
    }

  private:
    HFONT m_font = nullptr;
    HDC m_context = nullptr;
    HGDIOBJ m_former = nullptr;
};

int Scaled(int length) { return MulDiv(length, static_cast<int>(GetDpiForSystem()), 96); }

/// Pixels at the sides of a control that its text cannot use.
int MarginOf(int id) {
    if (id == kIdByCabinet || id == kIdByScreen)
        return Scaled(20);
    if (id == kIdBrowseSource || id == kIdBrowseTarget || id == kIdStart)
        return Scaled(12);
    return 0;
}

std::wstring PicturePath(const std::wstring& name) {
    return test::PictureFolder() + name + L"-" + std::to_wstring(GetDpiForSystem()) + L".bmp";
}

class TrevoltLayout : public test::WindowFixture {
  protected:
    void ExpectFits(int id, const std::string& language) const {
        RECT client{};
        GetClientRect(m_trevolt->Control(id), &client);
        const SIZE needed = m_font.Measure(m_trevolt->Text(id));
        EXPECT_GT(needed.cx, 0) << language << " " << id;
        EXPECT_LE(needed.cx + MarginOf(id), client.right) << language << " " << id;
        EXPECT_LE(needed.cy, client.bottom) << language << " " << id;
    }

    /// Draws all of the window anew, which brings what lies over it onto the screen too, and saves
    /// the picture.
    void SavePicture(const std::wstring& name, HWND over = nullptr) const {
        RedrawWindow(m_trevolt->Window(), nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN);
        EXPECT_TRUE(
            test::SaveScreen(test::WindowArea(m_trevolt->Window(), over), PicturePath(name)));
    }

    CDialogFont m_font;
};

TEST_F(TrevoltLayout, NoLabelIsCutOffInAnyLanguage) {
    for (const auto& [id, file] : test::kLanguageCases) {
        const auto& trevolt = StartIn(id);
        const std::string language = WideToShownUtf8(file);
        for (const int control : test::kTranslatedControls)
            ExpectFits(control, language);
        for (const int mode : {kIdByScreen, kIdByCabinet}) {
            trevolt.Click(mode);
            ExpectFits(kIdWidthLabel, language);
            ExpectFits(kIdHeightLabel, language);
        }
        SavePicture(L"dialog-" + std::to_wstring(id));
    }
}

TEST_F(TrevoltLayout, ControlsLieInsideTheWindowAndApart) {
    const auto& trevolt = Start();
    std::vector<std::pair<int, RECT>> places;
    RECT client{};
    GetClientRect(trevolt.Window(), &client);
    for (const int id : {1000, 1001, 1002, 1003, 1004, 1005, 1006, 1007, 1008, 1010, 1013, 1017,
                         1018, 1019, 1020, 1021}) {
        RECT place{};
        ASSERT_TRUE(GetWindowRect(trevolt.Control(id), &place)) << id;
        MapWindowPoints(nullptr, trevolt.Window(), reinterpret_cast<POINT*>(&place), 2);
        EXPECT_GE(place.left, 0) << id;
        EXPECT_GE(place.top, 0) << id;
        EXPECT_LE(place.right, client.right) << id;
        EXPECT_LE(place.bottom, client.bottom) << id;
        for (const auto& [other, otherPlace] : places) {
            RECT common{};
            EXPECT_FALSE(IntersectRect(&common, &place, &otherPlace)) << id << " " << other;
        }
        places.emplace_back(id, place);
    }
}

TEST_F(TrevoltLayout, TabOrderAndLabelsFollowTheWindow) {
    const auto& trevolt = Start();
    const std::vector<int> expected{1017, 1018, 1019, 1002, 1020, 1004, 1000, 1021,
                                    1003, 1007, 1005, 1006, 1010, 1013, 1001, 1008};
    std::vector<int> order;
    for (HWND child = GetWindow(trevolt.Window(), GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT))
        if (GetDlgCtrlID(child) > 0 && GetDlgCtrlID(child) != 0xFFFF)
            order.push_back(GetDlgCtrlID(child));
    EXPECT_EQ(order, expected);
}

TEST_F(TrevoltLayout, PicturesOfBalloons) {
    const std::pair<const wchar_t*, const wchar_t*> inputs[] = {{L"12a", L"1"},   {L"1", L"12a"},
                                                                {L"12.5", L"1"},  {L"1", L""},
                                                                {L"65536", L"1"}, {L"1", L"32769"}};
    for (const int language : {0, 1, 4, 8}) {
        int number = 0;
        for (const auto& [width, height] : inputs) {
            const auto& trevolt = StartIn(language);
            trevolt.Type(kIdWidth, width);
            trevolt.Type(kIdHeight, height);
            trevolt.Press(kIdHeight, VK_RETURN);
            EXPECT_NE(trevolt.WaitForBalloon(), L"");
            SavePicture(L"balloon-" + std::to_wstring(language) + L"-" + std::to_wstring(++number),
                        trevolt.FindBalloon());
            EXPECT_NE(trevolt.FindBalloon(), nullptr) << language << " " << number;
        }
    }
}

TEST_F(TrevoltLayout, PicturesOfAboutBoxAndMessage) {
    SaveFolders(L"C:\\", L"C:\\");
    const auto& trevolt = StartIn(1);
    PostMessageW(trevolt.Window(), WM_SYSCOMMAND, 0x10, 0);
    const HWND about = trevolt.WaitForPopup();
    SavePicture(L"about", about);
    test::ClosePopup(about);
    trevolt.ClickModal(kIdStart);
    const HWND box = trevolt.WaitForPopup();
    SavePicture(L"message", box);
    test::ClosePopup(box);
}

} // namespace
} // namespace trevolt
