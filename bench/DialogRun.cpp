// The dialog's run from one folder to another, on a window in memory:
//
//   dialog-run SOURCE TARGET WIDTH HEIGHT
//
// Turns by 90°. Whether the run did its work is seen by its outputs.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "app/dialog/TrevoltDlg.h"
#include "platform/ConsoleProgram.h"
#include "platform/FileSystem.h"
#include "tests/dialog/MemoryView.h"
#include "trevolt/CoefRotation.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

std::wstring FolderOf(const std::string& argument) {
    return WithSeparator(Utf8ToWide(argument).value_or(L""));
}

} // namespace

int StatusWithoutMemory(std::string_view /*firstArgument*/) noexcept { return 1; }

int ConsoleMain(const std::vector<std::string>& arguments) {
    if (arguments.size() != 4) {
        fmt::print(stderr, "dialog-run: SOURCE TARGET WIDTH HEIGHT are wanted\n");
        return 2;
    }
    test::CMemoryView view;
    view.SelectAngle(static_cast<std::int32_t>(kAngles[0].code), std::wstring(kAngles[0].text));
    CTranslate translate;
    CTrevoltDlg dialog(view, translate);
    dialog.Fields().sourceFolder = FolderOf(arguments[0]);
    dialog.Fields().targetFolder = FolderOf(arguments[1]);
    dialog.Fields().current = {std::atoi(arguments[2].c_str()), std::atoi(arguments[3].c_str())};
    dialog.OnStart();
    return 0;
}

} // namespace trevolt
