#include "tests/platform/controls_fixture.h"

#include <QApplication>

#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/linux/windows/window_object.h"

std::function<void(UINT, WPARAM, LPARAM)> OnControl;

namespace {

LRESULT CALLBACK HolderProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if ((message == WM_NOTIFY || message == WM_COMMAND || message == WM_TIMER) && OnControl) {
        OnControl(message, wParam, lParam);
        return 1;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace

ControlsTest::ControlsTest() {
    layer::StartWindows();
    OnControl = nullptr;
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = HolderProcedure;
    windowClass.lpszClassName = TEXT("ControlsTest");
    RegisterClassW(&windowClass);
    window_ = CreateWindowExW(0, TEXT("ControlsTest"), TEXT("test"), WS_VISIBLE, 0, 0, 240, 294, nullptr,
                              nullptr, nullptr, nullptr);
    SetForegroundWindow(window_);
    layer::PumpMessages();
}

ControlsTest::~ControlsTest() {
    OnControl = nullptr;
    DestroyWindow(window_);
    layer::ForgetQuit();
    layer::PumpMessages();
}

HWND ControlsTest::Make(const char16_t* className, DWORD style, const QRect& place, int id) {
    const layer::WindowPtr holder = layer::FindWindowObject(window_);
    layer::WindowInit init;
    init.Parent = holder.get();
    init.Child = true;
    init.ClassName = className;
    init.Id = id;
    init.Style = style | WS_VISIBLE;
    init.Place = place;
    const layer::WindowPtr control = layer::MakeControl(init);
    layer::PumpMessages();
    return control != nullptr ? control->Handle() : nullptr;
}

QWidget* ControlsTest::WidgetOf(HWND window) {
    const layer::WindowPtr object = layer::FindWindowObject(window);
    return object != nullptr ? object->Widget() : nullptr;
}

void ControlsTest::Then(std::function<void()> step) {
    QTimer::singleShot(0, qApp, std::move(step));
}
