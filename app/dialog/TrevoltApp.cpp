#include "app/dialog/TrevoltApp.h"

#include "app/dialog/Languages.h"

namespace trevolt {

bool CTrevoltApp::InitInstance(CTranslate& translate, const std::wstring& moduleFolder,
                               const std::function<void()>& runDialog) const {
    SelectStartLanguage(translate, moduleFolder);
    runDialog();
    return false;
}

} // namespace trevolt
