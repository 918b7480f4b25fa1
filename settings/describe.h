// Shorthand in which the field tables are written.
#pragma once

#include "settings/field.h"

// Declares a field. Its name is also its name in settings files in text form and for vantrel-settings: once
// people have such files it stays, whatever becomes of the label.
#define SETTING(name, ...) inline constexpr Setting name = describe::Named(#name, __VA_ARGS__)

namespace describe {

constexpr Setting Named(const char* name, Setting setting) {
    setting.Name = name;
    return setting;
}
// A field that settings files have only since this version: SETTING(Name, NewIn(1, 2, Toggle(...))).
constexpr Setting NewIn(WORD major, WORD minor, Setting setting) {
    setting.Since = FileVersion(major, minor);
    return setting;
}

constexpr ReaderParameter Parameter(BYTE number, BYTE replaced = 0, BYTE replacedBy = 0) {
    return {number, false, replaced, replacedBy};
}
constexpr ReaderParameter Extended(BYTE number, BYTE replaced = 0, BYTE replacedBy = 0) {
    return {number, true, replaced, replacedBy};
}

using Places = std::array<SettingPlace, ReaderTypes>;

constexpr SettingPlace Place(WORD word, WORD value, SettingLimits limits) {
    return word == NoWord ? SettingPlace{} : SettingPlace{word, true, value, limits};
}
// A word that a reader's layout has and that no reset touches.
constexpr SettingPlace PlaceWithoutDefault(WORD word, SettingLimits limits = {}) {
    return {word, false, 0, limits};
}

constexpr void SetLimits(Setting& setting, SettingLimits limits) {
    for (SettingPlace& place : setting.Places) {
        place.Limits = limits;
    }
}

}  // namespace describe
