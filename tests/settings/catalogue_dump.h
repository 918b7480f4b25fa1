// The settings pages as text, one line per item, made with the catalogue's operations alone.
#pragma once

#include <string>

// The pages of the terminal that DeviceFlags describes, in display order: number, label, value, choices.
std::string DumpPages();

// The items that are kept without being shown.
std::string DumpHiddenItems();
