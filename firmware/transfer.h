// The firmware file on the terminal's disk: checking it, and sending it to the decoder under the progress
// dialog. Main thread, which it blocks.
#pragma once

#include <array>
#include <span>

#include "platform/files.h"
#include "platform/window.h"
#include "shell/error_messages.h"

using FileChunk = std::array<BYTE, 256>;

// The next bytes of the file, as many as there are up to a chunk. Returns Success, or ErrorFirmwareRead when
// the read fails or brings nothing although the file should go on.
[[nodiscard]] ErrorCode ReadFirmwareChunk(HANDLE file, FileChunk& chunk, std::span<const BYTE>& read);

// Reads the whole file, up to its end record, before the decoder is touched, and rewinds it. Success;
// ErrorOpenFirmwareFile when it is no firmware file that can be sent, or holds no data; ErrorDownload when it
// is empty or has no end record; ErrorFirmwareRead.
[[nodiscard]] ErrorCode CheckFirmwareFile(HANDLE file);

// Sends the file, from its beginning to its end record, and the end frame. The decoder has been erased. The
// dialog is owned by the owner and gone on return. Success, ErrorProgressDialog, ErrorFirmwareRead, or
// ErrorDownload (decoder, an empty file, one without an end record).
[[nodiscard]] ErrorCode TransferFirmwareFile(HWND owner, HANDLE file);
