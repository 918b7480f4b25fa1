#include "platform/win32/terminal.h"

#include <mmsystem.h>
#include <shlobj.h>

#include <chrono>
#include <string_view>

namespace layer {

namespace {

struct Terminal {
    std::wstring Folder;
    std::uint64_t Identity = 0;
};

// Waits and time-outs are counted in milliseconds, not in the 15.6 of the platform's ordinary clock.
const struct FineClock {
    FineClock() { timeBeginPeriod(1); }
    ~FineClock() { timeEndPeriod(1); }
} Clock;

std::wstring FullPath(const std::wstring& path) {
    WCHAR full[MAX_PATH];
    const DWORD length = GetFullPathNameW(path.c_str(), MAX_PATH, full, nullptr);
    std::wstring result = length > 0 && length < MAX_PATH ? std::wstring(full, length) : path;
    while (result.size() > 3 && (result.back() == L'\\' || result.back() == L'/')) {
        result.pop_back();
    }
    return result;
}

std::uint64_t Identify(std::wstring folder) {
    CharLowerBuffW(folder.data(), static_cast<DWORD>(folder.size()));
    std::uint64_t hash = 0xCBF29CE484222325u;
    const auto* bytes = reinterpret_cast<const BYTE*>(folder.data());
    for (std::size_t i = 0; i < folder.size() * sizeof(WCHAR); ++i) {
        hash = (hash ^ bytes[i]) * 0x100000001B3u;
    }
    return hash;
}

void WriteSound(const std::wstring& folder, LPCWSTR name) {
    const HRSRC found = FindResourceW(nullptr, name, L"WAVE");
    const HGLOBAL loaded = found != nullptr ? LoadResource(nullptr, found) : nullptr;
    const HANDLE file = CreateFileW((folder + L"\\" + name + L".wav").c_str(), GENERIC_WRITE, 0, nullptr,
                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        DWORD written = 0;
        WriteFile(file, LockResource(loaded), SizeofResource(nullptr, found), &written, nullptr);
        CloseHandle(file);
    }
}

// The sounds are resources of the program that plays them. They are put there once: what the user replaces or
// deletes stays so.
void InstallSounds(const std::wstring& folder) {
    if (FindResourceW(nullptr, L"Default", L"WAVE") == nullptr ||
        !CreateDirectoryW(folder.c_str(), nullptr)) {
        return;
    }
    for (const LPCWSTR name : {L"Default", L"Hwandsw", L"MenuPop", L"MsgBox", L"Notify", L"VoicBeep",
                               L"Alarm2", L"Alarm3", L"LowBatt"}) {
        WriteSound(folder, name);
    }
}

Terminal OpenTerminal() {
    std::wstring folder = Variable(L"VANTREL_TERMINAL");
    if (folder.empty()) {
        folder = Variable(L"LOCALAPPDATA") + L"\\vantrel\\terminal";
    }
    Terminal terminal;
    terminal.Folder = FullPath(folder);
    terminal.Identity = Identify(terminal.Folder);
    SHCreateDirectoryExW(nullptr, (terminal.Folder + L"\\DiskOnChip").c_str(), nullptr);
    InstallSounds(terminal.Folder + L"\\Windows");
    return terminal;
}

const Terminal& Current() {
    static const Terminal terminal = OpenTerminal();
    return terminal;
}

bool IsSeparator(WCHAR character) {
    return character == L'\\' || character == L'/';
}

}  // namespace

const std::wstring& TerminalFolder() {
    return Current().Folder;
}

std::uint64_t TerminalIdentity() {
    return Current().Identity;
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
    std::wstring_view rest = path != nullptr ? path : L"";
    if (!rest.empty() && IsSeparator(rest.front())) {
        rest.remove_prefix(1);
    }
    if (rest.empty() || rest.size() >= MAX_PATH) {
        return {};
    }
    std::wstring host = TerminalFolder();
    while (!rest.empty()) {
        std::size_t end = 0;
        while (end < rest.size() && !IsSeparator(rest[end])) {
            if (rest[end] < L' ' ||
                std::wstring_view(L":*?\"<>|").find(rest[end]) != std::wstring_view::npos) {
                return {};
            }
            ++end;
        }
        const std::wstring_view component = rest.substr(0, end);
        // Windows drops dots and spaces at the end of a name: such a name means another one.
        if (component.empty() || component.back() == L'.' || component.back() == L' ') {
            return {};
        }
        host += L'\\';
        host += component;
        rest.remove_prefix(end < rest.size() ? end + 1 : end);
    }
    return host;
}

}  // namespace layer
