// What the pages list: every item, its number, its text and its image, against a reviewed file.
#include <fstream>

#include "platform/linux/windows/message_loop.h"
#include "settings/all_fields.h"
#include "settings/pages.h"
#include "shell/shell_state.h"
#include "tests/ui/sheet_driver.h"
#include "ui/page_tree.h"

namespace {

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
        HWND general = ShowPage("General");
        for (const Setting* setting : HiddenItems()) {
            if (terminal.Devices & DeviceImager) {
                InsertTreeItem(PageGeneral, general, nullptr, setting->ItemId, 0, nullptr);
            }
        }
        EXPECT_EQ(shown + "General\n" + Dump(general), Reviewed(terminal.Letters)) << terminal.Letters;
        DestroySheet();
        layer::PumpMessages();
    }
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
