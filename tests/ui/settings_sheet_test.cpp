// The sheet as a whole: its pages, its ways out, and what takes it away while it is used.
#include <QApplication>
#include <QPushButton>
#include <QTabBar>
#include <QTest>
#include <QTimer>
#include <algorithm>

#include "app/settings_window.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/window_object.h"
#include "resources/resource.h"
#include "settings/all_fields.h"
#include "shell/error_messages.h"
#include "shell/shell_state.h"
#include "tests/ui/sheet_driver.h"
#include "ui/item_value.h"
#include "ui/settings_sheet.h"

namespace {

QWidget* SheetWidget() {
    return WidgetOf(ShellState.SettingsSheet);
}

// What the main window does.
void DestroySheetOn(UINT wanted) {
    World.OnMain = [=](UINT message) {
        if (message == wanted) {
            DestroySheet();
        }
    };
}

void ClickButton(const char* text) {
    for (QPushButton* button : SheetWidget()->findChildren<QPushButton*>()) {
        QString shown = button->text();
        if (shown.remove('&') == text && button->isVisible()) {
            QTest::mouseClick(button, Qt::LeftButton);
            layer::PumpMessages();
            return;
        }
    }
    FAIL() << "no button " << text;
}

TEST_F(SheetTest, HasAPagePerReaderAndOpensOnTheGeneralOne) {
    const struct {
        WORD Devices;
        std::vector<std::string> Pages;
    } terminals[] = {{Device1D, {"1D", "General"}},
                     {DeviceLaser | DeviceRfid, {"1D", "General"}},
                     {DeviceImager, {"2D", "General"}},
                     {DeviceRfid, {"General"}},
                     {Device1D | DeviceImager, {"1D", "2D", "General"}}};
    for (const auto& terminal : terminals) {
        Open(terminal.Devices);
        auto* tabs = SheetWidget()->findChild<QTabBar*>();
        std::vector<std::string> pages;
        for (int i = 0; i < tabs->count(); ++i) {
            pages.push_back(tabs->tabText(i).toStdString());
        }
        EXPECT_EQ(pages, terminal.Pages);
        EXPECT_EQ(tabs->currentIndex(), tabs->count() - 1);
        EXPECT_EQ(tabs->shape(), QTabBar::RoundedSouth);
    }
}

TEST_F(SheetTest, KeysTurnThePagesWhoseTreesFillThem) {
    Open(Device1D | DeviceImager);
    auto* tabs = SheetWidget()->findChild<QTabBar*>();
    for (const int page : {0, 1, 2, 1}) {
        const bool back = tabs->currentIndex() == 2 && page == 1;
        QTest::keyClick(QApplication::focusWidget(), back ? Qt::Key_Backtab : Qt::Key_Tab,
                        Qt::ControlModifier | (back ? Qt::ShiftModifier : Qt::NoModifier));
        layer::PumpMessages();
        EXPECT_EQ(tabs->currentIndex(), page);
        const QWidget* tree = QApplication::focusWidget();
        ASSERT_TRUE(tree->inherits("QTreeView")) << "the page has the keys";
        EXPECT_EQ(tree->geometry().bottom() + 1, tree->parentWidget()->height());
        EXPECT_EQ(tree->parentWidget()->geometry().bottom() + 1, tabs->geometry().top());
    }
}

TEST_F(SheetTest, KeepsWhatTheReaderHolds) {
    Open(Device1D);
    EXPECT_FALSE(Changed(general::GoodReadBeep));
    SetValue(general::GoodReadBeep, '7');
    EXPECT_TRUE(Changed(general::GoodReadBeep));

    // Opened again before the change was applied: it still has to be.
    Open();
    EXPECT_TRUE(Changed(general::GoodReadBeep));
    ShellState.SettingsApplied = 1;
    Open();
    EXPECT_FALSE(Changed(general::GoodReadBeep));
}

TEST_F(SheetTest, OkAppliesOnceAndMayTakeTheSheetAway) {
    DestroySheetOn(WM_APPLYSETTINGS);
    for (const bool onOtherPage : {false, true}) {
        World.MainMessages.clear();
        Open(Device1D);
        if (onOtherPage) {
            ShowPage("1D");
        }
        HWND sheet = ShellState.SettingsSheet;
        // Twice before the main window comes to it; the sheet is there until then.
        SendMessageW(sheet, WM_COMMAND, IDOK, 0);
        EXPECT_TRUE(IsWindow(sheet));
        ClickButton("OK");
        EXPECT_EQ(World.MainMessages, std::vector<UINT>{WM_APPLYSETTINGS});
        EXPECT_FALSE(IsWindow(sheet));
    }
}

TEST_F(SheetTest, EveryWayOfCancellingClosesTheProgram) {
    DestroySheetOn(WM_CLOSE);
    const std::function<void()> ways[] = {
        [] { ClickButton("Cancel"); },
        [] { Type("[Escape]"); },
        [] { SheetWidget()->window()->close(); },
    };
    for (const auto& cancel : ways) {
        World.MainMessages.clear();
        Open(DeviceImager);
        ShowPage("2D");
        ShowPage("General");
        cancel();
        layer::PumpMessages();
        ASSERT_FALSE(World.MainMessages.empty());
        EXPECT_EQ(World.MainMessages.front(), static_cast<UINT>(WM_CLOSE));
        EXPECT_EQ(std::count(World.MainMessages.begin(), World.MainMessages.end(), WM_APPLYSETTINGS), 0);
    }
}

// ---- what happens while an editor is open

// As the main window's clean-up does it: the sheet first.
void EndProgram() {
    DestroySheet();
    if (HWND editor = ShellState.EditorDialog.Exchange(nullptr)) {
        EndDialog(editor, IDCANCEL);
    }
    PostQuitMessage(0);
}

// The box of the error lies over the editor, can be answered there, and then all of it goes.
TEST_F(SheetTest, AnErrorUnderAnEditorIsShownAndEndsBoth) {
    bool answered = false;
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, [&] {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->isVisible() && window->windowTitle() == "Error Msg") {
                answered = true;
                QTest::mouseClick(window->findChild<QPushButton*>(), Qt::LeftButton);
            }
        }
    });
    answer.start(5);
    // The second is being closed with OK.
    for (const char* keys : {"[All]lost", "[All]lost[Return]"}) {
        answered = false;
        ShowWindow(ShellState.MainWindow, SW_SHOWNORMAL);
        Open(Device1D);
        HWND tree = ShowPage("General");
        TapAndEdit(tree, FindItem(tree, 10009), [&](HWND) {
            Type(keys);
            ShowErrorMessage(ShellState.MainWindow, ErrorSetBarcodeReader);
            EndProgram();
        });
        EXPECT_TRUE(answered);
        layer::ForgetQuit();
        layer::PumpMessages();
        EXPECT_EQ(ReadItem(PageGeneral, 10009).Text[0], 0);
    }
}

}  // namespace
