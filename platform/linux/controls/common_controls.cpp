#include "platform/controls.h"

#include "platform/linux/controls/controls.h"

namespace layer {

void RegisterCommonControls() {
    RegisterControlClass(u"SysTreeView32", MakeTreeControl);
    RegisterControlClass(u"msctls_updown32", MakeUpDownControl);
    RegisterControlClass(u"msctls_progress32", MakeProgressControl);
    RegisterControlClass(u"SysTabControl32", MakeTabControl);
}

}  // namespace layer

// The classes are there from the start.
BOOL InitCommonControlsEx(const INITCOMMONCONTROLSEX* classes) {
    return classes != nullptr && classes->dwSize == sizeof *classes ? TRUE : FALSE;
}
