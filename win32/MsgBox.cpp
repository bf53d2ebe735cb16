#include "win32/MsgBox.h"

#include "app/dialog/Languages.h"
#include "app/dialog/Translate.h"
#include "platform/ProgramFolder.h"
#include "win32/WindowText.h"

namespace trevolt {
namespace {

constexpr const wchar_t* kKeyOk = L"Tools_OK";

std::wstring g_okText;
HHOOK g_creationHook = nullptr;

/// The one button of a message box with OK: the system numbers it so that Escape presses it too.
HWND FindOkButton(HWND messageBox) {
    const HWND button = GetDlgItem(messageBox, IDOK);
    return button != nullptr ? button : GetDlgItem(messageBox, IDCANCEL);
}

/// Runs when the message box is about to be activated: its button then has its text.
LRESULT CALLBACK LabelButton(int code, WPARAM wParam, LPARAM lParam) {
    const HHOOK hook = g_creationHook;
    if (code == HCBT_ACTIVATE) {
        if (const HWND button = FindOkButton(reinterpret_cast<HWND>(wParam)); button != nullptr) {
            SetWindowTextW(button, g_okText.c_str());
            UnhookWindowsHookEx(hook);
            g_creationHook = nullptr;
        }
    }
    return CallNextHookEx(hook, code, wParam, lParam);
}

void Unhook() {
    if (g_creationHook != nullptr)
        UnhookWindowsHookEx(g_creationHook);
    g_creationHook = nullptr;
}

} // namespace

void Korvel_LanguageChanged(std::int32_t id) {
    CTranslate texts;
    SelectToolsLanguage(texts, GetModuleFolder(), id);
    g_okText = texts.TranslateString(kKeyOk);
}

void MsgBox(HWND owner, const std::wstring& text, std::uint32_t style) {
    if (!g_okText.empty())
        g_creationHook = SetWindowsHookExW(WH_CBT, LabelButton, nullptr, GetCurrentThreadId());
    MessageBoxW(owner, text.c_str(), GetText(owner).c_str(), style);
    Unhook();
}

} // namespace trevolt
