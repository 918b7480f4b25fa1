// Shorthand in which the field tables are written.
#pragma once

#include "settings/field.h"

namespace describe {

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
    for (SettingPlace& place : setting.Places)
        place.Limits = limits;
}

}  // namespace describe
