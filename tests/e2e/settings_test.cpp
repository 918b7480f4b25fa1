// The settings by hand: icon, menu, sheet, editor and pages of the real program through X events, and what
// comes of it on the reader's wire, in the file and in the next scan.
#include <X11/keysym.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>

#include "settings/engine_fields.h"
#include "tests/e2e/end_to_end.h"
#include "tests/e2e/wine_screen.h"

namespace {

// Offsets in the settings file.
constexpr std::size_t SymbologyOffset = 240, GeneralOffset = 760;

std::size_t OffsetOf(const Setting& setting) {
    const std::size_t block = setting.Block == SettingBlock::Symbology ? SymbologyOffset : GeneralOffset;
    return block + 2u * PlaceOf(setting, ReaderType::LongRangeLaser).Word;
}

class SettingsByHand : public EndToEnd {
  protected:
    // The text of the item that has the focus.
    std::string FocusedItem() {
        std::string name;
        for (const Accessible& window : Desktop.Hear(SheetTitle)) {
            window.Visit([&](const Accessible& part) {
                if (part.Focused && part.Role == "tree item") {
                    name = part.Name;
                }
            });
        }
        return name;
    }
    // Goes down until the focus is on the item of this text; on a desktop that does not tell, so many items.
    void GoDownTo(const std::string& item, int times) {
        for (int i = 0; OnWine() && i < times; ++i) {
            Press({XK_Down});
        }
        std::string last = FocusedItem();
        for (int tries = 0; !OnWine() && tries < 40 && !last.starts_with(item); ++tries) {
            Desktop.Press(XK_Down);
            ASSERT_TRUE(Within(5000, [&] { return FocusedItem() != last; })) << "no item " << item;
            last = FocusedItem();
        }
    }
    // The sheet has the keys again after an editor.
    void AwaitSheet() {
        ASSERT_TRUE(Desktop.WaitForFocus(SheetTitle));
        if (!OnWine()) {
            ASSERT_TRUE(Within(5000, [&] { return !FocusedItem().empty(); }));
        }
    }

    void StartWithSheet() {
        FitKnownReaders("laser");
        StartReady();
        StartAgain();
    }

    void EditPrefix() {
        ASSERT_NO_FATAL_FAILURE(AwaitSheet());
        Press({XK_Home});
        ASSERT_NO_FATAL_FAILURE(GoDownTo("Prefix Code", 8));
        Press({XK_Return});
        ASSERT_TRUE(Desktop.WaitForFocus("Prefix Code"));
    }
    void AppendToPrefix(std::initializer_list<unsigned long> keys) {
        ASSERT_NO_FATAL_FAILURE(EditPrefix());
        Press({XK_End});
        Press(keys);
        Press({XK_Return});
        ASSERT_TRUE(Desktop.WaitUntilGone("Prefix Code"));
        AwaitSheet();
    }
};

class SettingsFromIcon : public SettingsByHand, public testing::WithParamInterface<bool> {
  protected:
    void TapIcon() {
        const auto icon = Desktop.WaitForWindow(GetParam() ? "panel" : "Notification icon");
        ASSERT_TRUE(icon);
        const auto before = Desktop.Windows();
        Desktop.Click(icon->X + 13, icon->Y + 13);
        const auto isNew = [&](const ScreenWindow& window) {
            return std::ranges::find(before, window.Id, &ScreenWindow::Id) == before.end();
        };
        ASSERT_TRUE(Within(5000, [&] { return std::ranges::any_of(Desktop.Windows(), isNew); })) << "no menu";
        if (OnWine()) {  // which tells no program where its icon is
            Pause(500);  // the new window may be the icon's text
            return;
        }
        for (const ScreenWindow& window : Desktop.Windows()) {
            if (isNew(window)) {
                EXPECT_NEAR(window.X + window.Width, icon->X + icon->Width, 30)
                    << "the menu is not at the icon";
                EXPECT_NEAR(window.Y + window.Height, GetParam() ? window.Height : icon->Y, 30);
            }
        }
    }
};

TEST_P(SettingsFromIcon, ChangesReachTheReaderTheFileAndTheNextScan) {
    std::unique_ptr<ChildProcess> tray;
    if (GetParam()) {
        tray = StartProgram(
            "trayer", {"--edge", "top", "--align", "right", "--height", "26", "--widthtype", "request"});
        ASSERT_TRUE(Desktop.WaitForWindow("panel"));
    }
    FitKnownReaders("laser");
    StartReady();
    EXPECT_EQ(Scan("3 AB12", 5), "AB12\n");

    TapIcon();
    if (OnWine()) {
        Press({XK_Up, XK_Up, XK_Up, XK_Return});  // it knows no first letters: past "Exit" and "About"
    } else {
        Press({XK_s});
    }
    ASSERT_TRUE(SettingsOpen());
    for (const ScreenWindow& window : Desktop.Windows()) {
        if (OnWine() && window.Title == SheetTitle && window.Width > Desktop.MainWidth()) {
            using testing::AllOf, testing::Contains, testing::HasSubstr, testing::Not;
            EXPECT_THAT(Desktop.TextsOf(window), AllOf(Contains("OK"), Not(Contains(HasSubstr("pply")))));
        }
    }
    Wire->Forget();
    Trigger({"press", "200"});
    EXPECT_FALSE(Wire->Saw("decoding com1 on", 500)) << "the readers are on while the settings are open";

    ASSERT_NO_FATAL_FAILURE(AppendToPrefix({XK_p, XK_x}));
    // The other page, its second group, that group's first switch.
    Desktop.Press(XK_Tab, true);
    ASSERT_TRUE(OnWine() ||
                Within(5000, [&] { return !FocusedItem().empty() && !FocusedItem().starts_with("Prefix"); }));
    Press({XK_Home});
    ASSERT_NO_FATAL_FAILURE(GoDownTo("Code 128", 1));
    Press({XK_Right});
    ASSERT_NO_FATAL_FAILURE(GoDownTo("Enable Code 128", 1));
    Press({XK_space});
    if (!OnWine()) {
        EXPECT_TRUE(Within(5000, [&] { return FocusedItem() == "Enable Code 128 :  NO"; }));
    }
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
    StartWithSheet();
    ASSERT_NO_FATAL_FAILURE(AppendToPrefix({XK_q}));
    Wire->Forget();
    Press({XK_Escape});
    EXPECT_EQ(Running->Ended(), 0);
    EXPECT_EQ(Wire->Count("param "), 0);
    EXPECT_EQ(SettingsWord(OffsetOf(general::PrefixCode)), 0);
    ExpectNothingLeft();
}

TEST_F(SettingsByHand, ASecondStartReplacesTheSheetAndItsEditor) {
    StartWithSheet();
    ASSERT_NO_FATAL_FAILURE(AppendToPrefix({XK_q}));
    EditPrefix();
    Press({XK_z});
    StartAgain();
    EXPECT_TRUE(Desktop.WaitUntilGone("Prefix Code"));
    // What had been accepted before is still to be applied; what was being typed is gone.
    ASSERT_NO_FATAL_FAILURE(AppendToPrefix({XK_w}));
    Press({XK_Tab, XK_Tab, XK_Return});
    EXPECT_TRUE(SettingsOpen(false));
    Desktop.BringToFront();
    ASSERT_TRUE(WaitUntilReady());
    EXPECT_EQ(Scan("3 AB12", 7), "qwAB12\n");
    EXPECT_TRUE(Running->End());
}

TEST_F(SettingsByHand, AFileThatAnotherProgramKeepsIsNotSaved) {
    StartWithSheet();
    ASSERT_NO_FATAL_FAILURE(AppendToPrefix({XK_q}));
    const int file = open(SettingsPath().c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(flock(file, LOCK_EX), 0);
    if (OnWine()) {
        WineSession::Current().Ask("hold " + WineTerminal() + "\\DiskOnChip\\Vantrel.ini");
    }
    Press({XK_Tab, XK_Tab, XK_Return});
    EXPECT_TRUE(ErrorBoxSays(Desktop, "Failed to save configuration"));
    DismissErrorBox(Desktop);
    EXPECT_EQ(Running->Ended(), 0);
    close(file);
    EXPECT_EQ(SettingsWord(OffsetOf(general::PrefixCode)), 0);
    ExpectNothingLeft();
}

TEST_F(SettingsByHand, TheProgramEndsUnderAnOpenEditor) {
    StartWithSheet();
    EditPrefix();
    EXPECT_TRUE(Running->End());
    ExpectNothingLeft();
    EXPECT_EQ(SettingsWord(OffsetOf(general::PrefixCode)), 0);
}

}  // namespace
