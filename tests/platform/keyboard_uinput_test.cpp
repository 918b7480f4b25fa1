// Synthetic keys as the kernel's events, read back as a display server reads them: through the layout.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/input.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <xkbcommon/xkbcommon-compose.h>

#include <algorithm>
#include <filesystem>
#include <memory>

#include "platform/linux/keyboard/keyboard_backend.h"
#include "tests/platform/typed_text.h"

namespace {

// Who reads the keyboard: a layout, Caps Lock, and dead keys.
class Reader {
  public:
    Reader(const std::string& layout, const std::string& variant) {
        const xkb_rule_names names{nullptr, nullptr, layout.c_str(), variant.c_str(), ""};
        map_ = xkb_keymap_new_from_names(context_, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
        state_ = xkb_state_new(map_);
        auto* table =
            xkb_compose_table_new_from_locale(context_, "en_US.UTF-8", XKB_COMPOSE_COMPILE_NO_FLAGS);
        compose_ = xkb_compose_state_new(table, XKB_COMPOSE_STATE_NO_FLAGS);
        xkb_compose_table_unref(table);
    }
    ~Reader() {
        xkb_compose_state_unref(compose_);
        xkb_state_unref(state_);
        xkb_keymap_unref(map_);
        xkb_context_unref(context_);
    }
    void Tap(unsigned key) {
        Take(key, 1);
        Take(key, 0);
    }
    // Takes events until none comes any more.
    std::string Text(int fd) {
        text_.clear();
        input_event event;
        pollfd file{fd, POLLIN, 0};
        while (poll(&file, 1, 100) > 0 && read(fd, &event, sizeof event) == sizeof event) {
            if (event.type == EV_KEY)
                Take(event.code, event.value);
            reported_ = event.type == EV_SYN && event.code == SYN_REPORT;
        }
        return text_;
    }
    bool CapsLight() const { return xkb_state_led_name_is_active(state_, XKB_LED_NAME_CAPS) > 0; }
    bool AllUp() const { return down_ == 0 && reported_; }

  private:
    void Take(unsigned key, int value) {
        down_ += value != 0 ? 1 : -1;
        const xkb_keysym_t symbol = xkb_state_key_get_one_sym(state_, key + 8);
        xkb_state_update_key(state_, key + 8, value != 0 ? XKB_KEY_DOWN : XKB_KEY_UP);
        if (value == 0 || symbol == XKB_KEY_NoSymbol || xkb_compose_state_feed(compose_, symbol) == 0)
            return;
        char bytes[16] = {};
        if (xkb_compose_state_get_status(compose_) == XKB_COMPOSE_NOTHING)
            xkb_keysym_to_utf8(symbol, bytes, sizeof bytes);
        else if (xkb_compose_state_get_status(compose_) == XKB_COMPOSE_COMPOSED)
            xkb_compose_state_get_utf8(compose_, bytes, sizeof bytes);
        text_ += bytes;
    }

    xkb_context* context_ = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    xkb_keymap* map_ = nullptr;
    xkb_state* state_ = nullptr;
    xkb_compose_state* compose_ = nullptr;
    std::string text_;
    int down_ = 0;
    bool reported_ = false;
};

void SetCapsLight(int fd, bool on) {
    input_event event{};
    event.type = EV_LED;
    event.code = LED_CAPSL;
    event.value = on;
    ASSERT_EQ(write(fd, &event, sizeof event), static_cast<ssize_t>(sizeof event));
}

TEST(UinputKeyboard, EveryCharacterUnderEveryLayoutAndCapsLock) {
    const std::string all = AllCharacters();
    constexpr std::pair<const char*, const char*> Layouts[] = {
        {"us", ""}, {"de", ""}, {"fr", ""}, {"us", "intl"}, {"jp", ""}};
    for (const auto& [layout, variant] : Layouts) {
        int ends[2];
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends), 0);
        const std::string name = *variant != 0 ? std::string(layout) + "(" + variant + ")" : layout;
        layer::InstallKeyboard(layer::MakeUinputKeyboard(ends[0], name));
        Reader reader(layout, variant);
        for (const bool capsLock : {false, true}) {
            if (capsLock) {
                reader.Tap(KEY_CAPSLOCK);
                SetCapsLight(ends[1], reader.CapsLight());
            }
            TypeText(all);
            EXPECT_EQ(reader.Text(ends[1]), all) << name << (capsLock ? " with Caps Lock" : "");
            EXPECT_TRUE(reader.AllUp());
        }
        layer::InstallKeyboard(nullptr);
        close(ends[1]);
    }
}

// Opens the kernel's newest device of our name; -1 when it does not come.
int OpenOurDevice() {
    for (int tries = 0; tries < 100; ++tries, usleep(20'000)) {
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator("/dev/input", none)) {
            const int fd = open(entry.path().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
            char name[64] = {};
            if (fd >= 0 && ioctl(fd, EVIOCGNAME(sizeof name - 1), name) >= 0 &&
                std::string(name) == "Vantrel keyboard")
                return fd;
            close(fd);
        }
    }
    return -1;
}

TEST(UinputKeyboard, KernelDevice) {
    std::string whyNot;
    auto keyboard = layer::MakeUinputKeyboard("us", whyNot);
    if (!keyboard)
        GTEST_SKIP() << whyNot;
    layer::InstallKeyboard(std::move(keyboard));
    const int fd = OpenOurDevice();
    ASSERT_GE(fd, 0);
    ASSERT_EQ(ioctl(fd, EVIOCGRAB, 1), 0);  // not into whatever is in front on this machine
    Reader reader("us", "");
    // More than the kernel keeps for one that does not read: this one reads only now and then.
    for (int i = 0; i < 20; ++i) {
        TypeText("Aa1!");
        EXPECT_EQ(reader.Text(fd), "Aa1!");
    }
    EXPECT_TRUE(reader.AllUp());
    close(fd);
    layer::InstallKeyboard(nullptr);
}

}  // namespace
