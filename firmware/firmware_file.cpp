#include "firmware/firmware_file.h"

#include "firmware/srecord.h"
#include "shell/error_messages.h"

namespace {

// Success with `over` set when the end record has been reached.
DWORD CheckChunk(SrecordReader& reader, std::span<const BYTE> bytes, bool& over) {
    for (const BYTE received : bytes) {
        const SrecordStep step = FeedSrecord(reader, received);
        if (step == SrecordStep::Bad) {
            return ErrorOpenFirmwareFile;
        }
        if (step == SrecordStep::End) {
            over = true;
            break;
        }
    }
    return Success;
}

DWORD CheckRecords(HANDLE file, DWORD size) {
    SrecordReader reader{};
    FileChunk chunk;
    bool over = false;
    for (DWORD total = 0; total < size && !over;) {
        std::span<const BYTE> read;
        DWORD result = ReadFirmwareChunk(file, chunk, read);
        if (result == Success) {
            result = CheckChunk(reader, read, over);
        }
        if (result != Success) {
            return result;
        }
        total += static_cast<DWORD>(read.size());
    }
    return BetweenSrecords(reader) ? Success : ErrorOpenFirmwareFile;
}

}  // namespace

DWORD ReadFirmwareChunk(HANDLE file, FileChunk& chunk, std::span<const BYTE>& read) {
    DWORD count = 0;
    if (!ReadFile(file, chunk.data(), static_cast<DWORD>(chunk.size()), &count, nullptr) || count == 0 ||
        count > chunk.size()) {
        return ErrorFirmwareRead;
    }
    read = std::span<const BYTE>(chunk).first(count);
    return Success;
}

DWORD CheckFirmwareFile(HANDLE file) {
    const DWORD size = GetFileSize(file, nullptr);
    if (size == INVALID_FILE_SIZE) {
        return Success;
    }
    const DWORD result = CheckRecords(file, size);
    if (result != Success) {
        return result;
    }
    return SetFilePointer(file, 0, nullptr, FILE_BEGIN) == 0 ? Success : ErrorFirmwareRead;
}
