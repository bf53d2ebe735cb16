// Trevolt.exe: the entry point and the program's global objects.
#include <windows.h>

#include <commctrl.h>
#include <objbase.h>

#include "app/dialog/StartConstants.h"
#include "app/dialog/TrevoltApp.h"
#include "platform/ProgramFolder.h"
#include "platform/StandardDescriptors.h"
#include "win32/TrevoltWindow.h"

namespace {

// In this order. The placeholder is fetched before any language file is set, so it reads as its
// key's words in every language; saving the settings compares with it.
trevolt::CTrevoltApp g_app;
trevolt::CTranslate g_translate;
const std::wstring kPlaceholder = g_translate.TranslateString(trevolt::kKeyPlaceholder);

void InitControlClasses() {
    constexpr DWORD kAllClasses = 0xFF;
    const INITCOMMONCONTROLSEX classes{sizeof classes, kAllClasses};
    InitCommonControlsEx(&classes);
}

} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int showCommand) {
    using namespace trevolt;
    OpenStandardDescriptors();
    // A long run answers no message; the system must not replace its window by a blank one.
    DisableProcessWindowsGhosting();
    InitControlClasses();
    const bool hasShell = SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    const std::wstring moduleFolder = GetModuleFolder();
    g_app.InitInstance(g_translate, moduleFolder, [&] {
        CTrevoltWindow window(g_translate, {moduleFolder, kPlaceholder});
        window.RunModal(showCommand);
    });
    if (hasShell)
        CoUninitialize();
    return 0;
}
