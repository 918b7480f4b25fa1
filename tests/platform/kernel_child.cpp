// A second program of the terminal, for the tests: does what it is told on standard input, a command a line,
// and answers with a line each.
#include <unistd.h>

#include <array>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>

#include "platform/files.h"
#include "platform/kernel.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/kernel/thread.h"

namespace {

constexpr DWORD VibratorCode = 0x24321015;

HANDLE Event = nullptr;
HANDLE Reader = nullptr;
HANDLE Writer = nullptr;
HANDLE File = INVALID_HANDLE_VALUE;

HANDLE OpenQueue(BOOL reads) {
    MSGQUEUEOPTIONS options{sizeof options, 0, 1, 4232, reads};
    return CreateMsgQueue(TEXT("TestQueue"), &options);
}

DWORD VibrateForEver(LPVOID) {
    for (;;) {
        DWORD on = 1;
        KernelIoControl(VibratorCode, &on, sizeof on, nullptr, 0, nullptr);
    }
}

std::string Do(const std::string& line) {
    std::istringstream words(line);
    std::string command;
    std::string word;
    DWORD number = 0;
    words >> command;
    std::array<char, 4232> record{};
    if (command == "event") {
        Event = CreateEventW(nullptr, FALSE, FALSE, TEXT("TestEvent"));
        return Event != nullptr ? "ok" : "failed";
    }
    if (command == "queue") {
        Reader = OpenQueue(TRUE);
        Writer = OpenQueue(FALSE);
        return Reader != nullptr && Writer != nullptr ? "ok" : "failed";
    }
    if (command == "set") {
        return EventModify(Event, EVENT_SET) ? "ok" : "failed";
    }
    if (command == "wait" && words >> number) {
        const DWORD result = WaitForSingleObject(Event, number);
        return result == WAIT_OBJECT_0 ? "set" : result == WAIT_TIMEOUT ? "timeout" : "failed";
    }
    if (command == "write" && words >> word) {
        word.copy(record.data(), record.size());
        return WriteMsgQueue(Writer, record.data(), record.size(), 0, 0) ? "ok" : "failed";
    }
    if (command == "read" && words >> number) {
        DWORD size = 0;
        DWORD flags = 1;
        const BOOL read = ReadMsgQueue(Reader, record.data(), record.size(), &size, number, &flags);
        return read && size == record.size() && flags == 0 ? record.data() : "nothing";
    }
    if ((command == "open" || command == "create") && words >> word) {
        File = CreateFileW(layer::FromUtf8(word).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                           command == "open" ? OPEN_EXISTING : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        return File != INVALID_HANDLE_VALUE ? "ok" : "failed";
    }
    if (command == "put" && words >> word) {
        DWORD written = 0;
        return WriteFile(File, word.data(), static_cast<DWORD>(word.size()), &written, nullptr) ? "ok"
                                                                                                : "failed";
    }
    if (command == "vibrate") {
        return CreateThread(nullptr, 0, VibrateForEver, nullptr, 0, nullptr) != nullptr ? "ok" : "failed";
    }
    return "what?";
}

}  // namespace

int main() {
    layer::SetMainThread();
    std::string line;
    while (std::getline(std::cin, line) && line != "end") {
        std::cout << Do(line) << std::endl;
    }
    layer::BeginEnd();
    _exit(0);
}
