// The settings items of the terminal in DeviceFlags, under their names, and their values as people write
// them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "settings/catalogue.h"

struct Item {
    const Setting* Field;
    DWORD Page;
    WORD Group;    // string of its symbology; 0 on the general page
    bool OnPage;   // the settings window shows it
    bool Present;  // the reader that it belongs to is fitted
};

// In the order of the pages; the RFID reader's items are always among them.
std::vector<Item> TerminalItems();
// Null for a name that the terminal's reader lacks.
const Item* FindItem(const std::vector<Item>& items, std::string_view name);

// A string of the resources, as UTF-8.
std::string ResourceText(UINT id);
// "1D Reader", "1D Long Range Laser", "2D Reader" or "none"; and back, also from 1d, laser and imager.
std::string ReaderName(ReaderType type);
std::optional<ReaderType> ReaderByName(std::string_view name);
// The bit of DeviceFlags.
WORD ReaderFlag(ReaderType type);

std::string ItemLabel(const Item& item);
std::string ItemHeading(const Item& item);
// Of a list, a bit set and a toggle; empty for other items.
std::vector<std::string> ItemChoices(const Item& item);
const SettingLimits& ItemRange(const Item& item);
// "1 to 99, tenths of a second"; empty where there is nothing to limit.
std::string RangeText(const Item& item);

// A value as it can be written in text. Where the words hold something else (a list none of its choices, a
// number out of its range, a text that goes on behind its end), only Words are there.
struct ItemValue {
    std::vector<WORD> Words;  // all of the field
    bool Plain = false;
    std::vector<std::string> Chosen;  // list, toggle: one; bit set: any number
    std::string Text;
};
ItemValue ReadItem(const Item& item);
// For people: "One", "One, Two", "3.0 s", "\"AB\"".
std::string ValueText(const Item& item, const ItemValue& value);

// Each stores a value in the record and returns an empty text, or says what is wrong with it and changes
// nothing. A choice may be in another letter case.
std::string SetChosen(const Item& item, const std::vector<std::string>& chosen);
std::string SetNumber(const Item& item, long long number);
std::string SetItemText(const Item& item, std::string_view text);
std::string SetWords(const Item& item, const std::vector<long long>& words);
// The same from one word of a command line: choices of a bit set are separated by commas.
std::string SetFromArgument(const Item& item, std::string_view value);
