// What must hold between the field tables, checked while compiling.
#pragma once

#include <algorithm>
#include <string_view>

#include "settings/pages.h"

namespace checks {

// No check compares addresses of different objects: not every compiler takes that for constant.

constexpr bool InGroup(const Setting& setting, const SettingGroup& group) {
    return group.Switch.empty() ? (setting.ItemId & 0xFF00) == group.Id
                                : setting.ItemId / 100 * 100 == group.Id;
}

// Items carry the number of their group, and so do the lists that govern its lengths.
constexpr bool GroupsFit(std::span<const SettingGroup> groups) {
    return std::ranges::all_of(groups, [](const SettingGroup& group) {
        return std::ranges::all_of(group.Items, [&](const Setting* item) {
            return InGroup(*item, group) && (item->RangeLabel == 0 || InGroup(*item->LengthMode, group));
        });
    });
}

// The fields of one reader's layout share no word and stay inside their block.
constexpr bool LayoutFits(std::span<const SettingList> lists, ReaderType type, std::size_t words) {
    std::array<bool, std::max(SymbologyWords, GeneralWords)> used{};
    for (const SettingList list : lists) {
        for (const Setting* setting : list) {
            const std::size_t first = PlaceOf(*setting, type).Word;
            const std::size_t size = setting->Encoding == SettingEncoding::Text ? TextWords : 1;
            if (first == NoWord) {
                continue;
            }
            for (std::size_t word = first; word < first + size; ++word) {
                if (word >= words || used[word]) {
                    return false;
                }
                used[word] = true;
            }
        }
    }
    return true;
}
template <std::size_t Count>
constexpr bool LayoutFits(const SettingGroup (&groups)[Count], ReaderType type) {
    std::array<SettingList, Count * 2> lists;
    for (std::size_t i = 0; i < Count; ++i) {
        lists[2 * i] = groups[i].Switch;
        lists[2 * i + 1] = groups[i].Items;
    }
    return LayoutFits(lists, type, SymbologyWords);
}

// No two items of the general page have the same number; a field of several readers may come again.
constexpr bool NumbersDiffer(std::span<const SettingList> lists) {
    for (const SettingList left : lists) {
        for (const SettingList right : lists) {
            for (const Setting* a : left) {
                for (const Setting* b : right) {
                    if (a->ItemId == b->ItemId && a->Label != b->Label) {
                        return false;
                    }
                }
            }
        }
    }
    return true;
}
constexpr bool NumbersDiffer(const SettingGroup& group) {
    for (std::size_t i = 0; i < group.Items.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (group.Items[i]->ItemId == group.Items[j]->ItemId) {
                return false;
            }
        }
        if (group.Items[i]->ItemId == group.Id) {
            return false;
        }
    }
    return true;
}
constexpr bool NumbersDiffer(std::span<const SettingGroup> groups) {
    return std::ranges::all_of(groups, [](const SettingGroup& group) { return NumbersDiffer(group); });
}

// No two fields of a reader's layout have the same name.
constexpr bool NamesDiffer(std::span<const SettingList> general, std::span<const SettingGroup> groups) {
    std::array<std::string_view, SymbologyWords + GeneralWords> names;
    std::size_t count = 0;
    const auto add = [&](SettingList list) {
        for (const Setting* setting : list) {
            names[count++] = setting->Name;
        }
    };
    for (const SettingList list : general) {
        add(list);
    }
    for (const SettingGroup& group : groups) {
        add(group.Switch);
        add(group.Items);
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (names[i].empty() || std::find(names.begin(), names.begin() + i, names[i]) != names.begin() + i) {
            return false;
        }
    }
    return true;
}

// The file that is written says that it has every field; else each load would reset the newer ones.
constexpr bool NoneIsNewer(std::span<const SettingList> lists) {
    return std::ranges::all_of(lists, [](SettingList list) {
        return std::ranges::all_of(
            list, [](const Setting* setting) { return setting->Since <= FileVersion(FileMajor, FileMinor); });
    });
}
constexpr bool NoneIsNewer(std::span<const SettingGroup> groups) {
    return std::ranges::all_of(groups, [](const SettingGroup& group) {
        const SettingList lists[] = {group.Switch, group.Items};
        return NoneIsNewer(lists);
    });
}

// How many fields every file has, however old. Only whoever adds one that says nothing else changes it.
constexpr std::size_t InEveryFile(std::span<const SettingList> lists) {
    std::size_t count = 0;
    for (const SettingList list : lists) {
        count += std::ranges::count(list, DWORD{0}, [](const Setting* setting) { return setting->Since; });
    }
    return count;
}
constexpr std::size_t InEveryFile(std::span<const SettingGroup> groups) {
    std::size_t count = 0;
    for (const SettingGroup& group : groups) {
        const SettingList lists[] = {group.Switch, group.Items};
        count += InEveryFile(lists);
    }
    return count;
}

// A default is one of the choices.
constexpr bool DefaultsFit(SettingList list) {
    return std::ranges::all_of(list, [](const Setting* setting) {
        const int choices = setting->Encoding == SettingEncoding::Toggle   ? 2
                            : setting->Encoding == SettingEncoding::BitSet ? 1 << setting->ChoiceCount
                                                                           : setting->ChoiceCount;
        return choices == 0 || std::ranges::all_of(setting->Places, [&](const SettingPlace& place) {
                   return !place.HasDefault || (place.Default >= '0' && place.Default < '0' + choices);
               });
    });
}
constexpr bool DefaultsFit(std::span<const SettingGroup> groups) {
    return std::ranges::all_of(groups, [](const SettingGroup& group) {
        return DefaultsFit(group.Items) && DefaultsFit(group.Switch);
    });
}

// The 1D reader's options of one index are of one kind and name, whatever the symbology.
constexpr bool IndexesAgree(std::span<const SettingGroup> groups) {
    for (const SettingGroup& left : groups) {
        for (const SettingGroup& right : groups) {
            for (const Setting* a : left.Items) {
                for (const Setting* b : right.Items) {
                    if (a->ItemId % 100 == b->ItemId % 100 &&
                        (a->Encoding != b->Encoding || a->Label != b->Label)) {
                        return false;
                    }
                }
            }
        }
    }
    return true;
}

// A packet reader's parameter has the low byte of its item's number; one in each list has a number of its
// own.
constexpr bool ParametersFit(SettingList list, const Setting& exception) {
    return std::ranges::all_of(list, [&](const Setting* setting) {
        return setting->Parameter.Number == NoParameter || setting->ItemId == exception.ItemId ||
               setting->Parameter.Number == (setting->ItemId & 0xFF);
    });
}

}  // namespace checks
