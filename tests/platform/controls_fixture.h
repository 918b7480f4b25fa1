// A window that holds common controls and hears what they tell it.
#pragma once

#include <gtest/gtest.h>

#include <QTimer>
#include <functional>

#include "platform/controls.h"
#include "platform/linux/windows/window_object.h"
#include "tests/support/temporary_terminal.h"

class ControlsTest : public testing::Test {
  protected:
    ControlsTest();
    ~ControlsTest() override;

    // A control in the window, shown; the class in whatever case.
    HWND Make(const char16_t* className, DWORD style, const QRect& place, int id = 1);
    static QWidget* WidgetOf(HWND window);
    // Runs the step once the messages are waited for.
    static void Then(std::function<void()> step);

    TemporaryTerminal terminal_;
    HWND window_ = nullptr;
};

// What the window does with WM_NOTIFY, WM_COMMAND and WM_TIMER; emptied before each test.
extern std::function<void(UINT, WPARAM, LPARAM)> OnControl;
