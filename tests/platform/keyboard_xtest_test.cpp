// Synthetic keys on a real X server, seen by a real client: the right character under every layout and state
// of the keyboard.
#include <X11/keysym.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "platform/keyboard.h"
#include "platform/linux/keyboard/keyboard_backend.h"
#include "tests/platform/typed_text.h"
#include "tests/platform/x_client.h"

namespace {

class XtestKeyboard : public testing::Test {
  protected:
    XtestKeyboard() {
        setenv("VANTREL_KEYBOARD", "xtest", 1);
        layer::InstallKeyboard(nullptr);
    }
    ~XtestKeyboard() override {
        layer::InstallKeyboard(nullptr);
        unsetenv("VANTREL_KEYBOARD");
    }
    static void Layout(const std::string& arguments) {
        ASSERT_EQ(std::system(("setxkbmap " + arguments).c_str()), 0);
    }
    void ExpectAll(const std::string& what) {
        const std::string all = AllCharacters();
        TypeText(all);
        EXPECT_EQ(client_.Typed(all.size()), all) << what;
    }

    XServer server_;
    XClient client_;
};

TEST_F(XtestKeyboard, EveryKeyUnderEveryLayoutAndWithLockedKeys) {
    for (const std::string layout : {"us", "de", "fr", "de -variant nodeadkeys", "us -variant dvorak", "ru",
                                     "gr", "jp", "us -option caps:shiftlock"}) {
        Layout(layout);
        ExpectAll(layout);
        EXPECT_FALSE(client_.AnyKeyDown());
        EXPECT_EQ(client_.Modifiers(), 0u);
        if (layout.size() > 2 || layout == "jp")
            continue;  // Caps Lock is another key there
        client_.Tap(XK_Caps_Lock);
        client_.Tap(XK_Num_Lock);
        const unsigned locked = client_.LockedModifiers();
        ASSERT_NE(locked & LockMask, 0u);
        ExpectAll(layout + ", locked");
        EXPECT_EQ(client_.LockedModifiers(), locked);
        client_.Tap(XK_Caps_Lock);
        client_.Tap(XK_Num_Lock);
        client_.Typed(0);  // those keys
    }
}

TEST_F(XtestKeyboard, SecondLayoutInForce) {
    Layout("-layout us,ru,fr");
    for (unsigned group = 0; group < 3; ++group) {
        client_.Lock(group);
        ExpectAll("group " + std::to_string(group));
    }
}

// No key is pressed for it and the map stays, as when another program does it.
TEST_F(XtestKeyboard, OthersLockAndLatch) {
    Layout("-layout us,de");
    struct {
        unsigned Group, Locked, Latched;
    } const states[] = {{0, 0, 0}, {1, 0, 0}, {0, LockMask, 0}, {1, LockMask, 0}, {0, 0, ShiftMask}};
    for (const auto& state : states) {
        client_.Lock(state.Group, state.Locked, state.Latched);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));  // a look holds for a millisecond
        TypeText("yzYZ");
        EXPECT_EQ(client_.Typed(4), "yzYZ") << state.Group << " " << state.Locked << " " << state.Latched;
    }
}

TEST_F(XtestKeyboard, KeysHeldByTheUserAreRestored) {
    for (const char* layout : {"us", "de"}) {
        Layout(layout);
        for (const bool real : {true, false}) {
            for (const KeySym held : {XK_Shift_L, XK_Shift_R, XK_Control_L, XK_Alt_L, XK_Super_L}) {
                client_.Hold(held, real);
                const unsigned before = client_.Modifiers();
                ASSERT_NE(before, 0u);
                TypeText("aB1!");
                keybd_event(VK_TAB, 0, 0, 0);
                keybd_event(VK_TAB, 0, KEYEVENTF_KEYUP, 0);
                EXPECT_EQ(client_.Typed(5), "aB1!<Tab>") << layout << " " << XKeysymToString(held) << real;
                EXPECT_TRUE(client_.IsDown(held));
                EXPECT_EQ(client_.Modifiers(), before);
                client_.LetGo(held, real);
                EXPECT_FALSE(client_.AnyKeyDown());
                EXPECT_EQ(client_.Modifiers(), 0u);
                TypeText("Z");
                EXPECT_EQ(client_.Typed(1), "Z");
                EXPECT_FALSE(client_.AnyKeyDown());
            }
        }
    }
}

TEST_F(XtestKeyboard, KeyThatTheUserHoldsIsTypedOnce) {
    Layout("us");
    client_.Hold(XK_a);
    client_.Typed(1);
    TypeText("a");
    EXPECT_EQ(client_.Typed(1), "a");
    client_.LetGo(XK_a);
    TypeText("a");
    EXPECT_EQ(client_.Typed(1), "a");
    EXPECT_FALSE(client_.AnyKeyDown());
}

TEST_F(XtestKeyboard, EndTakesNothingWithIt) {
    Layout("ru");
    keybd_event(VK_SHIFT, 0, 0, 0);
    keybd_event('A', 0, 0, 0);
    EXPECT_EQ(client_.Typed(1), "A");
    layer::InstallKeyboard(nullptr);
    EXPECT_FALSE(client_.AnyKeyDown());
    EXPECT_EQ(client_.Modifiers(), 0u);
    keybd_event('A', 0, KEYEVENTF_KEYUP, 0);
    keybd_event(VK_SHIFT, 0, KEYEVENTF_KEYUP, 0);
    TypeText("x");
    EXPECT_EQ(client_.Typed(1), "x");
}

TEST(XtestServer, LossAndReturnOfTheServer) {
    // So high that no other server takes the number while this one is gone: those take the lowest that is
    // free.
    const std::string name = ":" + std::to_string(10000 + getpid() % 40000);
    auto server = std::make_unique<XServer>(name);
    setenv("VANTREL_KEYBOARD", "xtest", 1);
    layer::InstallKeyboard(nullptr);
    TypeText("a");
    server.reset();
    for (int i = 0; i < 5; ++i)
        TypeText("bC");
    server = std::make_unique<XServer>(name);
    XClient client;
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    TypeText("dE");
    EXPECT_EQ(client.Typed(2), "dE");
    layer::InstallKeyboard(nullptr);
    unsetenv("VANTREL_KEYBOARD");
}

}  // namespace
