// The platform's calls on windows: showing, placing, mapping, texts, the controls of a dialog, the focus.
#include <QApplication>
#include <QGuiApplication>
#include <algorithm>

#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/screen.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/linux/windows/window_object.h"
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

WindowObject* Item(HWND dialog, int id) {
    const WindowPtr window = FindWindowObject(dialog);
    return window != nullptr ? window->FindChild(id) : nullptr;
}

HWND ActiveHandle() {
    const WindowPtr window = WindowOf(QApplication::activeWindow());
    // Where no display server hands out the focus, Qt calls every window active that is shown; one that was
    // shown without taking the focus does not count then.
    const bool counts = window != nullptr && (FocusIsReal() || window->TakesFocus());
    return counts ? window->Handle() : nullptr;
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
        layer::TellWatchdog();  // the caller keeps the main thread
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

HWND GetDlgItem(HWND dialog, int id) {
    return layer::OnMain([=] {
        const layer::WindowObject* item = layer::Item(dialog, id);
        return item != nullptr ? item->Handle() : nullptr;
    });
}

BOOL SetDlgItemTextW(HWND dialog, int id, LPCWSTR text) {
    return SetWindowTextW(GetDlgItem(dialog, id), text);
}

UINT GetDlgItemTextW(HWND dialog, int id, LPWSTR text, int size) {
    return layer::OnMain([=]() -> UINT {
        if (size <= 0) {
            return 0;
        }
        const layer::WindowObject* item = layer::Item(dialog, id);
        const std::u16string whole = item != nullptr ? item->Text() : std::u16string();
        const std::size_t length = std::min(whole.size(), static_cast<std::size_t>(size) - 1);
        std::copy_n(whole.begin(), length, text);
        text[length] = 0;
        return static_cast<UINT>(length);
    });
}

BOOL SetDlgItemInt(HWND dialog, int id, UINT value, BOOL) {
    return SetDlgItemTextW(dialog, id, QString::number(value).toStdU16String().c_str());
}

UINT GetDlgItemInt(HWND dialog, int id, BOOL* translated, BOOL) {
    return layer::OnMain([=]() -> UINT {
        const layer::WindowObject* item = layer::Item(dialog, id);
        bool good = false;
        const UINT number = item != nullptr ? QString::fromStdU16String(item->Text()).toUInt(&good) : 0;
        if (translated != nullptr) {
            *translated = good;
        }
        return number;
    });
}

LRESULT SendDlgItemMessageW(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam) {
    return SendMessageW(GetDlgItem(dialog, id), message, wParam, lParam);
}

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
