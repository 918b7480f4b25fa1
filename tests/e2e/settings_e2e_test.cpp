// The settings by hand: icon, menu, sheet, editor and pages of the real program through X events, and what
// comes of it on the reader's wire, in the file and in the next scan.
#include <X11/keysym.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "settings/engine_fields.h"
#include "tests/e2e/end_to_end.h"

namespace {

// Offsets in the settings file.
constexpr std::size_t SymbologyOffset = 240, GeneralOffset = 760;

std::size_t OffsetOf(const Setting& setting) {
    const std::size_t block = setting.Block == SettingBlock::Symbology ? SymbologyOffset : GeneralOffset;
    return block + 2u * PlaceOf(setting, ReaderType::LongRangeLaser).Word;
}

class SettingsByHand : public EndToEnd {
  protected:
    void StartLaser() {
        FitReaders("laser");
        WriteSettings(DeviceLaser, {{&general::CheckReaderStatus, '0'}});
        StartReady();
    }

    void Press(std::initializer_list<unsigned long> keys) {
        for (const unsigned long key : keys) {
            Desktop.Press(key);
            std::this_thread::sleep_for(std::chrono::milliseconds(40));
        }
    }

    // A second start has the running program open its settings.
    void OpenByStartingAgain() {
        Vantrel second;
        EXPECT_EQ(second.Ended(), 0);
        ASSERT_TRUE(SettingsOpen());
    }

    // Opens the editor of "Prefix Code", the ninth item of the page that the sheet opens on.
    void EditPrefix() {
        Press({XK_Home, XK_Down, XK_Down, XK_Down, XK_Down, XK_Down, XK_Down, XK_Down, XK_Down, XK_Return});
        ASSERT_TRUE(Desktop.WaitForWindow("Prefix Code"));
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
};

class SettingsFromIcon : public SettingsByHand, public testing::WithParamInterface<bool> {
  protected:
    void TapIcon() {
        const auto icon = Desktop.WaitForWindow(GetParam() ? "panel" : "Notification icon");
        ASSERT_TRUE(icon);
        const auto before = Desktop.Windows();
        Desktop.Click(icon->X + 13, icon->Y + 13);
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        for (const ScreenWindow& window : Desktop.Windows()) {
            if (std::ranges::find(before, window.Id, &ScreenWindow::Id) == before.end()) {
                EXPECT_NEAR(window.X + window.Width, icon->X + icon->Width, 30)
                    << "the menu is not at the icon";
                EXPECT_NEAR(window.Y + window.Height, GetParam() ? window.Height : icon->Y, 30);
                return;
            }
        }
        FAIL() << "no menu";
    }
};

TEST_P(SettingsFromIcon, ChangesReachTheReaderTheFileAndTheNextScan) {
    std::unique_ptr<ChildProcess> tray;
    if (GetParam()) {
        tray = StartProgram(
            "trayer", {"--edge", "top", "--align", "right", "--height", "26", "--widthtype", "request"});
        ASSERT_TRUE(Desktop.WaitForWindow("panel"));
    }
    StartLaser();
    EXPECT_EQ(Scan("3 AB12", 5), "AB12\n");

    TapIcon();
    // The menu: the barcode reader, then (the RFID reader is grey) the settings.
    Press({XK_Down, XK_Down, XK_Return});
    ASSERT_TRUE(SettingsOpen());
    Wire->Forget();
    Trigger({"press", "200"});
    EXPECT_FALSE(Wire->Saw("event decoding on", 500)) << "the readers are on while the settings are open";

    EditPrefix();
    Press({XK_p, XK_x, XK_Return});
    ASSERT_TRUE(Desktop.WaitUntilGone("Prefix Code"));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    // The other page, its second group, that group's first switch.
    Desktop.Press(XK_Tab, true);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    Press({XK_Home, XK_Down, XK_Right, XK_Down, XK_space});
    EXPECT_EQ(SettingsWord(OffsetOf(engine::EnableCode128)), '1') << "saved before OK";

    // Behind the tree come the tabs, then OK.
    Press({XK_Tab, XK_Tab, XK_Return});
    EXPECT_TRUE(Wire->Saw("param 08 = 00", 10000));
    EXPECT_TRUE(SettingsOpen(false));
    Desktop.BringToFront();
    ASSERT_TRUE(WaitUntilReady());
    EXPECT_EQ(SettingsWord(OffsetOf(engine::EnableCode128)), '0');
    EXPECT_EQ(SettingsWord(OffsetOf(general::PrefixCode)), 'p');
    EXPECT_EQ(SettingsWord(OffsetOf(general::PrefixCode) + 2), 'x');
    EXPECT_EQ(SettingsWord(OffsetOf(general::PrefixCode) + 4), 0);
    EXPECT_EQ(Scan("3 AB12", 7), "pxAB12\n");
    EXPECT_TRUE(Running->End());
}

INSTANTIATE_TEST_SUITE_P(Icons, SettingsFromIcon, testing::Bool(),
                         [](const auto& tested) { return tested.param ? "InATray" : "StandIn"; });

TEST_F(SettingsByHand, CancelEndsTheProgramWithoutSaving) {
    StartLaser();
    OpenByStartingAgain();
    EditPrefix();
    Press({XK_q, XK_Return});
    ASSERT_TRUE(Desktop.WaitUntilGone("Prefix Code"));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    Wire->Forget();
    Press({XK_Escape});
    EXPECT_EQ(Running->Ended(), 0);
    EXPECT_EQ(Wire->Count("param "), 0);
    EXPECT_EQ(SettingsWord(OffsetOf(general::PrefixCode)), 0);
    ExpectNothingLeft();
}

TEST_F(SettingsByHand, ASecondStartReplacesTheSheetAndItsEditor) {
    StartLaser();
    OpenByStartingAgain();
    EditPrefix();
    Press({XK_q, XK_Return});
    ASSERT_TRUE(Desktop.WaitUntilGone("Prefix Code"));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EditPrefix();
    Press({XK_z});
    OpenByStartingAgain();
    EXPECT_TRUE(Desktop.WaitUntilGone("Prefix Code"));
    // What had been accepted before is still to be applied; what was being typed is gone.
    EditPrefix();
    Press({XK_End, XK_w, XK_Return});
    ASSERT_TRUE(Desktop.WaitUntilGone("Prefix Code"));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    Press({XK_Tab, XK_Tab, XK_Return});
    EXPECT_TRUE(SettingsOpen(false));
    Desktop.BringToFront();
    ASSERT_TRUE(WaitUntilReady());
    EXPECT_EQ(Scan("3 AB12", 7), "qwAB12\n");
    EXPECT_TRUE(Running->End());
}

TEST_F(SettingsByHand, TheProgramEndsUnderAnOpenEditor) {
    StartLaser();
    OpenByStartingAgain();
    EditPrefix();
    EXPECT_TRUE(Running->End());
    ExpectNothingLeft();
    EXPECT_EQ(SettingsWord(OffsetOf(general::PrefixCode)), 0);
}

}  // namespace
