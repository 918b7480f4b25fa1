#include "settings/field.h"

#include "settings/general_fields.h"

namespace {

Relaxed<WORD>* WordIn(SymbologyBlock& symbology, GeneralBlock& general, const Setting& setting,
                      ReaderType type) {
    const WORD word = PlaceOf(setting, type).Word;
    if (setting.Block == SettingBlock::Symbology) {
        return word < SymbologyWords ? &symbology[word] : nullptr;
    }
    return word < GeneralWords ? &general[word] : nullptr;
}

}  // namespace

Relaxed<WORD>* WordOf(const Setting& setting, ReaderType type) {
    return WordIn(SymbologySettings, GeneralSettings, setting, type);
}

WORD Value(const Setting& setting) {
    const Relaxed<WORD>* word = WordOf(setting, FittedReader());
    return word ? WORD{*word} : WORD{0};
}

WORD ValueBefore(const Setting& setting) {
    const Relaxed<WORD>* word =
        WordIn(SymbologySettingsBefore, GeneralSettingsBefore, setting, FittedReader());
    return word ? WORD{*word} : WORD{0};
}

void SetValue(const Setting& setting, WORD value) {
    if (Relaxed<WORD>* word = WordOf(setting, FittedReader())) {
        *word = value;
    }
}

bool Changed(const Setting& setting) {
    if (!SnapshotsTaken) {
        return WordOf(setting, FittedReader()) != nullptr;
    }
    return Value(setting) != ValueBefore(setting);
}

bool IsOn(const Setting& setting) {
    return Value(setting) == '1';
}

WORD DigitOf(const Setting& setting) {
    return static_cast<WORD>(Value(setting) - '0');
}

void GetText(const Setting& setting, std::span<WCHAR> to) {
    if (to.empty()) {
        return;
    }
    std::size_t length = 0;
    if (const Relaxed<WORD>* words = WordOf(setting, FittedReader())) {
        // Another thread may be writing: each word is read once, and the copy ends itself.
        for (; length < TextWords - 1 && length < to.size() - 1; ++length) {
            const WORD character = words[length];
            if (character == 0) {
                break;
            }
            to[length] = static_cast<WCHAR>(character);
        }
    }
    to[length] = 0;
}

void EndTexts() {
    for (const Setting* text : {&general::PrefixCode, &general::SuffixCode}) {
        WordOf(*text, FittedReader())[TextWords - 1] = 0;
    }
}

void SetText(const Setting& setting, std::span<const WCHAR> text) {
    Relaxed<WORD>* words = WordOf(setting, FittedReader());
    if (!words) {
        return;
    }
    std::size_t length = 0;
    for (; length < TextWords - 1 && length < text.size() && text[length] != 0; ++length) {
        words[length] = static_cast<WORD>(text[length]);
    }
    words[length] = 0;
}
