#include "tests/platform/window_fixture.h"

#include <QApplication>

#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/other_programs.h"
#include "platform/linux/windows/start_windows.h"

std::function<LRESULT(HWND, UINT, WPARAM, LPARAM)> Handle;

namespace {

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return Handle ? Handle(window, message, wParam, lParam) : DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace

WindowTest::WindowTest(bool inFront) {
    layer::StartWindows();
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = Procedure;
    windowClass.lpszClassName = TestWindowClass;
    RegisterClassW(&windowClass);
    window_ = CreateWindowExW(0, TestWindowClass, TEXT("test"), inFront ? WS_VISIBLE : 0, 0, 0, 240, 294,
                              nullptr, nullptr, nullptr, nullptr);
    if (inFront) {
        SetForegroundWindow(window_);
    }
    layer::PumpMessages();
}

WindowTest::~WindowTest() {
    Handle = nullptr;
    DestroyWindow(window_);
    layer::ForgetQuit();
    layer::PumpMessages();
    layer::StopListening();  // the next test has a terminal of its own
}

void WindowTest::Then(std::function<void()> step) {
    QTimer::singleShot(0, qApp, std::move(step));
}
