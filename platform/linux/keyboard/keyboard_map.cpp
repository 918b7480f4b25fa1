#include "platform/linux/keyboard/keyboard_map.h"

#include <X11/Xutil.h>
#include <X11/extensions/XInput.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <cstring>

namespace layer {
namespace {

KeySym FirstSymbol(XkbDescPtr map, KeyCode key) {
    return XkbKeyNumGroups(map, key) > 0 ? XkbKeySymEntry(map, key, 0, 0) : NoSymbol;
}

// The modifier of the key for the third level (AltGr).
unsigned ThirdLevelModifier(XkbDescPtr map) {
    for (int key = map->min_key_code; key <= map->max_key_code; ++key) {
        const auto code = static_cast<KeyCode>(key);
        if (FirstSymbol(map, code) == XK_ISO_Level3_Shift && map->map->modmap[key] != 0) {
            return map->map->modmap[key];
        }
    }
    return 0;
}

// What a client makes of the key: the map's symbol, and its capital when Caps Lock is on and the key's type
// did not use it up.
bool Gives(XkbDescPtr map, KeyCode key, unsigned modifiers, int group, KeySym symbol) {
    unsigned used = 0;
    KeySym found = NoSymbol;
    if (!XkbTranslateKeyCode(map, key, XkbBuildCoreState(modifiers, group), &used, &found)) {
        return false;
    }
    if ((modifiers & LockMask & ~used) != 0) {
        KeySym lower = found, upper = found;
        XConvertCase(found, &lower, &upper);
        found = upper;
    }
    return found == symbol;
}

bool IsXtest(const XDeviceInfo& device) {
    return device.name != nullptr && std::strstr(device.name, "XTEST keyboard") != nullptr;
}

bool BitSet(const char* bits, KeyCode key) {
    return (static_cast<unsigned char>(bits[key / 8]) >> (key % 8) & 1) != 0;
}

bool DownOn(Display* display, XID id, KeyCode key) {
    XDevice* device = XOpenDevice(display, id);
    if (device == nullptr) {
        return false;
    }
    bool down = false;
    if (XDeviceState* state = XQueryDeviceState(display, device)) {
        const char* next = reinterpret_cast<const char*>(state->data);
        for (int i = 0; i < state->num_classes; ++i) {
            const auto* input = reinterpret_cast<const XInputClass*>(next);
            if (input->c_class == KeyClass) {
                down |= BitSet(reinterpret_cast<const XKeyStatus*>(input)->keys, key);
            }
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
        if (devices[i].use == IsXExtensionKeyboard && !IsXtest(devices[i])) {
            down = DownOn(display, devices[i].id, key);
        }
    }
    if (devices != nullptr) {
        XFreeDeviceList(devices);
    }
    return down;
}

}  // namespace

bool FindKey(XkbDescPtr map, KeySym symbol, unsigned locked, int group, KeyChoice& choice) {
    const unsigned third = ThirdLevelModifier(map);
    const unsigned lockChoices[] = {locked, locked & ~static_cast<unsigned>(LockMask), 0};
    const unsigned pressChoices[] = {0, ShiftMask, third, third | ShiftMask};
    for (const unsigned locks : lockChoices) {
        for (const unsigned press : pressChoices) {
            for (int key = map->min_key_code; key <= map->max_key_code; ++key) {
                const auto code = static_cast<KeyCode>(key);
                if (Gives(map, code, locks | press, group, symbol)) {
                    choice = {code, press, locks};
                    return true;
                }
            }
        }
    }
    return false;
}

KeyCode ModifierKey(XkbDescPtr map, unsigned modifier) {
    for (int key = map->min_key_code; key <= map->max_key_code; ++key) {
        const auto code = static_cast<KeyCode>(key);
        if (HeldModifier(map, code) == modifier) {
            return code;
        }
    }
    return 0;
}

unsigned HeldModifier(XkbDescPtr map, KeyCode key) {
    switch (FirstSymbol(map, key)) {
        case NoSymbol:
        case XK_Caps_Lock:
        case XK_Shift_Lock:
        case XK_Num_Lock:
        case XK_Scroll_Lock:
        case XK_ISO_Level3_Lock:
        case XK_ISO_Level5_Lock:
            return 0;
        default:
            return map->map->modmap[key];
    }
}

KeyCode SpareKey(XkbDescPtr map, const bool (&taken)[256]) {
    for (int key = map->max_key_code; key >= map->min_key_code; --key) {
        const auto code = static_cast<KeyCode>(key);
        if (taken[key] || map->map->modmap[key] != 0) {
            continue;
        }
        bool empty = true;
        for (int i = 0; i < XkbKeyNumSyms(map, code); ++i) {
            empty &= XkbKeySymsPtr(map, code)[i] == NoSymbol;
        }
        if (empty) {
            return code;
        }
    }
    return 0;
}

SpareType TypeForSpareKeys(XkbDescPtr map) {
    const unsigned third = ThirdLevelModifier(map);
    for (int i = 0; third != 0 && i < map->map->num_types; ++i) {
        const XkbKeyTypeRec& type = map->map->types[i];
        if (type.num_levels != MaxLevels || type.mods.mask != (ShiftMask | third)) {
            continue;
        }
        bool fits = true;
        for (int k = 0; k < type.map_count; ++k) {
            const XkbKTMapEntryRec& entry = type.map[k];
            const unsigned level =
                (entry.mods.mask & ShiftMask ? 1u : 0u) + (entry.mods.mask & third ? 2u : 0u);
            fits &= !entry.active || entry.level == level;
        }
        if (fits) {
            return {i, MaxLevels};
        }
    }
    return {XkbTwoLevelIndex, 2};
}

void GiveSymbols(Display* display, XkbDescPtr map, KeyCode key, const SpareType& type,
                 const KeySym (&symbols)[MaxLevels]) {
    int types[XkbNumKbdGroups] = {type.type, type.type, type.type, type.type};
    if (XkbChangeTypesOfKey(map, key, 1, XkbGroup1Mask, types, nullptr) != Success) {
        return;
    }
    for (int level = 0; level < type.levels; ++level) {
        XkbKeySymsPtr(map, key)[level] = symbols[level];
    }
    XkbMapChangesRec changes{};
    changes.changed = XkbKeySymsMask;
    changes.first_key_sym = key;
    changes.num_key_syms = 1;
    map->device_spec = XkbUseCoreKbd;
    XkbChangeMap(display, map, &changes);
}

unsigned XtestDevice(Display* display) {
    unsigned found = XkbUseCoreKbd;
    int count = 0;
    XDeviceInfo* devices = XListInputDevices(display, &count);
    for (int i = 0; i < count; ++i) {
        if (devices[i].use == IsXExtensionKeyboard && IsXtest(devices[i])) {
            found = static_cast<unsigned>(devices[i].id);
        }
    }
    if (devices != nullptr) {
        XFreeDeviceList(devices);
    }
    return found;
}

void PressSynthetic(Display* display, KeyCode key) {
    XTestFakeKeyEvent(display, key, False, CurrentTime);
    XTestFakeKeyEvent(display, key, True, CurrentTime);
}

HeldKeys::HeldKeys(Display* display, XkbDescPtr map) : display_(display) {
    char down[32] = {};
    XQueryKeymap(display, down);
    for (int key = map->min_key_code; key <= map->max_key_code && key < 256 && count_ < Most; ++key) {
        const auto code = static_cast<KeyCode>(key);
        if (!BitSet(down, code) || HeldModifier(map, code) == 0) {
            continue;
        }
        keys_[count_] = code;
        real_[count_] = DownOnRealKeyboard(display, code);
        ++count_;
    }
}

void HeldKeys::Release() const {
    for (int i = 0; i < count_; ++i) {
        XTestFakeKeyEvent(display_, keys_[i], False, CurrentTime);
    }
}

void HeldKeys::Restore(std::bitset<256>& again) const {
    for (int i = 0; i < count_; ++i) {
        if (real_[i] && !DownOnRealKeyboard(display_, keys_[i])) {
            continue;
        }
        PressSynthetic(display_, keys_[i]);
        again.set(keys_[i], real_[i]);
        // Let go of between the question and the answer: then nobody else would ever release it.
        if (real_[i] && !DownOnRealKeyboard(display_, keys_[i])) {
            XTestFakeKeyEvent(display_, keys_[i], False, CurrentTime);
        }
    }
}

void HeldKeys::Forget(Display* display, std::bitset<256>& again) {
    for (unsigned key = 0; again.any() && key < again.size(); ++key) {
        const auto code = static_cast<KeyCode>(key);
        if (!again.test(key) || DownOnRealKeyboard(display, code)) {
            continue;
        }
        XTestFakeKeyEvent(display, code, False, CurrentTime);
        again.reset(key);
    }
}

}  // namespace layer
