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

LineTail Append(LineTail tail, char character) {
    return tail << 8 | static_cast<BYTE>(character);
}

// The greeting, or the rest of one whose beginning was thrown away.
bool IsOfGreeting(const TagLine& line) {
    const std::string_view text(line.Text.data(), line.Length);
    LineTail tail = 0, mask = 0;
    for (const char character : text) {
        tail = Append(tail, character);
        mask = Append(mask, '\xFF');
    }
    const bool rest = line.Greeting != 0 && line.Length >= ShortestTagLine && tail == (line.Greeting & mask);
    return rest || text.find(Greeting) != std::string_view::npos;
}

}  // namespace

TagLineStep CollectTagLine(TagLine& line, std::span<const BYTE> bytes) {
    for (const BYTE received : bytes) {
        if (received == LineFeed) {
            if (!IsOfGreeting(line)) {
                return EndOfLine(line);
            }
            line = {{}, 0, line.Greeting};  // it comes late: of an opening before, or of a slow reader
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

RegisterReply ParseLateReply(std::string_view reply, std::size_t blockSize) {
    for (;;) {
        const std::string_view line = TakeLine(reply).Text;
        if (line.empty()) {
            return {RegisterAnswer::Broken, {}};
        }
        if (IsBlock(line, blockSize)) {
            return {RegisterAnswer::Value, line};
        }
    }
}

bool FindGreeting(GreetingSearch& search, std::span<const BYTE> bytes) {
    for (const BYTE received : bytes) {
        const char character = static_cast<char>(received);
        if (received == LineFeed && search.Found) {
            return true;
        }
        if (received == LineFeed) {
            search.Tail = 0;
        } else if (received != CarriageReturn && received != 0) {
            search.Tail = Append(search.Tail, character);
        }
        if (search.Found) {
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
