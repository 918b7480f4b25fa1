#include "ui/item_display.h"

#include "platform/base.h"
#include "resources/resource.h"
#include "settings/catalogue.h"
#include "shell/shell_state.h"
#include "ui/item_value.h"

namespace {

constexpr LPCWSTR Separator = TEXT(" :  ");
constexpr int MaxValue = 12;   // of a toggle's text, with its zero
constexpr int MaxChoice = 80;  // of a choice's text, with its zero

template <std::size_t Size>
void LoadText(UINT id, WCHAR (&text)[Size]) {
    text[0] = 0;
    if (id != 0) {
        LoadStringW(ShellState.Instance, id, text, static_cast<int>(Size));
    }
}

int KindOf(DWORD pageBase, DWORD itemId) {
    if (pageBase != Page1D) {
        return ItemKind(0, itemId);
    }
    const ItemPosition position = SplitItemId(pageBase, itemId);
    return ItemKind(position.Group, position.Index);
}

void AppendToggle(DWORD pageBase, DWORD itemId, ItemDisplay& display) {
    const WORD value = display.Value.Word;
    display.Image = value == '1' ? ItemImage::SwitchOn : ItemImage::SwitchOff;
    const DWORD asked = pageBase == Page1D ? SplitItemId(pageBase, itemId).Index : itemId;
    WCHAR text[MaxValue];
    LoadText(ToggleTextId(pageBase, asked, value), text);
    lstrcatW(display.Text, text);
}

void AppendNumber(DWORD pageBase, DWORD itemId, ItemDisplay& display) {
    display.Image = ItemImage::Number;
    LPWSTR end = display.Text + lstrlenW(display.Text);
    const int number = display.Value.Word;
    switch (ItemUnit(pageBase, itemId)) {
        case NumberUnit::Seconds:
            wsprintfW(end, TEXT("%d  sec."), number);
            break;
        case NumberUnit::TenthsOfSecond:
            wsprintfW(end, TEXT("  %d.%d  sec."), number / 10, number % 10);
            break;
        case NumberUnit::None:
            wsprintfW(end, TEXT("%d"), number);
            break;
    }
}

void AppendText(ItemDisplay& display) {
    display.Image = ItemImage::Text;
    const ItemBuffer& text = display.Value.Text;
    if (text[0] == 0) {
        lstrcatW(display.Text, TEXT("<NULL>"));
    } else {
        LPWSTR end = display.Text + lstrlenW(display.Text);
        lstrcpynW(end, text.data(), static_cast<int>(text.size()));
    }
}

// The barcode reader among the active devices is called by its type.
UINT ReaderTypeText() {
    if (HasBarcodeReader()) {
        return IDS_CHOICE_READER_TYPE + static_cast<UINT>(FittedReader()) - 1;
    }
    return IDS_CHOICE_ACTIVE_DEVICE;
}

}  // namespace

void GetItemLabel(DWORD pageBase, DWORD itemId, WCHAR (&label)[MaxLabel + 1]) {
    LoadText(ItemLabelId(pageBase, itemId), label);
}

bool IsBitSet(DWORD pageBase, DWORD itemId) {
    const Setting* setting = FindSetting(pageBase, itemId);
    return setting && setting->Encoding == SettingEncoding::BitSet;
}

ItemDisplay GetItemDisplay(DWORD pageBase, DWORD itemId) {
    ItemDisplay display;
    WCHAR label[MaxLabel + 1];
    GetItemLabel(pageBase, itemId, label);
    lstrcpyW(display.Text, label);
    display.Value = ReadItem(pageBase, itemId);
    const int kind = KindOf(pageBase, itemId);
    if (kind != KindList) {
        lstrcatW(display.Text, Separator);
    }
    switch (kind) {
        case KindToggle:
            AppendToggle(pageBase, itemId, display);
            break;
        case KindNumber:
            AppendNumber(pageBase, itemId, display);
            break;
        case KindText:
            AppendText(display);
            break;
        default:
            display.Image = ItemImage::List;
            display.ChoiceCount = ItemChoiceCount(pageBase, itemId);
            break;
    }
    return display;
}

int InsertChoiceItems(DWORD pageBase, HWND tree, HTREEITEM list, DWORD itemId, WORD choices) {
    const int value = ReadChoice(pageBase, itemId);
    const UINT firstText = ItemChoiceBase(pageBase, itemId);
    const bool bitSet = IsBitSet(pageBase, itemId);
    for (int i = 0; i < choices; ++i) {
        const UINT id = firstText + static_cast<UINT>(i);
        WCHAR text[MaxChoice];
        LoadText(id == IDS_CHOICE_ACTIVE_DEVICE ? ReaderTypeText() : id, text);
        TreeItem choice;
        if (bitSet) {
            choice.Image = (value >> i) & 1 ? ItemImage::SwitchOn : ItemImage::SwitchOff;
            choice.Parameter = id;
        } else {
            choice.Image = i == value ? ItemImage::ChosenChoice : ItemImage::Choice;
            choice.Parameter = static_cast<DWORD>(i);
        }
        if (!InsertItem(tree, list, TVI_LAST, text, choice, false)) {
            return 0;
        }
    }
    return 1;
}
