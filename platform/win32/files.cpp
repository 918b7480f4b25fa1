// Files of the terminal folder, and ports by their names.
#include <map>

#include "platform/log.h"
#include "platform/win32/serial_port.h"
#include "platform/win32/terminal.h"
#include "platform/win32/wrapped.h"

namespace {

using layer::Guard;

// A file that takes its place when it is closed: until then, and when anything fails, the old one stays.
struct Replacement {
    std::wstring Written, Target;
    bool Failed = false;
};

SRWLOCK FilesLock = SRWLOCK_INIT;
std::map<HANDLE, Replacement> Replacements;  // under the lock

// Tries for two seconds while another program keeps the file, as one does that looks through new files.
template <class Try>
bool Unlocked(Try attempt) {
    const std::int64_t end = layer::Milliseconds() + 2000;
    while (!attempt()) {
        const DWORD error = GetLastError();
        const bool kept = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
        if (!kept || layer::Milliseconds() >= end) {
            SetLastError(error);
            return false;
        }
        Sleep(20);
    }
    return true;
}

HANDLE Open(const std::wstring& path, DWORD access, DWORD shareMode, DWORD disposition) {
    HANDLE file = INVALID_HANDLE_VALUE;
    Unlocked([&] {
        file = CreateFileW(path.c_str(), access, shareMode, nullptr, disposition, FILE_ATTRIBUTE_NORMAL,
                           nullptr);
        return file != INVALID_HANDLE_VALUE;
    });
    return file;
}

HANDLE CreateReplacing(const std::wstring& target, DWORD access) {
    constexpr DWORD all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    if (const HANDLE old = Open(target, GENERIC_WRITE | DELETE, all, OPEN_EXISTING);
        old != INVALID_HANDLE_VALUE) {
        CloseHandle(old);
    } else if (GetLastError() != ERROR_FILE_NOT_FOUND) {
        return old;
    }
    const std::wstring written = target + L".new";
    const HANDLE file = Open(written, access, 0, CREATE_ALWAYS);
    if (file != INVALID_HANDLE_VALUE) {
        const Guard guard(FilesLock);
        Replacements[file] = {written, target};
    }
    return file;
}

bool PutInPlace(const Replacement& done, bool whole) {
    const LPCWSTR written = done.Written.c_str(), target = done.Target.c_str();
    const bool placed =
        whole && Unlocked([=] {
            return ReplaceFileW(target, written, nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr,
                                nullptr) ||
                   MoveFileExW(written, target, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
        });
    if (!placed) {
        DeleteFileW(written);
        WriteLogLine(LogPriority::Error, (done.Target + L" is not saved").c_str());
    }
    return placed;
}

}  // namespace

HANDLE WINAPI TerminalCreateFileW(LPCWSTR name, DWORD access, DWORD shareMode, LPSECURITY_ATTRIBUTES,
                                  DWORD disposition, DWORD, HANDLE) {
    if (layer::IsPortName(name)) {
        return layer::OpenPort(name);
    }
    const std::wstring path = layer::HostPath(name);
    if (path.empty()) {
        SetLastError(ERROR_INVALID_NAME);
        return INVALID_HANDLE_VALUE;
    }
    return disposition == CREATE_ALWAYS ? CreateReplacing(path, access)
                                        : Open(path, access, shareMode, disposition);
}

DWORD WINAPI TerminalGetFileAttributesW(LPCWSTR name) {
    const std::wstring path = layer::HostPath(name);
    return path.empty() ? INVALID_FILE_ATTRIBUTES : GetFileAttributesW(path.c_str());
}

BOOL WINAPI TerminalReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped) {
    if (const auto port = layer::FindPort(file)) {
        return port->Read(buffer, size, *read);
    }
    return ReadFile(file, buffer, size, read, overlapped);
}

BOOL WINAPI TerminalWriteFile(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD written,
                              LPOVERLAPPED overlapped) {
    if (const auto port = layer::FindPort(file)) {
        return port->Write(buffer, size, *written);
    }
    if (WriteFile(file, buffer, size, written, overlapped) && *written == size) {
        return TRUE;
    }
    const Guard guard(FilesLock);
    if (const auto entry = Replacements.find(file); entry != Replacements.end()) {
        entry->second.Failed = true;
    }
    return FALSE;
}

BOOL WINAPI TerminalCloseHandle(HANDLE object) {
    if (object == nullptr) {
        return FALSE;
    }
    if (const auto port = layer::TakePort(object)) {
        port->Close();
        return TRUE;
    }
    decltype(Replacements)::node_type done;
    {
        const Guard guard(FilesLock);
        done = Replacements.extract(object);
    }
    // The content has to be on the disk before the name points at it.
    const bool whole = !done.empty() && !done.mapped().Failed && FlushFileBuffers(object);
    const BOOL closed = CloseHandle(object);
    return done.empty() ? closed : PutInPlace(done.mapped(), whole);
}
