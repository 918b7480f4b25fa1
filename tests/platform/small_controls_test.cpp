// Up-down controls with their edit controls, the progress bar, where the parts of the property sheet lie.
#include <QApplication>
#include <QLineEdit>
#include <QProgressBar>
#include <QTest>
#include <QToolButton>

#include "platform/linux/controls/sheet_layout.h"
#include "platform/linux/windows/message_loop.h"
#include "tests/platform/window_fixture.h"

namespace {

constexpr DWORD NumberEdit = 0x2000;
constexpr DWORD Attached = 0x0002 | 0x0004 | 0x0010 | 0x0020;  // number, right, neighbour, arrow keys

class UpDownTest : public ControlsTest {
  protected:
    UpDownTest() {
        edit_ = Make(u"EDIT", NumberEdit, QRect(10, 10, 100, 28), 201);
        upDown_ = Make(u"MSCTLS_UPDOWN32", Attached, QRect(0, 0, 12, 14), 911);
        Handle = [this](HWND, UINT message, WPARAM wParam, LPARAM) -> LRESULT {
            if (message == WM_COMMAND && wParam == static_cast<DWORD>(MAKELONG(201, EN_CHANGE))) {
                ++changes_;
            }
            return 0;
        };
    }
    void SetRange(int low, int high) {
        SendMessageW(upDown_, UDM_SETRANGE32, static_cast<WPARAM>(low), high);
    }
    void SetText(const char* text) { SetDlgItemTextW(window_, 201, QString(text).toStdU16String().c_str()); }
    std::string Text() {
        WCHAR text[40];
        GetDlgItemTextW(window_, 201, text, 40);
        return QString::fromUtf16(text).toStdString();
    }
    QLineEdit* Edit() { return qobject_cast<QLineEdit*>(WidgetOf(edit_)); }
    void Tap(Qt::ArrowType arrow) {
        for (auto* button : WidgetOf(upDown_)->findChildren<QToolButton*>()) {
            if (button->arrowType() == arrow) {
                QTest::mouseClick(button, Qt::LeftButton);
            }
        }
    }

    HWND edit_ = nullptr, upDown_ = nullptr;
    int changes_ = 0;
};

TEST_F(UpDownTest, StepsStayInTheRange) {
    const struct {
        int Low, High;
        const char* Before;
        Qt::ArrowType Button;
        const char* After;
    } steps[] = {{1, 30, "2", Qt::UpArrow, "3"},
                 {1, 30, "2", Qt::DownArrow, "1"},
                 {1, 30, "1", Qt::DownArrow, "1"},
                 {1, 30, "30", Qt::UpArrow, "30"},
                 {79, 127, "5", Qt::UpArrow, "80"},
                 {79, 127, "999", Qt::DownArrow, "126"},
                 {0, 99, "007", Qt::UpArrow, "8"},
                 {-5, 5, "-5", Qt::UpArrow, "-4"},
                 {-2147483647, 2147483647, "2147483647", Qt::UpArrow, "2147483647"}};
    for (const auto& step : steps) {
        SetRange(step.Low, step.High);
        SetText(step.Before);
        changes_ = 0;
        Tap(step.Button);
        EXPECT_EQ(Text(), step.After) << step.Before << " in " << step.Low << ".." << step.High;
        EXPECT_EQ(changes_, step.Before == Text() ? 0 : 1) << step.Before;
        EXPECT_TRUE(Edit()->hasFocus());
    }
    // Where no number can be read the last one counts.
    SetRange(0, 9);
    for (const char* unreadable : {"", "99999999999999999999"}) {
        SetText("4");
        Tap(Qt::UpArrow);
        SetText(unreadable);
        Tap(Qt::UpArrow);
        EXPECT_EQ(Text(), "6");
    }
}

TEST_F(UpDownTest, TakesTheEndOfItsNeighboursPlace) {
    const QRect edit = Edit()->geometry(), buttons = WidgetOf(upDown_)->geometry();
    EXPECT_EQ(edit.united(buttons), QRect(10, 10, 100, 28));
    EXPECT_FALSE(edit.intersects(buttons));
    EXPECT_GE(edit.width(), 4 * Edit()->fontMetrics().horizontalAdvance(u'0'));
    EXPECT_GE(buttons.width(), 2 * 20);
}

TEST_F(ControlsTest, ProgressPaintsAtOnceAndHandsOutNothing) {
    HWND progress = Make(u"msctls_progress32", 0, QRect(10, 10, 100, 20));
    SendMessageW(progress, PBM_SETRANGE, 0, MAKELPARAM(0, 10));
    struct Painted : QObject {
        int Count = 0;
        bool eventFilter(QObject*, QEvent* event) override {
            Count += event->type() == QEvent::Paint ? 1 : 0;
            return false;
        }
    } painted;
    WidgetOf(progress)->installEventFilter(&painted);
    int handed = 0;
    Handle = [&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
        handed += message == WM_COMMAND || message == WM_TIMER;
        return 0;
    };
    QTimer::singleShot(0, qApp, [&] { ++handed; });
    PostMessageW(window_, WM_COMMAND, 1, 0);
    SetTimer(window_, 5, 1, nullptr);
    for (WPARAM i = 1; i <= 10; ++i) {
        SendMessageW(progress, PBM_SETPOS, i, 0);
        EXPECT_GE(painted.Count, static_cast<int>(i));
    }
    EXPECT_EQ(handed, 0);
    KillTimer(window_, 5);
    layer::PumpMessages();
    EXPECT_GE(handed, 2);
}

TEST(SheetLayout, EverythingHasRoomOfItsOwnOnAnyScreen) {
    const auto check = [](const QSize& screen, int tabs, bool bottom) {
        const layer::SheetPlaces places =
            layer::LayOutSheet({screen, QSize(tabs, 28), QSize(56, 26), bottom});
        const QRect parts[] = {places.Page, places.Tabs, places.Ok, places.Cancel};
        for (const QRect& part : parts) {
            EXPECT_TRUE(part.isValid() && QRect(QPoint(0, 0), screen).contains(part));
            for (const QRect* other = &part + 1; other < std::end(parts); ++other) {
                EXPECT_FALSE(part.intersects(*other));
            }
        }
        EXPECT_EQ(bottom ? places.Page.bottom() + 1 : places.Tabs.bottom() + 1,
                  bottom ? places.Tabs.top() : places.Page.top());
    };
    for (const int width : {160, 200, 238, 240, 320, 480, 800}) {
        for (const int height : {160, 266, 320, 600}) {
            for (const int tabs : {40, 116, 170, 400}) {
                SCOPED_TRACE(testing::Message() << width << "x" << height << " tabs " << tabs);
                check(QSize(width, height), tabs, false);
                check(QSize(width, height), tabs, true);
            }
        }
    }
}

}  // namespace
