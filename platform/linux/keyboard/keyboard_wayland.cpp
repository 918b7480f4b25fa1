// Key events for the Wayland client in front, through the protocol virtual-keyboard-unstable-v1.
//
// The keyboard is a US keyboard of its own, beside those of the user: it has its own key map, sent whole when
// it is made, and its own modifiers, so that the user's layout, Caps Lock and held keys do not reach it.
#include <linux/input-event-codes.h>

#include <thread>

#include "platform/linux/kernel/clock.h"
#include "platform/linux/kernel/log.h"
#include "platform/linux/keyboard/stroke_keyboard.h"
#include "platform/linux/keyboard/wayland_connection.h"

namespace layer {
namespace {

// A client has room for some thousand events; a display server ends a client that lets them pile up.
constexpr StrokeRate Rate{256, std::chrono::milliseconds(1)};
constexpr std::chrono::seconds ReconnectPause{1};
// A seat that had no keyboard until now: clients ask for it when they hear of it, and what is typed before
// they have it is lost.
constexpr std::chrono::milliseconds IntroductionTime{500};
constexpr unsigned ShiftModifier = 1;

class WaylandKeyboard : public StrokeKeyboard {
  public:
    explicit WaylandKeyboard(LayoutKeys keys) : StrokeKeyboard(std::move(keys), Rate) {}
    WaylandConnection::Result Connect();

  private:
    bool Ready() override;
    void Press(const LayoutKey& key) override;

    WaylandConnection connection_;
    Clock::time_point lastTry_{}, introduced_{};
    bool lost_ = false;
};

WaylandConnection::Result WaylandKeyboard::Connect() {
    lastTry_ = Clock::now();
    const auto result = connection_.Open(Layout().Text());
    introduced_ = Clock::now() + IntroductionTime;
    return result;
}

bool WaylandKeyboard::Ready() {
    if (!connection_.Usable()) {
        if (!lost_) {
            Say(LogPriority::Error, "the Wayland session has gone; keys are dropped until it is back");
        }
        lost_ = true;
        if (Clock::now() - lastTry_ < ReconnectPause || Connect() != WaylandConnection::Result::Connected) {
            return false;
        }
        lost_ = false;
        Say(LogPriority::Notice, "the Wayland session is back");
    }
    std::this_thread::sleep_until(introduced_);
    return true;
}

void WaylandKeyboard::Press(const LayoutKey& key) {
    const auto time = static_cast<unsigned>(CurrentClock().Now());
    if (key.Shift) {
        connection_.Key(time, KEY_LEFTSHIFT, true);
        connection_.Modifiers(ShiftModifier);
    }
    connection_.Key(time, key.Code, true);
    connection_.Key(time, key.Code, false);
    if (key.Shift) {
        connection_.Key(time, KEY_LEFTSHIFT, false);
        connection_.Modifiers(0);
    }
    connection_.Flush();
}

}  // namespace

std::unique_ptr<KeyboardBackend> MakeWaylandKeyboard(std::string& whyNot) {
    auto keys = LayoutKeys::Load("us");
    if (!keys) {
        whyNot = "the US keyboard layout is not installed (package xkb-data)";
        return nullptr;
    }
    auto keyboard = std::make_unique<WaylandKeyboard>(std::move(*keys));
    switch (keyboard->Connect()) {
        case WaylandConnection::Result::Connected:
            return keyboard;
        case WaylandConnection::Result::NoDisplay:
            whyNot = "no Wayland display answers";
            return nullptr;
        case WaylandConnection::Result::NoProtocol:
            break;
    }
    whyNot = "the Wayland session lets no program type (virtual-keyboard-unstable-v1)";
    return nullptr;
}

}  // namespace layer
