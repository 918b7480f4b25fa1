// What the pages list: every item, its number, its text and its image, against a reviewed file.
#include <QAbstractButton>
#include <QImage>
#include <QPalette>
#include <QTabBar>
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>

#include "platform/linux/windows/message_loop.h"
#include "settings/all_fields.h"
#include "shell/shell_state.h"
#include "tests/ui/sheet_driver.h"

namespace {

// In levels of grey: enough for one on the other to be read by everybody, where one of them is white.
constexpr int EnoughContrast = 137;

int Contrast(QRgb one, QRgb other) {
    return std::abs(qGray(one) - qGray(other));
}

// The lines of the file that a terminal shows.
std::string Reviewed(const std::string& terminal) {
    constexpr std::size_t column = 5;
    std::ifstream file(VANTREL_UI_TESTS "/trees.txt");
    std::string shown;
    for (std::string line; std::getline(file, line);) {
        if (line[0] != '#' && line.substr(0, column).find_first_of(terminal) != std::string::npos) {
            shown += line.substr(column) + "\n";
        }
    }
    return shown;
}

TEST_F(SheetTest, PagesShowTheItemsOfTheReaders) {
    const struct {
        WORD Devices;
        const char* Letters;
        const char* Page;  // beside the general one
    } terminals[] = {{Device1D, "1", "1D"},     {Device1D | DeviceRfid, "1R", "1D"},
                     {DeviceLaser, "L", "1D"},  {DeviceLaser | DeviceRfid, "LR", "1D"},
                     {DeviceImager, "I", "2D"}, {DeviceImager | DeviceRfid, "IR", "2D"},
                     {DeviceRfid, "r", nullptr}};
    for (const auto& terminal : terminals) {
        Open(terminal.Devices);
        std::string shown;
        if (terminal.Page) {
            shown += std::string(terminal.Page) + "\n" + Dump(ShowPage(terminal.Page));
        }
        EXPECT_EQ(shown + "General\n" + Dump(ShowPage("General")), Reviewed(terminal.Letters))
            << terminal.Letters;
    }
}

// As it is painted: what is not the tree's background is the mark, and the writing stands out in it.
TEST_F(SheetTest, ASelectedRowCanBeReadAndTold) {
    Open(Device1D);
    HWND tree = ShowPage("General");
    Tap(tree, FindItem(tree, 10004), Spot::Label);
    QTreeView* view = ViewOf(tree);
    ASSERT_TRUE(view->hasFocus());
    const QImage shown = view->viewport()->grab(view->visualRect(view->currentIndex())).toImage();
    const QRgb around = view->palette().color(QPalette::Base).rgb();
    std::map<QRgb, int> colours;
    for (int x = 0; x < shown.width(); ++x) {
        ++colours[shown.pixel(x, shown.height() / 4)];  // above the letters
    }
    colours.erase(around);
    const auto fewer = [](const auto& one, const auto& other) { return one.second < other.second; };
    ASSERT_FALSE(colours.empty());
    const QRgb mark = std::max_element(colours.begin(), colours.end(), fewer)->first;
    EXPECT_GE(Contrast(mark, around), EnoughContrast);
    int writing = 0;
    for (int x = 1; x + 1 < shown.width(); ++x) {
        const int y = shown.height() / 2;
        // Between two pixels of the mark, so that what lies beside it does not count.
        if (shown.pixel(x, shown.height() / 4) == mark && shown.pixel(x, shown.height() - 3) == mark) {
            writing = std::max(writing, Contrast(shown.pixel(x, y), mark));
        }
    }
    EXPECT_GE(writing, EnoughContrast);
}

// A page's tab, and each button, the default one too.
TEST_F(SheetTest, TheFocusCanBeSeen) {
    Open(Device1D);
    QWidget* sheet = WidgetOf(ShellState.SettingsSheet)->window();
    QTreeView* tree = ViewOf(ShowPage("General"));
    int seen = 0;
    for (QWidget* part : sheet->findChildren<QWidget*>()) {
        if (qobject_cast<QAbstractButton*>(part) == nullptr && qobject_cast<QTabBar*>(part) == nullptr) {
            continue;
        }
        if (part->isVisible() && part->focusPolicy() != Qt::NoFocus) {
            tree->setFocus();
            const QImage without = part->grab().toImage();
            part->setFocus();
            EXPECT_NE(part->grab().toImage(), without) << part->metaObject()->className();
            ++seen;
        }
    }
    EXPECT_EQ(seen, 3);
}

// Values that no editor makes, as a damaged file brings them.
TEST_F(SheetTest, ItemsWithImpossibleValuesAreShown) {
    Fit(DeviceLaser);
    SetValue(general::EnableVibrator, 'x');
    SetValue(general::GoodReadBeep, 0);
    SetValue(general::VibrateDuration, 65535);
    SetValue(general::AimDuration, 65535);
    SetValue(general::ActiveDevice, 0xFFFF);
    SetValue(engine::Code39LengthMode, 'z');
    SetValue(engine::Code93LengthMode, 0);
    Open();
    HWND page = ShowPage("General");
    EXPECT_EQ(LineOf(page, FindItem(page, 10004)), "[ ] 10004 Enable Vibrator :  ");
    EXPECT_EQ(LineOf(page, FindItem(page, 10005)), "# 10005 Vibrate Duration :  65535  sec.");
    EXPECT_EQ(LineOf(page, FindItem(page, 13001)), "# 13001 AIM duration :    6553.5  sec.");
    EXPECT_EQ(ChildrenOf(page, FindItem(page, 10002)).front(), "( ) 0 Mute");
    page = ShowPage("1D");
    EXPECT_NE(FindItem(page, 0x1212), nullptr);
    EXPECT_EQ(FindItem(page, 0x131B), nullptr);
}

}  // namespace
