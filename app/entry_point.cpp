#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "app/init_thread.h"
#include "app/main_window.h"
#include "link/reading.h"
#include "platform/base.h"
#include "platform/controls.h"
#include "platform/log.h"
#include "platform/shell.h"
#include "platform/window.h"
#include "resources/resource.h"
#include "scan/barcode_data.h"
#include "scan/read_feedback.h"
#include "scan/rfid_data.h"
#include "settings/catalogue.h"
#include "shell/log.h"
#include "shell/shell_state.h"
#include "ui/tree_view.h"

namespace {

// The area left by the input panel, and by the menu bar unless the docked panel covers it.
void FitToDesktop(HWND window) {
    SIPINFO panel = {};
    panel.cbSize = sizeof panel;
    SipGetInfo(&panel);
    int height = panel.rcVisibleDesktop.bottom - panel.rcVisibleDesktop.top;
    const int width = panel.rcVisibleDesktop.right - panel.rcVisibleDesktop.left;
    constexpr DWORD docked = SIPF_ON | SIPF_DOCKED;
    if ((panel.fdwFlags & docked) != docked) {
        RECT bar = {};
        GetWindowRect(ShellState.MenuBarInfo.hwndMB, &bar);
        height -= bar.bottom - bar.top;
    }
    SetWindowPos(window, HWND_TOP, 0, 0, width, height,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED | SWP_SHOWWINDOW);
}

HWND CreateMainWindow(HINSTANCE instance, int showCommand) {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = MainWndProc;
    windowClass.hInstance = instance;
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
    windowClass.lpszClassName = WindowClassName;
    if (!RegisterClassW(&windowClass)) {
        return nullptr;
    }
    HWND window = CreateWindowExW(0, WindowClassName, WindowTitle, WS_VISIBLE, 0, 0, CW_USEDEFAULT,
                                  CW_USEDEFAULT, nullptr, nullptr, instance, nullptr);
    if (!IsWindow(window)) {
        return nullptr;
    }
    SHMENUBARINFO& bar = ShellState.MenuBarInfo;
    bar.cbSize = sizeof bar;
    bar.hwndParent = window;
    bar.dwFlags = SHCMBF_EMPTYBAR;
    SHCreateMenuBar(&bar);

    FitToDesktop(window);
    ShowWindow(window, showCommand);
    UpdateWindow(window);
    SetWindowPos(window, HWND_TOP, 100, 100, 1, 1, SWP_NOACTIVATE | SWP_SHOWWINDOW);
    return window;
}

void AddTrayIcon(HWND window) {
    NOTIFYICONDATAW& icon = ShellState.TrayIconData;
    icon.cbSize = sizeof icon;
    icon.hWnd = window;
    icon.uID = IDI_TRAY;
    icon.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
    icon.uCallbackMessage = WM_TRAYNOTIFY;
    icon.hIcon = ShellState.AppIcon;
    lstrcpyW(icon.szTip, WindowTitle);
    Shell_NotifyIconW(NIM_ADD, &icon);
}

// The words behind the program's name.
struct CommandLine {
    bool Settings = false;     // "--settings": the sheet opens whatever the readers answer
    bool Verbose = false;      // "--verbose": the diary's debug lines
    bool Version = false;      // "--version"
    bool Help = false;         // "--help"
    std::string_view Unknown;  // the first word that is none of these
};

constexpr std::array<std::pair<std::string_view, bool CommandLine::*>, 4> Options{{
    {"--settings", &CommandLine::Settings},
    {"--verbose", &CommandLine::Verbose},
    {"--version", &CommandLine::Version},
    {"--help", &CommandLine::Help},
}};

// Reads words between blanks. What it returns lives as long as the text.
CommandLine ReadCommandLine(std::string_view text) {
    CommandLine line;
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
        const std::string_view word = text.substr(0, text.find_first_of(" \t"));
        if (word.empty()) {
            return line;
        }
        text.remove_prefix(word.size());
        const auto* option = std::ranges::find(Options, word, &decltype(Options)::value_type::first);
        if (option != Options.end()) {
            line.*option->second = true;
        } else if (line.Unknown.empty()) {
            line.Unknown = word;
        }
    }
}

// What else than running the command line asks for; -1 for nothing, else the exit code.
int AnswerCommandLine(const CommandLine& line) {
    if (line.Version) {
        WriteLogLine(LogPriority::Notice, WindowTitle);
        return 0;
    }
    if (line.Help || !line.Unknown.empty()) {
        WriteLogLine(line.Help ? LogPriority::Notice : LogPriority::Error,
                     TEXT("usage: vantrel [--settings] [--verbose] [--version] [--help]"));
        return line.Help ? 0 : 2;
    }
    return -1;
}

int RunMessageLoop() {
    MSG message = {};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        HWND sheet = ShellState.SettingsSheet;
        if (sheet && SendMessageW(sheet, PSM_ISDIALOGMESSAGE, 0, reinterpret_cast<LPARAM>(&message))) {
            continue;
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return static_cast<int>(message.wParam);
}

constexpr DWORD LongestEnd = 5000;  // milliseconds
constexpr DWORD LookAgain = 50;

// Tells a running instance to show its settings. An ending one is not found any more, perhaps only from now
// on.
bool HandOver() {
    HWND running = FindWindowW(WindowClassName, WindowTitle);
    if (!running) {
        return false;
    }
    AllowSetForegroundWindow(ASFW_ANY);
    SendMessageW(running, WM_OPENSETTINGS, 0, 0);
    return FindWindowW(WindowClassName, WindowTitle) != nullptr;
}

// Whether this start goes on: no other instance runs. One that runs shows its settings instead; one that is
// just ending is waited for, 5 s at most, since the readers' ports are its until its end.
bool BecomeOnlyInstance() {
    // Held until the process ends, whatever ends it: who gets it finds the ports free.
    HANDLE mutex = CreateMutexW(nullptr, FALSE, WindowClassName);
    if (!mutex) {
        Log(LogPriority::Warning, TEXT("another start at this instant would not be noticed"));
    }
    const DWORD start = GetTickCount();
    do {
        if (HandOver()) {
            return false;
        }
        const DWORD got = WaitForSingleObject(mutex, LookAgain);
        if (got == WAIT_OBJECT_0 || got == WAIT_ABANDONED) {
            return true;
        }
        if (got == WAIT_FAILED) {
            Sleep(LookAgain);
        }
    } while (GetTickCount() - start < LongestEnd);
    return true;
}

}  // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR commandLine, int showCommand) {
    const CommandLine words = ReadCommandLine(commandLine);
    if (const int answered = AnswerCommandLine(words); answered >= 0) {
        return answered;
    }
    if (words.Verbose) {
        WantDebugLines();
    }
    ReceiveHandlers = {HandleBarcodeData, HandleRfidData};
    PreviewSound = [](int number) { PlayReadSound(number); };

    ShellState.VibratorSemaphore = CreateSemaphoreW(nullptr, 0, 1, nullptr);
    ShellState.Instance = instance;
    SettingsAsked = words.Settings;
    if (!BecomeOnlyInstance()) {
        return 0;
    }
    // Without a screen nobody sees that nothing comes up.
    const int failed = GetSystemMetrics(SM_CMONITORS) == 0 ? 1 : 0;
    HWND window = CreateMainWindow(instance, showCommand);
    if (!window) {
        Log(LogPriority::Error,
            failed ? TEXT("no window: there is no screen") : TEXT("no window can be made"));
        return failed;
    }
    ShellState.MainWindow = window;
    INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_TREEVIEW_CLASSES | ICC_UPDOWN_CLASS};
    InitCommonControlsEx(&controls);
    AddTrayIcon(window);
    ShellState.StateImages = LoadStateImages(instance);
    HANDLE thread =
        ShellState.StateImages ? CreateThread(nullptr, 0, InitThread, nullptr, 0, nullptr) : nullptr;
    if (!thread) {
        Log(LogPriority::Error, TEXT("the program cannot start: %s"),
            ShellState.StateImages ? TEXT("no thread") : TEXT("no pictures for the settings"));
        return failed;
    }
    CloseHandle(thread);
    return RunMessageLoop();
}
