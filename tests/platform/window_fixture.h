// A window of the test's own; its procedure is what the test says.
#pragma once

#include <gtest/gtest.h>

#include <QTimer>
#include <functional>

#include "platform/controls.h"
#include "platform/linux/windows/window_object.h"
#include "tests/support/temporary_terminal.h"

class WindowTest : public testing::Test {
  protected:
    // Hidden, or in front.
    explicit WindowTest(bool inFront = false);
    ~WindowTest() override;

    // Runs the step once the messages are waited for.
    static void Then(std::function<void()> step);

    TemporaryTerminal terminal_;
    HWND window_ = nullptr;
};

// For tests of controls: the window is in front.
class ControlsTest : public WindowTest {
  protected:
    ControlsTest() : WindowTest(true) {}
};

inline constexpr const WCHAR* TestWindowClass = TEXT("TestWindow");

// The procedure of all windows of that class, in place of the platform's own; empty before each test.
extern std::function<LRESULT(HWND, UINT, WPARAM, LPARAM)> Handle;
