#include "firmware/transfer.h"

#include "firmware/decoder.h"
#include "firmware/firmware_frame.h"
#include "firmware/srecord.h"
#include "platform/controls.h"
#include "resources/resource.h"
#include "shell/error_messages.h"
#include "shell/shell_state.h"

namespace {

struct Found {
    bool Data, End;  // a data record, the end record
};

ErrorCode CheckChunk(SrecordReader& reader, std::span<const BYTE> bytes, Found& found) {
    for (const BYTE received : bytes) {
        const SrecordStep step = FeedSrecord(reader, received);
        if (step == SrecordStep::Bad) {
            return ErrorOpenFirmwareFile;
        }
        found.Data = found.Data || step == SrecordStep::Record;
        if (step == SrecordStep::End) {
            found.End = true;
            break;
        }
    }
    return Success;
}

ErrorCode CheckRecords(HANDLE file, DWORD size) {
    SrecordReader reader{};
    FileChunk chunk;
    Found found{};
    for (DWORD total = 0; total < size && !found.End;) {
        std::span<const BYTE> read;
        ErrorCode result = ReadFirmwareChunk(file, chunk, read);
        if (result == Success) {
            result = CheckChunk(reader, read, found);
        }
        if (result != Success) {
            return result;
        }
        total += static_cast<DWORD>(read.size());
    }
    if (!BetweenSrecords(reader)) {
        return ErrorOpenFirmwareFile;
    }
    if (!found.End) {
        return ErrorDownload;  // also of an empty file, the commonest failed copy
    }
    return found.Data ? Success : ErrorOpenFirmwareFile;
}

constexpr DWORD BeforeEndFrame = 10;
constexpr DWORD Percent = 100;

HWND OpenProgress(HWND owner) {
    HWND dialog =
        CreateDialogParamW(ShellState.Instance, MAKEINTRESOURCEW(IDD_DOWNLOAD_PROGRESS), owner, nullptr, 0);
    if (dialog) {
        SetWindowPos(dialog, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
        SendDlgItemMessageW(dialog, IDC_PROGRESS, PBM_SETRANGE, 0, MAKELPARAM(0, Percent));
        SendDlgItemMessageW(dialog, IDC_PROGRESS, PBM_SETPOS, 0, 0);
        UpdateWindow(dialog);
    }
    return dialog;
}

// Also while the percentage stays: it tells those who watch that the program lives.
void ShowProgress(HWND dialog, DWORD total, DWORD size) {
    // A file may grow while it is read.
    const DWORD percent = total >= size ? Percent : static_cast<DWORD>(std::uint64_t{total} * Percent / size);
    SendDlgItemMessageW(dialog, IDC_PROGRESS, PBM_SETPOS, percent, 0);
}

bool SendOne(FirmwareFrame& frame) {
    return SendFirmwareFrame(frame) == Success;
}

// Success with `over` set when the end record has been reached.
ErrorCode SendChunk(SrecordReader& reader, FirmwareFrame& frame, std::span<const BYTE> bytes, bool& over) {
    for (const BYTE byte : bytes) {
        switch (FeedSrecord(reader, byte)) {
            case SrecordStep::Record:
                if (!PackRecord(frame, reader.Record, SendOne)) {
                    return ErrorDownload;
                }
                break;
            case SrecordStep::End:
                over = true;
                return Success;
            case SrecordStep::Bad:
                return ErrorDownload;
            case SrecordStep::More:
                break;
        }
    }
    return Success;
}

ErrorCode SendEnd(FirmwareFrame& frame) {
    if (frame.Size != 0 && !SendOne(frame)) {
        return ErrorDownload;
    }
    Sleep(BeforeEndFrame);
    // The decoder may restart in the middle of its answer: what it says does not matter.
    ReaderReply reply;
    return FirmwareExchange(ShellState.BarcodePort, EndFrame, reply) ? Success : ErrorDownload;
}

ErrorCode SendFile(HANDLE file, HWND progress) {
    const DWORD size = GetFileSize(file, nullptr);
    if (size == 0 || size == INVALID_FILE_SIZE) {
        return ErrorDownload;
    }
    SrecordReader reader{};
    FirmwareFrame frame{};
    FileChunk chunk;
    bool over = false;
    for (DWORD total = 0; !over;) {
        if (total >= size) {
            return ErrorDownload;  // no end record
        }
        std::span<const BYTE> read;
        if (const ErrorCode result = ReadFirmwareChunk(file, chunk, read); result != Success) {
            return result;
        }
        total += static_cast<DWORD>(read.size());
        ShowProgress(progress, total, size);
        if (const ErrorCode result = SendChunk(reader, frame, read, over); result != Success) {
            return result;
        }
    }
    return SendEnd(frame);
}

}  // namespace

ErrorCode ReadFirmwareChunk(HANDLE file, FileChunk& chunk, std::span<const BYTE>& read) {
    DWORD count = 0;
    if (!ReadFile(file, chunk.data(), static_cast<DWORD>(chunk.size()), &count, nullptr) || count == 0 ||
        count > chunk.size()) {
        return ErrorFirmwareRead;
    }
    read = std::span<const BYTE>(chunk).first(count);
    return Success;
}

ErrorCode CheckFirmwareFile(HANDLE file) {
    const DWORD size = GetFileSize(file, nullptr);
    if (size == INVALID_FILE_SIZE) {
        return ErrorDownload;
    }
    const ErrorCode result = CheckRecords(file, size);
    if (result != Success) {
        return result;
    }
    return SetFilePointer(file, 0, nullptr, FILE_BEGIN) == 0 ? Success : ErrorFirmwareRead;
}

ErrorCode TransferFirmwareFile(HWND owner, HANDLE file) {
    const HWND progress = OpenProgress(owner);
    if (!progress) {
        return ErrorProgressDialog;
    }
    const ErrorCode result = SendFile(file, progress);
    DestroyWindow(progress);
    return result;
}
