#include "firmware/firmware_frame.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr std::size_t CountOffset = 2;
constexpr DWORD BlockShift = 8;  // the decoder's flash is written in blocks of 256 bytes

bool Continues(const FirmwareFrame& frame, const Srecord& record) {
    return record.Address == frame.LastAddress + frame.LastSize &&
           record.Address >> BlockShift == frame.LastAddress >> BlockShift;
}

}  // namespace

bool MustSendBefore(const FirmwareFrame& frame, const Srecord& record) {
    return frame.Size > FrameHeader && (!Continues(frame, record) || frame.Size + record.Size > FrameLimit);
}

void AddRecord(FirmwareFrame& frame, const Srecord& record) {
    if (frame.Size == 0) {
        const DWORD address = record.Address;
        frame.Bytes[0] = 'S';
        frame.Bytes[1] = '3';
        frame.Bytes[2] = 0;
        frame.Bytes[3] = static_cast<BYTE>(address >> 24);
        frame.Bytes[4] = static_cast<BYTE>(address >> 16);
        frame.Bytes[5] = static_cast<BYTE>(address >> 8);
        frame.Bytes[6] = static_cast<BYTE>(address);
        frame.Size = FrameHeader;
    }
    const std::size_t size = std::min<std::size_t>(record.Size, FrameLimit - frame.Size);
    std::copy_n(record.Data.begin(), size, frame.Bytes.begin() + static_cast<std::ptrdiff_t>(frame.Size));
    frame.Size += size;
    frame.LastAddress = record.Address;
    frame.LastSize = record.Size;
}

bool FullEnough(const FirmwareFrame& frame) {
    return frame.Size > FrameFullMark;
}

std::span<const BYTE> SealFrame(FirmwareFrame& frame) {
    if (frame.Size < FrameHeader || frame.Size > FrameLimit) {
        return {};
    }
    frame.Bytes[CountOffset] = static_cast<BYTE>(frame.Size - CountOffset);
    const std::span<const BYTE> summed(frame.Bytes.data() + CountOffset, frame.Size - CountOffset);
    const unsigned sum = std::accumulate(summed.begin(), summed.end(), 0u);
    frame.Bytes[frame.Size] = static_cast<BYTE>(0xFF - (sum & 0xFF));
    frame.Bytes[frame.Size + 1] = '\r';
    return {frame.Bytes.data(), frame.Size + FrameTrailer};
}

void ClearFrame(FirmwareFrame& frame) {
    frame.Size = 0;
}
