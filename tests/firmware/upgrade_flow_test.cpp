// The upgrade by hand: keys, warning, choice of the file, progress and closing message of the real program,
// with the simulated decoder failing in every way.
#include <X11/keysym.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "tests/e2e/end_to_end.h"
#include "tests/firmware/firmware_text.h"

namespace {

constexpr const char* CautionTitle = "Caution";
constexpr const char* ChoiceTitle = "Open";
constexpr const char* ProgressTitle = "Download Progress";
constexpr const char* WaitTitle = "Please wait";  // while the decoder erases, and while it restarts
constexpr const char* DoneTitle = "Firmware Upgrade";

std::string SmallFirmware() {
    return RecordLine('3', 0x10000, Octets(100, 0x11)) + RecordLine('3', 0x10064, Octets(50, 0x22)) +
           std::string(EndLine);
}

std::string LargeFirmware() {
    std::string text;
    for (std::uint32_t i = 0; i < 400; ++i) {
        text += RecordLine('3', i * 0x80, Octets(0x80, static_cast<std::uint8_t>(i)));
    }
    return text + std::string(EndLine);
}

class UpgradeByHand : public EndToEnd {
  protected:
    void Begin(const std::string& rfid = "none") {
        FitReaders("1d", rfid);
        WriteSettings(Device1D, {{&general::CheckReaderStatus, '0'}});
        WriteWholeFile(Terminal.Path("DiskOnChip/SMALL.SHX"), SmallFirmware());
        WriteWholeFile(Terminal.Path("DiskOnChip/LARGE.SHX"), LargeFirmware());
        WriteWholeFile(Terminal.Path("DiskOnChip/EMPTY.SHX"), "");
        StartReady();
        Wire->Command("wire off");
        StartAgain();
        ASSERT_TRUE(SheetTakesKeys());
        Wire->Forget();
    }

    // The program answers other programs in between: keys sent before have been handled.
    static void Settle() {
        ASSERT_TRUE(Trigger({"up"}));
        ASSERT_TRUE(Trigger({"up"}));
    }
    bool SheetTakesKeys() {
        return Within(10000, [&] {
            const auto sheet = Sheet();
            return sheet && Desktop.HasFocus(sheet->Id);
        });
    }
    // The sheet as a screen reader tells it: pages, items, focus.
    std::string SheetSays() {
        for (const Accessible& window : Desktop.Hear(SheetTitle)) {
            if (window.Role == "dialog") {
                return window.Outline();
            }
        }
        return "";
    }
    bool SheetBecomes(const std::string& wanted) {
        return Within(10000, [&] { return SheetSays() == wanted; });
    }
    // What no window covers while the program is busy, but the choice of the file did.
    Picture SheetPart() {
        const auto sheet = Sheet();
        return sheet ? Desktop.Capture(sheet->X, sheet->Y + 80, sheet->Width, 100) : Picture{};
    }

    bool OpenCaution() {
        Press({XK_F2, XK_F7});
        return Desktop.WaitForFocus(CautionTitle);
    }
    // From the warning to the chosen file.
    void Choose(const std::string& name) {
        Press({XK_Return});
        ASSERT_TRUE(Desktop.WaitForFocus(ChoiceTitle));
        Press({XK_Tab});
        for (const char letter : name) {
            Press({static_cast<unsigned long>(letter)});
        }
        Press({XK_Return});
        ASSERT_TRUE(Desktop.WaitUntilGone(ChoiceTitle));
    }
    void DismissDone() {
        ASSERT_TRUE(Desktop.WaitForFocus(DoneTitle, 40000));
        Press({XK_Return});
        ASSERT_TRUE(Desktop.WaitUntilGone(DoneTitle));
    }
    // Its text has been painted, while the program handles no message: more than a caption's few rows.
    bool ShowsSomething(const ScreenWindow& window) {
        const int top = window.Height / 2, height = window.Height / 3;
        return Within(3000, [&] {
            const auto pixels =
                Desktop.Capture(window.X + 4, window.Y + top, window.Width - 8, height).Pixels;
            return std::ranges::adjacent_find(pixels, std::not_equal_to<>()) != pixels.end();
        });
    }
};

TEST_F(UpgradeByHand, CancellingLeavesEverythingAsItWas) {
    Begin();
    const std::string before = SheetSays();
    ASSERT_NE(before, "");
    ASSERT_TRUE(OpenCaution());
    // "Cancel" behind the text and "Next".
    Press({XK_Tab, XK_Tab, XK_Return});
    ASSERT_TRUE(Desktop.WaitUntilGone(CautionTitle));
    Settle();
    EXPECT_FALSE(Desktop.WaitForWindow(ChoiceTitle, 0));
    ASSERT_TRUE(OpenCaution());
    Press({XK_Return});
    ASSERT_TRUE(Desktop.WaitForFocus(ChoiceTitle));
    Press({XK_Escape});
    ASSERT_TRUE(Desktop.WaitUntilGone(ChoiceTitle));
    EXPECT_TRUE(SheetBecomes(before));
    EXPECT_EQ(Wire->Count("event download-mode"), 0);
    // The program ends under the open warning.
    ASSERT_TRUE(OpenCaution());
    EXPECT_TRUE(Running->End());
    ExpectNothingLeft();
}

TEST_F(UpgradeByHand, TheWarningNamesTheVersion) {
    const struct {
        std::string Command, Shown;
        int Asked;
    } versions[] = {{"version hex:56 65 72 20 E9", "Ver \xC3\xA9", 1},
                    {"fault com1 no-reply x6", "", 5},
                    {"version repeat:200:Ver ", "Ver Ver Ver Ver Ver Ver Ver Ver ", 2}};
    Begin();
    Picture last;
    for (const auto& version : versions) {
        Wire->Command(version.Command);
        ASSERT_TRUE(OpenCaution());
        std::string says;
        for (const Accessible& window : Desktop.Hear(CautionTitle)) {
            says += window.Outline();
        }
        EXPECT_NE(says.find("click [Next].\n\nCurrent Firmware : " + version.Shown + "\""), std::string::npos)
            << says;
        const auto place = Desktop.Find(CautionTitle).value_or(ScreenWindow{});
        const Picture seen = Desktop.Capture(place.X, place.Y, place.Width, place.Height);
        EXPECT_FALSE(seen == last) << "the version is out of sight";
        last = seen;
        EXPECT_EQ(Wire->Count("event command com1 VER"), version.Asked) << version.Command;
        Wire->Forget();
        Press({XK_Escape});
        ASSERT_TRUE(Desktop.WaitUntilGone(CautionTitle));
    }
}

TEST_F(UpgradeByHand, ProgressMovesAndTheNewFirmwareReads) {
    const Picture bare = Desktop.Pointer();
    Begin();
    // A change that is not applied yet: the upgraded decoder, which has lost everything, gets it at once.
    Desktop.Press(XK_Tab, true);
    Press({XK_Down, XK_space});
    ASSERT_TRUE(
        Within(5000, [&] { return SheetSays().find("Italian Pharmacode :  Enabled") != std::string::npos; }));
    const std::string before = SheetSays();
    const Picture arrow = Desktop.Pointer(), part = SheetPart();
    const auto pointerWaits = [&] {
        const Picture now = Desktop.Pointer();
        return now.Width > 1 && now != arrow && now != bare;
    };
    Wire->Command("erase-ms 4500");
    Wire->Command("restart-ms 14000");
    ASSERT_TRUE(OpenCaution());
    Wire->Command("fault com1 late 100 always");  // as long as the progress is looked at
    Choose("large");
    const auto erasing = Desktop.WaitForWindow(WaitTitle);
    ASSERT_TRUE(erasing);
    EXPECT_TRUE(ShowsSomething(*erasing));
    EXPECT_TRUE(SheetPart() == part);
    EXPECT_TRUE(Within(3000, pointerWaits));
    const auto progress = Desktop.WaitForWindow(ProgressTitle);
    ASSERT_TRUE(progress);
    EXPECT_TRUE(Desktop.WaitUntilGone(WaitTitle, 0));
    ASSERT_TRUE(Wire->Saw("event frame com1", 10000));
    // Nobody reads these: neither the closing message nor the sheet gets them afterwards.
    Press({XK_Return, XK_Escape, XK_space});
    for (int changes = 0; changes < 3; ++changes) {
        const auto look = [&] {
            return Desktop.Capture(progress->X, progress->Y, progress->Width, progress->Height);
        };
        const Picture last = look();
        EXPECT_TRUE(Within(20000, [&] { return look() != last; })) << changes;
    }
    Wire->Command("fault off");
    EXPECT_EQ(Wire->Count("event saved"), 0);
    const auto restarting = Desktop.WaitForWindow(WaitTitle, 100000);
    ASSERT_TRUE(restarting);
    EXPECT_TRUE(Desktop.WaitUntilGone(ProgressTitle, 0));
    EXPECT_TRUE(ShowsSomething(*restarting));
    EXPECT_TRUE(SheetPart() == part);
    EXPECT_TRUE(Within(3000, pointerWaits));
    Wire->Command("power off");
    Wire->Command("power on");
    ASSERT_TRUE(Desktop.WaitForFocus(DoneTitle, 20000));
    EXPECT_TRUE(Desktop.WaitUntilGone(WaitTitle, 0));
    EXPECT_TRUE(Desktop.Pointer() == arrow);
    EXPECT_EQ(Wire->Count("event saved"), 1) << "the settings are not sent again";
    Settle();
    DismissDone();
    EXPECT_TRUE(SheetBecomes(before));
    // The new version is another one, and the reader reads.
    ASSERT_TRUE(OpenCaution());
    Press({XK_Escape});
    ASSERT_TRUE(Desktop.WaitUntilGone(CautionTitle));
    Press({XK_Tab, XK_Tab, XK_Return});
    Wire->Command("wire on");
    Desktop.BringToFront();
    ASSERT_TRUE(WaitUntilReady());
    EXPECT_EQ(Scan("P AB12", 5), "AB12\n");
    EXPECT_TRUE(Running->End());
}

TEST_F(UpgradeByHand, FileAndReaderThatGoMeanwhile) {
    Begin();
    const std::string before = SheetSays();
    ASSERT_NE(before, "");
    ASSERT_TRUE(OpenCaution());
    // The transfer takes minutes from now on: whatever happens now happens in its middle.
    Wire->Command("fault com1 late 500 always");
    Choose("large");
    ASSERT_TRUE(Wire->Saw("event frame com1", 20000));
    ASSERT_EQ(truncate(Terminal.Path("DiskOnChip/LARGE.SHX").c_str(), 0), 0);
    EXPECT_TRUE(ErrorBoxSays(Desktop, "Failed to read the firmware file!! (20025)"));
    DismissErrorBox(Desktop);
    ASSERT_TRUE(Desktop.WaitUntilGone(ErrorBoxTitle));
    EXPECT_TRUE(SheetBecomes(before));

    WriteWholeFile(Terminal.Path("DiskOnChip/LARGE.SHX"), LargeFirmware());
    Wire->Forget();
    ASSERT_TRUE(OpenCaution());
    Choose("large");
    ASSERT_TRUE(Wire->Saw("event frame com1", 20000));
    Wire->Command("unplug com1");
    EXPECT_TRUE(ErrorBoxSays(Desktop, "Error on downloading!!"));
    DismissErrorBox(Desktop);
    ASSERT_TRUE(Desktop.WaitUntilGone(ErrorBoxTitle));
    Wire->Command("plug com1");
    EXPECT_TRUE(SheetBecomes(before));
    EXPECT_TRUE(Running->End());
    ExpectNothingLeft();
}

TEST_F(UpgradeByHand, DecoderWithoutFirmwareIsLoadedAfterARestart) {
    Begin("100");
    ASSERT_TRUE(OpenCaution());
    Wire->Command("fault power-loss after1");
    Choose("small");
    ASSERT_TRUE(Desktop.WaitForWindow(ErrorBoxTitle, 20000));
    Running.reset();  // as when the terminal's power goes too
    Wire->Command("power on");
    Wire->Command("restart-ms 300");
    // Neither the decoder nor the settings file, as no start or one without a decoder left it, helps: the
    // upgrade is offered all the same.
    for (const bool started : {false, true}) {
        std::filesystem::remove(SettingsPath());
        if (started) {
            WriteSettings(DeviceRfid, {});
        }
        Running =
            std::make_unique<Vantrel>(std::vector<std::string>{}, std::vector<std::string>{"--settings"});
        ASSERT_TRUE(Desktop.WaitForFocus(CautionTitle, 20000)) << started;
        if (!started) {
            Running.reset();
        }
    }
    Choose("small");
    DismissDone();
    EXPECT_TRUE(Wire->Saw("event started com1 Ver 2."));
    EXPECT_TRUE(Running->End());
}

// Every text that a failure has. The decoder gets its power back after each and answers, whole or not, in its
// download mode.
TEST_F(UpgradeByHand, FailuresAreToldAndLeaveTheSheetAsItWas) {
    const struct {
        const char* Command;  // to the decoder, once the warning is there
        const char* File;
        const char* Text;
    } failures[] = {{"faults", "none", "Can't open the file!!"},
                    {"fault raw-refuse", "small", "Failed to set barcode reader!!"},
                    {"fault erase-no-fa", "small", "Failed to erase the flash memory!!"},
                    {"faults", "empty", "Error on downloading!!"},
                    {"fault frame-silent after1", "small", "Error on downloading!!"},
                    {"restart-ms 100000", "small", "Error on reboot barcode reader!!"}};
    Begin();
    const std::string before = SheetSays();
    ASSERT_NE(before, "");
    Wire->Command("wire on");
    for (const auto& failure : failures) {
        SCOPED_TRACE(failure.Command);
        ASSERT_TRUE(OpenCaution());
        Wire->Forget();
        Wire->Command(failure.Command);
        ASSERT_NO_FATAL_FAILURE(Choose(failure.File));
        EXPECT_TRUE(ErrorBoxSays(Desktop, failure.Text));
        DismissErrorBox(Desktop);
        ASSERT_TRUE(Desktop.WaitUntilGone(ErrorBoxTitle));
        EXPECT_FALSE(Desktop.WaitForWindow(ProgressTitle, 0));
        Wire->Command("fault off");
        Wire->Command("power off");
        Wire->Command("power on");
        EXPECT_TRUE(SheetBecomes(before));
    }
    EXPECT_EQ(Wire->Count("56 45 52 0D"), 30) << "how often a decoder that stays away is asked";
    Wire->Command("restart-ms 300");
    ASSERT_TRUE(OpenCaution());
    Choose("small");
    DismissDone();
    EXPECT_TRUE(Running->End());
    ExpectNothingLeft();
}

}  // namespace
