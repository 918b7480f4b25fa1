#include "tests/settings/record_fixture.h"

#include "settings/catalogue.h"
#include "shell/shell_state.h"

void ClearRecord() {
    DeviceFlags = 0;
    for (SymbologyBlock* block : {&SymbologySettings, &SymbologySettingsBefore}) {
        for (Relaxed<WORD>& word : *block)
            word = 0;
    }
    for (GeneralBlock* block : {&GeneralSettings, &GeneralSettingsBefore}) {
        for (Relaxed<WORD>& word : *block)
            word = 0;
    }
    ShellState.BarcodeEnabled = 0;
    ShellState.RfidEnabled = 0;
    ShellState.ReconfigureReaders = 0;
    for (WORD& item : GeneralItems)
        item = 0;
    GeneralItemCount = 0;
    SymbologyGroupCount = 0;
    ImagerGroupCount = 0;
    PreviewSound = nullptr;
}
