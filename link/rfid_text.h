// What the RFID reader says, taken apart: tag lines, register replies, its greeting.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "platform/base.h"

inline constexpr std::size_t TagLineLimit = 23;  // longest line that is handed over

// The last eight characters of a line, CR and zero bytes left out; the last one is the lowest byte.
using LineTail = std::uint64_t;

// The line being collected; starts empty. Text is always followed by a zero.
struct TagLine {
    std::array<char, TagLineLimit + 1> Text{};
    DWORD Length = 0;
    LineTail Greeting = 0;  // of the reader's greeting; 0 while none is known
};

enum class TagLineStep {
    More,    // the line goes on with the next read
    Repeat,  // the reader wants to be asked again (a line "S"); the line is empty again
    Data,    // a line of 3 to 23 characters is complete
    End,     // a line of another length: the read ends without a hand-over
};

// Takes bytes up to the end of the first line; what follows in the same read is dropped. CR and zero bytes
// are no part of a line. The reader's greeting is no line, nor is the rest of one, of three characters or
// more. A line that grows beyond 23 characters ends the read at once.
TagLineStep CollectTagLine(TagLine& line, std::span<const BYTE> bytes);

// Whether a reply to a command is whole: it ends in LF and holds a line that is more than a bare "S", behind
// which another one may follow.
bool IsWholeRfidReply(std::span<const BYTE> reply);

enum class RegisterAnswer {
    Value,    // the register's text
    Refused,  // no line at all, or a line beginning with N
    Failed,   // a line beginning with F or I that is no whole block
    Again,    // a line beginning with S and nothing after it
    Broken,   // a line without an end that is no whole block
};

struct RegisterReply {
    RegisterAnswer Answer;
    std::string_view Value;  // points into the reply
};

// Reads the reply to a register command, given the bytes of a block; lines end at CR or LF, empty ones do not
// count.
RegisterReply ParseRegisterReply(std::string_view reply, std::size_t blockSize);
// The same after a reply that broke off: what it lacked may come in front of the new one and be anything but
// a whole block, so that only a whole block counts.
RegisterReply ParseLateReply(std::string_view reply, std::size_t blockSize);

// Looks for the greeting, a line with "ISO" in it, in a stream of bytes however the reads cut it.
struct GreetingSearch {
    unsigned Matched = 0;  // characters of the mark that the last bytes matched
    bool Found = false;    // the mark has come
    LineTail Tail = 0;     // of the line so far
};
// True when the mark has come and, behind it, the end of its line.
bool FindGreeting(GreetingSearch& search, std::span<const BYTE> bytes);
