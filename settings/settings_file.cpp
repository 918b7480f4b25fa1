#include "settings/settings_file.h"

#include "platform/base.h"
#include "settings/general_fields.h"
#include "shell/log.h"

namespace {

constexpr LPCWSTR Folder = TEXT("\\DiskOnChip\\");
constexpr LPCWSTR Name = TEXT("Vantrel");
constexpr LPCWSTR Extension = TEXT(".ini");

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
int ReadImage(SettingsImage& image) {
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
    if (read != SettingsFileSize) {
        Log(LogPriority::Warning, TEXT("the settings file has %u bytes and not %u: it does not count"), read,
            SettingsFileSize);
        return 0;
    }
    return 1;
}

}  // namespace

HANDLE OpenSettingsFile(int create) {
    const HANDLE file = CreateFileW(MakePath().Text, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    create ? CREATE_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    return file == INVALID_HANDLE_VALUE ? nullptr : file;
}

int LoadSettings() {
    SettingsImage image{};
    if (const int result = ReadImage(image); result != 1) {
        return result;
    }
    TakeSettingsImage(image);
    return 1;
}

int SaveSettings() {
    const HANDLE file = OpenSettingsFile(1);
    if (!file) {
        return 0;
    }
    SettingsImage image;
    BuildSettingsImage(image);
    for (const Setting* choice : {&general::ActiveDevice, &general::DataOutput}) {
        if (Value(*choice) == '0') {
            SetValue(*choice, '1');
        }
    }
    DWORD written = 0;
    const BOOL whole = WriteFile(file, image.data(), SettingsFileSize, &written, nullptr);
    const BOOL kept = CloseHandle(file);
    return whole && kept && written == SettingsFileSize ? 1 : -1;
}
