// Firmware files: Motorola S-records of types 2 and 3 in upper-case hexadecimal, lines ended by CR LF, up to
// a record of type 7 or 9. Pure: bytes in, records out.
#pragma once

#include <array>

#include "platform/base.h"

// Data bytes of one record: what fits into one frame of the decoder. Longer records are refused.
inline constexpr std::size_t SrecordDataLimit = 249;

struct Srecord {
    DWORD Address;  // of the first data byte
    BYTE Size;      // data bytes, 1 to SrecordDataLimit
    std::array<BYTE, SrecordDataLimit> Data;
};

enum class SrecordStep {
    More,    // goes on
    Record,  // a record is complete: it stands in the reader until the next byte is fed
    End,     // the type of the end record: whatever follows does not count
    Bad,     // no firmware file; nothing more may be fed
};

enum class SrecordPlace { Start, Type, Count, Address, Data, Checksum, CarriageReturn, LineFeed, Over };

// Begins all zero.
struct SrecordReader {
    SrecordPlace Place;
    BYTE Remaining;  // bytes (two digits each) to come at this place
    BYTE AddressSize;
    BYTE HighDigit;
    bool HalfByte;  // HighDigit has been read
    Srecord Record;
};

// Takes the file's next byte. Checksums must be two digits and are not compared.
SrecordStep FeedSrecord(SrecordReader& reader, BYTE received);

// Whether the file may end here: between two lines, or after the end record.
bool BetweenSrecords(const SrecordReader& reader);
