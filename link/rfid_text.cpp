#include "link/rfid_text.h"

#include <algorithm>

namespace {

constexpr BYTE LineFeed = 0x0A;
constexpr BYTE CarriageReturn = 0x0D;
constexpr DWORD ShortestTagLine = 3;
constexpr std::string_view Greeting = "ISO";

TagLineStep EndOfLine(TagLine& line) {
    if (line.Length == 1 && line.Text[0] == 'S') {
        line = {};
        return TagLineStep::Repeat;
    }
    return line.Length >= ShortestTagLine ? TagLineStep::Data : TagLineStep::End;
}

struct Line {
    std::string_view Text;  // empty when there is none
    bool Ended;
};

// Takes the first line that isn't empty off the text.
Line TakeLine(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of("\r\n"), text.size()));
    const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    text.remove_prefix(line.size());
    return {line, !text.empty()};
}

bool IsHexadecimal(char character) {
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'F') ||
           (character >= 'a' && character <= 'f');
}

bool IsBlock(std::string_view line, std::size_t blockSize) {
    return line.size() == 2 * blockSize && std::all_of(line.begin(), line.end(), IsHexadecimal);
}

// A greeting, or the rest of one whose beginning was thrown away: a tag's line has letters and digits only.
bool IsOfGreeting(std::string_view line) {
    const auto plain = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    };
    return line.find(Greeting) != std::string_view::npos || !std::ranges::all_of(line, plain);
}

}  // namespace

TagLineStep CollectTagLine(TagLine& line, std::span<const BYTE> bytes) {
    for (const BYTE received : bytes) {
        if (received == LineFeed) {
            if (!IsOfGreeting({line.Text.data(), line.Length})) {
                return EndOfLine(line);
            }
            line = {};  // it comes late: of an opening before, or of a reader that was slow
            continue;
        }
        if (received == CarriageReturn || received == 0) {
            continue;
        }
        if (line.Length == TagLineLimit) {
            // A UID cut to what fits would be another tag's.
            return TagLineStep::End;
        }
        line.Text[line.Length++] = static_cast<char>(received);
    }
    return TagLineStep::More;
}

bool IsWholeRfidReply(std::span<const BYTE> reply) {
    std::string_view text(reinterpret_cast<const char*>(reply.data()), reply.size());
    const bool ended = text.ends_with('\n');
    std::string_view line = TakeLine(text).Text;
    if (line == "S") {
        line = TakeLine(text).Text;
    }
    return ended && !line.empty();
}

RegisterReply ParseRegisterReply(std::string_view reply, std::size_t blockSize) {
    Line line = TakeLine(reply);
    if (line.Text.empty()) {
        return {RegisterAnswer::Refused, {}};
    }
    const bool repeats = line.Text.front() == 'S';
    if (repeats) {
        line = TakeLine(reply);
        if (line.Text.empty()) {
            return {RegisterAnswer::Again, {}};
        }
    }
    if (!IsBlock(line.Text, blockSize)) {
        if (!line.Ended) {
            return {RegisterAnswer::Broken, {}};
        }
        const char first = line.Text.front();
        if (!repeats && first == 'N') {
            return {RegisterAnswer::Refused, {}};
        }
        if (!repeats && (first == 'F' || first == 'I')) {
            return {RegisterAnswer::Failed, {}};
        }
    }
    return {RegisterAnswer::Value, line.Text};
}

bool FindGreeting(GreetingSearch& search, std::span<const BYTE> bytes) {
    for (const BYTE received : bytes) {
        const char character = static_cast<char>(received);
        if (search.Found) {
            if (received == LineFeed) {
                return true;
            }
            continue;
        }
        if (character != Greeting[search.Matched]) {
            search.Matched = 0;
        }
        // No character of the mark occurs twice in it: after a mismatch only its first can begin it anew.
        if (character == Greeting[search.Matched] && ++search.Matched == Greeting.size()) {
            search.Found = true;
        }
    }
    return false;
}
