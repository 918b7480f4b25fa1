// The platform's calls on windows: showing, placing, mapping, texts.
#include <QGuiApplication>

#include "platform/linux/windows/on_main.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

namespace {

// Runs the function with the window's object, or answers what a failed call answers.
template <class Function>
auto WithWindow(HWND handle, Function&& function) -> decltype(function(*WindowPtr())) {
    return OnMain([&]() -> decltype(function(*WindowPtr())) {
        const WindowPtr window = FindWindowObject(handle);
        if (window == nullptr) {
            return {};
        }
        return function(*window);
    });
}

// Where client coordinates of the window count from, on the screen; null is the screen itself.
QPoint ClientOrigin(HWND handle) {
    const WindowPtr window = FindWindowObject(handle);
    return window != nullptr ? window->Client()->mapToGlobal(QPoint(0, 0)) : QPoint(0, 0);
}

QRect ScreenPlace(const WindowObject& window) {
    return QRect(window.Widget()->mapToGlobal(QPoint(0, 0)), window.Widget()->size());
}

}  // namespace

}  // namespace layer

using layer::OnMain;
using layer::WithWindow;

BOOL DestroyWindow(HWND window) {
    return WithWindow(window, [](layer::WindowObject& object) {
        layer::Destroy(object);
        return TRUE;
    });
}

LRESULT DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return WithWindow(window,
                      [&](layer::WindowObject& object) { return object.Default(message, wParam, lParam); });
}

BOOL IsWindow(HWND window) {
    layer::RemoteWindow remote;
    return layer::IsOwnWindow(window) || layer::FindRemoteWindow(window, remote) ? TRUE : FALSE;
}

BOOL IsWindowVisible(HWND window) {
    return WithWindow(window, [](layer::WindowObject& object) { return object.Visible() ? TRUE : FALSE; });
}

BOOL ShowWindow(HWND window, int command) {
    return WithWindow(window, [&](layer::WindowObject& object) {
        const BOOL before = object.Visible() ? TRUE : FALSE;
        object.SetVisible(command != SW_HIDE);
        return before;
    });
}

BOOL UpdateWindow(HWND window) {
    return WithWindow(window, [](layer::WindowObject& object) {
        layer::PaintNow(object.Widget());
        return TRUE;
    });
}

BOOL SetWindowPos(HWND window, HWND after, int x, int y, int width, int height, UINT flags) {
    return WithWindow(window, [&](layer::WindowObject& object) {
        QRect place = object.Widget()->geometry();
        if ((flags & SWP_NOMOVE) == 0) {
            place.moveTo(x, y);
        }
        if ((flags & SWP_NOSIZE) == 0) {
            place.setSize(QSize(width, height).expandedTo(QSize(0, 0)));
        }
        if ((flags & (SWP_NOMOVE | SWP_NOSIZE)) != (SWP_NOMOVE | SWP_NOSIZE)) {
            object.SetPlace(place);
        }
        if ((flags & SWP_NOZORDER) == 0 && after == HWND_TOPMOST && !object.IsChild() &&
            !object.Widget()->windowFlags().testFlag(Qt::WindowStaysOnTopHint)) {
            // Qt hides a window whose flags change.
            const bool visible = object.Visible();
            object.Widget()->setWindowFlag(Qt::WindowStaysOnTopHint);
            object.SetVisible(visible);
        }
        if ((flags & SWP_SHOWWINDOW) != 0) {
            object.SetVisible(true);
        }
        if ((flags & SWP_NOACTIVATE) == 0 && !object.IsChild()) {
            object.Activate();
        } else if ((flags & SWP_NOZORDER) == 0 && object.Visible()) {
            object.Widget()->raise();
        }
        return TRUE;
    });
}

BOOL GetWindowRect(HWND window, RECT* rectangle) {
    return WithWindow(window, [&](layer::WindowObject& object) {
        const QRect place = layer::ScreenPlace(object);
        *rectangle = {place.x(), place.y(), place.x() + place.width(), place.y() + place.height()};
        return TRUE;
    });
}

int MapWindowPoints(HWND from, HWND to, POINT* points, UINT count) {
    return OnMain([&] {
        const QPoint shift = layer::ClientOrigin(from) - layer::ClientOrigin(to);
        for (UINT i = 0; i < count; ++i) {
            points[i].x += shift.x();
            points[i].y += shift.y();
        }
        return static_cast<int>(MAKELONG(shift.x(), shift.y()));
    });
}

BOOL ScreenToClient(HWND window, POINT* point) {
    return WithWindow(window, [&](layer::WindowObject&) {
        const QPoint origin = layer::ClientOrigin(window);
        *point = {point->x - origin.x(), point->y - origin.y()};
        return TRUE;
    });
}

BOOL SetWindowTextW(HWND window, LPCWSTR text) {
    return WithWindow(window, [&](layer::WindowObject& object) {
        object.SetText(text != nullptr ? text : u"");
        return TRUE;
    });
}

LONG GetWindowLongW(HWND window, int index) {
    return WithWindow(window, [&](layer::WindowObject& object) {
        return index == GWL_STYLE ? static_cast<LONG>(object.Style()) : 0;
    });
}

LONG SetWindowLongW(HWND window, int index, LONG value) {
    return WithWindow(window, [&](layer::WindowObject& object) {
        if (index != GWL_STYLE) {
            return 0;
        }
        const auto before = static_cast<LONG>(object.Style());
        object.SetStyle(static_cast<DWORD>(value));
        return before;
    });
}
