// Synthetic keys in a real Wayland session, seen by a real terminal: nothing lost, least of all the first.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

#include "platform/linux/keyboard/keyboard_backend.h"
#include "tests/platform/sway_session.h"
#include "tests/platform/typed_text.h"
#include "tests/platform/x_client.h"

namespace {

class WaylandKeyboard : public testing::Test {
  protected:
    static void Connect() {
        setenv("VANTREL_KEYBOARD", "wayland", 1);
        layer::InstallKeyboard(nullptr);
        layer::PrepareKeyboard();
    }
    ~WaylandKeyboard() override {
        layer::InstallKeyboard(nullptr);
        unsetenv("VANTREL_KEYBOARD");
    }
};

// Nobody in the session has heard of a keyboard before the first key.
TEST_F(WaylandKeyboard, FirstKeyOfANewKeyboardArrives) {
    SwaySession session("input * xkb_layout de");
    session.OpenTerminal();
    Connect();
    const std::string all = AllCharacters();
    TypeText(all);
    EXPECT_EQ(session.Typed(all.size()), all);
}

// A sample, or as many labels as $VANTREL_LABELS says, behind the longest line, with Shift for each
// character: more than buffers on the way hold.
TEST_F(WaylandKeyboard, LabelsArriveWholeAndInOrder) {
    SwaySession session;
    session.OpenTerminal();
    Connect();
    const char* wanted = std::getenv("VANTREL_LABELS");
    std::string expected(4096, 'W');
    TypeText(expected);
    for (int left = wanted != nullptr ? std::atoi(wanted) : 100; left > 0; --left) {
        const std::string label = "Ab" + std::to_string(left) + "/x#Z%?\r";
        TypeText(label);
        expected += label;
    }
    EXPECT_EQ(session.Typed(expected.size(), 60000), expected);
}

// What is chosen when nothing is asked for, and that it is said.
TEST_F(WaylandKeyboard, ChosenBySession) {
    const bool kernel = access("/dev/uinput", R_OK | W_OK) == 0;
    const XServer screen;
    const std::string display = screen.Name();
    const auto chosen = [](const std::string& wayland, const std::string& x) {
        setenv("WAYLAND_DISPLAY", wayland.c_str(), 1);
        setenv("DISPLAY", x.c_str(), 1);
        layer::InstallKeyboard(nullptr);
        testing::internal::CaptureStderr();
        layer::PrepareKeyboard();
        TypeText("a");
        return testing::internal::GetCapturedStderr();
    };
    using testing::MatchesRegex;
    EXPECT_THAT(chosen("", display), MatchesRegex("vantrel: keys go to xtest: [^\n]*\n"));
    EXPECT_THAT(chosen("/nowhere", display),
                MatchesRegex(kernel ? "vantrel: keys go to uinput: [^\n]*\n"
                                    : "vantrel: keys go to xtest: [^\n]*only X[^\n]*\n"));
    EXPECT_THAT(chosen("", ":none"),
                MatchesRegex(kernel ? "vantrel: keys go to uinput: [^\n]*\n"
                                    : "vantrel: keys go to none: [^\n]*/dev/uinput[^\n]*\n"));
    SwaySession session;
    const std::string wayland = std::getenv("WAYLAND_DISPLAY");
    EXPECT_THAT(chosen(wayland, display), MatchesRegex("vantrel: keys go to wayland: [^\n]*\n"));
}

TEST_F(WaylandKeyboard, LossAndReturnOfTheSession) {
    auto session = std::make_unique<SwaySession>();
    Connect();
    TypeText("a");
    session.reset();
    TypeText("lost");
    session = std::make_unique<SwaySession>();
    session->OpenTerminal();
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    TypeText("First");
    EXPECT_EQ(session->Typed(5), "First");
}

}  // namespace
