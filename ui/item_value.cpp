#include "ui/item_value.h"

#include <algorithm>
#include <cstring>

#include "resources/resource.h"
#include "settings/catalogue.h"
#include "settings/engine_fields.h"
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

// The modes of the packet readers, by the number of lengths that count.
constexpr int OneLength = 1;
constexpr int TwoLengths = 2;

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

LengthPair GetLengthPair(DWORD pageBase, DWORD itemId) {
    const LengthItems items = FindLengthItems(pageBase, itemId);
    if (!items.First || !items.Second) {
        return {};
    }
    return {items.First->ItemId, items.Second->ItemId};
}

int IsLengthRange(DWORD pageBase, DWORD itemId) {
    const LengthItems items = FindLengthItems(pageBase, itemId);
    return items.Mode && ReadItemWord(pageBase, items.Mode->ItemId) == RangeMode(*items.Mode) ? 1 : 0;
}

int IsLengthItemVisible(DWORD pageBase, DWORD itemId) {
    // The 1D reader keeps both lengths in every mode, the general page has none.
    if (pageBase != PageLaser && pageBase != PageImager) {
        return 1;
    }
    const LengthItems items = FindLengthItems(pageBase, itemId);
    if (!items.Mode) {
        return 1;
    }
    const int mode = ReadChoice(pageBase, items.Mode->ItemId);
    if (itemId == items.First->ItemId) {
        return mode >= OneLength ? 1 : 0;
    }
    if (itemId == items.Second->ItemId) {
        return mode >= TwoLengths ? 1 : 0;
    }
    return 1;
}

bool IsLengthMode(DWORD pageBase, DWORD itemId) {
    const LengthItems items = FindLengthItems(pageBase, itemId);
    return items.Mode && items.Mode->ItemId == itemId;
}

int ChooseNumberEditor(DWORD pageBase, DWORD itemId) {
    if (pageBase == PageGeneral) {
        return IDD_NUMBER_EDITOR;
    }
    const LengthPair pair = GetLengthPair(pageBase, itemId);
    const bool isFirst = pair && itemId == pair.First;
    const bool isSecond = pair && itemId == pair.Second;
    if (pageBase == Page1D) {
        return isFirst || isSecond ? IDD_PAIR_EDITOR : IDD_NUMBER_EDITOR;
    }
    if (itemId == engine::SupplementaryRedundancy.ItemId) {
        return IDD_NUMBER_EDITOR;
    }
    if (!isFirst && !isSecond) {
        return NoEditor;
    }
    const int mode = ReadChoice(pageBase, FindLengthItems(pageBase, itemId).Mode->ItemId);
    if (mode > OneLength) {
        return IDD_PAIR_EDITOR;
    }
    return mode == OneLength && isFirst ? IDD_NUMBER_EDITOR : NoEditor;
}
