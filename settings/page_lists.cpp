#include <algorithm>

#include "settings/catalogue.h"
#include "settings/general_fields.h"
#include "settings/pages.h"
#include "shell/shell_state.h"

namespace {

void AddItems(DWORD& count, SettingList list) {
    for (const Setting* setting : list) {
        if (count < MaxGeneralItems) {
            GeneralItems[count++] = setting->ItemId;
        }
    }
}

}  // namespace

WORD GeneralItems[MaxGeneralItems];
Relaxed<DWORD> GeneralItemCount;
Relaxed<DWORD> SymbologyGroupCount;
Relaxed<DWORD> ImagerGroupCount;

void BuildPageLists() {
    const ReaderType type = FittedReader();
    const bool barcode = type != ReaderType::None;
    DWORD count = 0;
    AddItems(count, barcode ? OutputItems() : OutputItems().first(OutputItemsWithoutBarcode));
    AddItems(count, ReaderItems(type));
    if (HasRfidReader() || !barcode) {
        AddItems(count, RfidItems());
    }
    AddItems(count, ClosingItems());
    GeneralItemCount = count;

    if (const ReaderLayout* layout = LayoutOf(type)) {
        *layout->GroupCount = static_cast<DWORD>(layout->Groups.size());
    }
}

std::span<const WORD> PageList(DWORD pageBase) {
    if (pageBase == PageGeneral) {
        return {GeneralItems, std::min<std::size_t>(GeneralItemCount, MaxGeneralItems)};
    }
    const ReaderLayout* layout = LayoutOn(pageBase);
    return layout
               ? layout->GroupIds.first(std::min<std::size_t>(*layout->GroupCount, layout->GroupIds.size()))
               : std::span<const WORD>{};
}

void ApplyActiveDevice() {
    DWORD barcode = 1;
    DWORD rfid = 1;
    switch (Value(general::ActiveDevice)) {
        case '1':
            barcode = HasBarcodeReader() ? 1 : 0;
            rfid = 1 - barcode;
            break;
        case '2':
            barcode = 0;
            break;
        default:
            break;
    }
    ShellState.BarcodeEnabled = barcode;
    ShellState.RfidEnabled = rfid;
}
