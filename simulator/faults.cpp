#include "simulator/faults.h"

#include <array>

#include "simulator/bytes.h"

namespace readers {
namespace {

constexpr std::array Kinds = std::to_array<FaultKind>({
    // The wire, on either port.
    {"late", "", "ms", "a message leaves this much later"},
    {"mute", "", "", "a message does not leave at all"},
    {"split", "", "at ms", "a pause inside a message, after so many bytes"},
    {"join", "", "", "a message waits for the next one; both leave without a pause"},
    {"garbage", "", "", "at the wrong speed of the other side, wrong bytes arrive instead of none"},
    {"flip", "", "offset", "one byte of a message is inverted"},
    {"reply", "", "hex...", "these bytes instead of the answer to a command"},
    {"no-reply", "", "", "no answer to a command"},
    // Packet readers.
    {"checksum", "com1", "", "a data packet with a wrong checksum"},
    {"length-byte", "com1", "value", "a data packet whose length byte is replaced"},
    {"opcode", "com1", "value", "a data packet under another opcode"},
    {"continuation", "com1", "", "a decode whose last packet announces one that never comes"},
    {"no-ack", "com1", "", "no acknowledgement of a parameter packet"},
    {"nak-params", "com1", "cause", "a parameter packet is refused"},
    // 1D reader.
    {"cut", "com1", "bytes", "a message that ends after so many bytes"},
    {"length-digits", "com1", "text", "a message with other length digits"},
    {"refuse-save", "com1", "", "SAVE is answered NG"},
    // Firmware decoder.
    {"download-refuse", "com1", "", "the framed DOWNLOAD is answered NG"},
    {"raw-refuse", "com1", "", "the raw DOWNLOAD is answered NG"},
    {"raw-silent", "com1", "", "the raw DOWNLOAD is not answered"},
    {"erase-silent", "com1", "", "ERASE is not answered"},
    {"erase-refuse", "com1", "", "ERASE is answered NG"},
    {"erase-no-fb", "com1", "", "ERASE is answered FA without FB"},
    {"erase-no-fa", "com1", "", "ERASE is answered FB, FA never comes"},
    {"frame-fn", "com1", "", "a frame is answered FN"},
    {"frame-fb", "com1", "", "a frame is answered FB"},
    {"frame-text", "com1", "text...", "a frame is answered with this text"},
    {"frame-silent", "com1", "", "a frame is not answered"},
    {"end-silent", "com1", "", "the end frame is not answered"},
    {"power-loss", "com1", "", "power is lost when a frame arrives"},
    // RFID reader.
    {"s-line", "com2", "", "a search for a tag is answered with a bare S line"},
    {"version-s", "com2", "", "v is answered with a bare S line"},
    {"register-n", "com2", "", "a register read is answered N"},
    {"register-f", "com2", "", "a register read is answered F"},
    {"register-i", "com2", "", "a register read is answered I"},
    {"register-s", "com2", "", "a register read is answered with a bare S line"},
    {"register-s-value", "com2", "", "a register read is answered with an S line and the value"},
    {"register-text", "com2", "text...", "a register read is answered with this text"},
    {"tag-gone", "com2", "", "the tag is taken away before a register read"},
});

}  // namespace

std::span<const FaultKind> FaultKinds() {
    return Kinds;
}

const FaultKind* FindFault(std::string_view name) {
    for (const FaultKind& kind : Kinds) {
        if (kind.Name == name) {
            return &kind;
        }
    }
    return nullptr;
}

bool FaultSet::Arm(const FaultKind& kind, std::span<const std::string> words, std::string& problem) {
    Entry entry;
    bool off = false;
    while (!words.empty()) {
        const std::string& last = words.back();
        const auto number = [&last](std::string_view prefix) {
            return last.starts_with(prefix) ? NumberOf(std::string_view(last).substr(prefix.size()))
                                            : std::nullopt;
        };
        if (last == "always") {
            entry.Always = true;
        } else if (last == "off") {
            off = true;
        } else if (const auto skip = number("after")) {
            entry.Skip = *skip;
        } else if (const auto times = number("x"); times && *times > 0) {
            entry.Left = *times;
        } else {
            break;
        }
        words = words.first(words.size() - 1);
    }
    if (off) {
        Armed.erase(std::string(kind.Name));
        return true;
    }
    const auto wanted = WordsOf(kind.Values);
    const bool open = !wanted.empty() && wanted.back().ends_with("...");
    if (open ? words.size() < wanted.size() : words.size() != wanted.size()) {
        problem = "values: " + std::string(wanted.empty() ? "none" : kind.Values);
        return false;
    }
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string_view name = wanted[std::min(i, wanted.size() - 1)];
        if (name != "text" && !open && !NumberOf(words[i])) {
            problem = "not a number: " + words[i];
            return false;
        }
        if (name == "hex..." && !BytesFromHex(words[i])) {
            problem = "not hexadecimal: " + words[i];
            return false;
        }
        if (open && i >= wanted.size()) {
            entry.Values.back() += ' ' + words[i];
        } else {
            entry.Values.push_back(words[i]);
        }
    }
    Armed.insert_or_assign(std::string(kind.Name), std::move(entry));
    return true;
}

std::optional<FaultValues> FaultSet::Take(std::string_view name) {
    const auto found = Armed.find(name);
    if (found == Armed.end()) {
        return std::nullopt;
    }
    Entry& entry = found->second;
    if (entry.Skip > 0) {
        --entry.Skip;
        return std::nullopt;
    }
    FaultValues values = entry.Values;
    if (!entry.Always && --entry.Left == 0) {
        Armed.erase(found);
    }
    return values;
}

std::vector<std::string> FaultSet::Describe() const {
    std::vector<std::string> lines;
    for (const auto& [name, entry] : Armed) {
        std::string line = name;
        for (const std::string& value : entry.Values) {
            line += ' ' + value;
        }
        line += entry.Always ? " always" : " x" + std::to_string(entry.Left);
        if (entry.Skip > 0) {
            line += " after" + std::to_string(entry.Skip);
        }
        lines.push_back(line);
    }
    return lines;
}

}  // namespace readers
