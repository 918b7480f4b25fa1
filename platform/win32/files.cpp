// Files of the terminal folder, and ports by their names.
#include <map>

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

HANDLE CreateReplacing(const std::wstring& target, DWORD access, LPSECURITY_ATTRIBUTES security) {
    const DWORD there = GetFileAttributesW(target.c_str());
    if (there != INVALID_FILE_ATTRIBUTES &&
        (there & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) != 0) {
        SetLastError(ERROR_ACCESS_DENIED);
        return INVALID_HANDLE_VALUE;
    }
    const std::wstring written = target + L".new";
    const HANDLE file =
        CreateFileW(written.c_str(), access, 0, security, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        const Guard guard(FilesLock);
        Replacements[file] = {written, target};
    }
    return file;
}

void PutInPlace(const Replacement& done, bool whole) {
    const LPCWSTR written = done.Written.c_str(), target = done.Target.c_str();
    const bool placed =
        whole && (ReplaceFileW(target, written, nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr) ||
                  MoveFileExW(written, target, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
    if (!placed) {
        DeleteFileW(written);
    }
}

}  // namespace

HANDLE WINAPI TerminalCreateFileW(LPCWSTR name, DWORD access, DWORD shareMode, LPSECURITY_ATTRIBUTES security,
                                  DWORD disposition, DWORD attributes, HANDLE templateFile) {
    if (layer::IsPortName(name)) {
        return layer::OpenPort(name);
    }
    const std::wstring path = layer::HostPath(name);
    if (path.empty()) {
        SetLastError(ERROR_INVALID_NAME);
        return INVALID_HANDLE_VALUE;
    }
    if (disposition == CREATE_ALWAYS) {
        return CreateReplacing(path, access, security);
    }
    return CreateFileW(path.c_str(), access, shareMode, security, disposition, attributes, templateFile);
}

DWORD WINAPI TerminalGetFileAttributesW(LPCWSTR name) {
    const std::wstring path = layer::HostPath(name);
    return path.empty() ? INVALID_FILE_ATTRIBUTES : GetFileAttributesW(path.c_str());
}

BOOL WINAPI TerminalReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped) {
    if (const auto port = layer::FindPort(file)) {
        return port->Read(static_cast<BYTE*>(buffer), size, *read);
    }
    return ReadFile(file, buffer, size, read, overlapped);
}

BOOL WINAPI TerminalWriteFile(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD written,
                              LPOVERLAPPED overlapped) {
    if (const auto port = layer::FindPort(file)) {
        return port->Write(static_cast<const BYTE*>(buffer), size, *written);
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
    if (!done.empty()) {
        PutInPlace(done.mapped(), whole);
    }
    return closed;
}
