// The shell around the program: notification icon, menu bar, input panel, file dialog. Main thread.
#pragma once

#include "platform/window.h"

#ifdef _WIN32
#include <shellapi.h>
#define GetOpenFileNameW TerminalGetOpenFileNameW
#else

#define NIM_ADD 0x00000000
#define NIM_DELETE 0x00000002
#define NIF_MESSAGE 0x00000001
#define NIF_ICON 0x00000002
#define NIF_TIP 0x00000004

struct NOTIFYICONDATAW {
    DWORD cbSize;
    HWND hWnd;
    UINT uID;
    UINT uFlags;
    UINT uCallbackMessage;
    HICON hIcon;
    WCHAR szTip[64];
};
// Adds or deletes the icon in the notification area; where there is none, a small window with the icon stands
// in.
BOOL Shell_NotifyIconW(DWORD action, NOTIFYICONDATAW* data);

#define S_OK 0
#define E_FAIL (static_cast<HRESULT>(0x80004005))

struct NOTIFYICONIDENTIFIER {
    DWORD cbSize;
    HWND hWnd;
    UINT uID;
    BYTE guidItem[16];
};
// Where on the screen the icon is; S_OK, or E_FAIL where nobody tells.
HRESULT Shell_NotifyIconGetRect(const NOTIFYICONIDENTIFIER* identifier, RECT* place);

struct OPENFILENAMEW {
    DWORD lStructSize;
    HWND hwndOwner;
    HINSTANCE hInstance;
    LPCWSTR lpstrFilter;  // pairs of zero-ended strings, ended by an empty one
    LPWSTR lpstrCustomFilter;
    DWORD nMaxCustFilter;
    DWORD nFilterIndex;
    LPWSTR lpstrFile;
    DWORD nMaxFile;
    LPWSTR lpstrFileTitle;
    DWORD nMaxFileTitle;
    LPCWSTR lpstrInitialDir;
    LPCWSTR lpstrTitle;
    DWORD Flags;
    WORD nFileOffset;
    WORD nFileExtension;
    LPCWSTR lpstrDefExt;
    LPARAM lCustData;
    void* lpfnHook;
    LPCWSTR lpTemplateName;
};
#define OFN_HIDEREADONLY 0x00000004
#define OFN_PATHMUSTEXIST 0x00000800
// The path comes back in the platform's form (`\DiskOnChip\X`); no file outside the terminal folder can be
// chosen.
BOOL GetOpenFileNameW(OPENFILENAMEW* dialog);

#endif

// What desktop Windows lacks.

struct SHMENUBARINFO {
    DWORD cbSize;
    HWND hwndParent;
    DWORD dwFlags;
    UINT nToolBarId;
    HINSTANCE hInstRes;
    int nBmpId;
    int cBmpImages;
    HWND hwndMB;  // the menu bar's window, filled in
    COLORREF clrBk;
};
#define SHCMBF_EMPTYBAR 0x0001
BOOL SHCreateMenuBar(SHMENUBARINFO* info);

#define SIPF_ON 0x00000001
#define SIPF_DOCKED 0x00000002
struct SIPINFO {
    DWORD cbSize;
    DWORD fdwFlags;
    RECT rcVisibleDesktop;
    RECT rcSipRect;
    DWORD dwImDataSize;
    void* pvImData;
};
BOOL SipGetInfo(SIPINFO* info);
