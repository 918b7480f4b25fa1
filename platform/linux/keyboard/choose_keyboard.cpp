// Which back end takes the keys.
#include "platform/keyboard.h"

#include <atomic>
#include <cstdlib>
#include <string_view>

#include "platform/linux/kernel/log.h"
#include "platform/linux/keyboard/keyboard_backend.h"

namespace layer {
namespace {

class NoKeyboard : public KeyboardBackend {
  public:
    void Key(BYTE, bool) override {}
    void ReleaseAll() override {}
};

std::atomic<KeysGoTo> Chosen{KeysGoTo::Unknown};

KeysGoTo ByName(std::string_view name) {
    constexpr std::pair<std::string_view, KeysGoTo> names[] = {{"trace", KeysGoTo::Trace},
                                                               {"xtest", KeysGoTo::Xtest},
                                                               {"wayland", KeysGoTo::Wayland},
                                                               {"uinput", KeysGoTo::Uinput}};
    for (const auto& [known, kind] : names) {
        if (name.starts_with(known)) {
            return kind;
        }
    }
    return KeysGoTo::Nowhere;
}

using Made = std::unique_ptr<KeyboardBackend>;

bool IsSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != 0;
}

Made Tell(Made keyboard, const char* name, const std::string& why, LogPriority priority = LogPriority::Info) {
    Chosen = ByName(name);
    Say(priority, "keys go to %s: %s", name, why.c_str());
    return keyboard;
}

Made None(const std::string& why) {
    return Tell(std::make_unique<NoKeyboard>(), "none", why, LogPriority::Error);
}

// What comes behind `prefix`, or null when the text does not begin so.
const char* Behind(std::string_view prefix, const char* text) {
    return std::string_view(text).starts_with(prefix) ? text + prefix.size() : nullptr;
}

Made ByWish(const char* wish) {
    const std::string_view wanted = wish;
    const std::string asked = "VANTREL_KEYBOARD asks for it";
    std::string whyNot;
    Made made;
    if (wanted == "none") {
        Chosen = KeysGoTo::Nowhere;
        return std::make_unique<NoKeyboard>();
    }
    if (const char* file = Behind("trace:", wish)) {
        made = MakeTraceKeyboard(file);
        whyNot = "cannot write the key trace";
    } else if (wanted == "xtest") {
        made = MakeXtestKeyboard();
        whyNot = "no usable X display";
    } else if (wanted == "wayland") {
        made = MakeWaylandKeyboard(whyNot);
    } else if (wanted == "uinput" || Behind("uinput:", wish) != nullptr) {
        const char* layout = Behind("uinput:", wish);
        made = MakeUinputKeyboard(layout != nullptr ? layout : "", whyNot);
    } else {
        whyNot = "VANTREL_KEYBOARD is none of wayland, xtest, uinput, uinput:LAYOUT, trace:FILE, none";
    }
    if (!made) {
        return None(whyNot);
    }
    return Tell(std::move(made), wish, asked);
}

Made BySession() {
    const bool wayland = IsSet("WAYLAND_DISPLAY");
    std::string noWayland, noKernel;
    if (wayland) {
        if (auto made = MakeWaylandKeyboard(noWayland)) {
            return Tell(std::move(made), "wayland", "the Wayland session takes virtual keyboards");
        }
        // X keys would reach X programs alone there.
        if (auto made = MakeUinputKeyboard("", noKernel)) {
            return Tell(std::move(made), "uinput", noWayland);
        }
    }
    if (IsSet("DISPLAY")) {
        if (auto made = MakeXtestKeyboard()) {
            return Tell(
                std::move(made), "xtest",
                wayland ? noWayland + "; " + noKernel + "; only X programs get them" : "DISPLAY is set");
        }
    }
    if (!wayland) {
        if (auto made = MakeUinputKeyboard("", noKernel)) {
            return Tell(std::move(made), "uinput", "there is no display");
        }
    }
    return None((wayland ? noWayland : "no usable display") + "; " + noKernel);
}

}  // namespace

std::unique_ptr<KeyboardBackend> ChooseKeyboard() {
    return IsSet("VANTREL_KEYBOARD") ? ByWish(std::getenv("VANTREL_KEYBOARD")) : BySession();
}

}  // namespace layer

KeysGoTo WhoTakesKeys() {
    return layer::Chosen;
}
