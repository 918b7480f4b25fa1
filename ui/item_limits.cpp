#include "ui/item_limits.h"

#include "settings/catalogue.h"
#include "shell/shell_state.h"

namespace {

// nullptr for an item that is unknown or neither number nor text.
const SettingLimits* LimitsOf(DWORD pageBase, DWORD itemId, ReaderType reader) {
    const Setting* setting = FindSetting(pageBase, itemId);
    if (!setting) {
        return nullptr;
    }
    const SettingLimits& limits = PlaceOf(*setting, reader).Limits;
    return limits.Maximum != 0 ? &limits : nullptr;
}

}  // namespace

void GetItemLimits(DWORD pageBase, DWORD itemId) {
    if (const SettingLimits* limits = LimitsOf(pageBase, itemId, PageReader(pageBase))) {
        ShellState.EditorMax = limits->Maximum;
        ShellState.EditorMin = limits->Minimum;
    }
}

NumberUnit ItemUnit(DWORD pageBase, DWORD itemId) {
    const ReaderType reader = pageBase == PageGeneral ? FittedReader() : PageReader(pageBase);
    const SettingLimits* limits = LimitsOf(pageBase, itemId, reader);
    return limits ? limits->Unit : NumberUnit::None;
}

int DigitsOf(int maximum) {
    if (maximum >= 100) {
        return 3;
    }
    return maximum >= 10 ? 2 : 1;
}
