// Threads, waits, events, semaphores, message queues, time, and the terminal's vibrator. All may be called
// from any thread.
#pragma once

#include "platform/base.h"

#ifdef _WIN32

#include "platform/win32/wrapped.h"
#define CloseHandle TerminalCloseHandle
#define CreateEventW TerminalCreateEventW
#define CreateMutexW TerminalCreateMutexW

#else

using LPTHREAD_START_ROUTINE = DWORD(WINAPI*)(LPVOID);
struct SECURITY_ATTRIBUTES;
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

#define WAIT_OBJECT_0 0x00000000u
#define WAIT_ABANDONED 0x00000080u
#define WAIT_TIMEOUT 258u
#define WAIT_FAILED 0xFFFFFFFFu

// Starts a thread, at once and without flags. Null on failure. The handle is released with CloseHandle, which
// does not end the thread.
HANDLE CreateThread(LPSECURITY_ATTRIBUTES security, std::size_t stackSize, LPTHREAD_START_ROUTINE start,
                    LPVOID parameter, DWORD flags, LPDWORD threadId);

HANDLE CreateSemaphoreW(LPSECURITY_ATTRIBUTES security, LONG initialCount, LONG maximumCount, LPCWSTR name);
BOOL ReleaseSemaphore(HANDLE semaphore, LONG count, LONG* previousCount);
// A named mutex is shared by all programs of one terminal: one of them has it, from a fulfilled wait to its
// end.
HANDLE CreateMutexW(LPSECURITY_ATTRIBUTES security, BOOL initialOwner, LPCWSTR name);
// A named event is shared by all programs of one terminal; only automatic reset is offered.
HANDLE CreateEventW(LPSECURITY_ATTRIBUTES security, BOOL manualReset, BOOL initialState, LPCWSTR name);
// Waits for an event, a semaphore or the end of a thread: WAIT_OBJECT_0, WAIT_TIMEOUT or WAIT_FAILED.
DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);
// Closes any handle of this layer. Whoever waits on an event or a semaphore of this program, or on a port, is
// woken, and that call fails; a wait on what programs share runs on.
BOOL CloseHandle(HANDLE object);

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};
HANDLE GetCurrentProcess();
// When the program was started, in steps of 100 ns since a time that is the same for all programs; the others
// are 0. Only of the program itself.
BOOL GetProcessTimes(HANDLE process, FILETIME* creation, FILETIME* exit, FILETIME* kernel, FILETIME* user);

void Sleep(DWORD milliseconds);
// Milliseconds since some start, wrapping at 32 bits.
DWORD GetTickCount();

#endif

// What desktop Windows lacks.

#ifndef EVENT_SET
#define EVENT_SET 3
#endif

// Sets an event (EVENT_SET).
BOOL EventModify(HANDLE event, DWORD action);

// Kernel control calls of the terminal's maker. IOCTL_VIBRATOR (scan/read_feedback.h) takes a DWORD, 1 or 0;
// any other code fails.
BOOL KernelIoControl(DWORD code, LPVOID input, DWORD inputSize, LPVOID output, DWORD outputSize,
                     LPDWORD returned);

// Point-to-point message queues, shared by the programs of one terminal.
struct MSGQUEUEOPTIONS {
    DWORD dwSize;         // of this record
    DWORD dwFlags;        // 0
    DWORD dwMaxMessages;  // messages the queue holds
    DWORD cbMaxMessage;   // bytes per message
    BOOL bReadAccess;     // TRUE for the reading end
};

// Creates or opens an end of the queue with the name; null on failure.
HANDLE CreateMsgQueue(LPCWSTR name, MSGQUEUEOPTIONS* options);
// Takes the oldest message: FALSE when none came within the time. A buffer that is shorter than the queue's
// longest message is refused, and the message stays in the queue.
BOOL ReadMsgQueue(HANDLE queue, LPVOID buffer, DWORD size, LPDWORD read, DWORD milliseconds, DWORD* flags);
// Adds a message: FALSE when the queue stayed full for the time.
BOOL WriteMsgQueue(HANDLE queue, LPVOID message, DWORD size, DWORD milliseconds, DWORD flags);
BOOL CloseMsgQueue(HANDLE queue);
