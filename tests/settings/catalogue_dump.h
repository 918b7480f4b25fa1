// The settings pages as text, one line per item, made with the catalogue's operations alone.
#pragma once

#include <map>
#include <string>

// The pages of the terminal that DeviceFlags describes, in display order: number, label, value, choices.
std::string DumpPages(const std::map<unsigned, std::string>& strings);

// The items that are kept without being shown.
std::string DumpHiddenItems(const std::map<unsigned, std::string>& strings);
