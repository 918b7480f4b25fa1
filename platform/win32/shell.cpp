// What a handheld's shell has and desktop Windows lacks, sounds, and the file dialog in the terminal folder.
#include "platform/shell.h"

#include "platform/sound.h"
#include "platform/win32/terminal.h"

BOOL SHCreateMenuBar(SHMENUBARINFO* info) {
    if (info->cbSize != sizeof(SHMENUBARINFO)) {
        return FALSE;
    }
    // A bar without buttons takes no room.
    info->hwndMB = nullptr;
    return TRUE;
}

BOOL SipGetInfo(SIPINFO* info) {
    if (info->cbSize != sizeof(SIPINFO)) {
        return FALSE;
    }
    info->fdwFlags = 0;
    info->rcSipRect = {};
    return SystemParametersInfoW(SPI_GETWORKAREA, 0, &info->rcVisibleDesktop, 0);
}

#undef PlaySoundW
BOOL WINAPI TerminalPlaySoundW(LPCWSTR name, HMODULE module, DWORD flags) {
    if (name == nullptr || (flags & SND_FILENAME) == 0) {
        return PlaySoundW(name, module, flags);
    }
    const std::wstring path = layer::HostPath(name);
    // A terminal without a sound device, or without that sound, stays silent.
    if (!path.empty()) {
        PlaySoundW(path.c_str(), module, flags | SND_NODEFAULT);
    }
    return !path.empty();
}

#undef GetOpenFileNameW
BOOL WINAPI TerminalGetOpenFileNameW(LPOPENFILENAMEW dialog) {
    const std::wstring &folder = layer::TerminalFolder(), above = folder + L"\\";
    OPENFILENAMEW wanted = *dialog;
    WCHAR chosen[MAX_PATH] = {};
    lstrcpynW(chosen, dialog->lpstrFile, MAX_PATH);
    std::wstring start = layer::HostPath(dialog->lpstrInitialDir);
    if (start.empty()) {
        start = folder;
    }
    wanted.lStructSize = sizeof wanted;
    wanted.lpstrFile = chosen;
    wanted.nMaxFile = MAX_PATH;
    wanted.lpstrInitialDir = start.c_str();
    wanted.Flags |= OFN_NOCHANGEDIR;
    while (GetOpenFileNameW(&wanted)) {
        const std::wstring path = chosen;
        const bool inside = CompareStringOrdinal(path.substr(0, above.size()).c_str(), -1, above.c_str(), -1,
                                                 TRUE) == CSTR_EQUAL;
        const std::wstring own = inside ? path.substr(folder.size()) : std::wstring();
        if (inside && own.size() < dialog->nMaxFile) {
            lstrcpyW(dialog->lpstrFile, own.c_str());
            return TRUE;
        }
        MessageBoxW(dialog->hwndOwner, L"Please choose a file in the terminal folder.", L"Vantrel", MB_OK);
    }
    return FALSE;
}
