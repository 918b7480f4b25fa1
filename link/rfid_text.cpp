#include "link/rfid_text.h"

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

// Takes the first line that isn't empty off the text; empty when there is none.
std::string_view TakeLine(std::string_view& text) {
    const std::size_t begin = text.find_first_not_of("\r\n");
    if (begin == std::string_view::npos) {
        text = {};
        return {};
    }
    const std::size_t end = text.find_first_of("\r\n", begin);
    const std::string_view line = text.substr(begin, end == std::string_view::npos ? end : end - begin);
    text = end == std::string_view::npos ? std::string_view{} : text.substr(end);
    return line;
}

}  // namespace

TagLineStep CollectTagLine(TagLine& line, std::span<const BYTE> bytes) {
    for (const BYTE received : bytes) {
        if (received == LineFeed) {
            return EndOfLine(line);
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

RegisterReply ParseRegisterReply(std::string_view reply) {
    const std::string_view first = TakeLine(reply);
    if (first.empty()) {
        return {RegisterAnswer::Refused, {}};
    }
    switch (first.front()) {
        case 'N':
            return {RegisterAnswer::Refused, {}};
        case 'F':
        case 'I':
            return {RegisterAnswer::Failed, {}};
        case 'S': {
            const std::string_view second = TakeLine(reply);
            return second.empty() ? RegisterReply{RegisterAnswer::Again, {}}
                                  : RegisterReply{RegisterAnswer::Value, second};
        }
        default:
            return {RegisterAnswer::Value, first};
    }
}

bool FindGreeting(GreetingSearch& search, std::span<const BYTE> bytes) {
    for (const BYTE received : bytes) {
        const char character = static_cast<char>(received);
        if (character != Greeting[search.Matched]) {
            search.Matched = 0;
        }
        // No character of the mark occurs twice in it: after a mismatch only its first can begin it anew.
        if (character == Greeting[search.Matched] && ++search.Matched == Greeting.size()) {
            search.Matched = 0;
            return true;
        }
    }
    return false;
}
