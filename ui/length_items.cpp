#include "ui/length_items.h"

#include "resources/resource.h"
#include "settings/catalogue.h"
#include "settings/engine_fields.h"
#include "ui/item_value.h"

namespace {

// The modes of the packet readers, by the number of lengths that count.
constexpr int OneLength = 1;
constexpr int TwoLengths = 2;

}  // namespace

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
