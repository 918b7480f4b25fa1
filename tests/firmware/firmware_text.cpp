#include "tests/firmware/firmware_text.h"

#include <cstdio>

#include "firmware/firmware_frame.h"

namespace {

std::string Hex(std::uint32_t value, int digits) {
    char text[9];
    std::snprintf(text, sizeof text, "%0*X", digits, static_cast<unsigned>(value));
    return text;
}

}  // namespace

std::string RecordLine(char type, std::uint32_t address, const Octets& data) {
    const int addressSize = type == '2' ? 3 : 4;
    const auto count = static_cast<std::uint32_t>(addressSize + static_cast<int>(data.size()) + 1);
    std::uint32_t sum = count + (address & 0xFF) + (address >> 8 & 0xFF) + (address >> 16 & 0xFF) +
                        (type == '3' ? address >> 24 : 0);
    std::string line = std::string("S") + type + Hex(count, 2) + Hex(address, 2 * addressSize);
    for (const std::uint8_t byte : data) {
        line += Hex(byte, 2);
        sum += byte;
    }
    return line + Hex(0xFF - (sum & 0xFF), 2) + "\r\n";
}

Reading ReadText(std::string_view text) {
    Reading reading;
    SrecordReader reader{};
    for (const char c : text) {
        ++reading.Taken;
        reading.Last = FeedSrecord(reader, static_cast<BYTE>(c));
        reading.Records += reading.Last == SrecordStep::Record ? 1 : 0;
        if (reading.Last == SrecordStep::Bad || reading.Last == SrecordStep::End) {
            break;
        }
    }
    reading.MayEnd = reading.Last != SrecordStep::Bad && BetweenSrecords(reader);
    return reading;
}

std::vector<Octets> FramesOf(std::string_view text) {
    std::vector<Octets> frames;
    SrecordReader reader{};
    FirmwareFrame frame{};
    const auto send = [&] {
        const auto bytes = SealFrame(frame);
        frames.emplace_back(bytes.begin(), bytes.end());
        ClearFrame(frame);
    };
    for (const char c : text) {
        const SrecordStep step = FeedSrecord(reader, static_cast<BYTE>(c));
        if (step == SrecordStep::End || step == SrecordStep::Bad) {
            break;
        }
        if (step != SrecordStep::Record) {
            continue;
        }
        if (MustSendBefore(frame, reader.Record)) {
            send();
        }
        AddRecord(frame, reader.Record);
        if (FullEnough(frame)) {
            send();
        }
    }
    if (frame.Size != 0) {
        send();
    }
    return frames;
}

std::vector<Octets> FramesByTheBook(std::string_view text) {
    enum { Start, Count3, Count2, Address, Data, Check, Ending } state = Start;
    std::vector<Octets> sent;
    Octets frame, address;
    int addressLeft = 0, dataCount = 0, dataLeft = 0;
    std::uint32_t previous = 0, load = 0;
    int previousCount = 0;
    const auto send = [&] {
        frame[2] = static_cast<std::uint8_t>(frame.size() - 2);
        unsigned sum = 0;
        for (std::size_t i = 2; i < frame.size(); ++i)
            sum += frame[i];
        frame.push_back(static_cast<std::uint8_t>(0xFF - sum % 256));
        frame.push_back(0x0D);
        sent.push_back(frame);
        frame.clear();
    };
    const auto value = [](char c) { return c >= 'A' ? c - 0x37 : c - '0'; };
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        const auto byte = static_cast<std::uint8_t>(value(text[i]) * 16 + value(text[i + 1]));
        switch (state) {
            case Start:
                if (text[i + 1] == '7' || text[i + 1] == '9') {
                    if (!frame.empty())
                        send();
                    return sent;
                }
                if (frame.empty())
                    frame = {'S', '3', 0};
                state = text[i + 1] == '2' ? Count2 : Count3;
                break;
            case Count3:
            case Count2:
                addressLeft = state == Count3 ? 4 : 3;
                dataCount = byte - addressLeft - 1;
                address.clear();
                if (state == Count2) {
                    address.push_back(0);
                    if (frame.size() < 7)
                        frame.push_back(0);
                }
                state = Address;
                break;
            case Address:
                address.push_back(byte);
                if (frame.size() < 7)
                    frame.push_back(byte);
                if (--addressLeft != 0)
                    break;
                load = static_cast<std::uint32_t>(address[0]) << 24 | address[1] << 16 | address[2] << 8 |
                       address[3];
                if (frame.size() > 7 && (load != previous + static_cast<std::uint32_t>(previousCount) ||
                                         load / 256 != previous / 256)) {
                    send();
                    frame = {'S', '3', 0};
                    frame.insert(frame.end(), address.begin(), address.end());
                }
                previous = load;
                previousCount = dataCount;
                dataLeft = dataCount;
                state = Data;
                break;
            case Data:
                frame.push_back(byte);
                if (--dataLeft == 0)
                    state = Check;
                break;
            case Check:
                state = Ending;
                break;
            case Ending:
                if (frame.size() > 100)
                    send();
                state = Start;
                break;
        }
    }
    return sent;
}
