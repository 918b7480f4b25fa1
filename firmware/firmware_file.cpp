#include "firmware/firmware_file.h"

#include "firmware/srecord.h"
#include "shell/error_messages.h"

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
