#include "simulator/loader_wire.h"

#include <algorithm>
#include <utility>

#include "simulator/escape_wire.h"

namespace readers {
namespace {

constexpr std::size_t CountAt = 2;
constexpr std::size_t AddressAt = 3;
constexpr std::size_t DataAt = 7;
constexpr std::size_t SmallestCount = 5;  // four address bytes and the checksum
constexpr std::size_t LongestText = 300;

LoaderReceived Bad(std::string what) {
    return {.What = LoaderReceived::BadFrame, .Content = std::move(what)};
}

}  // namespace

std::optional<LoaderReceived> LoaderReceiver::TakeFrame(std::size_t& used) const {
    if (Pending.size() <= CountAt) {
        return std::nullopt;
    }
    const std::size_t count = Pending[CountAt];
    const std::size_t checksumAt = CountAt + count;
    if (Pending.size() < checksumAt + 2) {
        return std::nullopt;
    }
    used = checksumAt + 2;
    const char type = static_cast<char>(Pending[1]);
    if (type != '3' && type != '7') {
        return Bad("type");
    }
    if (count < SmallestCount) {
        return Bad("count");
    }
    if (Pending[checksumAt + 1] != CarriageReturn) {
        return Bad("end");
    }
    unsigned sum = 0;
    for (std::size_t i = CountAt; i <= checksumAt; ++i) {
        sum += Pending[i];
    }
    if ((sum & 0xFF) != 0xFF) {
        return Bad("checksum");
    }
    LoaderReceived frame{.What = LoaderReceived::Frame, .Type = type};
    for (std::size_t i = AddressAt; i < DataAt; ++i) {
        frame.Address = frame.Address << 8 | Pending[i];
    }
    frame.Data.assign(Pending.begin() + DataAt, Pending.begin() + static_cast<std::ptrdiff_t>(checksumAt));
    return frame;
}

std::optional<LoaderReceived> LoaderReceiver::TakeOne(std::size_t& used) const {
    const std::uint8_t first = Pending.front();
    if (first == 'S') {
        return TakeFrame(used);
    }
    const bool framed = first == 0xFF || first == Escape;
    if (!framed && (first < 0x20 || first > 0x7E)) {
        used = 1;
        return LoaderReceived{.What = LoaderReceived::Noise, .Content = {static_cast<char>(first)}};
    }
    const auto end = std::find(Pending.begin(), Pending.end(), CarriageReturn);
    if (end == Pending.end()) {
        if (Pending.size() < LongestText) {
            return std::nullopt;
        }
        used = Pending.size();
        return LoaderReceived{.What = LoaderReceived::Noise, .Content = TextOf(Pending)};
    }
    used = static_cast<std::size_t>(end - Pending.begin()) + 1;
    if (!framed) {
        return LoaderReceived{.What = LoaderReceived::Text, .Content = std::string(Pending.begin(), end)};
    }
    const auto commands = EscapeReceiver().Push(std::span(Pending).first(used));
    if (commands.size() == 1 && commands.front().What == EscapeReceived::Command) {
        return LoaderReceived{.What = LoaderReceived::Framed, .Content = commands.front().Text};
    }
    return LoaderReceived{.What = LoaderReceived::Noise, .Content = std::string(Pending.begin(), end)};
}

std::vector<LoaderReceived> LoaderReceiver::Push(std::span<const std::uint8_t> bytes) {
    Pending.insert(Pending.end(), bytes.begin(), bytes.end());
    std::vector<LoaderReceived> found;
    while (!Pending.empty()) {
        std::size_t used = 0;
        // A framed "DOWNLOAD\r" leaves a CR over.
        if (Pending.front() == CarriageReturn) {
            used = 1;
        } else if (auto item = TakeOne(used)) {
            found.push_back(std::move(*item));
        } else {
            break;
        }
        Pending.erase(Pending.begin(), Pending.begin() + static_cast<std::ptrdiff_t>(used));
    }
    return found;
}

std::optional<LoaderReceived> LoaderReceiver::Abandon() {
    if (Pending.empty()) {
        return std::nullopt;
    }
    const Bytes left = std::exchange(Pending, {});
    if (left.front() == 'S') {
        return Bad("incomplete");
    }
    return LoaderReceived{.What = LoaderReceived::Noise, .Content = TextOf(left)};
}

}  // namespace readers
