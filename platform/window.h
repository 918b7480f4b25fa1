// Windows, messages, timers, dialogs, menus and resources. All windows belong to the main thread; calls from
// other threads are carried there and wait.
#pragma once

#include "platform/kernel.h"

#ifdef _WIN32

#define FindWindowW TerminalFindWindowW
#define SendMessageW TerminalSendMessageW
#define CreateWindowExW TerminalCreateWindowExW
#define ShowWindow TerminalShowWindow

#else

using WNDPROC = LRESULT(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);
using DLGPROC = INT_PTR(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);
using TIMERPROC = void(CALLBACK*)(HWND, UINT, UINT_PTR, DWORD);

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};

struct WNDCLASSW {
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCWSTR lpszMenuName;
    LPCWSTR lpszClassName;
};

struct NMHDR {
    HWND hwndFrom;
    UINT_PTR idFrom;
    UINT code;
};

struct COPYDATASTRUCT {
    ULONG_PTR dwData;
    DWORD cbData;
    LPVOID lpData;
};

struct TPMPARAMS;

#define WM_CREATE 0x0001
#define WM_DESTROY 0x0002
#define WM_SIZE 0x0005
#define WM_CLOSE 0x0010
#define WM_QUIT 0x0012
#define WM_COPYDATA 0x004A
#define WM_NOTIFY 0x004E
#define WM_INITDIALOG 0x0110
#define WM_COMMAND 0x0111
#define WM_TIMER 0x0113
#define WM_LBUTTONDOWN 0x0201
#define WM_USER 0x0400

#define WS_VISIBLE 0x10000000u
#define CW_USEDEFAULT (static_cast<int>(0x80000000u))
#define GWL_STYLE (-16)
#define SM_CMONITORS 80
#define ASFW_ANY 0xFFFFFFFFu
#define SW_HIDE 0
#define SW_SHOWNORMAL 1
#define SWP_NOSIZE 0x0001
#define SWP_NOMOVE 0x0002
#define SWP_NOZORDER 0x0004
#define SWP_NOACTIVATE 0x0010
#define SWP_FRAMECHANGED 0x0020
#define SWP_SHOWWINDOW 0x0040
#define HWND_TOP (reinterpret_cast<HWND>(0))
#define HWND_TOPMOST (reinterpret_cast<HWND>(static_cast<LONG_PTR>(-1)))
#define HWND_BROADCAST (reinterpret_cast<HWND>(static_cast<LONG_PTR>(0xFFFF)))

#define IDOK 1
#define IDCANCEL 2
#define MB_OK 0x00000000u
#define WHITE_BRUSH 0
#define IDC_WAIT MAKEINTRESOURCEW(32514)

#define EN_CHANGE 0x0300
#define EM_LIMITTEXT 0x00C5

#define MF_BYCOMMAND 0x0000
#define MF_UNCHECKED 0x0000
#define MF_CHECKED 0x0008
#define MF_ENABLED 0x0000
#define MF_GRAYED 0x0001
#define TPM_RIGHTALIGN 0x0008
#define TPM_BOTTOMALIGN 0x0020

// Where the program begins; it writes it. Its result is the exit code.
int WINAPI WinMain(HINSTANCE instance, HINSTANCE previous, LPSTR commandLine, int showCommand);

// Window classes and windows. A window is found by its class and title among the programs of the terminal.
ATOM RegisterClassW(const WNDCLASSW* windowClass);
HWND CreateWindowExW(DWORD extendedStyle, LPCWSTR className, LPCWSTR title, DWORD style, int x, int y,
                     int width, int height, HWND parent, HMENU menu, HINSTANCE instance, LPVOID parameter);
BOOL DestroyWindow(HWND window);
LRESULT DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
BOOL IsWindow(HWND window);
BOOL IsWindowVisible(HWND window);
HWND FindWindowW(LPCWSTR className, LPCWSTR title);
BOOL ShowWindow(HWND window, int command);
BOOL UpdateWindow(HWND window);
BOOL SetWindowPos(HWND window, HWND after, int x, int y, int width, int height, UINT flags);
BOOL GetWindowRect(HWND window, RECT* rectangle);
int MapWindowPoints(HWND from, HWND to, POINT* points, UINT count);
BOOL ScreenToClient(HWND window, POINT* point);
// The window that has the input focus, when it belongs to this program; else null.
HWND GetForegroundWindow();
BOOL SetForegroundWindow(HWND window);
// Lets the program with this number (ASFW_ANY: whichever) bring a window of its own in front.
BOOL AllowSetForegroundWindow(DWORD program);
HWND GetActiveWindow();
HWND SetActiveWindow(HWND window);
BOOL SetWindowTextW(HWND window, LPCWSTR text);
LONG GetWindowLongW(HWND window, int index);
LONG SetWindowLongW(HWND window, int index, LONG value);

// SM_CMONITORS: how many screens somebody can look at; other values give 0.
int GetSystemMetrics(int index);

// Messages. HWND_BROADCAST reaches the top-level windows of every program of the terminal and waits at most 5
// s altogether.
LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
UINT RegisterWindowMessageW(LPCWSTR name);
BOOL GetMessageW(MSG* message, HWND window, UINT first, UINT last);
BOOL TranslateMessage(const MSG* message);
LRESULT DispatchMessageW(const MSG* message);
void PostQuitMessage(int exitCode);
DWORD GetMessagePos();

// One-shot and repeating timers of a window, in milliseconds; any thread. Setting a running one starts it
// anew.
UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure);
BOOL KillTimer(HWND window, UINT_PTR id);

// Dialogs from resource templates.
INT_PTR DialogBoxParamW(HINSTANCE instance, LPCWSTR dialogTemplate, HWND owner, DLGPROC procedure,
                        LPARAM parameter);
HWND CreateDialogParamW(HINSTANCE instance, LPCWSTR dialogTemplate, HWND owner, DLGPROC procedure,
                        LPARAM parameter);
BOOL EndDialog(HWND dialog, INT_PTR result);
int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT style);
HWND GetDlgItem(HWND dialog, int id);
BOOL SetDlgItemTextW(HWND dialog, int id, LPCWSTR text);
UINT GetDlgItemTextW(HWND dialog, int id, LPWSTR text, int size);
BOOL SetDlgItemInt(HWND dialog, int id, UINT value, BOOL isSigned);
UINT GetDlgItemInt(HWND dialog, int id, BOOL* translated, BOOL isSigned);
LRESULT SendDlgItemMessageW(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam);

// Resources of the program.
int LoadStringW(HINSTANCE instance, UINT id, LPWSTR buffer, int size);
HICON LoadIconW(HINSTANCE instance, LPCWSTR name);
BOOL DestroyIcon(HICON icon);
HBITMAP LoadBitmapW(HINSTANCE instance, LPCWSTR name);
BOOL DeleteObject(HGDIOBJ object);
HGDIOBJ GetStockObject(int object);
HCURSOR LoadCursorW(HINSTANCE instance, LPCWSTR name);
HCURSOR GetCursor();
HCURSOR SetCursor(HCURSOR cursor);

// Menus.
HMENU LoadMenuW(HINSTANCE instance, LPCWSTR name);
HMENU GetSubMenu(HMENU menu, int position);
BOOL DestroyMenu(HMENU menu);
DWORD CheckMenuItem(HMENU menu, UINT id, UINT flags);
BOOL EnableMenuItem(HMENU menu, UINT id, UINT flags);
BOOL TrackPopupMenuEx(HMENU menu, UINT flags, int x, int y, HWND window, TPMPARAMS* exclude);

#endif
