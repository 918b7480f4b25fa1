#include "settings/settings_file.h"

#include <array>

#include "platform/text.h"
#include "settings/defaults.h"
#include "settings/general_fields.h"
#include "settings/pages.h"

namespace {

constexpr LPCWSTR Folder = TEXT("\\DiskOnChip\\");
constexpr LPCWSTR Name = TEXT("Vantrel");
constexpr LPCWSTR Extension = TEXT(".ini");

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

using FileImage = std::array<BYTE, SettingsFileSize>;

WORD WordAt(const FileImage& image, std::size_t offset) {
    return static_cast<WORD>(image[offset] | image[offset + 1] << 8);
}

void PutWord(FileImage& image, std::size_t offset, WORD value) {
    image[offset] = static_cast<BYTE>(value & 0xFF);
    image[offset + 1] = static_cast<BYTE>(value >> 8);
}

template <class Block>
void TakeBlock(const FileImage& image, std::size_t offset, Block& block) {
    for (Relaxed<WORD>& word : block) {
        word = WordAt(image, offset);
        offset += 2;
    }
}

template <class Block>
void PutBlock(FileImage& image, std::size_t offset, const Block& block) {
    for (const Relaxed<WORD>& word : block) {
        PutWord(image, offset, word);
        offset += 2;
    }
}

struct FilePath {
    WCHAR Text[51];
};

FilePath MakePath() {
    FilePath path;
    lstrcpyW(path.Text, Folder);
    lstrcatW(path.Text, Name);
    lstrcatW(path.Text, Extension);
    return path;
}

// As LoadSettings.
int ReadImage(FileImage& image) {
    const HANDLE file = OpenSettingsFile(0);
    if (!file) {
        return GetFileAttributesW(MakePath().Text) == INVALID_FILE_ATTRIBUTES ? 0 : -1;
    }
    DWORD read = 0;
    const BOOL done = ReadFile(file, image.data(), SettingsFileSize, &read, nullptr);
    CloseHandle(file);
    if (!done) {
        return -1;
    }
    return read == SettingsFileSize ? 1 : 0;
}

}  // namespace

HANDLE OpenSettingsFile(int create) {
    const HANDLE file = CreateFileW(MakePath().Text, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    create ? CREATE_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    return file == INVALID_HANDLE_VALUE ? nullptr : file;
}

int LoadSettings() {
    FileImage image{};
    if (const int result = ReadImage(image); result != 1) {
        return result;
    }
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
    return 1;
}

int SaveSettings() {
    const HANDLE file = OpenSettingsFile(1);
    if (!file) {
        return 0;
    }
    FileImage image{};
    std::size_t offset = 0;
    for (const BYTE value : Header) {
        image[offset++] = value;
    }
    PutWord(image, FlagsAt, DeviceFlags);
    PutBlock(image, SymbologyAt, SymbologySettings);
    PutBlock(image, GeneralAt, GeneralSettings);
    for (const Setting* choice : {&general::ActiveDevice, &general::DataOutput}) {
        if (Value(*choice) == '0') {
            SetValue(*choice, '1');
        }
    }
    DWORD written = 0;
    WriteFile(file, image.data(), SettingsFileSize, &written, nullptr);
    CloseHandle(file);
    return 1;
}
