// Frames of the decoder's download protocol: binary S-records of type 3, each as many lines of the firmware
// file as fit together, and the end frame of type 7. Pure.
#pragma once

#include <array>
#include <span>

#include "firmware/srecord.h"

inline constexpr std::size_t FrameHeader = 7;      // "S", type, count, four bytes of address
inline constexpr std::size_t FrameLimit = 256;     // header and data
inline constexpr std::size_t FrameTrailer = 2;     // checksum and CR
inline constexpr std::size_t FrameFullMark = 100;  // a frame beyond it is sent at the end of its record

// Collects records; begins all zero. Size counts header and data, 0 is a frame that has not been started.
struct FirmwareFrame {
    std::array<BYTE, FrameLimit + FrameTrailer> Bytes;
    std::size_t Size;
    DWORD LastAddress;  // load address and data bytes of the record added last, to this frame or one before
    BYTE LastSize;
};

// Whether the frame has to be sent before the record is added: it holds data, and the record does not
// continue the previous one inside its 256-byte block, or does not fit.
bool MustSendBefore(const FirmwareFrame& frame, const Srecord& record);

// Adds the record; starts the frame at its address when there is none. MustSendBefore must not hold.
void AddRecord(FirmwareFrame& frame, const Srecord& record);

// Whether the frame, at the end of a record, is full enough to be sent.
bool FullEnough(const FirmwareFrame& frame);

// Completes a started frame by count, checksum and CR: the bytes that go out. Nothing for one without a
// header, or beyond the limit. May be repeated.
std::span<const BYTE> SealFrame(FirmwareFrame& frame);

// Empties the frame; what the previous record was is kept.
void ClearFrame(FirmwareFrame& frame);

// Adds the record, and has `send`, a bool of a FirmwareFrame&, send the frame that must go before it and the
// one that is full enough with it. False at once when a frame could not be sent.
template <class Send>
[[nodiscard]] bool PackRecord(FirmwareFrame& frame, const Srecord& record, const Send& send) {
    const auto sent = [&] {
        const bool good = send(frame);
        ClearFrame(frame);
        return good;
    };
    if (MustSendBefore(frame, record) && !sent()) {
        return false;
    }
    AddRecord(frame, record);
    return !FullEnough(frame) || sent();
}

// The frame that ends the download and lets the decoder restart.
inline constexpr std::array<BYTE, 9> EndFrame{'S', '7', 5, 0, 0, 0, 0, 0xFA, '\r'};
