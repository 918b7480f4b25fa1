// Wide strings. The C library's wide functions are not used: their characters have another width here.
#pragma once

#include "platform/base.h"

#ifndef _WIN32

int lstrlenW(LPCWSTR text);
LPWSTR lstrcpyW(LPWSTR to, LPCWSTR from);
// Copies at most size - 1 characters and ends the copy with a zero.
LPWSTR lstrcpynW(LPWSTR to, LPCWSTR from, int size);
LPWSTR lstrcatW(LPWSTR to, LPCWSTR from);
int lstrcmpW(LPCWSTR left, LPCWSTR right);
// %d %u %s %% alone; at most 1,024 characters with the zero. %s takes a wide text.
int wsprintfW(LPWSTR to, LPCWSTR format, ...);

#endif
