#include "win32/MsgBox.h"

#include "app/dialog/Languages.h"
#include "app/dialog/Translate.h"
#include "platform/ProgramFolder.h"
#include "win32/WindowText.h"

namespace trevolt {
namespace {

constexpr const wchar_t* kKeyOk = L"Tools_OK";

std::wstring g_okText;
HHOOK g_layoutHook = nullptr;

/// The one button of a message box with OK: the system numbers it so that Escape presses it too.
HWND FindOkButton(HWND messageBox) {
    const HWND button = GetDlgItem(messageBox, IDOK);
    return button != nullptr ? button : GetDlgItem(messageBox, IDCANCEL);
}

/// Pixels that a box takes to show its whole caption, with frames and the close button.
int CaptionWidth(HWND box) {
    const UINT dpi = GetDpiForWindow(box);
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, dpi);
    const std::wstring caption = GetText(box);
    const HDC context = GetDC(box);
    const HFONT font = CreateFontIndirectW(&metrics.lfCaptionFont);
    const HGDIOBJ former = SelectObject(context, font);
    SIZE text{};
    GetTextExtentPoint32W(context, caption.c_str(), static_cast<int>(caption.size()), &text);
    SelectObject(context, former);
    DeleteObject(font);
    ReleaseDC(box, context);
    const int frame =
        GetSystemMetricsForDpi(SM_CXDLGFRAME, dpi) + GetSystemMetricsForDpi(SM_CXPADDEDBORDER, dpi);
    // The close button is wider than the system tells, and the text has a margin beside it.
    return text.cx + 2 * frame + 2 * GetSystemMetricsForDpi(SM_CXSIZE, dpi);
}

/// Makes the box as wide as its caption needs; its middle and the button's place in it stay.
void WidenToCaption(HWND box, HWND button) {
    RECT place{};
    GetWindowRect(box, &place);
    const int lacking = CaptionWidth(box) - (place.right - place.left);
    if (lacking <= 0)
        return;
    RECT buttonPlace{};
    GetWindowRect(button, &buttonPlace);
    const int shift = WidenedButtonShift(place, buttonPlace, lacking);
    MapWindowPoints(nullptr, box, reinterpret_cast<POINT*>(&buttonPlace), 2);
    constexpr UINT kFlags = SWP_NOZORDER | SWP_NOACTIVATE;
    SetWindowPos(box, nullptr, place.left - lacking / 2, place.top,
                 place.right - place.left + lacking, place.bottom - place.top, kFlags);
    SetWindowPos(button, nullptr, buttonPlace.left + shift, buttonPlace.top, 0, 0,
                 kFlags | SWP_NOSIZE);
}

void Unhook() {
    if (g_layoutHook != nullptr)
        UnhookWindowsHookEx(g_layoutHook);
    g_layoutHook = nullptr;
}

/// Runs when the message box has laid itself out and is not shown yet.
LRESULT CALLBACK PrepareBox(int code, WPARAM wParam, LPARAM lParam) {
    const HHOOK hook = g_layoutHook;
    const auto& done = *reinterpret_cast<const CWPRETSTRUCT*>(lParam);
    if (code == HC_ACTION && done.message == WM_INITDIALOG) {
        if (const HWND button = FindOkButton(done.hwnd); button != nullptr) {
            if (!g_okText.empty())
                SetWindowTextW(button, g_okText.c_str());
            WidenToCaption(done.hwnd, button);
            Unhook();
        }
    }
    return CallNextHookEx(hook, code, wParam, lParam);
}

} // namespace

int WidenedButtonShift(const RECT& box, const RECT& button, int growth) {
    const LONG left = button.left - box.left;
    const LONG right = box.right - button.right;
    return left > 2 * right ? growth : growth / 2;
}

void Korvel_LanguageChanged(std::int32_t id) {
    CTranslate texts;
    SelectToolsLanguage(texts, GetModuleFolder(), id);
    g_okText = texts.TranslateString(kKeyOk);
}

void MsgBox(HWND owner, const std::wstring& text, std::uint32_t style) {
    g_layoutHook = SetWindowsHookExW(WH_CALLWNDPROCRET, PrepareBox, nullptr, GetCurrentThreadId());
    MessageBoxW(owner, text.c_str(), GetText(owner).c_str(), style);
    Unhook();
}

} // namespace trevolt
