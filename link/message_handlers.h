// Where the receive threads hand over what they have received; set once at start-up, before the threads run.
#pragma once

#include "platform/base.h"

struct MessageHandlers {
    // One message of the barcode reader, called on the barcode receive thread: a 1D reader's bytes as read,
    // or the code identifier and the joined data of a scan engine's decode. Zero bytes follow the message.
    int (*Barcode)(const BYTE* message, DWORD length);
    // One tag line of 3 to 23 characters, zero-terminated, without CR LF; called on the RFID receive thread.
    int (*Rfid)(const char* line, DWORD length);
};

inline MessageHandlers ReceiveHandlers{};
