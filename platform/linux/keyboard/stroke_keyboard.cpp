#include "platform/linux/keyboard/stroke_keyboard.h"

#include <linux/input-event-codes.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <cstdlib>
#include <thread>

#include "platform/keyboard.h"
#include "platform/linux/keyboard/us_keyboard.h"

namespace layer {

namespace {

constexpr xkb_keycode_t FirstCode = 8;  // a key map counts from here, the kernel from 0

struct DeadKey {
    xkb_keysym_t symbol, dead;
};
constexpr DeadKey DeadKeys[] = {
    {XKB_KEY_asciicircum, XKB_KEY_dead_circumflex}, {XKB_KEY_grave, XKB_KEY_dead_grave},
    {XKB_KEY_asciitilde, XKB_KEY_dead_tilde},       {XKB_KEY_apostrophe, XKB_KEY_dead_acute},
    {XKB_KEY_quotedbl, XKB_KEY_dead_diaeresis},
};

xkb_mod_mask_t Modifier(xkb_keymap* map, const char* name) {
    const xkb_mod_index_t index = xkb_keymap_mod_get_index(map, name);
    return index != XKB_MOD_INVALID ? xkb_mod_mask_t{1} << index : 0;
}

// What the right Alt key sets, where that is the key for the third level.
xkb_mod_mask_t ThirdLevelModifier(xkb_keymap* map) {
    const std::unique_ptr<xkb_state, void (*)(xkb_state*)> state(xkb_state_new(map), xkb_state_unref);
    constexpr xkb_keycode_t RightAlt = KEY_RIGHTALT + FirstCode;
    if (!state || xkb_state_key_get_one_sym(state.get(), RightAlt) != XKB_KEY_ISO_Level3_Shift) {
        return 0;
    }
    xkb_state_update_key(state.get(), RightAlt, XKB_KEY_DOWN);
    return xkb_state_serialize_mods(state.get(), XKB_STATE_MODS_DEPRESSED);
}

}  // namespace

std::optional<LayoutKeys> LayoutKeys::Load(const std::string& layout) {
    const std::unique_ptr<xkb_context, void (*)(xkb_context*)> context(xkb_context_new(XKB_CONTEXT_NO_FLAGS),
                                                                       xkb_context_unref);
    if (!context) {
        return std::nullopt;
    }
    if (std::getenv("XKB_LOG_LEVEL") == nullptr) {
        xkb_context_set_log_level(context.get(), XKB_LOG_LEVEL_CRITICAL);
    }
    const std::size_t bracket = layout.find('(');
    const std::string name = layout.substr(0, bracket);
    std::string variant;
    if (bracket != std::string::npos && layout.ends_with(')')) {
        variant = layout.substr(bracket + 1, layout.size() - bracket - 2);
    }
    xkb_rule_names names{};
    if (!layout.empty()) {
        names.layout = name.c_str();
        names.variant = variant.c_str();
        names.options = "";
    }
    LayoutKeys keys;
    if (xkb_keymap* map = xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS)) {
        keys.map_ = std::shared_ptr<xkb_keymap>(map, xkb_keymap_unref);
    }
    if (!keys.map_) {
        return std::nullopt;
    }
    keys.FillTable(false);
    keys.FillTable(true);
    return keys;
}

// The first key that gives a symbol counts, and those come first that need nothing held down.
void LayoutKeys::FillTable(bool capsLock) {
    xkb_keymap* map = map_.get();
    const std::unique_ptr<xkb_state, void (*)(xkb_state*)> state(xkb_state_new(map), xkb_state_unref);
    if (!state) {
        return;
    }
    const xkb_mod_mask_t shift = Modifier(map, XKB_MOD_NAME_SHIFT);
    const xkb_mod_mask_t lock = capsLock ? Modifier(map, XKB_MOD_NAME_CAPS) : 0;
    const xkb_mod_mask_t third = ThirdLevelModifier(map);
    const xkb_keycode_t last = std::min<xkb_keycode_t>(xkb_keymap_max_keycode(map), FirstCode + KEY_MICMUTE);
    for (const xkb_mod_mask_t press : {xkb_mod_mask_t{0}, shift, third, third | shift}) {
        xkb_state_update_mask(state.get(), press, 0, lock, 0, 0, 0);
        for (xkb_keycode_t code = xkb_keymap_min_keycode(map); code <= last; ++code) {
            const xkb_keysym_t symbol = xkb_state_key_get_one_sym(state.get(), code);
            if (symbol == XKB_KEY_NoSymbol || code <= FirstCode) {
                continue;
            }
            const LayoutKey key{static_cast<unsigned short>(code - FirstCode), (press & shift) != 0,
                                third != 0 && (press & third) != 0};
            tables_[capsLock].try_emplace(symbol, key);
        }
    }
}

LayoutStroke LayoutKeys::ForSymbol(unsigned symbol, const Table& table) const {
    if (const auto found = table.find(symbol); found != table.end()) {
        return {{found->second, {}}, 1};
    }
    for (const DeadKey& key : DeadKeys) {
        const auto dead = table.find(key.dead);
        if (key.symbol == symbol && dead != table.end()) {
            return {{dead->second, {KEY_SPACE, false, false}}, 2};
        }
    }
    return {};
}

LayoutStroke LayoutKeys::For(BYTE virtualKey, bool shift, bool capsLock) const {
    const KeyMeaning meaning = MeaningOf(virtualKey, shift);
    if (meaning.symbol == NoSymbol) {
        return {};
    }
    LayoutStroke stroke = ForSymbol(static_cast<unsigned>(meaning.symbol), tables_[capsLock]);
    if (stroke.Count == 0 && meaning.substitute != NoSymbol) {
        stroke = ForSymbol(static_cast<unsigned>(meaning.substitute), tables_[capsLock]);
    }
    if (!meaning.isCharacter && shift) {
        stroke.Keys[0].Shift = true;
    }
    return stroke;
}

std::string LayoutKeys::Missing() const {
    std::string missing;
    for (unsigned key = 0; key < 256; ++key) {
        for (const bool shift : {false, true}) {
            const KeyMeaning meaning = MeaningOf(static_cast<BYTE>(key), shift);
            if (!meaning.isCharacter || For(static_cast<BYTE>(key), shift, false).Count != 0) {
                continue;
            }
            char character[8] = {};
            xkb_keysym_to_utf8(static_cast<xkb_keysym_t>(meaning.symbol), character, sizeof character);
            missing += (missing.empty() ? "" : " ") + std::string(character);
        }
    }
    return missing;
}

std::string LayoutKeys::Text() const {
    const std::unique_ptr<char, void (*)(void*)> text(
        xkb_keymap_get_as_string(map_.get(), XKB_KEYMAP_FORMAT_TEXT_V1), std::free);
    return text ? text.get() : "";
}

void StrokeKeyboard::WaitForRoom() {
    paidUntil_ = std::max(paidUntil_, Clock::now()) + rate_.Pause;
    std::this_thread::sleep_until(paidUntil_ - rate_.Burst * rate_.Pause);
}

void StrokeKeyboard::Key(BYTE key, bool up) {
    if (key == VK_SHIFT) {
        shift_ = !up;
    }
    if (key == VK_SHIFT || up || !Ready()) {
        return;
    }
    const LayoutStroke stroke = keys_.For(key, shift_, CapsLock());
    for (const LayoutKey& part : stroke.All()) {
        WaitForRoom();
        Press(part);
    }
}

}  // namespace layer
