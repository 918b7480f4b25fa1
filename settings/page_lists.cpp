#include <algorithm>

#include "settings/catalogue.h"
#include "settings/general_fields.h"
#include "settings/pages.h"
#include "shell/shell_state.h"

namespace {

template <std::span<const SettingGroup> (*Groups)(), std::size_t Count>
std::span<const WORD> GroupNumbers(DWORD shown) {
    static const auto numbers = [] {
        std::array<WORD, Count> ids{};
        std::ranges::transform(Groups(), ids.begin(), &SettingGroup::Id);
        return ids;
    }();
    return std::span(numbers).first(std::min<std::size_t>(shown, Count));
}

void AddItems(DWORD& count, SettingList list) {
    for (const Setting* setting : list) {
        if (count < MaxGeneralItems)
            GeneralItems[count++] = setting->ItemId;
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
    if (HasRfidReader() || !barcode)
        AddItems(count, RfidItems());
    AddItems(count, ClosingItems());
    GeneralItemCount = count;

    if (type == ReaderType::Decoder1D)
        SymbologyGroupCount = static_cast<DWORD>(Decoder1DGroups().size());
    else if (type == ReaderType::LongRangeLaser)
        SymbologyGroupCount = static_cast<DWORD>(LaserGroups().size());
    else if (type == ReaderType::Imager2D)
        ImagerGroupCount = static_cast<DWORD>(EngineGroups().size());
}

std::span<const WORD> PageList(DWORD pageBase) {
    switch (pageBase) {
        case Page1D:
            return GroupNumbers<Decoder1DGroups, Decoder1DGroupCount>(SymbologyGroupCount);
        case PageLaser:
            return GroupNumbers<LaserGroups, LaserGroupCount>(SymbologyGroupCount);
        case PageImager:
            return GroupNumbers<EngineGroups, EngineGroupCount>(ImagerGroupCount);
        case PageGeneral:
            return {GeneralItems, std::min<std::size_t>(GeneralItemCount, MaxGeneralItems)};
        default:
            return {};
    }
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
