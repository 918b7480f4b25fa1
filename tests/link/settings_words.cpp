#include "settings_words.h"

void FillSettings(const std::function<WORD(WORD)>& symbology, const std::function<WORD(WORD)>& general) {
    for (WORD i = 0; i < SymbologyWords; ++i)
        SymbologySettings[i] = symbology(i);
    for (WORD i = 0; i < GeneralWords; ++i)
        GeneralSettings[i] = general(i);
}

void MakeAllChanged() {
    for (WORD i = 0; i < SymbologyWords; ++i)
        SymbologySettingsBefore[i] = static_cast<WORD>(~SymbologySettings[i]);
    for (WORD i = 0; i < GeneralWords; ++i)
        GeneralSettingsBefore[i] = static_cast<WORD>(~GeneralSettings[i]);
}

void MakeNoneChanged() {
    TakeSnapshots();
}
