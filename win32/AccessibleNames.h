// CAccessibleNames: names that a screen reader takes for controls in place of their texts. Where the
// system has no place for them, the texts stay.
//
// Belongs to the thread of the controls' window, which has initialised COM.
#pragma once

#include <set>
#include <string>

#include <windows.h>

struct IAccPropServices;

namespace trevolt {

class CAccessibleNames {
  public:
    CAccessibleNames() = default;
    ~CAccessibleNames();
    CAccessibleNames(const CAccessibleNames&) = delete;
    CAccessibleNames& operator=(const CAccessibleNames&) = delete;

    void SetName(HWND control, const std::wstring& name);

    /// Takes the names back, before their controls go.
    void Clear();

  private:
    bool Connect();

    IAccPropServices* m_services = nullptr;
    std::set<HWND> m_named;
};

} // namespace trevolt
