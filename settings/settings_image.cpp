#include "settings/settings_file.h"

#include "settings/defaults.h"
#include "settings/general_fields.h"
#include "settings/pages.h"

namespace {

// Offsets of the file. Words are little-endian.
constexpr std::size_t MajorAt = 0;
constexpr std::size_t MinorAt = 2;
constexpr std::size_t FlagsAt = 40;
constexpr std::size_t SymbologyAt = 240;
constexpr std::size_t GeneralAt = SymbologyAt + 2 * SymbologyWords;
static_assert(GeneralAt + 2 * GeneralWords == SettingsFileSize);

// Version and a mark that is written and never read.
constexpr BYTE Header[] = {FileMajor, 0, FileMinor, 0, 5, 0, 0, 0};
constexpr WORD DefaultReadDuration = 3;

WORD WordAt(const SettingsImage& image, std::size_t offset) {
    return static_cast<WORD>(image[offset] | image[offset + 1] << 8);
}

void PutWord(SettingsImage& image, std::size_t offset, WORD value) {
    image[offset] = static_cast<BYTE>(value & 0xFF);
    image[offset + 1] = static_cast<BYTE>(value >> 8);
}

template <class Block>
void TakeBlock(const SettingsImage& image, std::size_t offset, Block& block) {
    for (Relaxed<WORD>& word : block) {
        word = WordAt(image, offset);
        offset += 2;
    }
}

template <class Block>
void PutBlock(SettingsImage& image, std::size_t offset, const Block& block) {
    for (const Relaxed<WORD>& word : block) {
        PutWord(image, offset, word);
        offset += 2;
    }
}

}  // namespace

void TakeSettingsImage(const SettingsImage& image) {
    DeviceFlags = WordAt(image, FlagsAt);
    TakeBlock(image, SymbologyAt, SymbologySettings);
    TakeBlock(image, GeneralAt, GeneralSettings);
    EndTexts();
    if (Value(general::RfidReadDuration) == 0) {
        SetValue(general::RfidReadDuration, DefaultReadDuration);
    }

    const WORD major = WordAt(image, MajorAt);
    const WORD minor = WordAt(image, MinorAt);
    const auto reset = [&](const Setting& setting) { ResetNewer(setting, FileVersion(major, minor)); };
    ForEachSymbologyField(reset);
    ForEachGeneralField(reset);
    if (major == 1 && minor == 0) {
        // Version 1.0 numbered the choices from 0; since then each has a bit.
        SetValue(general::ActiveDevice, static_cast<WORD>(Value(general::ActiveDevice) + 1));
        SetValue(general::DataOutput, static_cast<WORD>(Value(general::DataOutput) + 1));
    }
}

void BuildSettingsImage(SettingsImage& image) {
    image = {};
    std::size_t offset = 0;
    for (const BYTE value : Header) {
        image[offset++] = value;
    }
    PutWord(image, FlagsAt, DeviceFlags);
    PutBlock(image, SymbologyAt, SymbologySettings);
    PutBlock(image, GeneralAt, GeneralSettings);
}
