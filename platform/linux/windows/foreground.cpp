// Which window has the input focus.
#include <QApplication>

#include "platform/linux/windows/on_main.h"
#include "platform/linux/windows/screen.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

namespace {

HWND ActiveHandle() {
    const WindowPtr window = WindowOf(QApplication::activeWindow());
    // Where no display server hands out the focus, Qt calls every window active that is shown; one that was
    // shown without taking the focus does not count then.
    const bool counts = window != nullptr && (FocusIsReal() || window->TakesFocus());
    return counts ? window->Handle() : nullptr;
}

}  // namespace

}  // namespace layer

HWND GetForegroundWindow() {
    return layer::OnMain([] { return layer::ActiveHandle(); });
}

HWND GetActiveWindow() {
    return GetForegroundWindow();
}

BOOL SetForegroundWindow(HWND window) {
    return layer::OnMain([=] {
        const layer::WindowPtr object = layer::FindWindowObject(window);
        if (object == nullptr) {
            return FALSE;
        }
        object->Activate();
        return TRUE;
    });
}

BOOL AllowSetForegroundWindow(DWORD) {
    // Whoever holds the focus here gives it to any window that asks.
    return TRUE;
}

HWND SetActiveWindow(HWND window) {
    return layer::OnMain([=] {
        HWND before = layer::ActiveHandle();
        if (const layer::WindowPtr object = layer::FindWindowObject(window); object != nullptr) {
            object->Activate();
        }
        return before;
    });
}
