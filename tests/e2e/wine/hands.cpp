// The user's hands and eyes on a Windows desktop, for the end-to-end tests: a program that takes commands on
// standard input, one a line, and answers each on standard output. It has a window that notes what is typed
// into it.
//
//   terminal ID    whose program it works: the number that its windows and the names of its objects carry, in
//                  16 hexadecimal digits
//   trigger KEY    "down", "up", or "press" and milliseconds: "trigger taken", "late" when it is not in 5 s
//   (the
//                  program may show a box over it), or "nobody there"
//   typed          what the window has got since the last time: "typed" and hexadecimal digits
//   front [WINDOW] brings the note window, or another one, to the front
//   foreground     "foreground ID" of the window in front
//   windows        a line per visible top-level window, the lowest first: "window ID X Y WIDTH HEIGHT TITLE"
//   text WINDOW    "text" and a line for each line of a message box, an editor, or a window's own text
//   press KEY...   presses virtual keys (decimal), all down in order and up again
//   click X Y      taps the screen
//   keys           "keys up" when none is down and no lock is on, else "keys down"
//   close          asks the main window to close, as the end of a session does
//   hold FILE      opens the file and lets nobody else
//   shared         "shared N": how many of the terminal's shared objects exist
//   quit
//
// Every answer ends with a line "ok", or "error" and why.
#include <windows.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace {

HWND Note;
std::string Terminal;
std::string Noted;
SRWLOCK NotedLock = SRWLOCK_INIT;

std::string ToUtf8(const wchar_t* text) {
    char bytes[3 * 4096];
    const int length = WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes, sizeof bytes, nullptr, nullptr);
    return length > 0 ? bytes : "";
}

LRESULT CALLBACK NoteProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CHAR) {
        AcquireSRWLockExclusive(&NotedLock);
        Noted += static_cast<char>(wParam == '\r' ? '\n' : wParam);
        ReleaseSRWLockExclusive(&NotedLock);
        return 0;
    }
    if (message == WM_APP) {
        // Only a window's own thread may hand the foreground on without being asked back.
        SetForegroundWindow(reinterpret_cast<HWND>(wParam));
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void SayWindow(HWND window) {
    RECT place{};
    wchar_t title[512] = {};
    GetWindowRect(window, &place);
    // Without a message to a program that may hang.
    InternalGetWindowText(window, title, 512);
    std::printf("window %lu %ld %ld %ld %ld %s\n",
                static_cast<unsigned long>(reinterpret_cast<ULONG_PTR>(window)), place.left, place.top,
                place.right - place.left, place.bottom - place.top, ToUtf8(title).c_str());
}

BOOL CALLBACK AddVisible(HWND window, LPARAM windows) {
    if (IsWindowVisible(window)) {
        reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window);
    }
    return TRUE;
}

void SayWindows() {
    std::vector<HWND> found;
    EnumWindows(AddVisible, reinterpret_cast<LPARAM>(&found));
    for (auto window = found.rbegin(); window != found.rend(); ++window) {
        SayWindow(*window);
    }
}

HWND WindowOf(const std::string& argument) {
    return reinterpret_cast<HWND>(static_cast<ULONG_PTR>(std::strtoul(argument.c_str(), nullptr, 10)));
}

void SayText(HWND window) {
    constexpr int MessageText = 0xFFFF;
    wchar_t text[4096] = {};
    HWND source = GetDlgItem(window, MessageText);
    source = source != nullptr ? source : FindWindowExW(window, nullptr, L"Edit", nullptr);
    SendMessageTimeoutW(source != nullptr ? source : window, WM_GETTEXT, 4096, reinterpret_cast<LPARAM>(text),
                        SMTO_ABORTIFHUNG, 2000, nullptr);
    std::string line = "text ";
    for (const char letter : ToUtf8(text)) {
        line += letter == '\n' ? "\ntext " : std::string(letter != '\r', letter);
    }
    std::puts(line.c_str());
}

void PressKeys(const std::string& keys) {
    std::vector<WORD> codes;
    for (const char* at = keys.c_str(); *at != 0;) {
        char* end = nullptr;
        codes.push_back(static_cast<WORD>(std::strtoul(at, &end, 10)));
        if (end == at) {
            return;
        }
        at = end;
    }
    const auto send = [](WORD code, DWORD flags) {
        INPUT input{};
        input.type = INPUT_KEYBOARD;
        input.ki.wVk = code;
        input.ki.wScan = static_cast<WORD>(MapVirtualKeyW(code, MAPVK_VK_TO_VSC));
        input.ki.dwFlags = flags;
        SendInput(1, &input, sizeof input);
    };
    for (const WORD code : codes) {
        send(code, 0);
    }
    for (auto code = codes.rbegin(); code != codes.rend(); ++code) {
        send(*code, KEYEVENTF_KEYUP);
    }
}

void Click(const std::string& place) {
    int x = 0, y = 0;
    if (std::sscanf(place.c_str(), "%d %d", &x, &y) == 2) {
        SetCursorPos(x, y);
        for (const DWORD flags : {MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP}) {
            INPUT input{};
            input.type = INPUT_MOUSE;
            input.mi.dwFlags = flags;
            SendInput(1, &input, sizeof input);
        }
    }
}

bool KeysAreUp() {
    for (int key = VK_BACK; key < 0xFF; ++key) {
        if ((GetAsyncKeyState(key) & 0x8000) != 0) {
            return false;
        }
    }
    return (GetKeyState(VK_CAPITAL) & 1) == 0;
}

void SayTyped() {
    AcquireSRWLockExclusive(&NotedLock);
    const std::string noted = std::exchange(Noted, {});
    ReleaseSRWLockExclusive(&NotedLock);
    std::string digits;
    for (const char letter : noted) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02X", static_cast<unsigned char>(letter));
        digits += pair;
    }
    std::printf("typed %s\n", digits.c_str());
}

void SayShared() {
    int found = 0;
    const std::wstring name = L"Local\\vantrel-" + std::wstring(Terminal.begin(), Terminal.end()) + L"-";
    if (const HANDLE event = OpenEventW(SYNCHRONIZE, FALSE, (name + L"DecodeEvent").c_str())) {
        CloseHandle(event);
        ++found;
    }
    if (const HANDLE mapping = OpenFileMappingW(FILE_MAP_READ, FALSE, (name + L"QuenraDataQueue").c_str())) {
        CloseHandle(mapping);
        ++found;
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

void Obey(const std::string& word, const std::string& rest) {
    if (word == "terminal") {
        Terminal = rest;
    } else if (word == "trigger") {
        PullTrigger(rest);
    } else if (word == "typed") {
        SayTyped();
    } else if (word == "front") {
        const HWND window = rest.empty() ? Note : WindowOf(rest);
        SendMessageW(Note, WM_APP, reinterpret_cast<WPARAM>(window), 0);
    } else if (word == "foreground") {
        std::printf("foreground %lu\n",
                    static_cast<unsigned long>(reinterpret_cast<ULONG_PTR>(GetForegroundWindow())));
    } else if (word == "windows") {
        SayWindows();
    } else if (word == "text") {
        SayText(WindowOf(rest));
    } else if (word == "press") {
        PressKeys(rest);
    } else if (word == "click") {
        Click(rest);
    } else if (word == "keys") {
        std::puts(KeysAreUp() ? "keys up" : "keys down");
    } else if (word == "close") {
        PostMessageW(MainWindow(), WM_CLOSE, 0, 0);
    } else if (word == "hold") {
        CreateFileA(rest.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    } else if (word == "shared") {
        SayShared();
    } else {
        std::puts("error unknown");
        return;
    }
    std::puts("ok");
}

DWORD WINAPI TakeCommands(LPVOID) {
    char line[4096];
    while (std::fgets(line, sizeof line, stdin) != nullptr) {
        std::string command = line;
        while (!command.empty() && (command.back() == '\n' || command.back() == '\r')) {
            command.pop_back();
        }
        const std::size_t space = command.find(' ');
        const std::string word = command.substr(0, space);
        if (word == "quit") {
            break;
        }
        Obey(word, space == command.npos ? "" : command.substr(space + 1));
        std::fflush(stdout);
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
