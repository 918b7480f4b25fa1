#include "tests/platform/x_client.h"

#include <X11/XKBlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XInput.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <poll.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace {

constexpr int LongestWait = 3000;
constexpr int QuietTime = 100;  // milliseconds after which nothing more is expected

bool WaitForEvent(Display* display, int milliseconds) {
    if (XPending(display) > 0)
        return true;
    pollfd file{ConnectionNumber(display), POLLIN, 0};
    return poll(&file, 1, milliseconds) > 0 && XPending(display) > 0;
}

}  // namespace

XClient::XClient() : display_(XOpenDisplay(nullptr)) {
    if (display_ == nullptr)
        throw std::runtime_error("no display");
    window_ = XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 0, 50, 50, 0, 0, 0);
    XSelectInput(display_, window_, KeyPressMask | StructureNotifyMask);
    XMapWindow(display_, window_);
    XEvent event;
    do {
        XNextEvent(display_, &event);
    } while (event.type != MapNotify);
    XSetInputFocus(display_, window_, RevertToParent, CurrentTime);
    XSync(display_, False);
    int count = 0;
    XDeviceInfo* devices = XListInputDevices(display_, &count);
    for (int i = 0; i < count; ++i) {
        if (devices[i].use == IsXExtensionKeyboard && std::strstr(devices[i].name, "XTEST") == nullptr)
            keyboard_ = XOpenDevice(display_, devices[i].id);
    }
    XFreeDeviceList(devices);
    if (keyboard_ == nullptr)
        throw std::runtime_error("no real keyboard");
}

XClient::~XClient() {
    XCloseDevice(display_, static_cast<XDevice*>(keyboard_));
    XCloseDisplay(display_);
}

std::string XClient::Typed(std::size_t count) {
    std::string text;
    std::size_t keys = 0;
    while (WaitForEvent(display_, keys < count ? LongestWait : QuietTime)) {
        XEvent event;
        XNextEvent(display_, &event);
        if (event.type == MappingNotify)
            XRefreshKeyboardMapping(&event.xmapping);
        if (event.type != KeyPress)
            continue;
        char buffer[16] = {};
        KeySym symbol = NoSymbol;
        const int length = XLookupString(&event.xkey, buffer, sizeof buffer, &symbol, nullptr);
        if (IsModifierKey(symbol))
            continue;
        ++keys;
        if (event.xkey.state & ControlMask)
            text += "^";
        if (event.xkey.state & (Mod1Mask | Mod4Mask))
            text += "!";
        const bool graphic = length == 1 && (buffer[0] >= ' ' || buffer[0] == '\r') && buffer[0] != 0x7F;
        const char* name = XKeysymToString(symbol);
        text += graphic ? std::string(buffer, 1)
                        : "<" + std::string(name != nullptr ? name : "?") +
                              (event.xkey.state & ShiftMask ? "+Shift>" : ">");
    }
    return text;
}

bool XClient::Await(std::size_t count) {
    while (count > 0) {
        if (!WaitForEvent(display_, LongestWait))
            return false;
        XEvent event;
        XNextEvent(display_, &event);
        KeySym symbol = NoSymbol;
        if (event.type == KeyPress && (symbol = XLookupKeysym(&event.xkey, 0), !IsModifierKey(symbol)))
            --count;
    }
    return true;
}

void XClient::Press(KeySym key, bool down, bool real) {
    const KeyCode code = XKeysymToKeycode(display_, key);
    if (real)
        XTestFakeDeviceKeyEvent(display_, static_cast<XDevice*>(keyboard_), code, down, nullptr, 0,
                                CurrentTime);
    else
        XTestFakeKeyEvent(display_, code, down, CurrentTime);
    XSync(display_, False);
}

void XClient::Tap(KeySym key) {
    Hold(key);
    LetGo(key);
}

void XClient::Lock(unsigned group, unsigned modifiers, unsigned latched) {
    XkbLockGroup(display_, XkbUseCoreKbd, group);
    XkbLockModifiers(display_, XkbUseCoreKbd, 0xFF, modifiers);
    XkbLatchModifiers(display_, XkbUseCoreKbd, 0xFF, latched);
    XSync(display_, False);
}

unsigned XClient::Modifiers() const {
    XkbStateRec state{};
    XkbGetState(display_, XkbUseCoreKbd, &state);
    return state.mods;
}

unsigned XClient::LockedModifiers() const {
    XkbStateRec state{};
    XkbGetState(display_, XkbUseCoreKbd, &state);
    return state.locked_mods;
}

bool XClient::AnyKeyDown() const {
    char keys[32] = {};
    XQueryKeymap(display_, keys);
    return std::any_of(std::begin(keys), std::end(keys), [](char bits) { return bits != 0; });
}

bool XClient::IsDown(KeySym key) const {
    char keys[32] = {};
    XQueryKeymap(display_, keys);
    const KeyCode code = XKeysymToKeycode(display_, key);
    return (keys[code / 8] >> (code % 8) & 1) != 0;
}
