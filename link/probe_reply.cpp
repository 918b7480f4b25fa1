#include "link/probe_reply.h"

#include <algorithm>
#include <string_view>

#include "link/framing.h"

namespace {

constexpr std::size_t ShortestDecoderAnswer = 60;
constexpr std::size_t TypeField = 2;  // fields of the revision text before the one that names the engine

// Text up to the first zero byte.
std::string_view TextIn(std::span<const BYTE> bytes) {
    const std::string_view all(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return all.substr(0, all.find('\0'));
}

bool IsRevisionReply(std::span<const BYTE> bytes) {
    return bytes.size() > 1 && bytes[1] == REPLY_REVISION;
}

// The revision text: the packet's data, or all that came when its length cannot be right.
std::string_view RevisionText(std::span<const BYTE> bytes) {
    const std::size_t length = bytes[0];
    const bool plausible = length >= SsiHeaderSize && length <= bytes.size();
    const std::span<const BYTE> packet = plausible ? bytes.first(length) : bytes;
    return packet.size() > SsiHeaderSize ? TextIn(packet.subspan(SsiHeaderSize)) : std::string_view{};
}

// The field after so many others; empty when there is none.
std::string_view Field(std::string_view text, std::size_t skipped) {
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
        const std::string_view field = text.substr(0, text.find(' '));
        if (skipped-- == 0 || field.empty()) {
            return field;
        }
        text.remove_prefix(field.size());
    }
}

}  // namespace

RevisionAnswer ParseRevisionReply(std::span<const BYTE> bytes) {
    if (!IsRevisionReply(bytes)) {
        return RevisionAnswer::NoRevision;
    }
    const std::string_view engine = Field(RevisionText(bytes), TypeField);
    if (engine.empty()) {
        return RevisionAnswer::Unnamed;
    }
    switch (engine.front()) {
        case 'G':
        case '\x07':
            return RevisionAnswer::Laser;
        case 'P':
            return RevisionAnswer::Imager;
        default:
            return RevisionAnswer::Unknown;
    }
}

bool IsDecoderAnswer(std::span<const BYTE> bytes) {
    return bytes.size() >= ShortestDecoderAnswer && TextIn(bytes).find("NG\r") == std::string_view::npos;
}

RfidAnswer ParseRfidAnswer(std::span<const BYTE> bytes) {
    const auto begin = std::find_if(bytes.begin(), bytes.end(), [](BYTE b) { return b != 0; });
    const std::string_view text = TextIn({begin, bytes.end()});
    if (text.empty()) {
        return RfidAnswer::None;
    }
    if (text.front() == 'S') {
        return RfidAnswer::AskAgain;
    }
    if (text.find("ISO") == std::string_view::npos) {
        return RfidAnswer::None;
    }
    return text.find("Multi") == std::string_view::npos ? RfidAnswer::Model90 : RfidAnswer::Model100;
}
