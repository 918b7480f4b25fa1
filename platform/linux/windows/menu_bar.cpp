// The menu bar and the input panel of a handheld's shell: here there is neither.
#include "platform/linux/windows/dialogs.h"
#include "platform/linux/windows/on_main.h"
#include "platform/shell.h"

// The bar is a window of no height at the bottom of its parent's area, so that whoever takes its height off
// the screen's loses nothing.
BOOL SHCreateMenuBar(SHMENUBARINFO* info) {
    return layer::OnMain([=] {
        const layer::WindowPtr parent = layer::FindWindowObject(info->hwndParent);
        if (info->cbSize != sizeof(SHMENUBARINFO) || parent == nullptr) {
            return FALSE;
        }
        layer::WindowInit init;
        init.Parent = parent.get();
        init.Child = true;
        init.ClassName = u"menu_worker";
        init.Place = QRect(0, parent->Client()->height(), parent->Client()->width(), 0);
        info->hwndMB = layer::Adopt(
            std::make_shared<layer::DialogWindow>(init, layer::DialogWindow::Kind::Page, nullptr));
        return TRUE;
    });
}

BOOL SipGetInfo(SIPINFO* info) {
    return layer::OnMain([=] {
        if (info->cbSize != sizeof(SIPINFO)) {
            return FALSE;
        }
        const QRect area = layer::WorkArea();
        info->fdwFlags = 0;
        info->rcVisibleDesktop = {area.x(), area.y(), area.x() + area.width(), area.y() + area.height()};
        info->rcSipRect = {};
        return TRUE;
    });
}
