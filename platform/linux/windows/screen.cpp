#include "platform/linux/windows/screen.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QScreen>
#include <QWindow>

#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/window_object.h"

// Behind the others, because their names and X's do not agree.
#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace layer {

namespace {

int Strip = 0;
bool SeenByATest = false;

constexpr int LongestExposure = 300;  // milliseconds that a window server may take to show a new window

// None but on X11.
Display* DisplayOfQt() {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr ? x11->display() : nullptr;
}

// Asked anew every time.
bool WindowManagerRuns() {
    Display* display = DisplayOfQt();
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
    return runs;
}

}  // namespace

bool ScreenIsSeen() {
    return SeenByATest || QGuiApplication::platformName() != "offscreen";
}

void SeeWithoutAScreen() {
    SeenByATest = true;
}

bool FocusIsReal() {
    const QString platform = QGuiApplication::platformName();
    return platform == "xcb" || platform.startsWith("wayland");
}

bool HasWindowManager() {
    const QString platform = QGuiApplication::platformName();
    return platform.startsWith("wayland") || WindowManagerRuns();
}

int DisplayConnection() {
    Display* display = DisplayOfQt();
    return display != nullptr ? XConnectionNumber(display) : -1;
}

void ReserveStrip(int height) {
    Strip = height;
}

QRect WorkArea() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    const QRect area = screen != nullptr ? screen->availableGeometry() : QRect(0, 0, 240, 320);
    return area.adjusted(0, 0, 0, -Strip);
}

void PaintNow(QWidget* widget) {
    BeQuiet(true);
    const QWindow* window = widget->window()->windowHandle();
    // A window that is new to the server cannot be painted before the server has said so.
    if (window != nullptr && window->isVisible() && !window->isExposed()) {
        QElapsedTimer waiting;
        waiting.start();
        while (!window->isExposed() && waiting.elapsed() < LongestExposure) {
            QCoreApplication::processEvents(
                QEventLoop::ExcludeUserInputEvents | QEventLoop::ExcludeSocketNotifiers, 10);
        }
    }
    widget->repaint();
    for (QWidget* child : widget->findChildren<QWidget*>()) {
        if (child->isVisible()) {
            child->repaint();
        }
    }
    // X gets what was painted at once; a frame buffer's screen copies it when it is asked to. Waiting for the
    // server instead would hand out the input that has come meanwhile.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateRequest);
    BeQuiet(false);
}

}  // namespace layer

int GetSystemMetrics(int index) {
    return layer::OnMain([=] {
        const bool counted = index == SM_CMONITORS && layer::ScreenIsSeen();
        return counted ? static_cast<int>(QGuiApplication::screens().size()) : 0;
    });
}
