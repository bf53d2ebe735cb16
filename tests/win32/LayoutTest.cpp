// What the window looks like: no text is cut off in any language, and pictures of every state for a
// person to look at (they lie beside the programs, in window-pictures). Run at 100, 150 and 200 %.
#include <algorithm>

#include "tests/win32/WindowFixture.h"

namespace trevolt {
namespace {

/// The font of the dialog's template at the screen's resolution, as `face` stands in for it.
class CDialogFont {
  public:
    explicit CDialogFont(const std::wstring& face)
        : m_font(CreateFontW(-MulDiv(9, static_cast<int>(GetDpiForSystem()), 72), 0, 0, 0,
                             FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, face.c_str())) {}
    ~CDialogFont() { DeleteObject(m_font); }
    CDialogFont(const CDialogFont&) = delete;
    CDialogFont& operator=(const CDialogFont&) = delete;

    /// Pixels that a label's line takes, its access key's mark not counted.
    SIZE Measure(const std::wstring& text) const {
        RECT box{};
        const test::CPixels canvas({1, 1}, [&](HDC context) {
            const HGDIOBJ former = SelectObject(context, m_font);
            DrawTextW(context, text.c_str(), -1, &box, DT_CALCRECT | DT_SINGLELINE);
            SelectObject(context, former);
        });
        return {box.right, box.bottom};
    }

    /// Where the label's letters leave ink, seen from its line's top left corner: signs over and
    /// under letters can stand out of the line.
    RECT InkOf(const std::wstring& text) const {
        const SIZE line = Measure(text);
        const SIZE margin{line.cy, line.cy};
        const test::CPixels drawn(
            {line.cx + 2 * margin.cx, line.cy + 2 * margin.cy}, [&](HDC context) {
                const HGDIOBJ former = SelectObject(context, m_font);
                SetTextColor(context, RGB(255, 255, 255));
                SetBkMode(context, TRANSPARENT);
                RECT box{margin.cx, margin.cy, margin.cx + line.cx, margin.cy + line.cy};
                DrawTextW(context, text.c_str(), -1, &box, DT_SINGLELINE | DT_NOCLIP);
                SelectObject(context, former);
            });
        RECT ink{drawn.Width(), drawn.Height(), 0, 0};
        for (LONG y = 0; y < drawn.Height(); ++y)
            for (LONG x = 0; x < drawn.Width(); ++x)
                if (drawn.At(x, y) != 0)
                    ink = {std::min(ink.left, x), std::min(ink.top, y), std::max(ink.right, x + 1),
                           std::max(ink.bottom, y + 1)};
        OffsetRect(&ink, -margin.cx, -margin.cy);
        return ink;
    }

  private:
    HFONT m_font;
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
    return test::PictureFolder() + name + L"-" + std::to_wstring(GetDpiForSystem()) + L".png";
}

class TrevoltLayout : public test::WindowFixture {
  protected:
    /// Fails unless the control shows all of its text: the line has room beside the control's own
    /// parts, and no ink stands out of it, where a label draws at its top and a button in its middle.
    void ExpectFits(int id, const CDialogFont& font, const std::string& language) const {
        RECT client{};
        GetClientRect(m_trevolt->Control(id), &client);
        const std::wstring text = m_trevolt->Text(id);
        const SIZE line = font.Measure(text);
        const RECT ink = font.InkOf(text);
        EXPECT_GT(ink.right, ink.left) << language << " " << id;
        EXPECT_LE(std::max(line.cx, ink.right) + MarginOf(id), client.right)
            << language << " " << id;
        const bool isLabel = MarginOf(id) == 0;
        const LONG top = isLabel ? 0 : (client.bottom - line.cy) / 2;
        EXPECT_GE(top + ink.top, 0) << language << " " << id;
        EXPECT_LE(top + ink.bottom, client.bottom) << language << " " << id;
    }

    /// Draws the window and what lies over it anew and saves the picture.
    void SavePicture(const std::wstring& name, HWND over = nullptr) const {
        // Wine leaves the title bar of a dialog that came up active as it is for an inactive one.
        if (m_trevolt->IsActive())
            SendMessageW(m_trevolt->Window(), WM_NCACTIVATE, TRUE, 0);
        RedrawWindow(m_trevolt->Window(), nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN);
        if (over != nullptr)
            test::Raise(over);
        const test::CPixels pixels =
            test::CPixels::OfSteadyScreen(test::WindowArea(m_trevolt->Window(), over));
        EXPECT_TRUE(pixels.Save(PicturePath(name)));
    }

    /// As SavePicture. Fails unless the screen shows what lies over the window, against `before`, a
    /// picture of the whole screen.
    void SavePictureOver(const std::wstring& name, HWND over, const test::CPixels& before) const {
        EXPECT_TRUE(test::WaitUntil([&] {
            test::Raise(over);
            return IsSeen(over, before);
        })) << WideToShownUtf8(name);
        SavePicture(name, over);
        EXPECT_TRUE(IsSeen(over, before)) << WideToShownUtf8(name);
    }

    /// Whether most of the window's place differs from what was there before. Its corners and what is
    /// white like itself need not.
    static bool IsSeen(HWND window, const test::CPixels& before) {
        if (IsWindowVisible(window) == 0)
            return false;
        const RECT place = test::WindowArea(window);
        const test::CPixels former = before.Part(place);
        const auto all = static_cast<std::size_t>(former.Width() * former.Height());
        return test::CPixels::OfScreen(place).Differing(former) * 100 >= all * 60;
    }

    /// Fails unless the progress bar is drawn up to `percent` of its width.
    void ExpectBarDrawn(int percent) const {
        const test::CPixels bar =
            test::CPixels::OfSteadyScreen(test::WindowArea(m_trevolt->Control(kIdProgress)));
        const auto colourAt = [&](int at) {
            return bar.At(bar.Width() * at / 100, bar.Height() / 2);
        };
        EXPECT_EQ(colourAt(percent - 4), colourAt(10));
        EXPECT_NE(colourAt(percent - 4), colourAt(percent + 3));
    }

    RECT PlaceOf(int id) const {
        RECT place{};
        GetWindowRect(m_trevolt->Control(id), &place);
        return place;
    }

    test::CTemporaryFolder m_source;
    test::CTemporaryFolder m_target;
};

/// Fails unless a message box's frame has room for its caption and the close button, and its button
/// lies inside.
void ExpectWholeCaption(HWND box, const std::string& language) {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    ASSERT_TRUE(SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0));
    RECT text{};
    const test::CPixels canvas({1, 1}, [&](HDC context) {
        const HFONT font = CreateFontIndirectW(&metrics.lfCaptionFont);
        const HGDIOBJ former = SelectObject(context, font);
        DrawTextW(context, test::TextOf(box).c_str(), -1, &text, DT_CALCRECT | DT_SINGLELINE);
        SelectObject(context, former);
        DeleteObject(font);
    });
    const RECT place = test::WindowArea(box);
    EXPECT_GE(place.right - place.left,
              text.right + GetSystemMetrics(SM_CXSIZE) + 2 * GetSystemMetrics(SM_CXDLGFRAME))
        << language;
    const HWND button =
        GetDlgItem(box, IDOK) != nullptr ? GetDlgItem(box, IDOK) : GetDlgItem(box, IDCANCEL);
    const RECT buttonPlace = test::WindowArea(button);
    const LONG left = buttonPlace.left - place.left;
    const LONG right = place.right - buttonPlace.right;
    EXPECT_GT(right, 0) << language;
    EXPECT_GE(left, right - 2) << language << ": in the middle or at the right";
}

TEST_F(TrevoltLayout, NoLabelIsCutOffInAnyLanguage) {
    for (const auto& [id, file] : test::kLanguageCases) {
        const auto& trevolt = StartIn(id);
        const CDialogFont font(FontFor(id));
        const std::string language = WideToShownUtf8(file);
        for (const int control : test::kTranslatedControls)
            ExpectFits(control, font, language);
        for (const int mode : {kIdByScreen, kIdByCabinet}) {
            trevolt.Click(mode);
            ExpectFits(kIdWidthLabel, font, language);
            ExpectFits(kIdHeightLabel, font, language);
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

TEST_F(TrevoltLayout, LabelsStandRightOverWhatTheyName) {
    Start();
    constexpr std::pair<int, int> kLabels[] = {{kIdWidthLabel, kIdWidth},
                                               {kIdHeightLabel, kIdHeight},
                                               {kIdAngleLabel, kIdAngle},
                                               {kIdSourceLabel, kIdSource},
                                               {kIdTargetLabel, kIdTarget}};
    for (const auto& [label, named] : kLabels) {
        EXPECT_EQ(PlaceOf(label).left, PlaceOf(named).left) << label;
        const LONG gap = PlaceOf(named).top - PlaceOf(label).bottom;
        EXPECT_GE(gap, 0) << label;
        EXPECT_LE(gap, Scaled(6)) << label;
    }
}

TEST_F(TrevoltLayout, FooterIsDrawnAsTextThatCanBeRead) {
    const auto& trevolt = Start();
    const HWND footer = GetWindow(trevolt.Control(kIdStart), GW_HWNDLAST);
    EXPECT_NE(test::TextOf(footer).find(L"Trevolt "), std::wstring::npos);
    EXPECT_TRUE(IsWindowEnabled(footer));
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
    struct SFault {
        const wchar_t* name;
        const wchar_t* width;
        const wchar_t* height;
    };
    constexpr SFault kFaults[] = {
        {L"width-digits", L"12a", L"1"},   {L"height-digits", L"1", L"-1"},
        {L"width-integer", L"12.5", L"1"}, {L"height-integer", L"1", L"12.5"},
        {L"width-empty", L"", L"1"},       {L"height-empty", L"1", L""},
        {L"width-limit", L"65536", L"1"},  {L"height-limit", L"1", L"32769"}};
    for (const auto& [language, file] : test::kLanguageCases) {
        if (language != 0 && std::wstring_view(file) == test::kLanguageCases[0].file)
            continue; // English once
        const auto& trevolt = StartIn(language);
        const test::CPixels before = test::CPixels::OfSteadyScreen(test::ScreenArea());
        for (std::size_t i = 0; i < std::size(kFaults); ++i) {
            const SFault& fault = kFaults[i];
            // All faults in English, the three texts in the others.
            if (language != 0 && i != 0 && i != 3 && i != 7)
                continue;
            trevolt.Type(kIdWidth, fault.width);
            trevolt.Type(kIdHeight, fault.height);
            trevolt.Press(kIdHeight, VK_RETURN);
            EXPECT_NE(trevolt.WaitForBalloon(), L"");
            const HWND balloon = trevolt.FindBalloon();
            SavePictureOver(L"balloon-" + std::to_wstring(language) + L"-" + fault.name, balloon,
                            before);
            trevolt.Type(kIdHeight, L"1"); // takes it down
            ASSERT_EQ(trevolt.FindBalloon(), nullptr);
            trevolt.Type(kIdWidth, L"1");
        }
    }
}

TEST_F(TrevoltLayout, PicturesOfARunAndItsLastMessage) {
    SaveFolders(m_source.Path(), m_target.Path());
    test::WriteFile(m_source.File(L"Cab_01.9fcoef"),
                    test::ReadFile(test::Sample(L"cabinet/Cab_01.9fcoef")));
    for (const auto& [language, file] : test::kLanguageCases) {
        if (language != 0 && std::wstring_view(file) == test::kLanguageCases[0].file)
            continue; // English once
        const auto& trevolt = StartIn(language);
        trevolt.Type(kIdWidth, L"40");
        trevolt.Type(kIdHeight, L"24");
        trevolt.ClickModal(kIdStart);
        const HWND box = trevolt.WaitForPopup();
        const test::SMessageBox seen = test::ReadMessageBox(box);
        EXPECT_EQ(seen.text, TextIn(file, L"Trevolt_Export_Finished"));
        EXPECT_EQ(seen.title, TextIn(file, L"Trevolt_102"));
        EXPECT_EQ(seen.button, TextIn(file, L"Tools_OK"));
        EXPECT_EQ(seen.icon, test::EBoxIcon::None);
        ExpectWholeCaption(box, WideToShownUtf8(file));
        // Below the window, so that the picture has all of both.
        const RECT window = test::WindowArea(trevolt.Window());
        SetWindowPos(box, nullptr, window.left + 40, window.bottom + 8, 0, 0,
                     SWP_NOSIZE | SWP_NOACTIVATE | SWP_NOZORDER);
        SavePicture(L"run-" + std::to_wstring(language), box);
        ExpectBarDrawn(95);
        test::ClosePopup(box);
    }
}

TEST_F(TrevoltLayout, PicturesOfMessages) {
    SaveFolders(m_source.Path(), m_target.File(L"missing\\"));
    for (const std::int32_t language : {0, 2, 4, 5, 8}) {
        Save(kKeyCabinetWidth, L"0");
        const auto& trevolt = StartIn(language);
        const auto takePicture = [&](const std::wstring& name) {
            trevolt.ClickModal(kIdStart);
            const HWND box = trevolt.WaitForPopup();
            SavePicture(L"message-" + std::to_wstring(language) + L"-" + name, box);
            test::ClosePopup(box);
        };
        takePicture(L"size");
        trevolt.Type(kIdWidth, L"40");
        trevolt.Type(kIdHeight, L"24");
        takePicture(L"no-file");
        test::WriteText(m_source.File(L"a.9fcoef"), "");
        takePicture(L"no-target");
        trevolt.Type(kIdWidth, L"65535");
        trevolt.Type(kIdHeight, L"40000");
        takePicture(L"no-memory");
        SavePicture(L"after-no-memory-" + std::to_wstring(language));
        ASSERT_TRUE(RemoveFile(m_source.File(L"a.9fcoef")));
    }
}

TEST_F(TrevoltLayout, PictureOfTheAboutBox) {
    const auto& trevolt = StartIn(0);
    PostMessageW(trevolt.Window(), WM_SYSCOMMAND, 0x10, 0);
    const HWND about = trevolt.WaitForPopup();
    SavePicture(L"about", about);
    test::ClosePopup(about);
}

/// How much of a window's inside the screen shows lighter than a middle grey, in percent.
std::size_t LightPercent(HWND window) {
    RECT inside{};
    GetClientRect(window, &inside);
    MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&inside), 2);
    const test::CPixels pixels = test::CPixels::OfSteadyScreen(inside);
    std::size_t light = 0;
    for (LONG y = 0; y < pixels.Height(); ++y)
        for (LONG x = 0; x < pixels.Width(); ++x)
            light += (pixels.At(x, y) >> 8U & 0xFFU) > 0x80 ? 1U : 0U;
    return light * 100 / static_cast<std::size_t>(pixels.Width() * pixels.Height());
}

TEST_F(TrevoltLayout, IsDarkWhereTheSystemAsksForIt) {
    const test::CDarkSystem dark;
    SaveFolders(m_source.Path(), m_target.Path());
    const auto& trevolt = StartIn(0);
    constexpr std::size_t kTextAndFrames = 40; // Wine has no dark frames
    test::Raise(trevolt.Window());
    EXPECT_LE(LightPercent(trevolt.Window()), 10U);
    for (const int id :
         {1000, 1001, 1002, 1003, 1004, 1005, 1006, 1007, 1010, 1013, 1017, 1018, 1019, 1020, 1021})
        EXPECT_LE(LightPercent(trevolt.Control(id)), kTextAndFrames) << id;
    PostMessageW(trevolt.Window(), WM_SYSCOMMAND, 0x10, 0);
    const HWND about = trevolt.WaitForPopup();
    test::Raise(about);
    EXPECT_LE(LightPercent(about), 15U);
    SavePicture(L"dark-about", about);
    test::ClosePopup(about);
}

TEST_F(TrevoltLayout, FollowsTheSystemsSettingWhileItIsOpen) {
    const auto& trevolt = Start();
    test::Raise(trevolt.Window());
    EXPECT_GE(LightPercent(trevolt.Window()), 80U);
    {
        const test::CDarkSystem dark;
        SendMessageW(trevolt.Window(), WM_SETTINGCHANGE, 0, 0);
        EXPECT_TRUE(test::WaitUntil([&] { return LightPercent(trevolt.Window()) <= 10; }));
    }
    SendMessageW(trevolt.Window(), WM_SETTINGCHANGE, 0, 0);
    EXPECT_TRUE(test::WaitUntil([&] { return LightPercent(trevolt.Window()) >= 80; }));
}

TEST_F(TrevoltLayout, FollowsTheSystemsSettingInTheAboutBoxToo) {
    const auto& trevolt = Start();
    PostMessageW(trevolt.Window(), WM_SYSCOMMAND, 0x10, 0);
    const HWND about = trevolt.WaitForPopup();
    test::Raise(about);
    EXPECT_GE(LightPercent(about), 80U);
    {
        const test::CDarkSystem dark;
        SendMessageW(about, WM_SETTINGCHANGE, 0, 0);
        EXPECT_TRUE(test::WaitUntil([&] { return LightPercent(about) <= 15; }));
    }
    SendMessageW(about, WM_SETTINGCHANGE, 0, 0);
    EXPECT_TRUE(test::WaitUntil([&] { return LightPercent(about) >= 80; }));
    test::ClosePopup(about);
}

TEST_F(TrevoltLayout, PicturesInUse) {
    SaveFolders(L"D:\\Walls\\Hall 2\\measured\\", L"D:\\Walls\\Hall 2\\turned\\");
    Save(kKeyCabinetWidth, L"128");
    Save(kKeyCabinetHeight, L"256");
    for (const std::int32_t language : {0, 1}) {
        StartIn(language);
        SavePicture(L"used-" + std::to_wstring(language));
        const test::CDarkSystem dark;
        StartIn(language);
        SavePicture(L"used-dark-" + std::to_wstring(language));
    }
}

TEST_F(TrevoltLayout, PicturesInTheDark) {
    const test::CDarkSystem dark;
    SaveFolders(m_source.Path(), m_target.Path());
    test::WriteFile(m_source.File(L"Cab_01.9fcoef"),
                    test::ReadFile(test::Sample(L"cabinet/Cab_01.9fcoef")));
    Save(kKeyCabinetWidth, L"40");
    Save(kKeyCabinetHeight, L"24");
    for (const auto& [language, file] : test::kLanguageCases) {
        if (language != 0 && std::wstring_view(file) == test::kLanguageCases[0].file)
            continue; // English once
        const auto& trevolt = StartIn(language);
        SavePicture(L"dark-" + std::to_wstring(language));
        if (language != 0)
            continue;
        trevolt.ClickModal(kIdStart);
        const HWND box = trevolt.WaitForPopup();
        SavePicture(L"dark-run-0", box);
        ExpectBarDrawn(95);
        test::ClosePopup(box);
    }
}

} // namespace
} // namespace trevolt
