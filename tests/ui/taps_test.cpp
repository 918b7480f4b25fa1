// Taps on the items of the trees: what they change in the record and in the tree.
#include "platform/linux/windows/message_loop.h"
#include "resources/resource.h"
#include "settings/all_fields.h"
#include "shell/shell_state.h"
#include "tests/support/manual_clock.h"
#include "tests/ui/sheet_driver.h"

using testing::Test;
using Lines = std::vector<std::string>;

namespace {

constexpr WORD BothReaders = Device1D | DeviceRfid;

// ---- switches

struct SwitchCase {
    const char* Name;
    WORD Devices;
    const char* Page;
    DWORD Item;
    const Setting& Field;
    const char* Before;
    const char* After;
};

void PrintTo(const SwitchCase& tested, std::ostream* out) {
    *out << tested.Name;
}

class SwitchTest : public SheetTest, public testing::WithParamInterface<SwitchCase> {};

TEST_P(SwitchTest, SwitchesOnItsImageOnly) {
    const SwitchCase& tapped = GetParam();
    Open(tapped.Devices);
    HWND tree = ShowPage(tapped.Page);
    HTREEITEM item = FindItem(tree, tapped.Item);
    const WORD before = Value(tapped.Field);

    Tap(tree, item, Spot::Label);
    EXPECT_EQ(LineOf(tree, item), tapped.Before);
    EXPECT_EQ(Value(tapped.Field), before);

    Tap(tree, item, Spot::Image);
    EXPECT_EQ(LineOf(tree, item), tapped.After);
    EXPECT_EQ(Value(tapped.Field), before ^ 1);

    Tap(tree, item, Spot::Image);
    EXPECT_EQ(LineOf(tree, item), tapped.Before);
    EXPECT_EQ(Value(tapped.Field), before);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, SwitchTest,
    testing::Values(
        SwitchCase{"Pharmacode", Device1D, "1D", 1100, decoder1d::ItalianPharmacodeEnabled,
                   "[ ] 1100 Italian Pharmacode :  Disabled", "[x] 1100 Italian Pharmacode :  Enabled"},
        SwitchCase{"Code93", Device1D, "1D", 2600, decoder1d::Code93Enabled, "[x] 2600 Code 93 :  Enabled",
                   "[ ] 2600 Code 93 :  Disabled"},
        SwitchCase{"Checksum", Device1D, "1D", 1103, decoder1d::ItalianPharmacodeTransmitChecksum,
                   "[x] 1103 Transmit Checksum :  ON", "[ ] 1103 Transmit Checksum :  OFF"},
        SwitchCase{"LaserSymbology", DeviceLaser, "1D", 0x1506, engine::EnableInterleaved25,
                   "[x] 0x1506 Enable Interleaved 25 :  YES", "[ ] 0x1506 Enable Interleaved 25 :  NO"},
        SwitchCase{"ImagerSymbology", DeviceImager, "2D", 0x1506, engine::EnableInterleaved25,
                   "[x] 0x1506 Enable Interleaved 25 :  YES", "[ ] 0x1506 Enable Interleaved 25 :  NO"},
        SwitchCase{"Aiming", DeviceImager, "General", 14130, general::DecodingAimingPattern,
                   "[x] 14130 Decoding Aiming Pattern :  ON", "[ ] 14130 Decoding Aiming Pattern :  OFF"},
        SwitchCase{"TagData", DeviceRfid, "General", 11002, general::ReadRfidData,
                   "[ ] 11002 Read data of RFID tag :  NO", "[x] 11002 Read data of RFID tag :  YES"}),
    [](const auto& tested) { return tested.param.Name; });

// ---- bit sets

TEST_F(SheetTest, ActiveDevicesAreSwitchedOneByOne) {
    Open(BothReaders);
    HWND tree = ShowPage("General");
    HTREEITEM list = FindItem(tree, 10001);
    HTREEITEM barcode = FindChoice(tree, 10001, 24001);
    HTREEITEM rfid = FindChoice(tree, 10001, 24002);

    Tap(tree, rfid, Spot::Image);
    EXPECT_EQ(Value(general::ActiveDevice), '3');
    Tap(tree, rfid, Spot::Label);
    EXPECT_EQ(Value(general::ActiveDevice), '3');
    Tap(tree, barcode, Spot::Image);
    EXPECT_EQ(Value(general::ActiveDevice), '2');
    EXPECT_EQ(ChildrenOf(tree, list), (Lines{"[ ] 24001 1D Reader", "[x] 24002 RFID Reader"}));
    Tap(tree, rfid, Spot::Image);
    EXPECT_EQ(Value(general::ActiveDevice), '0');
    EXPECT_EQ(ChildrenOf(tree, list), (Lines{"[ ] 24001 1D Reader", "[ ] 24002 RFID Reader"}));
}

TEST_F(SheetTest, TheOnlyReaderIsTheFirstBitWhateverItIs) {
    Open(DeviceRfid);
    HWND tree = ShowPage("General");
    HTREEITEM rfid = FindChoice(tree, 10001, 24002);
    ASSERT_EQ(LineOf(tree, rfid), "[x] 24002 RFID Reader");
    Tap(tree, rfid, Spot::Image);
    EXPECT_EQ(Value(general::ActiveDevice), '0');
    Tap(tree, rfid, Spot::Image);
    EXPECT_EQ(Value(general::ActiveDevice), '1');
}

TEST_F(SheetTest, AnyCombinationOfOutputsCanBeChosen) {
    Open(DeviceImager);
    HWND tree = ShowPage("General");
    const struct {
        DWORD Choice;
        char Value;
    } taps[] = {{24201, '3'}, {24202, '7'}, {24200, '6'}, {24201, '4'}, {24202, '0'}, {24202, '4'}};
    for (const auto& tap : taps) {
        Tap(tree, FindChoice(tree, 10006, tap.Choice), Spot::Image);
        EXPECT_EQ(Value(general::DataOutput), tap.Value) << tap.Choice;
    }
    EXPECT_EQ(
        ChildrenOf(tree, FindItem(tree, 10006)),
        (Lines{"[ ] 24200 Keyboard Emulation", "[ ] 24201 Windows Message", "[x] 24202 Windows Event"}));
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

struct LengthGroup {
    const char* Name;
    WORD Devices;
    const char* Page;
    DWORD Mode, First, Second;
    const char* FirstHex;
    const char* SecondHex;
};

void PrintTo(const LengthGroup& tested, std::ostream* out) {
    *out << tested.Name;
}

class LengthModeTest : public SheetTest, public testing::WithParamInterface<LengthGroup> {};

// The lines between a group's length mode and what follows the lengths.
Lines LengthLines(HWND tree, const LengthGroup& group) {
    Lines lines;
    for (HTREEITEM item = NextAfter(tree, FindItem(tree, group.Mode)); item; item = NextAfter(tree, item)) {
        TreeItem read;
        if (!ReadTreeItem(tree, item, read) || read.Image != ItemImage::Number) {
            break;
        }
        lines.push_back(LineOf(tree, item));
    }
    return lines;
}

TEST_P(LengthModeTest, ShowsTheLengthsThatCountFromEveryModeToEveryOther) {
    const LengthGroup& group = GetParam();
    Open(group.Devices);
    HWND tree = ShowPage(group.Page);
    SetValue(*FindSetting(GetParam().Devices == DeviceLaser ? PageLaser : PageImager, group.First), 55);
    SetValue(*FindSetting(GetParam().Devices == DeviceLaser ? PageLaser : PageImager, group.Second), 4);
    const std::string first = std::string("# ") + group.FirstHex;
    const std::string second = std::string("# ") + group.SecondHex;
    const Lines shown[] = {{},
                           {first + " Value 1 :  55"},
                           {first + " Value 1 :  55", second + " Value 2 :  4"},
                           {first + " Maximum Length :  55", second + " Minimum Length :  4"}};
    // Each pair of neighbours once.
    for (const DWORD mode : {1u, 0u, 2u, 0u, 3u, 1u, 2u, 3u, 2u, 1u, 3u, 0u}) {
        Tap(tree, FindChoice(tree, group.Mode, mode), Spot::Image);
        EXPECT_EQ(LengthLines(tree, group), shown[mode]) << mode;
        EXPECT_EQ(LineOf(tree, FindChoice(tree, group.Mode, mode)).substr(0, 3), "(*)");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Groups, LengthModeTest,
    testing::Values(
        LengthGroup{"LaserCode39", DeviceLaser, "1D", 0x12FF, 0x1213, 0x1212, "0x1213", "0x1212"},
        LengthGroup{"LaserMsi", DeviceLaser, "1D", 0x18FF, 0x181F, 0x181E, "0x181F", "0x181E"},
        LengthGroup{"ImagerCode11", DeviceImager, "2D", 0x14FF, 0x141D, 0x141C, "0x141D", "0x141C"},
        // Nothing comes behind these lengths.
        LengthGroup{"ImagerCode93", DeviceImager, "2D", 0x13FF, 0x131B, 0x131A, "0x131B", "0x131A"}),
    [](const auto& tested) { return tested.param.Name; });

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

TEST_F(SheetTest, SpaceAndEnterTapTheImageOfTheSelectedItem) {
    Open(Device1D);
    HWND tree = ShowPage("1D");
    Tap(tree, FindItem(tree, 1100), Spot::Label);
    Type("[Space]");
    layer::PumpMessages();
    EXPECT_EQ(Value(decoder1d::ItalianPharmacodeEnabled), '1');
    Type("[Enter]");
    layer::PumpMessages();
    EXPECT_EQ(Value(decoder1d::ItalianPharmacodeEnabled), '0');
    EXPECT_TRUE(World.MainMessages.empty());
}

struct KeySequence {
    const char* Name;
    WORD Devices;
    const char* Keys;  // "," waits until the time for the second key is just not over, ";" until it is
    int Upgrades;
};

void PrintTo(const KeySequence& tested, std::ostream* out) {
    *out << tested.Name;
}

class UpgradeKeysTest : public SheetTest, public testing::WithParamInterface<KeySequence> {
  protected:
    UpgradeKeysTest() {
        layer::InstallClock(&clock_);
        clock_.AddSource(layer::WindowTimers());
    }
    ~UpgradeKeysTest() override {
        clock_.RemoveSource(layer::WindowTimers());
        layer::InstallClock(nullptr);
    }
    layer::ManualClock clock_;
};

TEST_P(UpgradeKeysTest, StartTheFirmwareUpgrade) {
    Open(GetParam().Devices);
    HWND tree = ShowPage("General");
    Tap(tree, FindItem(tree, 10004), Spot::Label);
    const std::string keys = GetParam().Keys;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (keys[i] == ',' || keys[i] == ';') {
            clock_.Advance(keys[i] == ',' ? 2999 : 3001);
        } else if (keys[i] == '[') {
            Type(keys.substr(i, keys.find(']', i) + 1 - i));
            i = keys.find(']', i);
        }
        layer::PumpMessages();
    }
    EXPECT_EQ(World.Upgrades, GetParam().Upgrades);
}

INSTANTIATE_TEST_SUITE_P(Sequences, UpgradeKeysTest,
                         testing::Values(KeySequence{"Both", Device1D, "[F2][F7]", 1},
                                         KeySequence{"JustInTime", Device1D, "[F2],[F7]", 1},
                                         KeySequence{"TooLate", Device1D, "[F2];[F7]", 0},
                                         KeySequence{"FirstKeyAgain", Device1D, "[F2],[F2],[F7]", 1},
                                         KeySequence{"AnotherBetween", Device1D, "[F2][Down][F7]", 0},
                                         KeySequence{"WrongOrder", Device1D, "[F7][F2]", 0},
                                         KeySequence{"SecondAgain", Device1D, "[F2][F7][F7]", 1},
                                         KeySequence{"BesideRfid", BothReaders, "[F2][F7]", 1},
                                         KeySequence{"Imager", DeviceImager, "[F2][F7]", 0},
                                         KeySequence{"RfidAlone", DeviceRfid, "[F2][F7]", 0}),
                         [](const auto& tested) { return tested.param.Name; });

}  // namespace
