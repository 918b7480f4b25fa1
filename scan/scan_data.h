// One scan in memory, on its way from a reader to the applications. Both records are built on the stack of
// the receive thread that got the scan and live for one delivery.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "link/rfid_text.h"

// The text in a buffer: up to its first zero, or all of it.
inline std::string_view TextIn(std::span<const char> buffer) {
    const std::string_view all(buffer.data(), buffer.size());
    return all.substr(0, all.find('\0'));
}

// Which kind of barcode reader a scan comes from.
enum class ReaderFamily : DWORD {
    Decoder1D = 1,  // the 1D reader, with code type letters of its own
    Packet = 4,     // long-range laser and 2D imager
};

inline constexpr std::size_t MaximumScanLength = 4095;  // a joined packet message less its code identifier

struct ScanData {
    BYTE codeType;                     // printable letter; 0 when the reader's code identifier is unknown
    DWORD length;                      // data bytes, at most MaximumScanLength
    BYTE data[MaximumScanLength + 1];  // any bytes; not necessarily followed by a zero

    std::string_view Bytes() const { return {reinterpret_cast<const char*>(data), length}; }
};

struct RfidScanData {
    BYTE tagType;            // "I", "M", "S", "V", or another letter with unknown memory
    char uid[TagLineLimit];  // hexadecimal text with its zero; empty unless it was asked for
    DWORD firstBlock;        // first block of user memory
    DWORD endBlock;          // one past the last block of user memory
    DWORD blockSize;         // bytes; 0 for an unknown tag type
    char data[1028];         // user memory as text with its zero; empty unless it was read
};
