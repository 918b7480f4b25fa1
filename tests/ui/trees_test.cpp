// What the pages list: every item, its number, its text and its image, against reviewed files.
#include <fstream>
#include <sstream>

#include "settings/all_fields.h"
#include "shell/shell_state.h"
#include "tests/ui/sheet_driver.h"

namespace {

struct Terminal {
    const char* Name;  // of the file under trees/
    WORD DeviceFlags;
    std::vector<const char*> Pages;
};

void PrintTo(const Terminal& terminal, std::ostream* out) {
    *out << terminal.Name;
}

class TreesTest : public SheetTest, public testing::WithParamInterface<Terminal> {};

std::string ReadFile(const std::string& path) {
    std::ifstream file(path);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

TEST_P(TreesTest, ShowTheItemsOfTheReaders) {
    const Terminal& terminal = GetParam();
    Open(terminal.DeviceFlags);
    std::string shown;
    for (const char* page : terminal.Pages) {
        shown += std::string(page) + "\n" + Dump(ShowPage(page));
    }
    EXPECT_EQ(shown, ReadFile(std::string(VANTREL_UI_TESTS) + "/trees/" + terminal.Name + ".txt"));
}

const std::vector<const char*> OneD = {"1D", "General"};
const std::vector<const char*> TwoD = {"2D", "General"};

INSTANTIATE_TEST_SUITE_P(AllTerminals, TreesTest,
                         testing::Values(Terminal{"1d", Device1D, OneD},
                                         Terminal{"1d-rfid", Device1D | DeviceRfid, OneD},
                                         Terminal{"laser", DeviceLaser, OneD},
                                         Terminal{"laser-rfid", DeviceLaser | DeviceRfid, OneD},
                                         Terminal{"imager", DeviceImager, TwoD},
                                         Terminal{"imager-rfid", DeviceImager | DeviceRfid, TwoD},
                                         Terminal{"rfid-only", DeviceRfid, {"General"}}));

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
