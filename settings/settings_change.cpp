#include "settings/settings_change.h"

#include "settings/general_fields.h"

namespace {

constexpr std::size_t PairSize = 4;

WORD WordAt(std::span<const BYTE> bytes, std::size_t offset) {
    return static_cast<WORD>(bytes[offset] | bytes[offset + 1] << 8);
}

}  // namespace

Relaxed<WORD>& RecordWord(std::size_t number) {
    return number < SymbologyWords ? SymbologySettings[number] : GeneralSettings[number - SymbologyWords];
}

bool IsChange(std::span<const BYTE> change) {
    if (change.size() % PairSize != 2 || WordAt(change, 0) != DeviceFlags) {
        return false;
    }
    for (std::size_t at = 2; at < change.size(); at += PairSize) {
        if (WordAt(change, at) >= RecordWords) {
            return false;
        }
    }
    return true;
}

void TakeChange(std::span<const BYTE> change) {
    for (std::size_t at = 2; at < change.size(); at += PairSize) {
        RecordWord(WordAt(change, at)) = WordAt(change, at + 2);
    }
    EndTexts();
}
