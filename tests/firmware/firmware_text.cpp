#include "tests/firmware/firmware_text.h"

#include <cstdio>

#include "firmware/firmware_frame.h"
#include "firmware/srecord.h"

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

std::vector<Octets> FramesOf(std::string_view text) {
    std::vector<Octets> frames;
    SrecordReader reader{};
    FirmwareFrame frame{};
    const auto take = [&](FirmwareFrame& full) {
        const auto bytes = SealFrame(full);
        frames.emplace_back(bytes.begin(), bytes.end());
        return true;
    };
    for (const char c : text) {
        const SrecordStep step = FeedSrecord(reader, static_cast<BYTE>(c));
        if (step == SrecordStep::End || step == SrecordStep::Bad) {
            break;
        }
        if (step == SrecordStep::Record) {
            static_cast<void>(PackRecord(frame, reader.Record, take));
        }
    }
    if (frame.Size != 0) {
        take(frame);
    }
    return frames;
}
