// The platform's basic types and wide strings, under the platform's own names. With a Windows compiler they
// are the toolchain's; here they are declared with the same widths (LP64 keeps `long` out of them).
#pragma once

#ifdef _WIN32

#ifndef UNICODE
#define UNICODE
#endif
#ifndef _UNICODE
#define _UNICODE
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#else

#include <cstddef>
#include <cstdint>

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = unsigned int;
using INT = int;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using HRESULT = std::int32_t;
using BOOL = int;
using CHAR = char;
using WCHAR = char16_t;
using ATOM = WORD;
using COLORREF = DWORD;

using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;

using LPVOID = void*;
using LPCVOID = const void*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using LPDWORD = DWORD*;

using HANDLE = void*;
#define VANTREL_DECLARE_HANDLE(name) \
    struct name##__;                 \
    using name = name##__*
VANTREL_DECLARE_HANDLE(HWND);
VANTREL_DECLARE_HANDLE(HINSTANCE);
VANTREL_DECLARE_HANDLE(HMENU);
VANTREL_DECLARE_HANDLE(HICON);
VANTREL_DECLARE_HANDLE(HBITMAP);
VANTREL_DECLARE_HANDLE(HBRUSH);
using HCURSOR = HICON;
using HMODULE = HINSTANCE;
using HGDIOBJ = void*;
#undef VANTREL_DECLARE_HANDLE

#define TRUE 1
#define FALSE 0
#define WINAPI
#define CALLBACK
#define TEXT(text) u##text

#define LOWORD(value) (static_cast<WORD>(static_cast<DWORD_PTR>(value) & 0xFFFF))
#define HIWORD(value) (static_cast<WORD>((static_cast<DWORD_PTR>(value) >> 16) & 0xFFFF))
#define MAKELONG(low, high)                                         \
    (static_cast<LONG>(static_cast<DWORD>(static_cast<WORD>(low)) | \
                       (static_cast<DWORD>(static_cast<WORD>(high)) << 16)))
#define MAKELPARAM(low, high) (static_cast<LPARAM>(static_cast<DWORD>(MAKELONG(low, high))))
#define MAKEINTRESOURCEW(number) (reinterpret_cast<LPWSTR>(static_cast<ULONG_PTR>(static_cast<WORD>(number))))
#define RGB(red, green, blue)                                                                            \
    (static_cast<COLORREF>(static_cast<BYTE>(red) | (static_cast<WORD>(static_cast<BYTE>(green)) << 8) | \
                           (static_cast<DWORD>(static_cast<BYTE>(blue)) << 16)))

#define MAX_PATH 260
#define MAXDWORD 0xFFFFFFFFu
#define INFINITE 0xFFFFFFFFu
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))

// Wide strings. The C library's wide functions are not used: their characters have another width here.
int lstrlenW(LPCWSTR text);
LPWSTR lstrcpyW(LPWSTR to, LPCWSTR from);
// Copies at most size - 1 characters and ends the copy with a zero.
LPWSTR lstrcpynW(LPWSTR to, LPCWSTR from, int size);
LPWSTR lstrcatW(LPWSTR to, LPCWSTR from);
int lstrcmpW(LPCWSTR left, LPCWSTR right);
// %d %u %s %% alone; at most 1,024 characters with the zero. %s takes a wide text.
int wsprintfW(LPWSTR to, LPCWSTR format, ...);

struct POINT {
    LONG x, y;
};
struct RECT {
    LONG left, top, right, bottom;
};

#endif
