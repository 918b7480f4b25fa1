#include "settings/catalogue.h"

#include "resources/resource.h"
#include "settings/general_fields.h"
#include "settings/pages.h"

namespace {

constexpr DWORD SetDigit = 1;
constexpr DWORD GetDigit = 2;
constexpr DWORD LastIndex = 24;  // of the 1D reader's options

bool IsSymbologyPage(DWORD pageBase) {
    return LayoutOn(pageBase) != nullptr;
}

std::span<const SettingGroup> GroupsOf(DWORD pageBase) {
    const ReaderLayout* layout = LayoutOn(pageBase);
    return layout ? layout->Catalogue : std::span<const SettingGroup>{};
}

const SettingGroup* FindGroup(DWORD pageBase, DWORD groupId) {
    for (const SettingGroup& group : GroupsOf(pageBase)) {
        if (group.Id == groupId) {
            return &group;
        }
    }
    return nullptr;
}

const Setting* FindIn(SettingList list, DWORD itemId) {
    for (const Setting* setting : list) {
        if (setting->ItemId == itemId) {
            return setting;
        }
    }
    return nullptr;
}

const Setting* FindGeneral(DWORD itemId) {
    const Setting* found = nullptr;
    ForEachGeneralField([&](const Setting& setting) {
        if (setting.ItemId == itemId) {
            found = &setting;
        }
    });
    return found;
}

// An option of the 1D reader with this index, of whichever symbology: all of them look alike.
const Setting* FindIndex(DWORD index) {
    for (const SettingGroup& group : GroupsOf(Page1D)) {
        if (index == 0) {
            return group.Switch.front();
        }
        for (const Setting* setting : group.Items) {
            if (setting->ItemId % 100 == index) {
                return setting;
            }
        }
    }
    return nullptr;
}

// What an item looks like. On page 10 a number that its symbology lacks looks like the same one of another.
const Setting* FindLook(DWORD pageBase, DWORD itemId) {
    const Setting* setting = FindSetting(pageBase, itemId);
    if (setting || pageBase != Page1D) {
        return setting;
    }
    const ItemPosition position = SplitItemId(pageBase, itemId);
    return FindGroup(pageBase, position.Group) ? FindIndex(position.Index) : nullptr;
}

bool ShowsRange(const Setting& setting, DWORD pageBase) {
    if (!setting.LengthMode) {
        return false;
    }
    const Relaxed<WORD>* mode = WordOf(*setting.LengthMode, PageReader(pageBase));
    return mode && *mode == RangeMode(*setting.LengthMode);
}

int KindOf(const Setting& setting) {
    switch (setting.Encoding) {
        case SettingEncoding::Toggle:
            return KindToggle;
        case SettingEncoding::Number:
            return KindNumber;
        case SettingEncoding::Text:
        case SettingEncoding::Character:
            return KindText;
        case SettingEncoding::List:
        case SettingEncoding::BitSet:
            break;
    }
    return KindList;
}

bool IsList(const Setting& setting) {
    return KindOf(setting) == KindList;
}

void GetItem(const Setting& setting, const Relaxed<WORD>& word, DWORD* status, std::span<WCHAR> value) {
    if (setting.Encoding == SettingEncoding::Text) {
        GetText(setting, value);
        return;
    }
    value[0] = static_cast<WCHAR>(WORD{word});
    if (setting.Encoding == SettingEncoding::Number && !setting.ShortNumber) {
        value[1] = 0;
        if (status) {
            *status = 4;
        }
    }
}

void SetItem(const Setting& setting, Relaxed<WORD>& word, std::span<const WCHAR> value) {
    if (setting.Encoding == SettingEncoding::Text) {
        SetText(setting, value);
        return;
    }
    word = static_cast<WORD>(value[0]);
    if ((&setting == &general::GoodReadBeep || &setting == &general::WarningBeep) && PreviewSound) {
        PreviewSound(value[0] - '0');
    }
}

DWORD TextSize(std::span<const WCHAR> text) {
    DWORD length = 0;
    while (length < text.size() && text[length] != 0) {
        ++length;
    }
    return 2 * length;
}

}  // namespace

void (*PreviewSound)(int);

DWORD MakePageCode(DWORD pageBase, int forSet) {
    return (IsSymbologyPage(pageBase) ? pageBase : PageGeneral) + (forSet ? SetDigit : GetDigit);
}

ItemPosition SplitItemId(DWORD pageBase, DWORD itemId) {
    if (pageBase == Page1D) {
        return {itemId / 100 * 100, itemId % 100};
    }
    return {itemId & 0xFF00, itemId & 0xFF};
}

ReaderType PageReader(DWORD pageBase) {
    if (const ReaderLayout* layout = LayoutOn(pageBase)) {
        return layout->Type;
    }
    // The laser's timeouts lie at words of their own, whatever else is fitted.
    return DeviceFlags & DeviceLaser ? ReaderType::LongRangeLaser : FittedReader();
}

const Setting* FindSetting(DWORD pageBase, DWORD itemId) {
    if (pageBase == PageGeneral) {
        return FindGeneral(itemId);
    }
    const SettingGroup* group = FindGroup(pageBase, SplitItemId(pageBase, itemId).Group);
    if (!group) {
        return nullptr;
    }
    const Setting* setting = FindIn(group->Switch, itemId);
    return setting ? setting : FindIn(group->Items, itemId);
}

LengthItems FindLengthItems(DWORD pageBase, DWORD itemId) {
    LengthItems items;
    if (const SettingGroup* group = FindGroup(pageBase, SplitItemId(pageBase, itemId).Group)) {
        for (const Setting* setting : group->Items) {
            if (!setting->LengthMode) {
                continue;
            }
            items.Mode = setting->LengthMode;
            (items.First ? items.Second : items.First) = setting;
        }
    }
    return items;
}

DWORD AccessSettingItem(DWORD pageCode, DWORD itemId, DWORD* status, std::span<WCHAR, TextWords> value) {
    const DWORD operation = pageCode % 10;
    const DWORD pageBase = pageCode - operation;
    const bool get = operation == GetDigit;
    if (get && status && (IsSymbologyPage(pageBase) || pageBase == PageGeneral)) {
        *status = 1;
    }
    if (get || operation == SetDigit) {
        const Setting* setting = FindSetting(pageBase, itemId);
        Relaxed<WORD>* word = setting ? WordOf(*setting, PageReader(pageBase)) : nullptr;
        if (word && get) {
            GetItem(*setting, *word, status, value);
        } else if (word) {
            SetItem(*setting, *word, value);
        }
    }
    if (!status) {
        return 0;
    }
    return *status != 1 ? 4 : TextSize(value);
}

WORD ItemLabelId(DWORD pageBase, DWORD itemId) {
    const ItemPosition position = SplitItemId(pageBase, itemId);
    if (const SettingGroup* group = FindGroup(pageBase, position.Group)) {
        const bool whole = position.Group + position.Index == itemId;
        if ((whole && position.Index == 0) || (pageBase == Page1D && position.Index > LastIndex)) {
            return group->Label;
        }
    }
    const Setting* setting = FindLook(pageBase, itemId);
    if (!setting) {
        return 0;
    }
    // A look borrowed from another symbology does not follow that one's length mode.
    return setting->ItemId == itemId && ShowsRange(*setting, pageBase) ? setting->RangeLabel : setting->Label;
}

int ItemKind(DWORD, DWORD itemOrIndex) {
    const Setting* setting = itemOrIndex <= LastIndex ? FindIndex(itemOrIndex) : FindGeneral(itemOrIndex);
    if (!setting) {
        setting = FindSetting(PageImager, itemOrIndex);
    }
    return setting ? KindOf(*setting) : KindList;
}

WORD ItemChoiceBase(DWORD pageBase, DWORD itemId) {
    const Setting* setting = FindLook(pageBase, itemId);
    if (!setting || !IsList(*setting)) {
        return 0;
    }
    const bool onlyRfid = setting == &general::ActiveDevice && HasRfidReader() && !HasBarcodeReader();
    return static_cast<WORD>(setting->TextBase + (onlyRfid ? 1 : 0));
}

WORD ItemChoiceCount(DWORD pageBase, DWORD itemId) {
    const Setting* setting = FindLook(pageBase, itemId);
    if (!setting || !IsList(*setting)) {
        return 0;
    }
    if (setting == &general::ActiveDevice && !(HasBarcodeReader() && HasRfidReader())) {
        return 1;
    }
    return setting->ChoiceCount;
}

WORD ToggleTextId(DWORD pageBase, DWORD itemOrIndex, WORD value) {
    const Setting* setting = pageBase == Page1D ? FindIndex(SplitItemId(pageBase, itemOrIndex).Index)
                                                : FindSetting(pageBase, itemOrIndex);
    if (!setting || setting->Encoding != SettingEncoding::Toggle) {
        return 0;
    }
    return static_cast<WORD>(setting->TextBase + value);
}

std::span<const WORD> GroupItems(DWORD pageBase, DWORD groupId) {
    const SettingGroup* group = FindGroup(pageBase, groupId);
    return group ? group->ItemIds : std::span<const WORD>{};
}
