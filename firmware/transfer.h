// Sending a firmware file to the decoder, under the progress dialog. Main thread, which it blocks.
#pragma once

#include "platform/window.h"
#include "shell/error_messages.h"

// Sends the file, from its beginning to its end record, and the end frame. The decoder has been erased. The
// dialog is owned by the owner and gone on return. Success, ErrorProgressDialog, ErrorFirmwareRead, or
// ErrorDownload (decoder, an empty file, one without an end record).
[[nodiscard]] ErrorCode TransferFirmwareFile(HWND owner, HANDLE file);
