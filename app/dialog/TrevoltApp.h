// CTrevoltApp: the program around its one window.
#pragma once

#include <functional>
#include <string>

#include "app/dialog/Translate.h"

namespace trevolt {

class CTrevoltApp {
  public:
    /// Gives the translator the start-up language, then runs the dialog, which returns when it is
    /// closed. Always false: the program ends with its dialog and has no message loop of its own.
    bool InitInstance(CTranslate& translate, const std::wstring& moduleFolder,
                      const std::function<void()>& runDialog) const;
};

} // namespace trevolt
