#include "platform/win32/terminal.h"

#include <mmsystem.h>
#include <shlobj.h>

#include <chrono>
#include <string_view>
#include <vector>

#include "platform/terminal_names.h"

namespace layer {

namespace {

// Waits and time-outs are counted in milliseconds, not in the 15.6 of the platform's ordinary clock.
[[maybe_unused]] const MMRESULT FineClock = timeBeginPeriod(1);

std::wstring FullPath(const std::wstring& path) {
    WCHAR full[MAX_PATH];
    const DWORD length = GetFullPathNameW(path.c_str(), MAX_PATH, full, nullptr);
    std::wstring result = length > 0 && length < MAX_PATH ? std::wstring(full, length) : path;
    while (result.size() > 3 && (result.back() == L'\\' || result.back() == L'/')) {
        result.pop_back();
    }
    return result;
}

void WriteSound(const std::wstring& folder, LPCWSTR name) {
    const HRSRC sound = FindResourceW(nullptr, name, L"WAVE");
    const HANDLE file = CreateFileW((folder + L"\\" + name + L".wav").c_str(), GENERIC_WRITE, 0, nullptr,
                                    CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        const HGLOBAL loaded = LoadResource(nullptr, sound);
        DWORD written = 0;
        WriteFile(file, LockResource(loaded), SizeofResource(nullptr, sound), &written, nullptr);
        CloseHandle(file);
    }
}

// The sounds are resources of the program that plays them. They are put there once, all or none: what the
// user replaces or deletes stays so.
void InstallSounds(const std::wstring& folder) {
    const std::wstring unfinished = folder + L".new";
    if (GetFileAttributesW(folder.c_str()) != INVALID_FILE_ATTRIBUTES ||
        FindResourceW(nullptr, L"Default", L"WAVE") == nullptr) {
        return;
    }
    CreateDirectoryW(unfinished.c_str(), nullptr);
    for (const LPCWSTR name : {L"Default", L"Hwandsw", L"MenuPop", L"MsgBox", L"Notify", L"VoicBeep",
                               L"Alarm2", L"Alarm3", L"LowBatt"}) {
        WriteSound(unfinished, name);
    }
    MoveFileW(unfinished.c_str(), folder.c_str());
}

std::wstring OpenTerminal() {
    const std::wstring wanted = Variable(L"VANTREL_TERMINAL");
    const std::wstring folder =
        FullPath(wanted.empty() ? Variable(L"LOCALAPPDATA") + L"\\vantrel\\terminal" : wanted);
    SHCreateDirectoryExW(nullptr, (folder + L"\\DiskOnChip").c_str(), nullptr);
    InstallSounds(folder + L"\\Windows");
    return folder;
}

}  // namespace

const std::wstring& TerminalFolder() {
    static const std::wstring folder = OpenTerminal();
    return folder;
}

std::uint64_t TerminalIdentity() {
    static const std::uint64_t identity = [] {
        std::wstring folder = TerminalFolder();
        CharLowerBuffW(folder.data(), static_cast<DWORD>(folder.size()));
        return IdentityOf(folder.data(), folder.size() * sizeof(WCHAR));
    }();
    return identity;
}

std::wstring SharedName(LPCWSTR name) {
    const std::uint64_t identity = TerminalIdentity();
    WCHAR start[40];
    wsprintfW(start, L"Local\\vantrel-%08x%08x-", static_cast<UINT>(identity >> 32),
              static_cast<UINT>(identity));
    return std::wstring(start) + name;
}

std::wstring Variable(LPCWSTR name) {
    WCHAR value[MAX_PATH];
    const DWORD length = GetEnvironmentVariableW(name, value, MAX_PATH);
    return length < MAX_PATH ? std::wstring(value, length) : std::wstring();
}

std::int64_t Milliseconds() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

std::wstring HostPath(LPCWSTR path) {
    std::vector<std::wstring_view> names;
    if (!SplitPath(path, names) || names.empty()) {
        return {};
    }
    std::wstring host = TerminalFolder();
    for (const std::wstring_view name : names) {
        (host += L'\\') += name;
    }
    return host;
}

}  // namespace layer
