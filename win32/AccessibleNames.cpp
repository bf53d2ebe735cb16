#include "win32/AccessibleNames.h"

#include <oleacc.h>

namespace trevolt {

CAccessibleNames::~CAccessibleNames() {
    if (m_services != nullptr)
        m_services->Release();
}

void CAccessibleNames::SetName(HWND control, const std::wstring& name) {
    if (!Connect())
        return;
    m_services->SetHwndPropStr(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF,
                               PROPID_ACC_NAME, name.c_str());
    m_named.insert(control);
}

void CAccessibleNames::Clear() {
    MSAAPROPID name = PROPID_ACC_NAME;
    for (const HWND control : m_named)
        m_services->ClearHwndProps(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, &name,
                                   1);
    m_named.clear();
}

bool CAccessibleNames::Connect() {
    if (m_services != nullptr)
        return true;
    void* found = nullptr;
    if (FAILED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER,
                                IID_IAccPropServices, &found)))
        return false;
    m_services = static_cast<IAccPropServices*>(found);
    return true;
}

} // namespace trevolt
