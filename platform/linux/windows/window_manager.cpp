// Apart from the rest because X's headers and Qt's do not agree on names.
#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include "platform/linux/windows/screen.h"

namespace layer {

bool WindowManagerRuns() {
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        return false;
    }
    const Atom check = XInternAtom(display, "_NET_SUPPORTING_WM_CHECK", False);
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    const int result = XGetWindowProperty(display, DefaultRootWindow(display), check, 0, 1, False, XA_WINDOW,
                                          &type, &format, &count, &after, &data);
    // Old managers know one of the two signs only.
    const Atom selection = XInternAtom(display, "WM_S0", False);
    const bool runs = XGetSelectionOwner(display, selection) != None ||
                      (result == Success && type == XA_WINDOW && count == 1);
    if (data != nullptr) {
        XFree(data);
    }
    XCloseDisplay(display);
    return runs;
}

}  // namespace layer
