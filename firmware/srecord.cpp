#include "firmware/srecord.h"

namespace {

constexpr int NoDigit = -1;

// The decoder's tools write upper-case digits, and nothing else is taken for one.
int DigitValue(BYTE character) {
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    if (character >= 'A' && character <= 'F') {
        return character - 'A' + 10;
    }
    return NoDigit;
}

SrecordStep Refuse(SrecordReader& reader) {
    reader.Place = SrecordPlace::Over;
    return SrecordStep::Bad;
}

SrecordStep TakeType(SrecordReader& reader, BYTE type) {
    switch (type) {
        case '2':
        case '3':
            reader.AddressSize = type == '2' ? 3 : 4;
            reader.Place = SrecordPlace::Count;
            reader.Remaining = 1;
            return SrecordStep::More;
        case '7':
        case '9':
            reader.Place = SrecordPlace::Over;
            return SrecordStep::End;
        default:
            return Refuse(reader);
    }
}

// The count covers address, data and checksum.
SrecordStep TakeCount(SrecordReader& reader, BYTE count) {
    const int data = count - reader.AddressSize - 1;
    if (data < 1 || data > static_cast<int>(SrecordDataLimit)) {
        return Refuse(reader);
    }
    reader.Record.Address = 0;
    reader.Record.Size = static_cast<BYTE>(data);
    reader.Place = SrecordPlace::Address;
    reader.Remaining = reader.AddressSize;
    return SrecordStep::More;
}

SrecordStep TakeByte(SrecordReader& reader, BYTE value) {
    Srecord& record = reader.Record;
    switch (reader.Place) {
        case SrecordPlace::Count:
            return TakeCount(reader, value);
        case SrecordPlace::Address:
            record.Address = record.Address << 8 | value;
            if (--reader.Remaining == 0) {
                reader.Place = SrecordPlace::Data;
                reader.Remaining = record.Size;
            }
            return SrecordStep::More;
        case SrecordPlace::Data:
            record.Data[static_cast<std::size_t>(record.Size - reader.Remaining)] = value;
            if (--reader.Remaining == 0) {
                reader.Place = SrecordPlace::Checksum;
            }
            return SrecordStep::More;
        default:
            reader.Place = SrecordPlace::CarriageReturn;
            return SrecordStep::More;
    }
}

SrecordStep TakeDigit(SrecordReader& reader, BYTE character) {
    const int digit = DigitValue(character);
    if (digit == NoDigit) {
        return Refuse(reader);
    }
    reader.HalfByte = !reader.HalfByte;
    if (reader.HalfByte) {
        reader.HighDigit = static_cast<BYTE>(digit);
        return SrecordStep::More;
    }
    return TakeByte(reader, static_cast<BYTE>(reader.HighDigit << 4 | digit));
}

SrecordStep Expect(SrecordReader& reader, BYTE got, BYTE expected, SrecordPlace next, SrecordStep step) {
    if (got != expected) {
        return Refuse(reader);
    }
    reader.Place = next;
    return step;
}

}  // namespace

SrecordStep FeedSrecord(SrecordReader& reader, BYTE received) {
    switch (reader.Place) {
        case SrecordPlace::Start:
            return Expect(reader, received, 'S', SrecordPlace::Type, SrecordStep::More);
        case SrecordPlace::Type:
            return TakeType(reader, received);
        case SrecordPlace::CarriageReturn:
            return Expect(reader, received, '\r', SrecordPlace::LineFeed, SrecordStep::More);
        case SrecordPlace::LineFeed:
            return Expect(reader, received, '\n', SrecordPlace::Start, SrecordStep::Record);
        case SrecordPlace::Over:
            return SrecordStep::Bad;
        default:
            return TakeDigit(reader, received);
    }
}

bool BetweenSrecords(const SrecordReader& reader) {
    return reader.Place == SrecordPlace::Start || reader.Place == SrecordPlace::Over;
}
