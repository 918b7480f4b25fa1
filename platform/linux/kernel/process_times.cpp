#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <string>

#include "platform/process.h"

HANDLE GetCurrentProcess() {
    return reinterpret_cast<HANDLE>(static_cast<INT_PTR>(-1));
}

BOOL GetProcessTimes(HANDLE process, FILETIME* creation, FILETIME* exit, FILETIME* kernel, FILETIME* user) {
    if (process != GetCurrentProcess()) {
        return FALSE;
    }
    *exit = *kernel = *user = {};
    std::ifstream file("/proc/self/stat");
    std::string text;
    std::getline(file, text);
    // The 20th field behind the name, which ends with the last bracket, counts clock ticks since the
    // machine's start.
    std::size_t at = text.rfind(')');
    for (int field = 0; field < 20 && at != std::string::npos; ++field) {
        at = text.find(' ', at + 1);
    }
    if (at == std::string::npos) {
        return FALSE;
    }
    const std::uint64_t ticks = std::strtoull(text.c_str() + at, nullptr, 10);
    const std::uint64_t time = ticks * (10'000'000u / static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK)));
    *creation = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    return TRUE;
}
