#include "platform/linux/keyboard/held_keys.h"

#include <X11/extensions/XInput.h>
#include <X11/extensions/XTest.h>

#include <cstring>

#include "platform/linux/keyboard/keyboard_map.h"

namespace layer {
namespace {

bool IsXtest(const XDeviceInfo& device) {
    return device.name != nullptr && std::strstr(device.name, "XTEST keyboard") != nullptr;
}

bool BitSet(const char* bits, KeyCode key) {
    return (static_cast<unsigned char>(bits[key / 8]) >> (key % 8) & 1) != 0;
}

bool DownOn(Display* display, XID id, KeyCode key) {
    XDevice* device = XOpenDevice(display, id);
    if (device == nullptr)
        return false;
    bool down = false;
    if (XDeviceState* state = XQueryDeviceState(display, device)) {
        const char* next = reinterpret_cast<const char*>(state->data);
        for (int i = 0; i < state->num_classes; ++i) {
            const auto* input = reinterpret_cast<const XInputClass*>(next);
            if (input->c_class == KeyClass)
                down |= BitSet(reinterpret_cast<const XKeyStatus*>(input)->keys, key);
            next += input->length;
        }
        XFreeDeviceState(state);
    }
    XCloseDevice(display, device);
    return down;
}

bool DownOnRealKeyboard(Display* display, KeyCode key) {
    bool down = false;
    int count = 0;
    XDeviceInfo* devices = XListInputDevices(display, &count);
    for (int i = 0; i < count && !down; ++i) {
        if (devices[i].use == IsXExtensionKeyboard && !IsXtest(devices[i]))
            down = DownOn(display, devices[i].id, key);
    }
    if (devices != nullptr)
        XFreeDeviceList(devices);
    return down;
}

}  // namespace

unsigned XtestDevice(Display* display) {
    unsigned found = XkbUseCoreKbd;
    int count = 0;
    XDeviceInfo* devices = XListInputDevices(display, &count);
    for (int i = 0; i < count; ++i) {
        if (devices[i].use == IsXExtensionKeyboard && IsXtest(devices[i]))
            found = static_cast<unsigned>(devices[i].id);
    }
    if (devices != nullptr)
        XFreeDeviceList(devices);
    return found;
}

void PressSynthetic(Display* display, KeyCode key) {
    XTestFakeKeyEvent(display, key, False, CurrentTime);
    XTestFakeKeyEvent(display, key, True, CurrentTime);
}

HeldKeys::HeldKeys(Display* display, XkbDescPtr map, KeyCode typed) : display_(display), typed_(typed) {
    char down[32] = {};
    XQueryKeymap(display, down);
    typedDown_ = BitSet(down, typed);
    for (int key = map->min_key_code; key <= map->max_key_code && key < 256 && count_ < Most; ++key) {
        const auto code = static_cast<KeyCode>(key);
        if (!BitSet(down, code) || HeldModifier(map, code) == 0)
            continue;
        keys_[count_] = code;
        real_[count_] = DownOnRealKeyboard(display, code);
        ++count_;
    }
}

void HeldKeys::Release() const {
    for (int i = 0; i < count_; ++i)
        XTestFakeKeyEvent(display_, keys_[i], False, CurrentTime);
    if (typedDown_)
        XTestFakeKeyEvent(display_, typed_, False, CurrentTime);
}

void HeldKeys::Restore(std::bitset<256>& again) const {
    for (int i = 0; i < count_; ++i) {
        if (real_[i] && !DownOnRealKeyboard(display_, keys_[i]))
            continue;
        PressSynthetic(display_, keys_[i]);
        again.set(keys_[i], real_[i]);
        // Let go of between the question and the answer: then nobody else would ever release it.
        if (real_[i] && !DownOnRealKeyboard(display_, keys_[i]))
            XTestFakeKeyEvent(display_, keys_[i], False, CurrentTime);
    }
}

void HeldKeys::Forget(Display* display, std::bitset<256>& again) {
    for (unsigned key = 0; again.any() && key < again.size(); ++key) {
        const auto code = static_cast<KeyCode>(key);
        if (!again.test(key) || DownOnRealKeyboard(display, code))
            continue;
        XTestFakeKeyEvent(display, code, False, CurrentTime);
        again.reset(key);
    }
}

}  // namespace layer
