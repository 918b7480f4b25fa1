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

inline constexpr std::size_t Decoder1DGroupCount = 19;
inline constexpr std::size_t EngineGroupCount = 14;
inline constexpr std::size_t LaserGroupCount = 9;

// The symbologies of the 1D reader.
std::span<const SettingGroup> Decoder1DGroups();
// The groups of the packet readers, and those of them that the laser has.
std::span<const SettingGroup> EngineGroups();
std::span<const SettingGroup> LaserGroups();

// Those of a reader; none without one.
std::span<const SettingGroup> GroupsOn(ReaderType type);

// The general page: what every terminal with a barcode reader shows first, what the fitted reader adds, what
// an RFID reader adds, what comes last, and what is kept in the record without being shown. Some fields
// belong to several readers.
SettingList OutputItems();
SettingList ReaderItems(ReaderType type);
SettingList RfidItems();
SettingList ClosingItems();
SettingList HiddenItems();

// How many of OutputItems a terminal without a barcode reader shows.
inline constexpr std::size_t OutputItemsWithoutBarcode = 10;

// Calls visit(const Setting&) for every field; a field of several readers may come more than once.
template <class Visit>
void ForEachGeneralField(Visit visit) {
    for (const SettingList list : {OutputItems(), RfidItems(), ReaderItems(ReaderType::Decoder1D),
                                   ReaderItems(ReaderType::LongRangeLaser), ReaderItems(ReaderType::Imager2D),
                                   ClosingItems(), HiddenItems()}) {
        for (const Setting* setting : list)
            visit(*setting);
    }
}
template <class Visit>
void ForEachSymbologyField(Visit visit) {
    for (const auto groups : {Decoder1DGroups(), EngineGroups()}) {
        for (const SettingGroup& group : groups) {
            for (const SettingList list : {group.Switch, group.Items}) {
                for (const Setting* setting : list)
                    visit(*setting);
            }
        }
    }
}
