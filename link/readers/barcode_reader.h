// The barcode readers: one entry for each, in the one place that tells them apart.
#pragma once

#include <span>

#include "link/await_reply.h"
#include "link/barcode_receiver.h"
#include "platform/serial.h"
#include "settings/record.h"
#include "shell/error_messages.h"

// How a reader talks.
enum class ReaderProtocol {
    Escape,   // text commands in escape frames, messages of the 1D reader
    Packets,  // packets of the Simple Serial Interface, both ways
};

struct BarcodeReader {
    LPCWSTR Name;  // for the diary
    WORD Bit;      // of DeviceFlags
    ReaderProtocol Protocol;
    DWORD WorkingRate;  // bits per second
    UINT PowerUp;       // milliseconds after the port has been opened until it listens
    DWORD MessageGap;   // milliseconds without a byte that end one read of the receive thread
    bool KeepsRts;      // RTS stays raised once it has answered: it sleeps without it
    bool Upgradable;    // its firmware can be exchanged

    // Asks at the port's present rate. The bit of the reader that answered (readers that are asked alike
    // share the function), or 0.
    WORD (*Probe)(HANDLE port);
    // Brings a reader that was found into the system's configuration, at its working rate. Whether it worked.
    bool (*SetUp)(HANDLE port);

    // Frames and writes a command; whether it went out.
    bool (*Send)(HANDLE port, std::span<const BYTE> command);
    // Whether what has come of a reply is all of it.
    ReplyIsWhole WholeReply;

    // The trigger. Success or ErrorSetBarcodeReader. Main thread; the receive thread may restart a read.
    ErrorCode (*Press)();
    ErrorCode (*Release)();

    // Sends what differs from the snapshots; whether the reader took it. Its receive thread must not read.
    bool (*Download)();
    // Turns what one read brought into messages; see barcode_receiver.h.
    TakeBytes Receive;
};

// All of them. Where DeviceFlags names several, the one that comes first here is the fitted one.
std::span<const BarcodeReader* const> BarcodeReaders();

// The first whose bit is in the mask; null when there is none.
const BarcodeReader* FindBarcodeReader(WORD deviceMask);
// The fitted one, by DeviceFlags; null when there is none.
const BarcodeReader* FittedBarcodeReader();

// Downloads the settings into every reader that DeviceFlags names; whether all of them took theirs. Their
// receive thread must not read.
[[nodiscard]] bool DownloadSettings();

extern const BarcodeReader Decoder1DReader, LaserReader, ImagerReader;
