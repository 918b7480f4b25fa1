// A consumer of the broadcasts: a window that never shows itself.
#include <cstdio>

#include "platform/program.h"
#include "platform/window.h"
#include "tools/record_json.h"
#include "tools/watch.h"

namespace {

constexpr UINT_PTR IdleTimer = 1;

struct Watch {
    WatchOptions Options;
    UINT MsgDecode = 0;
    DWORD Seen = 0;
};
Watch TheWatch;

void RestartIdleTimer(HWND window) {
    if (TheWatch.Options.TimeoutSeconds != 0) {
        SetTimer(window, IdleTimer, TheWatch.Options.TimeoutSeconds * 1000, nullptr);
    }
}

void PrintRecord(const COPYDATASTRUCT& copy) {
    const auto* bytes = static_cast<const BYTE*>(copy.lpData);
    if (!PrintLine(RecordJson("copydata", {bytes, bytes == nullptr ? 0 : copy.cbData}))) {
        PostQuitMessage(1);
    }
}

// The second message of a scan is the one that counts: by then both have come.
void PrintDecode(HWND window, WPARAM source) {
    if (!PrintLine("{\"channel\":\"decode\",\"source\":" + std::to_string(source) + "}")) {
        PostQuitMessage(1);
        return;
    }
    ++TheWatch.Seen;
    if (TheWatch.Options.Count != 0 && TheWatch.Seen >= TheWatch.Options.Count) {
        PostQuitMessage(0);
        return;
    }
    RestartIdleTimer(window);
}

LRESULT CALLBACK WatchProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COPYDATA) {
        const auto* copy = reinterpret_cast<const COPYDATASTRUCT*>(lParam);
        if (copy != nullptr && copy->dwData == TheWatch.MsgDecode) {
            PrintRecord(*copy);
        }
        return TRUE;
    }
    if (message == TheWatch.MsgDecode) {
        PrintDecode(window, wParam);
        return 0;
    }
    if (message == WM_TIMER) {
        std::fputs("vantrel-watch: no scan came in time\n", stderr);
        PostQuitMessage(1);
        return 0;
    }
    if (message == WM_DESTROY) {
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace

int WatchMessages(const WatchOptions& options) {
    layer::StartHiddenWindows();
    TheWatch.Options = options;
    TheWatch.MsgDecode = RegisterWindowMessageW(TEXT("WM_DECODE"));
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = WatchProc;
    windowClass.lpszClassName = TEXT("VantrelWatch");
    RegisterClassW(&windowClass);
    const HWND window = CreateWindowExW(0, TEXT("VantrelWatch"), TEXT("Scan watcher"), 0, 0, 0, 0, 0, nullptr,
                                        nullptr, nullptr, nullptr);
    if (window == nullptr) {
        std::fputs("vantrel-watch: the window cannot be created\n", stderr);
        return 1;
    }
    RestartIdleTimer(window);
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return static_cast<int>(message.wParam);
}
