// Taps on the items of the trees: what they change in the record and in the tree.
#include "platform/linux/windows/message_loop.h"
#include "resources/resource.h"
#include "settings/all_fields.h"
#include "shell/shell_state.h"
#include "tests/support/manual_clock.h"
#include "tests/ui/sheet_driver.h"

using Lines = std::vector<std::string>;

namespace {

constexpr WORD BothReaders = Device1D | DeviceRfid;

// ---- switches

TEST_F(SheetTest, ASwitchSwitchesOnItsImageOnly) {
    const struct {
        WORD Devices;
        const char* Page;
        DWORD Item;
        const Setting& Field;
        const char* Before;
        const char* After;
    } switches[] = {{Device1D, "1D", 1100, decoder1d::ItalianPharmacodeEnabled,
                     "[ ] 1100 Italian Pharmacode :  Disabled", "[x] 1100 Italian Pharmacode :  Enabled"},
                    {Device1D, "1D", 1103, decoder1d::ItalianPharmacodeTransmitChecksum,
                     "[x] 1103 Transmit Checksum :  ON", "[ ] 1103 Transmit Checksum :  OFF"},
                    {DeviceLaser, "1D", 0x1506, engine::EnableInterleaved25,
                     "[x] 0x1506 Enable Interleaved 25 :  YES", "[ ] 0x1506 Enable Interleaved 25 :  NO"},
                    {DeviceRfid, "General", 11002, general::ReadRfidData,
                     "[ ] 11002 Read data of RFID tag :  NO", "[x] 11002 Read data of RFID tag :  YES"}};
    for (const auto& tapped : switches) {
        Open(tapped.Devices);
        HWND tree = ShowPage(tapped.Page);
        HTREEITEM item = FindItem(tree, tapped.Item);
        const WORD before = Value(tapped.Field);
        for (const Spot spot : {Spot::Label, Spot::Image, Spot::Image}) {
            const bool switched = spot == Spot::Image && Value(tapped.Field) == before;
            Tap(tree, item, spot);
            EXPECT_EQ(LineOf(tree, item), switched ? tapped.After : tapped.Before);
            EXPECT_EQ(Value(tapped.Field), switched ? before ^ 1 : before);
        }
    }
}

// ---- bit sets

// Any combination, none too. The only reader is the first bit, whichever it is.
TEST_F(SheetTest, BitsAreSwitchedOneByOneOnTheirImages) {
    const struct {
        WORD Devices;
        DWORD List;
        const Setting& Field;
        std::vector<std::pair<DWORD, char>> Taps;
        Lines After;
    } sets[] = {
        {BothReaders,
         10001,
         general::ActiveDevice,
         {{24002, '3'}, {24001, '2'}, {24002, '0'}, {24001, '1'}},
         {"[x] 24001 1D Reader", "[ ] 24002 RFID Reader"}},
        {DeviceRfid, 10001, general::ActiveDevice, {{24002, '0'}, {24002, '1'}}, {"[x] 24002 RFID Reader"}},
        {DeviceImager,
         10006,
         general::DataOutput,
         {{24201, '3'}, {24202, '7'}, {24200, '6'}, {24201, '4'}, {24202, '0'}, {24202, '4'}},
         {"[ ] 24200 Keyboard Emulation", "[ ] 24201 Windows Message", "[x] 24202 Windows Event"}}};
    for (const auto& set : sets) {
        Open(set.Devices);
        HWND tree = ShowPage("General");
        for (const auto& [choice, value] : set.Taps) {
            Tap(tree, FindChoice(tree, set.List, choice), Spot::Image);
            Tap(tree, FindChoice(tree, set.List, choice), Spot::Label);
            EXPECT_EQ(Value(set.Field), value) << choice;
        }
        EXPECT_EQ(ChildrenOf(tree, FindItem(tree, set.List)), set.After);
    }
}

// ---- choices

TEST_F(SheetTest, AChoiceTakesTheMarkFromTheOneBefore) {
    Open(Device1D);
    HWND tree = ShowPage("1D");
    Tap(tree, FindChoice(tree, 1605, 4), Spot::Label);
    EXPECT_EQ(Value(decoder1d::CodabarStartStopCharacter), '4');
    Tap(tree, FindChoice(tree, 1605, 2), Spot::Image);
    EXPECT_EQ(Value(decoder1d::CodabarStartStopCharacter), '2');
    Tap(tree, FindChoice(tree, 1605, 2), Spot::Image);
    EXPECT_EQ(Value(decoder1d::CodabarStartStopCharacter), '2');
    EXPECT_EQ(ChildrenOf(tree, FindItem(tree, 1605)),
              (Lines{"( ) 0 None", "( ) 1 abcd / abcd", "(*) 2 abcd / tn*e", "( ) 3 ABCD / ABCD",
                     "( ) 4 ABCD / TN*E"}));
}

TEST_F(SheetTest, AChosenSoundIsHeard) {
    Open(Device1D);
    HWND tree = ShowPage("General");
    Tap(tree, FindChoice(tree, 10002, 3), Spot::Label);
    Tap(tree, FindChoice(tree, 10003, 0), Spot::Image);
    Tap(tree, FindChoice(tree, 10008, 4), Spot::Image);
    EXPECT_EQ(World.Sounds, (std::vector<int>{3, 0}));
    EXPECT_EQ(Value(general::GoodReadBeep), '3');
    EXPECT_EQ(Value(general::WarningBeep), '0');
}

TEST_F(SheetTest, AListOnNoneOfItsChoicesStaysAsItIs) {
    Fit(Device1D);
    SetValue(general::AutoEnter, 'q');
    Open();
    HWND tree = ShowPage("General");
    Tap(tree, FindChoice(tree, 10007, 2), Spot::Image);
    EXPECT_EQ(Value(general::AutoEnter), 'q');
}

TEST_F(SheetTest, HeadingsOnlyTakeTheSelection) {
    Open(DeviceLaser);
    HWND tree = ShowPage("1D");
    const std::string before = Dump(tree);
    HTREEITEM heading = FindItem(tree, 0x1200);
    Tap(tree, heading, Spot::Image);
    Tap(tree, FindItem(tree, 0x12FF), Spot::Label);
    EXPECT_EQ(Dump(tree), before);
    EXPECT_EQ(reinterpret_cast<HTREEITEM>(SendMessageW(tree, TVM_GETNEXTITEM, TVGN_CARET, 0)),
              FindItem(tree, 0x12FF));
}

// ---- length modes

// The numbers between a list and what comes behind its lengths.
Lines LengthLines(HWND tree, HTREEITEM mode) {
    Lines lines;
    for (HTREEITEM item = NextAfter(tree, mode); item; item = NextAfter(tree, item)) {
        TreeItem read;
        if (!ReadTreeItem(tree, item, read) || read.Image != ItemImage::Number) {
            break;
        }
        lines.push_back(LineOf(tree, item));
    }
    return lines;
}

TEST_F(SheetTest, TheLengthsThatCountAreShownFromEveryModeToEveryOther) {
    const struct {
        WORD Devices;
        DWORD PageBase;
        const char* Page;
        DWORD Mode, First, Second;
        std::string One, Other;
    } groups[] = {{DeviceLaser, PageLaser, "1D", 0x12FF, 0x1213, 0x1212, "# 0x1213", "# 0x1212"},
                  // Nothing comes behind these lengths.
                  {DeviceImager, PageImager, "2D", 0x13FF, 0x131B, 0x131A, "# 0x131B", "# 0x131A"}};
    for (const auto& group : groups) {
        Open(group.Devices);
        HWND tree = ShowPage(group.Page);
        HTREEITEM list = FindItem(tree, group.Mode);
        SetValue(*FindSetting(group.PageBase, group.First), 55);
        SetValue(*FindSetting(group.PageBase, group.Second), 4);
        const Lines shown[] = {{},
                               {group.One + " Value 1 :  55"},
                               {group.One + " Value 1 :  55", group.Other + " Value 2 :  4"},
                               {group.One + " Maximum Length :  55", group.Other + " Minimum Length :  4"}};
        // Each pair of neighbours once.
        for (const DWORD mode : {1u, 0u, 2u, 0u, 3u, 1u, 2u, 3u, 2u, 1u, 3u, 0u}) {
            Tap(tree, FindChoice(tree, group.Mode, mode), Spot::Image);
            EXPECT_EQ(LengthLines(tree, list), shown[mode]) << mode;
            EXPECT_EQ(LineOf(tree, FindChoice(tree, group.Mode, mode)).substr(0, 3), "(*)");
        }
    }
}

TEST_F(SheetTest, LengthsOfThe1DReaderChangeTheirNames) {
    Open(Device1D);
    HWND tree = ShowPage("1D");
    Tap(tree, FindChoice(tree, 1706, 0), Spot::Image);
    EXPECT_EQ(LineOf(tree, FindItem(tree, 1707)), "# 1707 Value 2 :  127");
    EXPECT_EQ(LineOf(tree, FindItem(tree, 1708)), "# 1708 Value 1 :  0");
    EXPECT_EQ(LineOf(tree, FindItem(tree, 1507)), "# 1507 Maximum Length :  127");
    Tap(tree, FindChoice(tree, 1706, 1), Spot::Image);
    EXPECT_EQ(LineOf(tree, FindItem(tree, 1707)), "# 1707 Maximum Length :  127");
    EXPECT_EQ(LineOf(tree, FindItem(tree, 1708)), "# 1708 Minimum Length :  0");
}

// ---- keys

TEST_F(SheetTest, TwoKeysStartTheFirmwareUpgrade) {
    layer::ManualClock clock;
    layer::InstallClock(&clock);
    clock.AddSource(layer::WindowTimers());
    const struct {
        WORD Devices;
        std::vector<const char*>
            Keys;  // "," waits until the time for the second key is just not over, ";" until it is
        int Upgrades;
    } sequences[] = {
        {Device1D, {"[F2]", "[F7]"}, 1},           {Device1D, {"[F2]", ",", "[F7]"}, 1},
        {Device1D, {"[F2]", ";", "[F7]"}, 0},      {Device1D, {"[F2]", ",", "[F2]", ",", "[F7]"}, 1},
        {Device1D, {"[F2]", "[Down]", "[F7]"}, 0}, {Device1D, {"[F7]", "[F2]"}, 0},
        {Device1D, {"[F2]", "[F7]", "[F7]"}, 1},   {BothReaders, {"[F2]", "[F7]"}, 1},
        {DeviceImager, {"[F2]", "[F7]"}, 0},       {DeviceRfid, {"[F2]", "[F7]"}, 0}};
    for (const auto& sequence : sequences) {
        Open(sequence.Devices);
        World.Upgrades = 0;
        ShellState.UpgradeKeyArmed = 0;
        HWND tree = ShowPage("General");
        Tap(tree, FindItem(tree, 10004), Spot::Label);
        for (const std::string key : sequence.Keys) {
            if (key[0] == '[') {
                Type(key);
            } else {
                clock.Advance(key == "," ? 2999 : 3001);
            }
            layer::PumpMessages();
        }
        EXPECT_EQ(World.Upgrades, sequence.Upgrades) << &sequence - sequences;
    }
    clock.RemoveSource(layer::WindowTimers());
    layer::InstallClock(nullptr);
}

}  // namespace
