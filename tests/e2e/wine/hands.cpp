// The user's hands and eyes on a Windows desktop, for the end-to-end tests: a program that takes commands on
// standard input, one a line, and answers each on standard output. It has a window that notes what is typed
// into it.
//
//   terminal ID    whose program it works: the number that its windows and the names of its objects carry, in
//                  16 hexadecimal digits
//   trigger KEY    "down", "up", or "press" and milliseconds: "trigger taken", "late" when it is not in 5 s,
//                  as under a box of the program, or "nobody there"
//   typed          what the window has got since the last time: "typed" and hexadecimal digits
//   front [WINDOW] brings the note window, or another one, to the front
//   foreground     "foreground ID" of the window in front
//   windows        a line per visible top-level window, the lowest first: "window ID X Y WIDTH HEIGHT TITLE"
//   text WINDOW    "text" and a line for each line of the parts of a window that can be seen, but for a
//                  status bar
//   press KEY...   presses virtual keys (decimal), all down in order and up again
//   click X Y      taps the screen
//   keys           "keys up" when none is down and no lock is on, else "keys down"
//   close          asks the main window to close, as the end of a session does
//   sender         "sender main" when the last WM_COPYDATA came from the main window, else "sender other"
//   hold FILE      opens the file and lets nobody else
//   shared         "shared N": how many of the terminal's shared objects exist
//   quit
//
// Every answer ends with a line "ok".
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

HWND Note;
HWND Sender;
std::string Terminal;
constexpr UINT ComeForward = WM_APP, HandOver = WM_APP + 1;

std::string ToUtf8(const wchar_t* text) {
    char bytes[3 * 4096];
    const int length = WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes, sizeof bytes, nullptr, nullptr);
    return length > 0 ? bytes : "";
}

LRESULT CALLBACK NoteProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    static std::string noted;
    if (message == WM_CHAR) {
        noted += static_cast<char>(wParam == '\r' ? '\n' : wParam);
    } else if (message == HandOver) {
        *reinterpret_cast<std::string*>(lParam) = std::exchange(noted, {});
    } else if (message == ComeForward) {
        // Only a window's own thread may hand the foreground on without being asked back.
        SetForegroundWindow(reinterpret_cast<HWND>(wParam));
    } else if (message == WM_COPYDATA) {
        Sender = reinterpret_cast<HWND>(wParam);
        return TRUE;
    } else {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    return 0;
}

BOOL CALLBACK AddVisible(HWND window, LPARAM windows) {
    if (IsWindowVisible(window)) {
        reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window);
    }
    return TRUE;
}

void SayWindows(const std::string&) {
    std::vector<HWND> found;
    EnumWindows(AddVisible, reinterpret_cast<LPARAM>(&found));
    for (auto window = found.rbegin(); window != found.rend(); ++window) {
        RECT place{};
        wchar_t title[512] = {};
        GetWindowRect(*window, &place);
        // Without a message to a program that may hang.
        InternalGetWindowText(*window, title, 512);
        std::printf("window %llu %ld %ld %ld %ld %s\n", reinterpret_cast<ULONG_PTR>(*window), place.left,
                    place.top, place.right - place.left, place.bottom - place.top, ToUtf8(title).c_str());
    }
}

HWND WindowOf(const std::string& argument) {
    return reinterpret_cast<HWND>(static_cast<ULONG_PTR>(std::strtoul(argument.c_str(), nullptr, 10)));
}

void SayText(const std::string& argument) {
    std::vector<HWND> parts;
    EnumChildWindows(WindowOf(argument), AddVisible, reinterpret_cast<LPARAM>(&parts));
    for (const HWND part : parts) {
        wchar_t text[4096] = {};
        GetClassNameW(part, text, 4096);
        if (text == std::wstring(L"msctls_statusbar32")) {
            continue;
        }
        SendMessageTimeoutW(part, WM_GETTEXT, 4096, reinterpret_cast<LPARAM>(text), SMTO_ABORTIFHUNG, 2000,
                            nullptr);
        std::string line = "text ";
        for (const char letter : ToUtf8(text)) {
            line += letter == '\n' ? "\ntext " : std::string(letter != '\r', letter);
        }
        std::puts(line.c_str());
    }
}

void PressKeys(const std::string& keys) {
    std::istringstream words(keys);
    const std::vector<int> codes{std::istream_iterator<int>(words), {}};
    const auto send = [](int code, DWORD flags) {
        keybd_event(static_cast<BYTE>(code), static_cast<BYTE>(MapVirtualKeyW(code, MAPVK_VK_TO_VSC)), flags,
                    0);
    };
    for (const int code : codes) {
        send(code, 0);
    }
    for (auto code = codes.rbegin(); code != codes.rend(); ++code) {
        send(*code, KEYEVENTF_KEYUP);
    }
}

void Click(const std::string& place) {
    int x = 0, y = 0;
    std::istringstream(place) >> x >> y;
    SetCursorPos(x, y);
    mouse_event(MOUSEEVENTF_LEFTDOWN, 0, 0, 0, 0);
    mouse_event(MOUSEEVENTF_LEFTUP, 0, 0, 0, 0);
}

void SayKeys(const std::string&) {
    bool down = (GetKeyState(VK_CAPITAL) & 1) != 0;
    for (int key = VK_BACK; key < 0xFF; ++key) {
        down = down || (GetAsyncKeyState(key) & 0x8000) != 0;
    }
    std::puts(down ? "keys down" : "keys up");
}

void SayTyped(const std::string&) {
    std::string noted;
    SendMessageW(Note, HandOver, 0, reinterpret_cast<LPARAM>(&noted));
    std::printf("typed ");
    for (const char letter : noted) {
        std::printf("%02X", static_cast<unsigned char>(letter));
    }
    std::puts("");
}

void SayShared(const std::string&) {
    const std::wstring name = L"Local\\vantrel-" + std::wstring(Terminal.begin(), Terminal.end()) + L"-";
    int found = 0;
    for (const HANDLE object :
         {OpenEventW(SYNCHRONIZE, FALSE, (name + L"DecodeEvent").c_str()),
          OpenFileMappingW(FILE_MAP_READ, FALSE, (name + L"QuenraDataQueue").c_str())}) {
        found += object != nullptr && CloseHandle(object) ? 1 : 0;
    }
    std::printf("shared %d\n", found);
}

HWND MainWindow() {
    const ULONG_PTR mark = std::strtoull(Terminal.c_str(), nullptr, 16);
    HWND window = nullptr;
    do {
        window = FindWindowExW(nullptr, window, L"Vantrel", L"Vantrel v1.29");
    } while (window != nullptr && reinterpret_cast<ULONG_PTR>(GetPropW(window, L"VantrelTerminal")) != mark);
    return window;
}

enum class Answer { NobodyThere, Late, Taken };

Answer Send(LPCWSTR message) {
    const HWND window = MainWindow();
    // The time of the key, on the clock of vantrel-trigger.
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const DWORD time = static_cast<DWORD>((ULONGLONG{now.dwHighDateTime} << 32 | now.dwLowDateTime) / 10'000);
    DWORD_PTR result = 0;
    SetLastError(ERROR_SUCCESS);
    if (window != nullptr && SendMessageTimeoutW(window, RegisterWindowMessageW(message), time | 1u, 0,
                                                 SMTO_NORMAL, 5000, &result) != 0) {
        return Answer::Taken;
    }
    return GetLastError() == ERROR_TIMEOUT ? Answer::Late : Answer::NobodyThere;
}

void PullTrigger(const std::string& words) {
    Answer answer = words != "up" ? Send(L"WM_USER1DOWN") : Answer::Taken;
    if (words.starts_with("press ")) {
        Sleep(static_cast<DWORD>(std::strtoul(words.c_str() + 6, nullptr, 10)));
    }
    if (words != "down" && answer != Answer::NobodyThere) {
        answer = Send(L"WM_USER1UP");
    }
    constexpr const char* names[] = {"nobody there", "late", "taken"};
    std::printf("trigger %s\n", names[static_cast<int>(answer)]);
}

const std::map<std::string, void (*)(const std::string&)> Commands = {
    {"terminal", [](const std::string& identity) { Terminal = identity; }},
    {"trigger", PullTrigger},
    {"typed", SayTyped},
    {"front",
     [](const std::string& window) {
         const HWND wanted = window.empty() ? Note : WindowOf(window);
         SendMessageW(Note, ComeForward, reinterpret_cast<WPARAM>(wanted), 0);
     }},
    {"foreground",
     [](const std::string&) {
         std::printf("foreground %llu\n", reinterpret_cast<ULONG_PTR>(GetForegroundWindow()));
     }},
    {"windows", SayWindows},
    {"text", SayText},
    {"press", PressKeys},
    {"click", Click},
    {"keys", SayKeys},
    {"close", [](const std::string&) { PostMessageW(MainWindow(), WM_CLOSE, 0, 0); }},
    {"sender",
     [](const std::string&) { std::puts(Sender == MainWindow() ? "sender main" : "sender other"); }},
    {"hold",
     [](const std::string& file) {
         CreateFileA(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
     }},
    {"shared", SayShared},
    {"quit", [](const std::string&) { ExitProcess(0); }}};

DWORD WINAPI TakeCommands(LPVOID) {
    for (std::string line; std::getline(std::cin, line); std::fflush(stdout)) {
        line.erase(line.find_last_not_of('\r') + 1);
        const std::size_t space = std::min(line.find(' '), line.size());
        Commands.at(line.substr(0, space))(line.substr(std::min(space + 1, line.size())));
        std::puts("ok");
    }
    ExitProcess(0);
}

}  // namespace

int main() {
    WNDCLASSW note{};
    note.lpfnWndProc = NoteProc;
    note.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
    note.lpszClassName = L"VantrelHands";
    RegisterClassW(&note);
    Note = CreateWindowExW(0, note.lpszClassName, L"typed into", WS_POPUP | WS_VISIBLE, 0, 340, 200, 100,
                           nullptr, nullptr, nullptr, nullptr);
    SetForegroundWindow(Note);
    std::puts("ready");
    std::fflush(stdout);
    CloseHandle(CreateThread(nullptr, 0, TakeCommands, nullptr, 0, nullptr));
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
