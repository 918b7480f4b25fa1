#include "ui/item_value.h"

#include <algorithm>
#include <cstring>

#include "settings/catalogue.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD DoubleWord = 4;

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

ItemValue ReadItem(DWORD pageBase, DWORD itemId) {
    ItemValue value;
    DWORD status = 0;
    AccessSettingItem(MakePageCode(pageBase, 0), itemId, &status, value.Text);
    if (status == DoubleWord) {
        DWORD number = 0;
        std::memcpy(&number, value.Text.data(), sizeof number);
        value.Word = static_cast<WORD>(number);
    } else {
        value.Word = static_cast<WORD>(value.Text[0]);
    }
    return value;
}

WORD ReadItemWord(DWORD pageBase, DWORD itemId) {
    return ReadItem(pageBase, itemId).Word;
}

void WriteItemWord(DWORD pageBase, DWORD itemId, WORD value) {
    ItemBuffer buffer{};
    buffer[0] = static_cast<WCHAR>(value);
    AccessSettingItem(MakePageCode(pageBase, 1), itemId, nullptr, buffer);
}

void WriteItemText(DWORD pageBase, DWORD itemId, const WCHAR (&text)[TextWords]) {
    ItemBuffer buffer{};
    std::copy_n(text, TextWords - 1, buffer.begin());
    AccessSettingItem(MakePageCode(pageBase, 1), itemId, nullptr, buffer);
}

int ReadChoice(DWORD pageBase, DWORD itemId) {
    return ReadItemWord(pageBase, itemId) - '0';
}

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
