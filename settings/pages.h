// Which fields the settings pages show, group by group, in display order.
#pragma once

#include "settings/field.h"

struct SettingGroup {
    WORD Id;
    WORD Label;
    SettingList Switch;             // the symbology's own switch, at the group's root; empty under a heading
    SettingList Items;              // in display order, without the switch
    std::span<const WORD> ItemIds;  // the same; under a switch the last two digits only
};

// What a barcode reader's layout of the record shows: the one place where the pages of the readers differ.
struct ReaderLayout {
    ReaderType Type;
    DWORD Page;                               // of its symbologies
    std::span<const SettingGroup> Groups;     // on that page
    std::span<const WORD> GroupIds;           // the same
    std::span<const SettingGroup> Catalogue;  // what the page's numbers name, shown or not
    SettingList Items;                        // what it adds to the general page
    Relaxed<DWORD>* GroupCount;               // how many of the groups are shown: none before BuildPageLists
};
// All of them, by ReaderType.
std::span<const ReaderLayout> ReaderLayouts();
// That of a reader, and that of a page of symbologies; null when there is none.
const ReaderLayout* LayoutOf(ReaderType type);
const ReaderLayout* LayoutOn(DWORD pageBase);

// The groups of a reader, and what it adds to the general page; none without one.
std::span<const SettingGroup> GroupsOn(ReaderType type);
SettingList ReaderItems(ReaderType type);

// The general page: what every terminal with a barcode reader shows first, what the fitted reader adds, what
// an RFID reader adds, what comes last, and what is kept in the record without being shown. Some fields
// belong to several readers.
SettingList OutputItems();
SettingList RfidItems();
SettingList ClosingItems();
SettingList HiddenItems();

// How many of OutputItems a terminal without a barcode reader shows.
inline constexpr std::size_t OutputItemsWithoutBarcode = 10;

// Calls visit(const Setting&) for every field; a field of several readers comes more than once.
template <class Visit>
void ForEachGeneralField(Visit visit) {
    const auto visitAll = [&](SettingList list) {
        for (const Setting* setting : list) {
            visit(*setting);
        }
    };
    visitAll(OutputItems());
    visitAll(RfidItems());
    for (const ReaderLayout& layout : ReaderLayouts()) {
        visitAll(layout.Items);
    }
    visitAll(ClosingItems());
    visitAll(HiddenItems());
}
template <class Visit>
void ForEachSymbologyField(Visit visit) {
    for (const ReaderLayout& layout : ReaderLayouts()) {
        for (const SettingGroup& group : layout.Groups) {
            for (const SettingList list : {group.Switch, group.Items}) {
                for (const Setting* setting : list) {
                    visit(*setting);
                }
            }
        }
    }
}
