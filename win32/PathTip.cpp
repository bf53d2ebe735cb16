#include "win32/PathTip.h"

#include <commctrl.h>

#include "app/dialog/FolderChoice.h"

namespace trevolt {
namespace {

constexpr std::size_t kLongestLine = 80;
constexpr LPARAM kWidestTip = 0x7FFF; // any width turns line ends on

TTTOOLINFOW ToolOf(HWND box, std::wstring& text) {
    TTTOOLINFOW tool{};
    tool.cbSize = sizeof tool;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = GetParent(box);
    tool.uId = reinterpret_cast<UINT_PTR>(box);
    tool.lpszText = text.data();
    return tool;
}

} // namespace

void CPathTip::SetPath(HWND box, const std::wstring& path) {
    if (m_tooltip == nullptr)
        Create(box);
    std::wstring text = PathInLines(path, kLongestLine);
    const TTTOOLINFOW tool = ToolOf(box, text);
    SendMessageW(m_tooltip, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&tool));
}

void CPathTip::Create(HWND box) {
    m_tooltip = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX,
                                CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                                GetParent(box), nullptr, nullptr, nullptr);
    std::wstring none;
    const TTTOOLINFOW tool = ToolOf(box, none);
    SendMessageW(m_tooltip, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    SendMessageW(m_tooltip, TTM_SETMAXTIPWIDTH, 0, kWidestTip);
}

} // namespace trevolt
