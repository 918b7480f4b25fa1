// The diary: `vantrel.log` in the terminal folder, and standard error where the program has one.
#include "platform/log.h"

#include <atomic>
#include <cstdio>
#include <string>

#include "platform/win32/terminal.h"

namespace {

constexpr LONGLONG LongestFile = 1 << 20;  // bytes; then it becomes vantrel.log.old

SRWLOCK LogLock = SRWLOCK_INIT;

std::atomic<bool>& DebugWanted() {
    static std::atomic<bool> wanted = layer::Variable(L"VANTREL_LOG") == L"debug";
    return wanted;
}

// By LogPriority.
constexpr const char* Names[] = {"", "", "", "error", "warning", "notice", "info", "debug"};

std::string ToUtf8(LPCWSTR text) {
    char bytes[4 * 1024];
    const int length = WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes, sizeof bytes, nullptr, nullptr);
    return length > 0 ? std::string(bytes) : std::string();
}

void Append(const std::wstring& path, const std::string& line) {
    const HANDLE file = CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return;
    }
    DWORD written = 0;
    WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    LARGE_INTEGER size{};
    GetFileSizeEx(file, &size);
    CloseHandle(file);
    if (size.QuadPart > LongestFile) {
        MoveFileExW(path.c_str(), (path + L".old").c_str(), MOVEFILE_REPLACE_EXISTING);
    }
}

}  // namespace

void WriteLogLine(LogPriority priority, LPCWSTR text) {
    SYSTEMTIME now;
    GetLocalTime(&now);
    char head[64];
    std::snprintf(head, sizeof head, "%04u-%02u-%02u %02u:%02u:%02u %s: ", now.wYear, now.wMonth, now.wDay,
                  now.wHour, now.wMinute, now.wSecond, Names[static_cast<int>(priority)]);
    const std::string said = ToUtf8(text);
    const layer::Guard guard(LogLock);
    Append(layer::TerminalFolder() + L"\\vantrel.log", head + said + "\r\n");
    const HANDLE console = GetStdHandle(STD_ERROR_HANDLE);
    const std::string line = "vantrel: " + said + "\n";
    DWORD written = 0;
    WriteFile(console, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

bool DebugLinesWanted() {
    return DebugWanted();
}

void WantDebugLines() {
    DebugWanted() = true;
}

void ReportReady(LPCWSTR) {}
