// Filling the settings record word by word, beside the field descriptors.
#pragma once

#include <functional>

#include "settings/record.h"

// Stores a word for each index into both blocks.
void FillSettings(const std::function<WORD(WORD)>& symbology, const std::function<WORD(WORD)>& general);
// Makes every word of the snapshots differ from the record, or none.
void MakeAllChanged();
void MakeNoneChanged();
