// What the RFID reader says, taken apart: tag lines, register replies, its greeting.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "platform/base.h"

inline constexpr std::size_t TagLineLimit = 23;  // longest line that is handed over

// The line being collected; starts empty. Text is always followed by a zero.
struct TagLine {
    std::array<char, TagLineLimit + 1> Text{};
    DWORD Length = 0;
};

enum class TagLineStep {
    More,    // the line goes on with the next read
    Repeat,  // the reader wants to be asked again (a line "S"); the line is empty again
    Data,    // a line of 3 to 23 characters is complete
    End,     // a line of another length: the read ends without a hand-over
};

// Takes bytes up to the end of the first line; what follows in the same read is dropped. CR and zero bytes
// are no part of a line. A line that grows beyond 23 characters ends the read at once.
TagLineStep CollectTagLine(TagLine& line, std::span<const BYTE> bytes);

enum class RegisterAnswer {
    Value,    // the register's text
    Refused,  // no line at all, or a line beginning with N
    Failed,   // a line beginning with F or I
    Again,    // a line beginning with S and nothing after it
};

struct RegisterReply {
    RegisterAnswer Answer;
    std::string_view Value;  // points into the reply
};

// Reads the reply to a register command; lines end at CR or LF, empty ones do not count.
RegisterReply ParseRegisterReply(std::string_view reply);

// Looks for "ISO" in a stream of bytes; keeps how much of it the last bytes matched, so that a mark cut by
// the end of a read is found too.
struct GreetingSearch {
    unsigned Matched = 0;
};
bool FindGreeting(GreetingSearch& search, std::span<const BYTE> bytes);
