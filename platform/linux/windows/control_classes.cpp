#include "platform/linux/windows/control_classes.h"

#include "platform/controls.h"
#include "platform/linux/windows/styles.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

WindowPtr MakeControl(const WindowInit& init) {
    static constexpr struct {
        std::u16string_view Name;
        WindowPtr (*Make)(const WindowInit&);
    } classes[] = {{u"Static", MakeStaticControl},
                   {u"Button", MakeButtonControl},
                   {u"Edit", MakeEditControl},
                   {u"SysTreeView32", MakeTreeControl},
                   {u"msctls_updown32", MakeUpDownControl},
                   {u"msctls_progress32", MakeProgressControl}};
    for (const auto& [name, make] : classes) {
        if (SameClass(name, init.ClassName)) {
            const WindowPtr control = make(init);
            control->SetPlace(init.Place);
            control->Widget()->setEnabled((init.Style & StyleDisabled) == 0);
            control->Widget()->setVisible((init.Style & WS_VISIBLE) != 0);
            Adopt(control);
            return control;
        }
    }
    return nullptr;
}

}  // namespace layer

// The classes are there from the start.
BOOL InitCommonControlsEx(const INITCOMMONCONTROLSEX* classes) {
    return classes->dwSize == sizeof *classes;
}
