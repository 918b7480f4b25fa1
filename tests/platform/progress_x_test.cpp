// A progress bar on a real X server while the main thread never comes back to its messages: every step is
// seen on the screen at once, and nothing that the user does is handed out.
#include <QApplication>
#include <QProgressBar>
#include <QTest>

#include "platform/linux/windows/message_loop.h"
#include "tests/platform/controls_fixture.h"
#include "tests/platform/x_client.h"
// Behind Qt's headers, whose names it takes.
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

namespace {

// Runs before anything asks Qt for a screen.
struct OwnScreen {
    OwnScreen() { setenv("QT_QPA_PLATFORM", "xcb", 1); }
    XServer Server;
};

class ProgressOnScreenTest : public testing::Test {
  protected:
    OwnScreen screen_;
};

std::vector<unsigned long> Seen(Display* display, const QRect& place) {
    XImage* image = XGetImage(display, DefaultRootWindow(display), place.x(), place.y(),
                              static_cast<unsigned>(place.width()), static_cast<unsigned>(place.height()),
                              AllPlanes, ZPixmap);
    std::vector<unsigned long> pixels;
    for (int y = 0; y < place.height(); ++y) {
        for (int x = 0; x < place.width(); ++x) {
            pixels.push_back(XGetPixel(image, x, y));
        }
    }
    XDestroyImage(image);
    return pixels;
}

void Click(Display* display, const QPoint& place) {
    XTestFakeMotionEvent(display, -1, place.x(), place.y(), CurrentTime);
    XTestFakeButtonEvent(display, 1, True, CurrentTime);
    XTestFakeButtonEvent(display, 1, False, CurrentTime);
    XSync(display, False);
}

class Holder : public ControlsTest {
  public:
    using ControlsTest::Make;
    using ControlsTest::WidgetOf;
    void TestBody() override {}
};

TEST_F(ProgressOnScreenTest, EveryStepIsSeenAndNoInputIsTaken) {
    Holder holder;
    HWND bar = holder.Make(u"msctls_progress32", 0, QRect(10, 10, 200, 20));
    HWND button = holder.Make(u"Button", 0, QRect(10, 60, 100, 40));
    QWidget* window = Holder::WidgetOf(bar)->window();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    layer::PumpMessages();
    int pressed = 0;
    OnControl = [&](UINT, WPARAM, LPARAM) { ++pressed; };

    Display* display = XOpenDisplay(nullptr);
    ASSERT_NE(display, nullptr);
    const QRect place(Holder::WidgetOf(bar)->mapToGlobal(QPoint(0, 0)), Holder::WidgetOf(bar)->size());
    const QPoint target = Holder::WidgetOf(button)->mapToGlobal(QPoint(50, 20));
    SendMessageW(bar, PBM_SETRANGE, 0, MAKELPARAM(0, 5));
    std::vector<unsigned long> before = Seen(display, place);
    for (WPARAM step = 1; step <= 5; ++step) {
        Click(display, target);
        SendMessageW(bar, PBM_SETPOS, step, 0);
        // The server is asked on another connection: it may need a moment.
        std::vector<unsigned long> now = Seen(display, place);
        for (int i = 0; i < 200 && now == before; ++i) {
            XSync(display, False);
            now = Seen(display, place);
        }
        EXPECT_NE(now, before) << step;
        before = now;
    }
    EXPECT_EQ(pressed, 0);
    XCloseDisplay(display);
    EXPECT_TRUE(QTest::qWaitFor([&] { return pressed == 5; })) << pressed;
}

}  // namespace
