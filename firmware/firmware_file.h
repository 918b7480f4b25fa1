// The firmware file on the terminal's disk. Main thread.
#pragma once

#include <array>
#include <span>

#include "platform/files.h"
#include "shell/error_messages.h"

using FileChunk = std::array<BYTE, 256>;

// The next bytes of the file, as many as there are up to a chunk. Returns Success, or ErrorFirmwareRead when
// the read fails or brings nothing although the file should go on.
[[nodiscard]] ErrorCode ReadFirmwareChunk(HANDLE file, FileChunk& chunk, std::span<const BYTE>& read);

// Reads the whole file, up to its end record, before the decoder is touched, and rewinds it. Success;
// ErrorOpenFirmwareFile when it is no firmware file that can be sent, or holds no data; ErrorDownload when it
// is empty or has no end record; ErrorFirmwareRead.
[[nodiscard]] ErrorCode CheckFirmwareFile(HANDLE file);
