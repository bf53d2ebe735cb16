#include "win32/WindowTheme.h"

#include <string>
#include <utility>

#include <uxtheme.h>
#include <vssym32.h>

#include "win32/WindowText.h"

namespace trevolt {
namespace {

COLORREF ToColorRef(std::uint32_t rgb) {
    return RGB(rgb >> 16U & 0xFFU, rgb >> 8U & 0xFFU, rgb & 0xFFU);
}

std::optional<std::uint32_t> AppsUseLightTheme() {
    DWORD value = 0;
    DWORD size = sizeof value;
    if (RegGetValueW(
            HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize",
            L"AppsUseLightTheme", RRF_RT_REG_DWORD, nullptr, &value, &size) != ERROR_SUCCESS)
        return std::nullopt;
    return value;
}

bool IsHighContrast() {
    HIGHCONTRASTW contrast{};
    contrast.cbSize = sizeof contrast;
    return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0) != 0 &&
           (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

/// Systems before the dark title bar do not know the attribute, or know it by its first number.
void DarkenTitleBar(HWND dialog, bool isDark) {
    constexpr DWORD kDarkTitleBar = 20;
    constexpr DWORD kFirstDarkTitleBar = 19;
    using SetAttribute = HRESULT(WINAPI*)(HWND, DWORD, const void*, DWORD);
    const HMODULE library = LoadLibraryExW(L"dwmapi.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (library == nullptr)
        return;
    const auto setAttribute = reinterpret_cast<SetAttribute>(
        reinterpret_cast<void*>(GetProcAddress(library, "DwmSetWindowAttribute")));
    const BOOL value = isDark ? TRUE : FALSE;
    if (setAttribute != nullptr &&
        FAILED(setAttribute(dialog, kDarkTitleBar, &value, sizeof value)))
        setAttribute(dialog, kFirstDarkTitleBar, &value, sizeof value);
    FreeLibrary(library);
    // A title bar that stands already is drawn anew with its frame only.
    SetWindowPos(dialog, nullptr, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
}

std::wstring ClassOf(HWND window) {
    std::wstring name(64, L'\0');
    name.resize(static_cast<std::size_t>(
        GetClassNameW(window, name.data(), static_cast<int>(name.size()))));
    return name;
}

bool IsOfClass(HWND window, const wchar_t* name) {
    return lstrcmpiW(ClassOf(window).c_str(), name) == 0;
}

void ColourProgress(HWND bar, const std::optional<SWindowColours>& colours) {
    const auto colour = [&](std::uint32_t SWindowColours::*part) {
        return static_cast<LPARAM>(colours.has_value() ? ToColorRef((*colours).*part)
                                                       : CLR_DEFAULT);
    };
    // Only a bar without the system's pictures takes colours.
    const wchar_t* pictures = colours.has_value() ? L"" : nullptr;
    SetWindowTheme(bar, pictures, pictures);
    SendMessageW(bar, PBM_SETBARCOLOR, 0, colour(&SWindowColours::progress));
    SendMessageW(bar, PBM_SETBKCOLOR, 0, colour(&SWindowColours::field));
}

/// Gives a control the system's dark pictures where it has them; elsewhere they stay light.
void DressControl(HWND control, const std::optional<SWindowColours>& colours) {
    struct SDarkPictures {
        const wchar_t* controlClass;
        const wchar_t* name;
    };
    static constexpr SDarkPictures kDarkPictures[] = {{WC_BUTTONW, L"DarkMode_Explorer"},
                                                      {WC_EDITW, L"DarkMode_CFD"},
                                                      {WC_COMBOBOXW, L"DarkMode_CFD"}};
    for (const auto& [controlClass, name] : kDarkPictures)
        if (IsOfClass(control, controlClass))
            SetWindowTheme(control, colours.has_value() ? name : nullptr, nullptr);
    if (IsOfClass(control, PROGRESS_CLASSW))
        ColourProgress(control, colours);
}

bool IsRadioButton(HWND button) {
    const LONG kind = GetWindowLongW(button, GWL_STYLE) & BS_TYPEMASK;
    return kind == BS_RADIOBUTTON || kind == BS_AUTORADIOBUTTON;
}

bool IsHidden(HWND control, LRESULT cue) {
    return (SendMessageW(control, WM_QUERYUISTATE, 0, 0) & cue) != 0;
}

LRESULT StateOf(HWND button) { return SendMessageW(button, BM_GETSTATE, 0, 0); }

/// The system's picture of a radio button in its present state.
int RadioState(HWND button) {
    const bool isChecked = (StateOf(button) & BST_CHECKED) != 0;
    if (IsWindowEnabled(button) == 0)
        return isChecked ? RBS_CHECKEDDISABLED : RBS_UNCHECKEDDISABLED;
    if ((StateOf(button) & BST_PUSHED) != 0)
        return isChecked ? RBS_CHECKEDPRESSED : RBS_UNCHECKEDPRESSED;
    return isChecked ? RBS_CHECKEDNORMAL : RBS_UNCHECKEDNORMAL;
}

/// Draws a radio button's circle in the middle of `place`'s left edge, and takes it off `place`.
void DrawRadioCircle(HWND button, HDC context, RECT& place) {
    const auto dpi = static_cast<int>(GetDpiForWindow(button));
    SIZE size{MulDiv(13, dpi, 96), MulDiv(13, dpi, 96)};
    const HTHEME pictures = OpenThemeData(button, WC_BUTTONW);
    if (pictures != nullptr)
        GetThemePartSize(pictures, context, BP_RADIOBUTTON, RadioState(button), nullptr, TS_DRAW,
                         &size);
    const LONG top = (place.top + place.bottom - size.cy) / 2;
    RECT circle{place.left, top, place.left + size.cx, top + size.cy};
    if (pictures != nullptr) {
        DrawThemeBackground(pictures, context, BP_RADIOBUTTON, RadioState(button), &circle,
                            nullptr);
        CloseThemeData(pictures);
    } else {
        const bool isChecked = (StateOf(button) & BST_CHECKED) != 0;
        DrawFrameControl(context, &circle, DFC_BUTTON,
                         static_cast<UINT>(DFCS_BUTTONRADIO | (isChecked ? DFCS_CHECKED : 0)));
    }
    place.left = circle.right + MulDiv(4, dpi, 96);
}

void Fill(HDC context, const RECT& place, std::uint32_t colour) {
    const HBRUSH brush = CreateSolidBrush(ToColorRef(colour));
    FillRect(context, &place, brush);
    DeleteObject(brush);
}

} // namespace

CWindowTheme::~CWindowTheme() {
    m_colours.reset();
    SetBrushes();
}

void CWindowTheme::Apply(HWND dialog) {
    const std::optional<SWindowColours> colours = OwnColours(AppsUseLightTheme(), IsHighContrast());
    if (colours == m_colours)
        return;
    m_colours = colours;
    SetBrushes();
    DarkenTitleBar(dialog, m_colours.has_value());
    for (HWND control = GetWindow(dialog, GW_CHILD); control != nullptr;
         control = GetWindow(control, GW_HWNDNEXT))
        DressControl(control, m_colours);
    RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void CWindowTheme::SetBrushes() {
    for (const auto& [brush, part] : {std::pair(&m_windowBrush, &SWindowColours::window),
                                      std::pair(&m_fieldBrush, &SWindowColours::field)}) {
        if (*brush != nullptr)
            DeleteObject(*brush);
        *brush = m_colours.has_value() ? CreateSolidBrush(ToColorRef((*m_colours).*part)) : nullptr;
    }
}

std::optional<INT_PTR> CWindowTheme::OnMessage(HWND dialog, UINT message, WPARAM wParam,
                                               LPARAM lParam) {
    if (message == WM_SETTINGCHANGE || message == WM_SYSCOLORCHANGE)
        Apply(dialog);
    return Colour(dialog, message, wParam, lParam);
}

std::optional<INT_PTR> CWindowTheme::Colour(HWND dialog, UINT message, WPARAM wParam,
                                            LPARAM lParam) const {
    if (!m_colours.has_value())
        return std::nullopt;
    const auto context = reinterpret_cast<HDC>(wParam);
    const auto control = reinterpret_cast<HWND>(lParam);
    switch (message) {
    case WM_CTLCOLORDLG:
        return reinterpret_cast<INT_PTR>(m_windowBrush);
    case WM_CTLCOLORSTATIC: // comes from edits too that take no input
        return ColourControl(context, control, IsOfClass(control, WC_EDITW));
    case WM_CTLCOLORBTN:
        return ColourControl(context, control, false);
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
        return ColourControl(context, control, true);
    case WM_NOTIFY: {
        const auto& notice = *reinterpret_cast<const NMHDR*>(lParam);
        if (notice.code != NM_CUSTOMDRAW || !IsOfClass(notice.hwndFrom, WC_BUTTONW))
            return std::nullopt;
        DrawButton(*reinterpret_cast<const NMCUSTOMDRAW*>(lParam));
        SetWindowLongPtrW(dialog, DWLP_MSGRESULT, CDRF_SKIPDEFAULT);
        return TRUE;
    }
    default:
        return std::nullopt;
    }
}

INT_PTR CWindowTheme::ColourControl(HDC context, HWND control, bool isField) const {
    SetTextColor(context, ToColorRef(IsWindowEnabled(control) != 0 ? m_colours->text
                                                                   : m_colours->disabledText));
    SetBkColor(context, ToColorRef(isField ? m_colours->field : m_colours->window));
    return reinterpret_cast<INT_PTR>(isField ? m_fieldBrush : m_windowBrush);
}

/// Before anything of the button is drawn: all of it.
void CWindowTheme::DrawButton(const NMCUSTOMDRAW& drawn) const {
    const HWND button = drawn.hdr.hwndFrom;
    if (drawn.dwDrawStage != CDDS_PREPAINT && drawn.dwDrawStage != CDDS_PREERASE)
        return;
    RECT place{};
    GetClientRect(button, &place);
    FillRect(drawn.hdc, &place, m_windowBrush);
    const HGDIOBJ former =
        SelectObject(drawn.hdc, reinterpret_cast<HFONT>(SendMessageW(button, WM_GETFONT, 0, 0)));
    if (IsRadioButton(button))
        DrawRadioButton(button, drawn.hdc, place);
    else
        DrawPushButton(button, drawn.hdc, place);
    SelectObject(drawn.hdc, former);
}

void CWindowTheme::DrawPushButton(HWND button, HDC context, RECT place) const {
    const bool isPressed = (StateOf(button) & BST_PUSHED) != 0;
    const bool hasFocus = (StateOf(button) & BST_FOCUS) != 0;
    const bool isEnabled = IsWindowEnabled(button) != 0;
    const int frame = MulDiv(hasFocus ? 2 : 1, static_cast<int>(GetDpiForWindow(button)), 96);
    const std::uint32_t frameColour = hasFocus ? m_colours->text : m_colours->buttonFrame;
    Fill(context, place, isEnabled ? frameColour : m_colours->button);
    RECT inside = place;
    InflateRect(&inside, -frame, -frame);
    Fill(context, inside, isPressed ? m_colours->pressedButton : m_colours->button);
    DrawButtonText(button, context, place, DT_CENTER);
}

void CWindowTheme::DrawRadioButton(HWND button, HDC context, RECT place) const {
    DrawRadioCircle(button, context, place);
    DrawButtonText(button, context, place, DT_LEFT);
    if ((StateOf(button) & BST_FOCUS) == 0 || IsHidden(button, UISF_HIDEFOCUS))
        return;
    RECT text = place;
    DrawTextW(context, GetText(button).c_str(), -1, &text, DT_SINGLELINE | DT_CALCRECT);
    const LONG height = text.bottom - text.top;
    const LONG top = (place.top + place.bottom - height) / 2;
    RECT focus{place.left, top, text.right, top + height};
    InflateRect(&focus, 1, 0);
    SetTextColor(context, ToColorRef(m_colours->text));
    SetBkColor(context, ToColorRef(m_colours->window));
    DrawFocusRect(context, &focus);
}

void CWindowTheme::DrawButtonText(HWND button, HDC context, RECT place, UINT format) const {
    SetBkMode(context, TRANSPARENT);
    SetTextColor(context, ToColorRef(IsWindowEnabled(button) != 0 ? m_colours->text
                                                                  : m_colours->disabledText));
    const UINT keys = IsHidden(button, UISF_HIDEACCEL) ? DT_HIDEPREFIX : 0;
    DrawTextW(context, GetText(button).c_str(), -1, &place,
              format | keys | DT_SINGLELINE | DT_VCENTER);
}

} // namespace trevolt
