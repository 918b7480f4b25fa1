#include "simulator/escape_wire.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace readers {

// A command ends at its first CR, so "DOWNLOAD\r" in a frame leaves one CR over; a CR alone is no noise.
std::vector<EscapeReceived> EscapeReceiver::Push(std::span<const std::uint8_t> bytes) {
    std::vector<EscapeReceived> found;
    for (std::uint8_t byte : bytes) {
        if (InCommand) {
            if (byte == CarriageReturn) {
                const auto kind = WakeUps >= WakeUpBytes ? EscapeReceived::Command : EscapeReceived::Asleep;
                found.push_back({kind, Abandon()});
            } else if (byte == Escape || Pending.size() == LargestCommand) {
                found.push_back({EscapeReceived::Noise, Abandon()});
                InCommand = byte == Escape;
            } else {
                Pending += static_cast<char>(byte);
            }
        } else if (byte == 0xFF) {
            ++WakeUps;
        } else if (byte == Escape) {
            if (!Pending.empty()) {
                found.push_back({EscapeReceived::Noise, std::exchange(Pending, {})});
            }
            InCommand = true;
        } else if (byte != CarriageReturn || !Pending.empty()) {
            WakeUps = 0;
            Pending += static_cast<char>(byte);
            if (byte == CarriageReturn || Pending.size() == LargestCommand) {
                found.push_back({EscapeReceived::Noise, Abandon()});
            }
        }
    }
    return found;
}

std::string EscapeReceiver::Abandon() {
    WakeUps = 0;
    InCommand = false;
    return std::exchange(Pending, {});
}

Bytes EscapeMessageOf(std::uint8_t letter, std::span<const std::uint8_t> data, std::string_view digits) {
    std::array<char, 8> length{};
    if (digits.empty()) {
        data = data.first(std::min(data.size(), LargestMessageData));
        std::snprintf(length.data(), length.size(), "%03u", static_cast<unsigned>(data.size()));
        digits = length.data();
    }
    Bytes message;
    message.reserve(digits.size() + data.size() + 3);
    message.push_back(Escape);
    message.push_back(letter);
    message.insert(message.end(), digits.begin(), digits.end());
    message.insert(message.end(), data.begin(), data.end());
    message.push_back(CarriageReturn);
    return message;
}

std::optional<Bytes> ParameterBlockOf(std::string_view digits) {
    if (digits.size() != 2 * ParameterBytes ||
        digits.find_first_not_of("0123456789ABCDEF") != std::string_view::npos) {
        return std::nullopt;
    }
    return BytesFromHex(digits);
}

std::string ParameterDigitsOf(std::span<const std::uint8_t> block) {
    std::string digits = HexText(block);
    std::erase(digits, ' ');
    return digits;
}

}  // namespace readers
