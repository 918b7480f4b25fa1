// Dialogs, menus and boxes, clicked as a user does, and where the parts of the property sheet lie.
#include <QApplication>
#include <QImageReader>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <cstdlib>
#include <thread>

#include "platform/linux/controls/sheet_layout.h"
#include "platform/linux/windows/images.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/screen.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/shell.h"
#include "resources/resource.h"
#include "tests/platform/window_fixture.h"

namespace {

// The button of the message box that shows the text; null when there is none.
QPushButton* BoxButton(const QString& text) {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        for (const QLabel* label : window->findChildren<QLabel*>()) {
            if (label->window()->isVisible() && label->text() == text) {
                return label->window()->findChild<QPushButton*>();
            }
        }
    }
    return nullptr;
}

QMenu* OpenMenu() {
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

TEST_F(ControlsTest, TheTrayMenu) {
    const HMENU menu = GetSubMenu(LoadMenuW(nullptr, MAKEINTRESOURCEW(IDM_TRAY)), 0);
    ASSERT_NE(menu, nullptr);
    EnableMenuItem(menu, IDM_RFID_READER, MF_BYCOMMAND | MF_GRAYED);
    std::vector<WPARAM> chosen;
    Handle = [&](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
        if (message == WM_COMMAND) {
            chosen.push_back(wParam);
        }
        return DefWindowProcW(window, message, wParam, lParam);
    };
    Then([] {
        QMenu* open = OpenMenu();
        ASSERT_NE(open, nullptr);
        const auto actions = open->actions();
        ASSERT_EQ(actions.size(), 7);
        EXPECT_EQ(open->geometry().bottomRight() + QPoint(1, 1), QPoint(400, 300));
        QTest::mouseClick(open, Qt::LeftButton, {}, open->actionGeometry(actions[1]).center());
        EXPECT_TRUE(open->isVisible()) << "a grey item is nothing to choose";
        QTest::mouseClick(open, Qt::LeftButton, {}, open->actionGeometry(actions[5]).center());
    });
    EXPECT_TRUE(TrackPopupMenuEx(menu, TPM_RIGHTALIGN | TPM_BOTTOMALIGN, 400, 300, window_, nullptr));
    layer::PumpMessages();
    EXPECT_EQ(chosen, std::vector<WPARAM>{IDM_ABOUT});

    // Escape, quitting and destroying end it with nothing chosen.
    const std::function<void()> ends[] = {[] { QTest::keyClick(OpenMenu(), Qt::Key_Escape); },
                                          [] { PostQuitMessage(0); }, [=] { DestroyMenu(menu); }};
    for (const auto& end : ends) {
        Then([&] {
            const QRect screen = QApplication::primaryScreen()->geometry();
            EXPECT_TRUE(screen.contains(OpenMenu()->geometry())) << "wherever it is wanted";
            end();
        });
        TrackPopupMenuEx(menu, 0, 5000, 5000, window_, nullptr);
        layer::ForgetQuit();
        layer::PumpMessages();
    }
    EXPECT_EQ(chosen.size(), 1u);
    EXPECT_FALSE(TrackPopupMenuEx(menu, 0, 10, 20, window_, nullptr)) << "it has been destroyed";
}

// While somebody moves the bar and does not come back to the messages.
TEST_F(ControlsTest, ProgressHandsOutNothing) {
    const HWND dialog =
        CreateDialogParamW(nullptr, MAKEINTRESOURCEW(IDD_DOWNLOAD_PROGRESS), window_, nullptr, 0);
    ASSERT_NE(GetDlgItem(dialog, IDC_PROGRESS), nullptr);
    layer::PumpMessages();
    int handed = 0;
    Handle = [&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT { return handed += message == WM_COMMAND; };
    QTimer::singleShot(0, qApp, [&] { ++handed; });
    PostMessageW(window_, WM_COMMAND, 1, 0);
    for (WPARAM percent = 1; percent <= 10; ++percent) {
        SendDlgItemMessageW(dialog, IDC_PROGRESS, PBM_SETPOS, percent, 0);
    }
    EXPECT_EQ(handed, 0);
    layer::PumpMessages();
    EXPECT_EQ(handed, 2);
    DestroyWindow(dialog);
}

// The display's death is an exit() from somewhere; statics that Qt has made since the first window went are
// gone then.
TEST_F(ControlsTest, AnIconIsLeftAloneUnderExit) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto exits = [this] {
        layer::SeeWithoutAScreen();
        layer::TakeSignals();
        NOTIFYICONDATAW icon{};
        icon.cbSize = sizeof icon;
        icon.hWnd = window_;
        Shell_NotifyIconW(NIM_ADD, &icon);
        DestroyWindow(
            CreateDialogParamW(nullptr, MAKEINTRESOURCEW(IDD_DOWNLOAD_PROGRESS), window_, nullptr, 0));
        layer::PumpMessages();
        std::exit(1);
    };
    EXPECT_EXIT(exits(), testing::ExitedWithCode(1), "");
}

TEST_F(ControlsTest, AnIconHasEveryPictureOfItsFile) {
    const QIcon icon = layer::LoadIconResource(IDI_TRAY);
    QImageReader file(QStringLiteral(VANTREL_ICON));
    ASSERT_GT(file.imageCount(), 1);
    for (int i = 0; i < file.imageCount(); ++i) {
        ASSERT_TRUE(file.jumpToImage(i));
        const QImage picture = file.read();
        const QImage shown = icon.pixmap(picture.size()).toImage();
        EXPECT_EQ(shown.convertToFormat(QImage::Format_ARGB32),
                  picture.convertToFormat(QImage::Format_ARGB32));
    }
}

TEST_F(ControlsTest, ABoxGivesTheFocusBackAndGoesWithItsOwner) {
    const HWND dialog = CreateDialogParamW(nullptr, MAKEINTRESOURCEW(IDD_CAUTION), window_, nullptr, 0);
    const struct {
        std::function<void()> End;
        int Result;
    } ends[] = {{[] { QTest::keyClick(BoxButton("text"), Qt::Key_Return); }, IDOK},
                {[] { QTest::keyClick(BoxButton("text"), Qt::Key_Escape); }, IDOK},
                {[] { BoxButton("text")->window()->close(); }, IDOK},
                {[=] { DestroyWindow(dialog); }, 0}};
    for (const auto& end : ends) {
        layer::PumpMessages();
        EXPECT_EQ(GetActiveWindow(), dialog);
        Then(end.End);
        EXPECT_EQ(MessageBoxW(dialog, TEXT("text"), TEXT("box"), MB_OK), end.Result);
    }
    const HWND another = CreateDialogParamW(nullptr, MAKEINTRESOURCEW(IDD_TEXT_EDITOR), window_, nullptr, 0);
    Then([&] {
        for (const QWidget* frame :
             {BoxButton("text")->window(), layer::FindWindowObject(another)->Widget()->window()}) {
            EXPECT_EQ(frame->minimumSize(), frame->maximumSize()) << "no window manager changes it";
        }
        PostQuitMessage(0);
    });
    EXPECT_EQ(MessageBoxW(window_, TEXT("text"), TEXT("box"), MB_OK), 0);
    DestroyWindow(another);
}

TEST_F(ControlsTest, BoxesOfSeveralThreadsEndInAnyOrder) {
    const auto ask = [&](LPCWSTR text) {
        EXPECT_EQ(MessageBoxW(window_, text, TEXT("Error Msg"), MB_OK), IDOK);
    };
    std::thread first(ask, TEXT("first"));
    std::thread second(ask, TEXT("second"));
    const auto dismiss = [](const QString& text) {
        ASSERT_NE(BoxButton(text), nullptr);
        QTest::mouseClick(BoxButton(text), Qt::LeftButton);
    };
    const auto wait = [](const std::function<bool()>& done) {
        for (int i = 0; i < 1000 && !done(); ++i) {
            layer::PumpMessages();
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    };
    wait([] { return BoxButton("first") != nullptr && BoxButton("second") != nullptr; });
    // Whichever was opened first: its thread goes on while the other box stays.
    dismiss("first");
    first.join();
    EXPECT_NE(BoxButton("second"), nullptr);
    dismiss("second");
    second.join();
}

TEST(SheetLayout, EverythingHasRoomOfItsOwnOnAnyScreen) {
    for (const int width : {160, 200, 238, 240, 320, 480, 800}) {
        for (const int height : {160, 266, 320, 600}) {
            for (const int tabs : {40, -40, 116, -116, 170, -170, 400, -400}) {
                SCOPED_TRACE(testing::Message() << width << "x" << height << " tabs " << tabs);
                const QSize screen(width, height);
                const bool bottom = tabs < 0;
                const layer::SheetPlaces places =
                    layer::LayOutSheet({screen, QSize(std::abs(tabs), 28), QSize(56, 26), bottom});
                const QRect parts[] = {places.Page, places.Tabs, places.Ok, places.Cancel};
                for (const QRect& part : parts) {
                    EXPECT_TRUE(part.isValid() && QRect(QPoint(0, 0), screen).contains(part));
                    for (const QRect* other = &part + 1; other < std::end(parts); ++other) {
                        EXPECT_FALSE(part.intersects(*other));
                    }
                }
                EXPECT_EQ(bottom ? places.Page.bottom() + 1 : places.Tabs.bottom() + 1,
                          bottom ? places.Tabs.top() : places.Page.top());
            }
        }
    }
}

}  // namespace
