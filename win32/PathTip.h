// CPathTip: a tooltip with the whole path of a folder box that shows only the path's end.
//
// Belongs to the thread of its window.
#pragma once

#include <string>

#include <windows.h>

namespace trevolt {

class CPathTip {
  public:
    /// Shows `path` when the mouse rests on the box; an empty one shows nothing.
    void SetPath(HWND box, const std::wstring& path);

  private:
    void Create(HWND box);

    HWND m_tooltip = nullptr; ///< goes with the dialog, which owns it
};

} // namespace trevolt
