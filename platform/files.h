// Files and named serial ports, by the platform's paths: `\DiskOnChip\X`, `\Windows\X`, `COM1:`, `COM2:`.
#pragma once

#include "platform/kernel.h"

#ifdef _WIN32

#define CreateFileW TerminalCreateFileW
#define GetFileAttributesW TerminalGetFileAttributesW
#define ReadFile TerminalReadFile
#define WriteFile TerminalWriteFile

#else

#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
#define CREATE_ALWAYS 2
#define OPEN_EXISTING 3
#define FILE_ATTRIBUTE_NORMAL 0x00000080
#define INVALID_FILE_ATTRIBUTES 0xFFFFFFFFu
#define INVALID_FILE_SIZE 0xFFFFFFFFu
#define FILE_BEGIN 0
#define INVALID_SET_FILE_POINTER 0xFFFFFFFFu

struct OVERLAPPED;
using LPOVERLAPPED = OVERLAPPED*;

// Opens a file (share mode 0 keeps other openers out while it is open) or a port (always exclusive).
// INVALID_HANDLE_VALUE on failure.
HANDLE CreateFileW(LPCWSTR name, DWORD access, DWORD shareMode, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD attributes, HANDLE templateFile);
// INVALID_FILE_ATTRIBUTES when nothing has the name.
DWORD GetFileAttributesW(LPCWSTR name);
BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped);
BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD written, LPOVERLAPPED overlapped);
DWORD GetFileSize(HANDLE file, LPDWORD sizeHigh);
// Sets where the next read or write begins, counted from the beginning (FILE_BEGIN, no high part). The new
// position, or INVALID_SET_FILE_POINTER.
DWORD SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD method);

#endif
