// A terminal's program as far as its consumers see it: it broadcasts scans as fast as they are taken and
// counts them. On standard input "scan FIRST COUNT [MILLISECONDS]" sends labels L<number>; "done" is the
// answer.
#include <atomic>
#include <cstdio>
#include <cstring>
#include <thread>

#include "platform/program.h"
#include "platform/window.h"
#include "scan/decode_record.h"
#include "shell/shell_state.h"
#include "shell/status.h"

namespace {

std::atomic<DWORD> Begun, Delivered;
DWORD Run;
UINT MsgQuery, MsgDecode;

LRESULT CALLBACK Answer(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != MsgQuery) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    switch (static_cast<StatusValue>(wParam)) {
        case StatusValue::Run:
            return Run;
        case StatusValue::ScansBegun:
            return Begun;
        case StatusValue::ScansDelivered:
            return Delivered;
        default:
            return 0;
    }
}

void Deliver(HWND window, int number) {
    ++Begun;
    DecodeRecord record{};
    record.source = 7;
    record.codeType = 'I';
    char text[16];
    record.length = static_cast<DWORD>(std::snprintf(text, sizeof text, "L%06d", number));
    std::memcpy(record.data, text, record.length);
    COPYDATASTRUCT copy{};
    copy.dwData = MsgDecode;
    copy.cbData = sizeof record;
    copy.lpData = &record;
    SendMessageW(HWND_BROADCAST, WM_COPYDATA, reinterpret_cast<WPARAM>(window),
                 reinterpret_cast<LPARAM>(&copy));
    SendMessageW(HWND_BROADCAST, MsgDecode, 7, 0);
    ++Delivered;
}

void Serve(HWND window) {
    char line[100];
    while (std::fgets(line, sizeof line, stdin) != nullptr) {
        int first = 0, count = 0, pause = 0;
        if (std::sscanf(line, "scan %d %d %d", &first, &count, &pause) >= 2) {
            for (int number = first; number < first + count; ++number) {
                Deliver(window, number);
                Sleep(static_cast<DWORD>(pause));
            }
        }
        std::puts("done");
        std::fflush(stdout);
    }
    layer::EndProgram(0);
}

}  // namespace

int main() {
    layer::StartHiddenWindows();
    Run = GetTickCount() | 1;
    MsgQuery = RegisterWindowMessageW(QueryStatusMessage);
    MsgDecode = RegisterWindowMessageW(TEXT("WM_DECODE"));
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = Answer;
    windowClass.lpszClassName = WindowClassName;
    RegisterClassW(&windowClass);
    const HWND window =
        CreateWindowExW(0, WindowClassName, WindowTitle, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    std::thread(Serve, window).detach();
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0)) {
        DispatchMessageW(&message);
    }
    layer::EndProgram(0);
}
