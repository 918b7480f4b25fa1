// The program as the system sees it. Any thread.
#pragma once

#include "platform/base.h"

#ifndef _WIN32

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};
HANDLE GetCurrentProcess();
// When the program was started, in steps of 100 ns since a time that is the same for all programs; the others
// are 0. Only of the program itself.
BOOL GetProcessTimes(HANDLE process, FILETIME* creation, FILETIME* exit, FILETIME* kernel, FILETIME* user);

#endif
