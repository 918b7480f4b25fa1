#include "simulator/rfid_wire.h"

#include <utility>

namespace readers {
namespace {

// How many characters the command has that begins like this; 0 when none does.
std::size_t CommandLength(std::string_view text) {
    switch (text.front()) {
        case 'v':
        case '.':
        case 'x':
        case 's':
            return 1;
        case 'r':
            return 3;
        case 'w':
            return text.size() > 1 && text[1] != 'p' ? 0 : 6;
        default:
            return 0;
    }
}

RfidReceived CommandOf(std::string_view text) {
    RfidReceived command{.What = RfidReceived::Noise, .Text = std::string(text)};
    switch (text.front()) {
        case 'v':
            command.What = RfidReceived::Version;
            break;
        case '.':
            command.What = RfidReceived::Wake;
            break;
        case 'x':
            command.What = RfidReceived::Restart;
            break;
        case 's':
            command.What = RfidReceived::Search;
            break;
        case 'r':
            if (const auto number = BytesFromHex(text.substr(1)); number && number->size() == 1) {
                command.What = RfidReceived::Register;
                command.Number = number->front();
            }
            break;
        default:
            if (const auto digits = BytesFromHex(text.substr(2)); digits && digits->size() == 2) {
                command.What = RfidReceived::Write;
                command.Number = digits->front();
                command.Value = digits->back();
            }
    }
    return command;
}

}  // namespace

std::vector<RfidReceived> RfidReceiver::Push(std::span<const std::uint8_t> bytes) {
    Pending += TextOf(bytes);
    std::vector<RfidReceived> found;
    while (!Pending.empty()) {
        const std::size_t length = CommandLength(Pending);
        if (length == 0) {
            if (found.empty() || found.back().What != RfidReceived::Noise) {
                found.push_back({.What = RfidReceived::Noise});
            }
            found.back().Text += Pending.front();
            Pending.erase(0, 1);
            continue;
        }
        if (Pending.size() < length) {
            break;
        }
        found.push_back(CommandOf(std::string_view(Pending).substr(0, length)));
        Pending.erase(0, length);
    }
    return found;
}

std::string RfidReceiver::Abandon() {
    return std::exchange(Pending, {});
}

}  // namespace readers
