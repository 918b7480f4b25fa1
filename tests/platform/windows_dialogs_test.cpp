// Dialogs, menus and boxes, clicked as a user does.
#include <gtest/gtest.h>

#include <QApplication>
#include <QImageReader>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <thread>

#include "platform/linux/windows/images.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/linux/windows/window_object.h"
#include "platform/shell.h"
#include "resources/resource.h"
#include "tests/support/temporary_terminal.h"

namespace {

std::vector<std::pair<UINT, WPARAM>> Seen;
LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COMMAND) {
        Seen.emplace_back(message, wParam);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

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

// Runs the step once the modal loop that comes next waits for input.
void Then(std::function<void()> step) {
    QTimer::singleShot(0, qApp, std::move(step));
}

class DialogsTest : public testing::Test {
  protected:
    void SetUp() override {
        layer::StartWindows();
        Seen.clear();
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = Procedure;
        windowClass.lpszClassName = TEXT("DialogsTest");
        RegisterClassW(&windowClass);
        window_ = CreateWindowExW(0, TEXT("DialogsTest"), TEXT("test"), WS_VISIBLE, 0, 0, 240, 294, nullptr,
                                  nullptr, nullptr, nullptr);
        ASSERT_NE(window_, nullptr);
    }
    void TearDown() override {
        DestroyWindow(window_);
        layer::ForgetQuit();
        layer::PumpMessages();
    }
    TemporaryTerminal terminal_;
    HWND window_ = nullptr;
};

QMenu* OpenMenu() {
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

TEST_F(DialogsTest, TheTrayMenu) {
    const HMENU menu = GetSubMenu(LoadMenuW(nullptr, MAKEINTRESOURCEW(IDM_TRAY)), 0);
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(CheckMenuItem(menu, IDM_BC_READER, MF_BYCOMMAND | MF_CHECKED), 0u);
    EnableMenuItem(menu, IDM_RFID_READER, MF_BYCOMMAND | MF_GRAYED);
    EXPECT_EQ(CheckMenuItem(menu, 4711, MF_CHECKED), 0xFFFFFFFFu);
    Then([] {
        QMenu* open = OpenMenu();
        ASSERT_NE(open, nullptr);
        const auto actions = open->actions();
        ASSERT_EQ(actions.size(), 7);
        EXPECT_TRUE(actions[0]->isChecked());
        EXPECT_FALSE(actions[1]->isEnabled());
        EXPECT_TRUE(actions[2]->isSeparator());
        EXPECT_EQ(open->geometry().bottomRight() + QPoint(1, 1), QPoint(400, 300));
        QTest::mouseClick(open, Qt::LeftButton, {}, open->actionGeometry(actions[1]).center());
        EXPECT_TRUE(open->isVisible()) << "a grey item is nothing to choose";
        QTest::mouseClick(open, Qt::LeftButton, {}, open->actionGeometry(actions[5]).center());
    });
    EXPECT_TRUE(TrackPopupMenuEx(menu, TPM_RIGHTALIGN | TPM_BOTTOMALIGN, 400, 300, window_, nullptr));
    layer::PumpMessages();
    ASSERT_EQ(Seen.size(), 1u);
    EXPECT_EQ(Seen[0], (std::pair<UINT, WPARAM>{WM_COMMAND, IDM_ABOUT}));

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
    EXPECT_EQ(Seen.size(), 1u);
    EXPECT_FALSE(TrackPopupMenuEx(menu, 0, 10, 20, window_, nullptr)) << "it has been destroyed";
}

TEST_F(DialogsTest, AnIconHasEveryPictureOfItsFile) {
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

TEST_F(DialogsTest, ABoxGivesTheFocusBackAndGoesWithItsOwner) {
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

TEST_F(DialogsTest, BoxesOfSeveralThreadsEndInAnyOrder) {
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

}  // namespace
