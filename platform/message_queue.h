// Point-to-point message queues, shared by the programs of one terminal. Desktop Windows has none.
#pragma once

#include "platform/kernel.h"

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
